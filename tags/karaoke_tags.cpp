#include "tags/karaoke_tags.h"

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tags/foreign_text.h"

namespace melvane {

namespace {

constexpr std::string_view kTextEvent("\xFF\x01", 2);
constexpr std::string_view kTitleMark = "@T";
constexpr std::size_t kWanted = 2;

// Takes a number of up to four bytes off the front, seven bits each.
std::size_t takeNumber(std::string_view& bytes) {
    std::size_t value = 0;
    for (int i = 0; i < 4 && !bytes.empty(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes.front());
        bytes.remove_prefix(1);
        value = value << 7 | (byte & 0x7FU);
        if (byte < 0x80) break;
    }
    return value;
}

}  // namespace

KaraokeTags karaokeTags(std::string_view bytes) {
    std::vector<std::string> lines;
    while (lines.size() < kWanted) {
        const std::size_t event = bytes.find(kTextEvent);
        if (event == std::string_view::npos) break;
        bytes.remove_prefix(event + kTextEvent.size());
        std::string_view text = bytes;
        const std::size_t length = takeNumber(text);
        if (length >= kTitleMark.size() && length <= text.size() && text.starts_with(kTitleMark))
            lines.emplace_back(text.substr(kTitleMark.size(), length - kTitleMark.size()));
    }
    lines.resize(kWanted);
    const std::vector<std::string> utf8 = guessedUtf8(lines);
    return {utf8[0], utf8[1]};
}

}  // namespace melvane
