// Sound of any sample rate at 44100 Hz, through libsoxr.
#pragma once

#include <soxr.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "engine/decode/native_source.h"

namespace melvane::decode {

// `source` itself when it is at 44100 Hz already, so that its samples pass bit by bit; else resampled. The
// first sample out stands for the first one in, and the length is the rounded frames * 44100 / rate. With `driftPpm` it
// is as much shorter as a recording should be that is longer by so many parts in a million.
std::unique_ptr<PcmSource> atCardRate(std::unique_ptr<NativeSource> source, double driftPpm = 0);

class ResampledSource : public NativeSource {
public:
    // Throws NotSound when no frame is left of it.
    explicit ResampledSource(std::unique_ptr<NativeSource> source);
    bool failed() const override { return source_->failed(); }

private:
    struct Delete {
        void operator()(soxr_t resampler) const { soxr_delete(resampler); }
    };

    void restart(std::int64_t inputFrame);
    std::size_t decode(float* out, std::size_t frames) override;
    // Resampling starts anew some frames before, where an input and an output frame coincide: the samples
    // are those of continuous reading.
    void reposition(std::int64_t frame) override;

    std::unique_ptr<NativeSource> source_;
    std::int64_t inputStep_;   // input frames that last as long as
    std::int64_t outputStep_;  // this number of output frames, in lowest terms
    std::int64_t warmUp_;      // output frames that a restart may influence
    std::unique_ptr<soxr, Delete> resampler_;
    std::vector<float> input_;
    std::size_t inputFrames_ = 0;  // in input_,
    std::size_t inputTaken_ = 0;   // and how many of them the resampler has
};

}  // namespace melvane::decode
