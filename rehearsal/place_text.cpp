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

constexpr const char* kNoTime = "0.000";

// Without a sign, to a millisecond.
std::string secondsText(std::int64_t frames) {
    constexpr int kDecimals = 3;
    const std::int64_t second = powerOfTen(kDecimals);
    const std::int64_t ms = std::llround(static_cast<double>(std::abs(frames) * second) / kSampleRate);
    return withDecimals(std::to_string(ms / second), ms % second, kDecimals);
}

}  // namespace

std::int64_t earlierOf(const RunState& run) {
    return run.voicePlace.earlier + std::llround(double{run.syncOffset} * kSampleRate);
}

std::string placeText(const modLang& language, std::int64_t earlier) {
    const std::string seconds = secondsText(earlier);
    if (seconds == kNoTime) return language.ownText(OwnText::voiceWithSong);
    return language.ownText(earlier > 0 ? OwnText::voiceBeforeSong : OwnText::voiceAfterStart, seconds);
}

std::string linedUpText(const modLang& language, std::int64_t earlier, double certainty) {
    constexpr double kPercent = 100;
    const std::string seconds = secondsText(earlier);
    const OwnText where = seconds == kNoTime ? OwnText::linedUpWith
                          : earlier > 0      ? OwnText::linedUpBefore
                                             : OwnText::linedUpAfter;
    return language.ownText(where, seconds) + " " +
           language.ownText(OwnText::howSure, std::to_string(static_cast<int>(certainty * kPercent)));
}

std::string timeText(std::int64_t frame, int decimals) {
    const std::int64_t parts = std::abs(frame) * powerOfTen(decimals) / kSampleRate;
    const std::int64_t second = powerOfTen(decimals);
    return (frame < 0 && parts > 0 ? "-" : "") + withDecimals(clockText(parts / second), parts % second, decimals);
}

}  // namespace melvane
