#include "engine/decode/wav_lengths.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string_view>

namespace melvane::decode {
namespace {

constexpr std::uint32_t kUnknownLength = 0xFFFFFFFF;
constexpr std::int64_t kChunkHeader = 8;

struct Chunk {
    std::array<char, 4> id;
    std::int64_t body;  // offset in the file
    std::uint32_t length;

    bool is(std::string_view name) const { return std::equal(id.begin(), id.end(), name.begin(), name.end()); }
    std::int64_t end() const { return body + length; }
    std::int64_t next() const { return end() + length % 2; }
};

template <std::size_t kSize>
std::optional<std::array<unsigned char, kSize>> bytesAt(InputFile& file, std::int64_t offset) {
    std::array<unsigned char, kSize> bytes;
    if (file.seek(offset, SEEK_SET) != offset || file.read(bytes.data(), kSize) != kSize) return {};
    return bytes;
}

std::uint64_t littleEndian(const unsigned char* bytes, int count) {
    std::uint64_t value = 0;
    while (count-- > 0) value = value << 8 | bytes[count];
    return value;
}

std::optional<Chunk> chunkAt(InputFile& file, std::int64_t offset, bool bigEndian) {
    auto header = bytesAt<kChunkHeader>(file, offset);
    if (!header) return {};
    if (bigEndian) std::reverse(header->begin() + 4, header->end());
    Chunk chunk{{}, offset + kChunkHeader, static_cast<std::uint32_t>(littleEndian(header->data() + 4, 4))};
    std::memcpy(chunk.id.data(), header->data(), chunk.id.size());
    return chunk;
}

// Whether chunks fill the file from `offset` on.
bool chunksUpToEnd(InputFile& file, std::int64_t offset, bool bigEndian) {
    while (offset < file.size()) {
        const auto chunk = chunkAt(file, offset, bigEndian);
        const auto printable = [](char c) { return std::isprint(static_cast<unsigned char>(c)) != 0; };
        if (!chunk || chunk->end() > file.size() || !std::all_of(chunk->id.begin(), chunk->id.end(), printable))
            return false;
        offset = chunk->next();
    }
    return true;
}

}  // namespace

void repairWavLengths(InputFile& file) {
    const auto start = bytesAt<12>(file, 0);
    if (!start || std::memcmp(start->data() + 8, "WAVE", 4) != 0) return;
    const bool bigEndian = std::memcmp(start->data(), "RIFX", 4) == 0;
    const bool longForm = std::memcmp(start->data(), "RF64", 4) == 0;
    if (!bigEndian && !longForm && std::memcmp(start->data(), "RIFF", 4) != 0) return;

    std::uint64_t longLength = kUnknownLength;
    auto chunk = chunkAt(file, 12, bigEndian);
    for (; chunk && !chunk->is("data"); chunk = chunkAt(file, chunk->next(), bigEndian)) {
        if (!longForm || !chunk->is("ds64")) continue;
        if (const auto lengths = bytesAt<16>(file, chunk->body)) longLength = littleEndian(lengths->data() + 8, 8);
    }
    if (!chunk) return;

    const std::uint64_t length = longForm && chunk->length == kUnknownLength ? longLength : chunk->length;
    const auto available = static_cast<std::uint64_t>(file.size() - chunk->body);
    if (length > 0 ? length <= available : chunksUpToEnd(file, chunk->body, bigEndian)) return;
    // The short form with an unknown length is what libsndfile reads up to the end of the file.
    if (longForm) file.overlay(0, "RIFF");
    file.overlay(chunk->body - 4, "\xFF\xFF\xFF\xFF");
}

}  // namespace melvane::decode
