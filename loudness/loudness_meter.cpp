#include "loudness/loudness_meter.h"

#include <ebur128.h>

#include <algorithm>
#include <new>

#include "platform/audio_library.h"

namespace melvane {

namespace {

constexpr unsigned kSides = 2;

int modeOf(LoudnessMeter::Scope scope) {
    const int everything = EBUR128_MODE_I | EBUR128_MODE_LRA | EBUR128_MODE_TRUE_PEAK;
    return scope == LoudnessMeter::Scope::everything ? everything : static_cast<int>(EBUR128_MODE_I);
}

void check(int error) {
    if (error != EBUR128_SUCCESS) throw std::bad_alloc();
}

}  // namespace

struct LoudnessMeter::State {
    explicit State(int mode) : of(ebur128_init(kSides, kSampleRate, mode)) {
        if (!of) throw std::bad_alloc();
    }
    ~State() { ebur128_destroy(&of); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    ebur128_state* of;
};

LoudnessMeter::LoudnessMeter(Scope scope) : scope_(scope), state_(std::make_unique<State>(modeOf(scope))) {}

LoudnessMeter::~LoudnessMeter() = default;

void LoudnessMeter::add(const float* samples, std::size_t frames) {
    check(ebur128_add_frames_float(state_->of, samples, frames));
}

void LoudnessMeter::add(const std::int16_t* samples, std::size_t frames) {
    check(ebur128_add_frames_short(state_->of, samples, frames));
}

Loudness LoudnessMeter::result() const {
    Loudness result;
    check(ebur128_loudness_global(state_->of, &result.lufs));
    if (scope_ == Scope::integrated) return result;
    check(ebur128_loudness_range(state_->of, &result.rangeLu));
    double peak = 0;
    for (unsigned side = 0; side < kSides; ++side) {
        double ofSide = 0;
        check(ebur128_true_peak(state_->of, side, &ofSide));
        peak = std::max(peak, ofSide);
    }
    result.truePeakDb = 20 * std::log10(peak);
    return result;
}

}  // namespace melvane
