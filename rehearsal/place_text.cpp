#include "rehearsal/place_text.h"

#include <cmath>
#include <cstdlib>

#include "platform/audio_library.h"
#include "state/numbers.h"

namespace melvane {

namespace {

std::int64_t powerOfTen(int exponent) {
    std::int64_t power = 1;
    while (exponent-- > 0) power *= 10;
    return power;
}

// A number of `parts` of a second behind the point, cut, with all its digits.
std::string withDecimals(std::string whole, std::int64_t parts, int decimals) {
    if (decimals == 0) return whole;
    const std::string digits = std::to_string(parts);
    return std::move(whole) + "." + std::string(static_cast<std::size_t>(decimals) - digits.size(), '0') + digits;
}

}  // namespace

std::int64_t earlierOf(const RunState& run) {
    return run.voicePlace.earlier + std::llround(double{run.syncOffset} * kSampleRate);
}

std::string placeText(const modLang& language, std::int64_t earlier) {
    constexpr int kDecimals = 3;
    const std::int64_t ms = std::llround(static_cast<double>(std::abs(earlier) * powerOfTen(kDecimals)) / kSampleRate);
    if (ms == 0) return language.ownText(OwnText::voiceWithSong);
    const std::string seconds =
        withDecimals(std::to_string(ms / powerOfTen(kDecimals)), ms % powerOfTen(kDecimals), kDecimals);
    return language.ownText(earlier > 0 ? OwnText::voiceBeforeSong : OwnText::voiceAfterStart, seconds);
}

std::string timeText(std::int64_t frame, int decimals) {
    const std::int64_t parts = std::abs(frame) * powerOfTen(decimals) / kSampleRate;
    const std::int64_t second = powerOfTen(decimals);
    return (frame < 0 && parts > 0 ? "-" : "") + withDecimals(clockText(parts / second), parts % second, decimals);
}

}  // namespace melvane
