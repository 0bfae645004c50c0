// When the frames of a song are heard, on the machine's clock.
//
// Frames are mixed in bursts, but never before the card has room for them: the earliest of the times that they are
// mixed at is a line that runs evenly with the card. What lies before the line moves it at once, as when the card's
// buffers fill or its clock is the faster one; when nothing has come near it for a while it follows slowly. When the
// card was held, the line starts anew.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <limits>

namespace melvane::music {

class HeardClock {
public:
    using Clock = std::chrono::steady_clock;

    // `frame` is mixed at `now`. `secondsAhead`: from the mixing of a frame to its hearing while all buffers are full.
    void begin(Clock::time_point now, std::int64_t frame, double secondsAhead) {
        ahead_ = std::max(secondsAhead, kLeastAhead);
        startAnew(seconds(now), seconds(now) - static_cast<double>(frame) / kFramesPerSecond);
    }

    // The frames before `frame` have been mixed at `now`. True when the times of frames have changed by a jump.
    bool mixedUpTo(std::int64_t frame, Clock::time_point now) {
        const double time = seconds(now);
        const double origin = time - static_cast<double>(frame) / kFramesPerSecond;
        if (origin > origin_ + kHold) {
            startAnew(time, origin);
            return true;
        }
        earliest_ = std::min(earliest_, origin);
        if (time >= windowEnd_) startAnew(time, origin_ + kFollow * (earliest_ - origin_));
        if (origin >= origin_) return false;
        origin_ = origin;
        return true;
    }

    Clock::time_point heard(std::int64_t frame) const {
        const std::chrono::duration<double> time(origin_ + ahead_ + static_cast<double>(frame) / kFramesPerSecond);
        return Clock::time_point(std::chrono::duration_cast<Clock::duration>(time));
    }

private:
    static constexpr double kFramesPerSecond = 44100.0;
    static constexpr double kLeastAhead = 0.03;  // a block, and a mixing thread that comes late
    static constexpr double kHold = 0.2;
    static constexpr double kWindow = 1.0;
    static constexpr double kFollow = 0.25;  // of the distance in each window

    static double seconds(Clock::time_point time) {
        return std::chrono::duration<double>(time.time_since_epoch()).count();
    }

    void startAnew(double time, double origin) {
        origin_ = origin;
        earliest_ = std::numeric_limits<double>::infinity();
        windowEnd_ = time + kWindow;
    }

    double origin_ = 0.0;  // when frame 0 was mixed, as it follows from the frames mixed of late
    double ahead_ = 0.0;
    double windowEnd_ = 0.0;
    double earliest_ = 0.0;
};

}  // namespace melvane::music
