// A setting that is left for another one by hearing both for 20 ms, counted in frames: for delays, which would
// transpose the sound on their way from one length to another.
#pragma once

#include "engine/effects/ramp.h"

namespace melvane::engine {

template <typename Setting>
class Crossfade {
public:
    // The first setting holds at once. One that comes while two are heard waits until the newer is heard alone.
    void aim(const Setting& setting) {
        wanted_ = setting;
        if (!started_) from_ = to_ = setting;
        started_ = true;
    }
    // Goes on by one frame.
    void advance() {
        if (frame_ == kRampFrames) {
            if (wanted_ == to_) return;
            from_ = to_;
            to_ = wanted_;
            frame_ = 0;
        }
        share_ = static_cast<float>(glide(++frame_));
    }
    // What `hear(setting)` gives for the settings, each by its share. Two only while there are two.
    template <typename Hear>
    float heard(Hear hear) const {
        if (frame_ == kRampFrames) return hear(to_);
        return (1 - share_) * hear(from_) + share_ * hear(to_);
    }

private:
    bool started_ = false;
    Setting wanted_{};
    Setting from_{};
    Setting to_{};
    int frame_ = kRampFrames;
    float share_ = 1;
};

}  // namespace melvane::engine
