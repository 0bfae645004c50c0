#include <array>
#include <cstdint>

#include "engine/capture/encoder_process.h"

namespace melvane::engine {

namespace {

constexpr std::array<std::byte, 44> makeHeader() {
    std::array<std::byte, 44> header{};
    std::size_t place = 0;
    const auto text = [&](const char* word) {
        for (int i = 0; i < 4; ++i) header[place++] = static_cast<std::byte>(word[i]);
    };
    const auto number = [&](std::uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i) header[place++] = static_cast<std::byte>(value >> (8 * i) & 0xFFU);
    };
    text("RIFF");
    number(0xFFFFFFFF, 4);
    text("WAVE");
    text("fmt ");
    number(16, 4);
    number(1, 2);  // PCM
    number(2, 2);
    number(kSampleRate, 4);
    number(kSampleRate * kBytesPerFrame, 4);
    number(kBytesPerFrame, 2);
    number(16, 2);
    text("data");
    number(0xFFFFFFFF, 4);
    return header;
}

}  // namespace

std::span<const std::byte> streamedWavHeader() {
    static constexpr auto kHeader = makeHeader();
    return kHeader;
}

}  // namespace melvane::engine
