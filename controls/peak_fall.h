// How a level meter moves: up at once, down slowly, with the highest peak held for a while.
#pragma once

#include <algorithm>
#include <cmath>

namespace melvane {

// Levels in dB of full scale, between kFloor and 0; times in seconds.
class PeakFall {
public:
    static constexpr double kFloor = -48;
    static constexpr double kFallPerSecond = 20;
    static constexpr double kHoldSeconds = 1.5;
    static constexpr double kClipSeconds = 3;

    // `peak` is linear, 1 for full scale. What is no number counts as silence.
    void take(float peak) {
        const double db = peak > 0 ? std::clamp(20 * std::log10(double{peak}), kFloor, 0.0) : kFloor;
        level_ = std::max(level_, db);
        if (db > kFloor && db >= held_) {
            held_ = db;
            heldFor_ = 0;
        }
        if (peak >= 1) clipFor_ = kClipSeconds;
    }

    void pass(double seconds) {
        level_ = std::max(kFloor, level_ - kFallPerSecond * seconds);
        heldFor_ += seconds;
        if (heldFor_ >= kHoldSeconds) held_ = kFloor;
        clipFor_ = std::max(0.0, clipFor_ - seconds);
    }

    double level() const { return level_; }
    double held() const { return held_; }
    bool clipped() const { return clipFor_ > 0; }
    bool atRest() const { return level_ <= kFloor && held_ <= kFloor && !clipped(); }

private:
    double level_ = kFloor;
    double held_ = kFloor;
    double heldFor_ = 0;
    double clipFor_ = 0;
};

}  // namespace melvane
