#include "audio/encoder_tag.h"

#include <array>
#include <cstddef>
#include <fstream>
#include <span>

#include "base/paths.h"

namespace melvane {

namespace {

constexpr std::int64_t kMpegFrame = 1152;
constexpr std::size_t kId3Header = 10;
constexpr std::size_t kFrameHeader = 4;
constexpr std::size_t kSidesStereo = 32;
constexpr std::size_t kSidesMono = 17;
// From the encoder's name to its delay.
constexpr std::size_t kDelayPlace = 21;
// The fields behind the tag's flags, each there when its bit is set: MPEG frames, bytes, table of contents, quality.
constexpr std::array<std::size_t, 4> kFields{4, 4, 100, 4};

class Bytes {
public:
    explicit Bytes(std::span<const char> bytes) : bytes_(bytes) {}

    std::uint32_t number(std::size_t place, std::size_t count, int bits = 8) const {
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < count; ++i) value = value << bits | static_cast<unsigned char>(bytes_[place + i]);
        return value;
    }
    std::string text(std::size_t place, std::size_t count) const { return {bytes_.data() + place, count}; }

private:
    std::span<const char> bytes_;
};

// What stands in front of the sound: titles and such.
std::size_t id3Length(const Bytes& start) {
    return start.text(0, 3) == "ID3" ? kId3Header + start.number(6, 4, 7) : 0;
}

}  // namespace

std::optional<std::int64_t> taggedFrames(const std::string& path) {
    std::ifstream file(toPath(path), std::ios::binary);
    std::array<char, 256> read{};
    const Bytes bytes(read);
    file.read(read.data(), kId3Header);
    const std::size_t start = id3Length(bytes);
    file.clear();
    file.seekg(static_cast<std::streamoff>(start));
    if (!file.read(read.data(), read.size()) || (bytes.number(0, 2) & 0xFFFEU) != 0xFFFAU) return std::nullopt;

    constexpr std::uint32_t kMono = 3;
    std::size_t place = kFrameHeader + (bytes.number(3, 1) >> 6 == kMono ? kSidesMono : kSidesStereo);
    const std::string name = bytes.text(place, 4);
    const std::uint32_t flags = bytes.number(place + 4, 4);
    if ((name != "Xing" && name != "Info") || (flags & 3U) != 3U) return std::nullopt;
    place += 8;
    const std::int64_t mpegFrames = bytes.number(place, 4);
    const std::int64_t length = bytes.number(place + 4, 4);
    for (std::size_t field = 0; field < kFields.size(); ++field)
        if (flags >> field & 1U) place += kFields[field];
    const std::uint32_t delayAndPadding = bytes.number(place + kDelayPlace, 3);
    const std::int64_t frames =
        mpegFrames * kMpegFrame - (delayAndPadding >> 12) - static_cast<std::int64_t>(delayAndPadding & 0xFFFU);

    file.seekg(0, std::ios::end);
    const bool whole = static_cast<std::int64_t>(file.tellg()) - static_cast<std::int64_t>(start) >= length;
    return whole && frames >= 0 ? std::optional(frames) : std::nullopt;
}

}  // namespace melvane
