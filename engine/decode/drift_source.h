// A recording whose clock ran fast or slow, at 44100 Hz: its rate is converted by a ratio of any value, in one go with
// the correction of its clock.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "engine/decode/native_source.h"

namespace melvane::decode {

// Each frame is the sum of those around its place in the source, weighted by a sinc in a Kaiser window (J. O. Smith,
// "Digital Audio Resampling"): flat to 0.1 dB up to 0.93 of the lower band, the rest
// below -100 dB. Its place is its number times
// the ratio, so nothing adds up over an hour, and what follows a seek is what continuous reading gives.
class DriftSource : public NativeSource {
public:
    // `driftPpm`: parts in a million by which the recording is longer than it should be. Throws NotSound when no frame
    // is left of it.
    DriftSource(std::unique_ptr<NativeSource> source, double driftPpm);
    bool failed() const override { return source_->failed(); }

private:
    std::size_t decode(float* out, std::size_t frames) override;
    void reposition(std::int64_t frame) override { next_ = frame; }
    void fill(std::int64_t begin);
    void sum(double place, float* out) const;
    // The kernel's weights around a place that lies `phase` steps behind a frame.
    const float* weights(std::size_t phase) const { return &weights_[phase * taps_]; }

    const std::unique_ptr<NativeSource> source_;
    const double ratio_;                      // frames of the source that last as long as one
    const double cutoff_;                     // as a share of the source's half rate
    const std::int64_t reach_;                // frames of the source to each side that are heard in one
    const std::size_t taps_;                  // all of them, and weights of 0 to fill up
    std::vector<float> weights_;              // by phase
    std::int64_t next_ = 0;                   // to be decoded
    std::array<std::vector<float>, 2> kept_;  // sides of the source's frames
    std::int64_t keptFrom_ = 0;               // the first of them
    std::vector<float> read_;
};

}  // namespace melvane::decode
