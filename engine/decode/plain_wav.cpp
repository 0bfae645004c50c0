#include "engine/decode/plain_wav.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "engine/decode/native_source.h"

namespace melvane::decode {
namespace {

constexpr std::uint64_t kUnknownLength = ~0ULL;
constexpr std::uint32_t kUnknownShort = 0xFFFFFFFF;
constexpr std::uint64_t kWrap = 1ULL << 32;  // where a short length begins again at 0
constexpr std::int64_t kChunkHeader = 8;
constexpr std::int64_t kFirstChunk = 12;
// More than any format needs, little enough to be held.
constexpr std::uint32_t kLongestFormat = 1024;
// How far behind a chunk with an impossible length the next one is looked for.
constexpr std::size_t kSearchBytes = 65536;

struct Chunk {
    std::array<char, 4> id;
    std::int64_t body;  // offset in the file
    std::uint32_t length;

    bool is(std::string_view name) const { return std::equal(id.begin(), id.end(), name.begin(), name.end()); }
    std::int64_t end() const { return body + length; }
    std::int64_t next() const { return end() + length % 2; }
    bool hasName() const {
        return std::ranges::all_of(id, [](char c) { return std::isprint(static_cast<unsigned char>(c)) != 0; });
    }
};

std::string bytesAt(InputFile& file, std::int64_t offset, std::size_t most) {
    std::string bytes(most, '\0');
    bytes.resize(file.seek(offset, SEEK_SET) == offset ? file.read(bytes.data(), most) : 0);
    return bytes;
}

std::uint64_t number(std::string bytes, bool bigEndian) {
    if (!bigEndian) std::ranges::reverse(bytes);
    std::uint64_t value = 0;
    for (const char byte : bytes) value = value << 8 | static_cast<unsigned char>(byte);
    return value;
}

std::string shortLength(std::uint64_t value, bool bigEndian) {
    std::string bytes;
    for (int i = 0; i < 4; ++i) bytes += static_cast<char>(value >> 8 * i & 0xFF);
    if (bigEndian) std::ranges::reverse(bytes);
    return bytes;
}

class WavReader {
public:
    WavReader(InputFile& file, std::string_view magic)
        : file_(file), bigEndian_(magic == "RIFX"), longForm_(magic == "RF64") {}

    void makePlain();

private:
    std::optional<Chunk> chunkAt(std::int64_t offset);
    std::optional<Chunk> nextAfter(const Chunk& chunk);
    bool chunksUpToEnd(std::int64_t offset);
    std::string copyOf(const Chunk& chunk);
    std::uint64_t claimedLength(const Chunk& data) const;
    std::uint64_t dataLength(const Chunk& data);

    InputFile& file_;
    const bool bigEndian_;
    const bool longForm_;
    std::uint64_t longLength_ = kUnknownLength;
};

std::optional<Chunk> WavReader::chunkAt(std::int64_t offset) {
    const std::string header = bytesAt(file_, offset, kChunkHeader);
    if (header.size() < kChunkHeader) return {};
    Chunk chunk{{}, offset + kChunkHeader, static_cast<std::uint32_t>(number(header.substr(4), bigEndian_))};
    header.copy(chunk.id.data(), chunk.id.size());
    return chunk;
}

// Where a length leads nowhere, the sound may still be near.
std::optional<Chunk> WavReader::nextAfter(const Chunk& chunk) {
    if (chunk.end() <= file_.size())
        if (const auto next = chunkAt(chunk.next()); next && next->hasName()) return next;
    const std::int64_t from = chunk.body - kChunkHeader + 1;
    const std::string near = bytesAt(file_, from, kSearchBytes);
    const std::size_t place = std::min(near.find("data"), near.find("fmt "));
    if (place == std::string::npos) return {};
    return chunkAt(from + static_cast<std::int64_t>(place));
}

bool WavReader::chunksUpToEnd(std::int64_t offset) {
    while (offset < file_.size()) {
        const auto chunk = chunkAt(offset);
        if (!chunk || chunk->end() > file_.size() || !chunk->hasName()) return false;
        offset = chunk->next();
    }
    return true;
}

std::string WavReader::copyOf(const Chunk& chunk) {
    std::string body = bytesAt(file_, chunk.body, std::min(chunk.length, kLongestFormat));
    const std::string length = shortLength(body.size(), bigEndian_);
    body.resize(body.size() + body.size() % 2);
    return std::string(chunk.id.begin(), chunk.id.end()) + length + body;
}

std::uint64_t WavReader::claimedLength(const Chunk& data) const {
    if (data.length != kUnknownShort) return data.length;
    return longForm_ ? longLength_ : kUnknownLength;
}

std::uint64_t WavReader::dataLength(const Chunk& data) {
    const std::uint64_t claimed = claimedLength(data);
    const auto available = static_cast<std::uint64_t>(file_.size() - data.body);
    if (claimed >= available) return available;
    if (claimed > 0 && (longForm_ || available < kWrap)) return claimed;
    const std::uint64_t wrapped = claimed + (available - claimed) / kWrap * kWrap;
    for (const std::uint64_t length : {claimed, wrapped})
        if (chunksUpToEnd(data.body + static_cast<std::int64_t>(length + length % 2))) return length;
    return available;
}

void WavReader::makePlain() {
    std::string format;
    std::string count;  // of frames, which some packed formats need
    auto chunk = chunkAt(kFirstChunk);
    for (; chunk && !chunk->is("data"); chunk = nextAfter(*chunk)) {
        if (chunk->is("fmt ")) format = copyOf(*chunk);
        if (chunk->is("fact")) count = copyOf(*chunk);
        const std::string lengths = longForm_ && chunk->is("ds64") ? bytesAt(file_, chunk->body, 16) : "";
        if (lengths.size() == 16) longLength_ = number(lengths.substr(8), false);
    }
    if (!chunk || format.empty()) throw NotSound("no format or no data");

    const std::uint64_t length = dataLength(*chunk);
    // What the short form can't say, libsndfile finds out where the header says that nothing is known.
    const bool known = length < kUnknownShort;
    const std::string chunks = "WAVE" + format + count + "data" + shortLength(known ? length : 0, bigEndian_);
    const std::string size = shortLength(known ? chunks.size() + length : kChunkHeader, bigEndian_);
    file_.present((bigEndian_ ? "RIFX" : "RIFF") + size + chunks, chunk->body, static_cast<std::int64_t>(length));
}

}  // namespace

void readAsPlainWav(InputFile& file) {
    const std::string start = bytesAt(file, 0, kFirstChunk);
    const std::string magic = start.substr(0, 4);
    const bool known = magic == "RIFF" || magic == "RIFX" || magic == "RF64";
    if (known && start.substr(4).ends_with("WAVE")) WavReader(file, magic).makePlain();
}

}  // namespace melvane::decode
