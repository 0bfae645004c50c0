// What the effects have in common: a record comes in on one thread, becomes the values of a formula and glides there on
// the other. Every frame gets its own values, so the samples do not depend on the size of the blocks.
#pragma once

#include <algorithm>
#include <cmath>

#include "engine/effects/effect.h"
#include "engine/effects/mailbox.h"
#include "engine/effects/ramp.h"

namespace melvane::engine {

// What is no number counts as the least.
inline float limited(float value, float least, float most) {
    return value > least ? std::min(value, most) : least;
}

inline double amplitude(double decibels) {
    return std::pow(10, decibels / 20);
}

template <typename Record, typename Values, typename Scalar>
class RecordEffect : public Effect {
public:
    bool set(const EffectRecord& record) final {
        const auto* own = std::get_if<Record>(&record);
        if (own) mailbox_.put(*own);
        return own != nullptr;
    }
    EffectRecord get() const final { return mailbox_.last(); }

    void process(float* block, std::size_t frames) final {
        if (frames == 0) return;
        takeRecord();
        for (; frames > 0 && ramp_.moving(); --frames, block += 2) render(block, 1, ramp_.advance());
        if (frames > 0) render(block, frames, ramp_.now());
    }

    void restart(std::int64_t frame) final {
        takeRecord();
        ramp_.finish();
        clear(frame, ramp_.now());
    }
    bool lasts() final {
        takeRecord();
        return lastsWith(ramp_.goal());
    }

protected:
    // Mixing thread: the values that `record`, limited to its ranges, asks for.
    virtual Values goalOf(const Record& record) = 0;
    // Mixing thread: `frames` frames in place, all with `values`.
    virtual void render(float* block, std::size_t frames, const Values& values) = 0;
    // Mixing thread: nothing has sounded, and the song's frame `frame` is next.
    virtual void clear(std::int64_t frame, const Values& values) = 0;
    // Whether it sounds on for longer than a second with `values`.
    virtual bool lastsWith(const Values& values) const = 0;

private:
    void takeRecord() {
        Record record;
        if (!mailbox_.take(record)) return;
        const Values goal = goalOf(record);
        if (started_)
            ramp_.aim(goal);
        else
            ramp_.jump(goal);
        started_ = true;
    }

    Mailbox<Record> mailbox_;
    Ramp<Values, Scalar> ramp_;
    bool started_ = false;
};

}  // namespace melvane::engine
