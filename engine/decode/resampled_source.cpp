#include "engine/decode/resampled_source.h"

#include <algorithm>
#include <array>
#include <new>
#include <numeric>
#include <utility>

#include "engine/decode/drift_source.h"
#include "platform/audio_library.h"

namespace melvane::decode {
namespace {

constexpr std::size_t kInputBlock = 1024;
// Half the length of the filter, in frames of the lower rate, with room to spare.
constexpr std::int64_t kFilterReach = 1024;

}  // namespace

std::unique_ptr<PcmSource> atCardRate(std::unique_ptr<NativeSource> source, double driftPpm) {
    if (driftPpm != 0) return std::make_unique<DriftSource>(std::move(source), driftPpm);
    if (source->rate() == kSampleRate) return source;
    return std::make_unique<ResampledSource>(std::move(source));
}

ResampledSource::ResampledSource(std::unique_ptr<NativeSource> source)
    : source_(std::move(source)), input_(2 * kInputBlock) {
    const int common = std::gcd(source_->rate(), kSampleRate);
    inputStep_ = source_->rate() / common;
    outputStep_ = kSampleRate / common;
    warmUp_ = kFilterReach * std::max(source_->rate(), kSampleRate) / source_->rate();
    const std::int64_t rest = source_->frames() % inputStep_;
    setFormat(kSampleRate,
              source_->frames() / inputStep_ * outputStep_ + (rest * outputStep_ + inputStep_ / 2) / inputStep_);
    restart(0);
}

void ResampledSource::reposition(std::int64_t frame) {
    const std::int64_t steps = std::max<std::int64_t>(frame - warmUp_, 0) / outputStep_;
    restart(steps * inputStep_);
    std::array<float, 2 * kInputBlock> discarded;
    for (auto left = static_cast<std::size_t>(frame - steps * outputStep_); left > 0;) {
        const std::size_t got = decode(discarded.data(), std::min(left, kInputBlock));
        if (got == 0) break;
        left -= got;
    }
}

void ResampledSource::restart(std::int64_t inputFrame) {
    // Computes in double and with an exact clock, so that what follows a restart is the same to the last bits;
    // half a millisecond for a second of sound.
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_VHQ, SOXR_HI_PREC_CLOCK);
    resampler_.reset(soxr_create(source_->rate(), kSampleRate, 2, nullptr, nullptr, &quality, nullptr));
    if (!resampler_) throw std::bad_alloc();
    source_->seek(inputFrame);
    inputFrames_ = inputTaken_ = 0;
}

std::size_t ResampledSource::decode(float* out, std::size_t frames) {
    std::size_t got = 0;
    bool ended = false;
    while (got == 0 && !ended) {
        if (inputTaken_ == inputFrames_) {
            inputFrames_ = source_->read(input_.data(), kInputBlock);
            inputTaken_ = 0;
        }
        ended = inputFrames_ == 0;
        std::size_t taken = 0;
        soxr_process(resampler_.get(), ended ? nullptr : input_.data() + 2 * inputTaken_, inputFrames_ - inputTaken_,
                     &taken, out, frames, &got);
        inputTaken_ += taken;
    }
    return got;
}

}  // namespace melvane::decode
