// The left and right gain of a sound, moved without clicks.
#pragma once

#include <utility>

namespace melvane {

struct StereoGain {
    float left = 1.0F;
    float right = 1.0F;
    bool operator==(const StereoGain&) const = default;
};

// Linear, and counted in frames: the samples do not depend on how they come in blocks.
class GainRamp {
public:
    // `frames`: from one goal to the next.
    explicit GainRamp(int frames) : frames_(frames) {}

    // Leaves from where the gain is now; the very first goal holds at once.
    void aim(StereoGain goal) {
        if (!std::exchange(started_, true)) now_ = goal_ = goal;
        if (goal == goal_) return;
        const auto count = static_cast<float>(frames_);
        goal_ = goal;
        step_ = {(goal.left - now_.left) / count, (goal.right - now_.right) / count};
        left_ = frames_;
    }
    // At the goal at once.
    void finish() {
        now_ = goal_;
        left_ = 0;
    }
    bool moving() const { return left_ > 0; }
    StereoGain now() const { return now_; }
    // Goes on by one frame.
    StereoGain advance() {
        if (moving()) now_ = --left_ == 0 ? goal_ : StereoGain{now_.left + step_.left, now_.right + step_.right};
        return now_;
    }

private:
    const int frames_;
    StereoGain goal_;
    StereoGain now_;
    StereoGain step_;
    int left_ = 0;
    bool started_ = false;
};

}  // namespace melvane
