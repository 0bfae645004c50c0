// The beginning of an MP3 file as an encoder leaves it.
#pragma once

#include <cstdint>
#include <string>

namespace melvane::test {

// A tag that tells of so many frames, behind `before`, and nothing else.
inline std::string taggedMp3(std::int64_t frames, const std::string& before = "") {
    constexpr std::int64_t kDelay = 576;
    const auto number = [](std::int64_t value, int bytes) {
        std::string text;
        while (bytes-- > 0) text += static_cast<char>(value >> (8 * bytes) & 0xFF);
        return text;
    };
    const std::int64_t mpegFrames = (frames + kDelay + 1151) / 1152;
    const std::int64_t padding = mpegFrames * 1152 - frames - kDelay;
    std::string file = "\xFF\xFB\x90\x44" + std::string(32, '\0') + "Info" + number(0xF, 4) + number(mpegFrames, 4) +
                       number(417, 4) + std::string(104, '\0') + "LAME3.100" + std::string(12, '\0') +
                       number(kDelay << 12 | padding, 3);
    file.resize(417);
    return before + file;
}

}  // namespace melvane::test
