// OGG, with the checksums of its pages made right: a reader drops the others unread.
#include <ogg/ogg.h>

#include <numeric>

#include "tests/fuzz/sound_door.h"

namespace {

constexpr std::size_t kHeader = 27;

void makeChecksum(unsigned char* page, std::size_t room) {
    if (room < kHeader || room < kHeader + page[kHeader - 1]) return;
    unsigned char* const body = page + kHeader + page[kHeader - 1];
    const long length = std::accumulate(page + kHeader, body, 0L);
    ogg_page whole{page, body - page, body, length};
    if (std::cmp_less_equal(body - page + length, room)) ogg_page_checksum_set(&whole);
}

}  // namespace

void melvane::fuzz::attack(std::string_view bytes) {
    if (!bytes.starts_with("OggS")) return;
    std::string file(bytes);
    for (std::size_t at = 0; (at = file.find("OggS", at)) != std::string::npos; ++at)
        makeChecksum(reinterpret_cast<unsigned char*>(file.data()) + at, file.size() - at);
    hear(file);
}
