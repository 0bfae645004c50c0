// WAV files as bytes.
#pragma once

#include <cstdint>
#include <string>

#include "tests/sound.h"

namespace melvane::test {

inline void appendNumber(std::string& bytes, std::uint32_t value, int size) {
    for (int i = 0; i < size; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xFFU);
}

// 44100 Hz, 16-bit, stereo.
inline std::string wavFile(const Sound& sound) {
    const auto size = static_cast<std::uint32_t>(sound.size() * 2);
    std::string bytes = "RIFF";
    appendNumber(bytes, size + 36, 4);
    bytes += "WAVEfmt ";
    appendNumber(bytes, 16, 4);
    appendNumber(bytes, 1, 2);
    appendNumber(bytes, 2, 2);
    appendNumber(bytes, kSampleRate, 4);
    appendNumber(bytes, kSampleRate * 4, 4);
    appendNumber(bytes, 4, 2);
    appendNumber(bytes, 16, 2);
    bytes += "data";
    appendNumber(bytes, size, 4);
    for (const float sample : sound)
        appendNumber(bytes, static_cast<std::uint32_t>(std::lrint(static_cast<double>(sample) * 32768)), 2);
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
