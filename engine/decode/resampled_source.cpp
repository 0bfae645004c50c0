#include "engine/decode/resampled_source.h"

#include <algorithm>
#include <array>
#include <new>
#include <numeric>
#include <utility>

#include "platform/audio_library.h"

namespace melvane::decode {
namespace {

constexpr std::size_t kInputBlock = 1024;
// Half the length of the filter, in frames of the lower rate, with room to spare.
constexpr std::int64_t kFilterReach = 1024;

}  // namespace

std::unique_ptr<PcmSource> atCardRate(std::unique_ptr<NativeSource> source) {
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
    frames_ = source_->frames() / inputStep_ * outputStep_ + (rest * outputStep_ + inputStep_ / 2) / inputStep_;
    restart(0);
}

std::size_t ResampledSource::read(float* out, std::size_t frames) {
    const auto left = static_cast<std::uint64_t>(frames_ - position_);
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(frames, left));
    std::size_t done = 0;
    while (done < wanted) {
        const std::size_t got = resample(out + 2 * done, wanted - done);
        if (got == 0) break;
        done += got;
    }
    std::fill(out + 2 * done, out + 2 * wanted, 0.0F);
    position_ += static_cast<std::int64_t>(wanted);
    return wanted;
}

void ResampledSource::seek(std::int64_t frame) {
    frame = std::clamp<std::int64_t>(frame, 0, frames_);
    if (frame == position_) return;
    const std::int64_t steps = std::max<std::int64_t>(frame - warmUp_, 0) / outputStep_;
    restart(steps * inputStep_);
    position_ = steps * outputStep_;
    std::array<float, 2 * kInputBlock> discarded;
    while (position_ < frame) {
        const auto left = static_cast<std::uint64_t>(frame - position_);
        read(discarded.data(), static_cast<std::size_t>(std::min<std::uint64_t>(left, kInputBlock)));
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

std::size_t ResampledSource::resample(float* out, std::size_t frames) {
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
