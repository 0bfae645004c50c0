// A setting that is left for another one by hearing both for 20 ms, counted in frames: for delays, which would
// transpose the sound on their way from one length to another.
#pragma once

#include <array>

#include "engine/effects/ramp.h"

namespace melvane::engine {

template <typename Setting>
class Crossfade {
public:
    // The first setting holds at once. One that comes while two are heard waits until the newer is heard alone.
    void aim(const Setting& setting) {
        wanted_ = setting;
        if (!started_) heard_ = {setting, setting};
        started_ = true;
    }
    // The setting that is wanted is heard alone at once.
    void finish() {
        heard_ = {wanted_, wanted_};
        frame_ = kRampFrames;
        share_ = 1;
    }
    // Goes on by one frame.
    void advance() {
        if (!fading()) {
            if (resting()) return;
            heard_ = {heard_[1], wanted_};
            frame_ = 0;
        }
        share_ = static_cast<float>(glide(++frame_));
    }
    bool fading() const { return frame_ < kRampFrames; }
    // Whether the next frames are like this one, until another setting comes.
    bool resting() const { return !fading() && wanted_ == heard_[1]; }
    // The older one is number 0, the newer one number 1.
    const Setting& operator[](std::size_t number) const { return heard_[number]; }
    // What `hear(number)` gives for the settings, each by its share. Two only while there are two.
    template <typename Hear>
    float heard(Hear hear) const {
        if (!fading()) return hear(1);
        return (1 - share_) * hear(0) + share_ * hear(1);
    }

private:
    bool started_ = false;
    Setting wanted_{};
    std::array<Setting, 2> heard_{};
    int frame_ = kRampFrames;
    float share_ = 1;
};

}  // namespace melvane::engine
