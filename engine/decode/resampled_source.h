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
// first sample out stands for the first one in, and the length is the rounded frames * 44100 / rate.
std::unique_ptr<PcmSource> atCardRate(std::unique_ptr<NativeSource> source);

class ResampledSource : public PcmSource {
public:
    explicit ResampledSource(std::unique_ptr<NativeSource> source);

    std::int64_t frames() const override { return frames_; }
    std::size_t read(float* out, std::size_t frames) override;
    // Resampling starts anew some frames before, where an input and an output frame coincide: the samples
    // are those of continuous reading.
    void seek(std::int64_t frame) override;

private:
    struct Delete {
        void operator()(soxr_t resampler) const { soxr_delete(resampler); }
    };

    void restart(std::int64_t inputFrame);
    std::size_t resample(float* out, std::size_t frames);

    std::unique_ptr<NativeSource> source_;
    std::int64_t inputStep_;   // input frames that last as long as
    std::int64_t outputStep_;  // this number of output frames, in lowest terms
    std::int64_t warmUp_;      // output frames that a restart may influence
    std::int64_t frames_;
    std::int64_t position_ = 0;
    std::unique_ptr<soxr, Delete> resampler_;
    std::vector<float> input_;
    std::size_t inputFrames_ = 0;  // in input_,
    std::size_t inputTaken_ = 0;   // and how many of them the resampler has
};

}  // namespace melvane::decode
