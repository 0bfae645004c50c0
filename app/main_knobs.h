// The sliders of the main window: where they go, and the values that their positions stand for.
#pragma once

#include <cmath>

#include "controls/track.h"
#include "state/scale.h"

namespace melvane {

inline constexpr Track kVolumeTrack{64, 124, 64};                   // top edge; up is louder
inline constexpr Scale kVolumeScale{124, -100, 60, Fraction::cut};  // percent

inline constexpr Track kKeyTrack{308, 372, 340};               // left edge
inline constexpr Scale kKeyScale{340, 5, 32, Fraction::kept};  // semitones, -5..5
inline constexpr double kSemitone = 6.4;
inline constexpr double kTenthOfSemitone = 0.64;
inline constexpr int kKeyPage = 2;  // semitones
// The key at a position, without what such lengths leave behind the sixth digit.
inline double keyAt(double left) {
    return std::round(kKeyScale(left) * 1e6) / 1e6;
}

inline constexpr Track kSyncTrack{64, 124, 94};                  // top edge; up is earlier
inline constexpr Scale kSyncScale{94, -2, 100, Fraction::kept};  // seconds, -0.6..0.6; positive: the vocal is earlier
// The offset for a position; `old` at the centre, where the offset is left as it was.
inline float syncAt(double top, float old) {
    return top == kSyncTrack.neutral ? old : static_cast<float>(kSyncScale(top));
}

}  // namespace melvane
