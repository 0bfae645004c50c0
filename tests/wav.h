// WAV files as bytes.
#pragma once

#include <cstdint>
#include <string>

#include "tests/sound.h"

namespace melvane::test {

inline std::string little(std::uint64_t value, int bytes) {
    std::string text;
    for (; bytes > 0; --bytes, value >>= 8) text.push_back(static_cast<char>(value & 0xFF));
    return text;
}

// 44100 Hz, 16-bit, stereo.
inline std::string wavFile(const Sound& sound) {
    const std::uint64_t size = sound.size() * 2;
    std::string bytes = "RIFF" + little(size + 36, 4) + "WAVEfmt " + little(16, 4) + little(1, 2) + little(2, 2) +
                        little(kSampleRate, 4) + little(kSampleRate * 4, 4) + little(4, 2) + little(16, 2) + "data" +
                        little(size, 4);
    for (const float sample : sound)
        bytes += little(static_cast<std::uint64_t>(std::lrint(static_cast<double>(sample) * 32768)), 2);
    return bytes;
}

// The samples of a WAV stream with a header of 44 bytes.
inline Sound soundOfWav(const std::string& bytes) {
    Sound sound;
    for (std::size_t i = 44; i + 1 < bytes.size(); i += 2) {
        const int value = static_cast<unsigned char>(bytes[i]) | static_cast<unsigned char>(bytes[i + 1]) << 8;
        sound.push_back(static_cast<float>(static_cast<std::int16_t>(value)) / 32768.0F);
    }
    return sound;
}

}  // namespace melvane::test
