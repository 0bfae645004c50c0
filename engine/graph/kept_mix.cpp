#include "engine/graph/kept_mix.h"

#include <algorithm>
#include <utility>

namespace melvane::engine {

namespace {

class KeptReader : public PcmSource {
public:
    KeptReader(std::shared_ptr<const decode::NamelessFile> file, std::size_t samples, std::int64_t frames, float rest,
               float channel)
        : file_(std::move(file)), samples_(samples), frames_(frames), rest_(rest), channel_(channel) {}

    std::int64_t frames() const override { return frames_; }
    void seek(std::int64_t frame) override { at_ = std::clamp<std::int64_t>(frame, 0, frames_); }
    bool failed() const override { return failed_; }
    std::size_t read(float* out, std::size_t frames) override;

private:
    const std::shared_ptr<const decode::NamelessFile> file_;
    const std::size_t samples_;  // of a frame
    const std::int64_t frames_;
    const float rest_;
    const float channel_;
    std::int64_t at_ = 0;
    bool failed_ = false;
    std::vector<float> kept_;
};

std::size_t KeptReader::read(float* out, std::size_t frames) {
    const std::size_t count = std::min(frames, static_cast<std::size_t>(frames_ - at_));
    const std::size_t frameBytes = samples_ * sizeof(float);
    kept_.resize(count * samples_);
    const std::ptrdiff_t got =
        file_->readAt(at_ * static_cast<std::int64_t>(frameBytes), kept_.data(), count * frameBytes);
    failed_ = failed_ || std::cmp_not_equal(got, count * frameBytes);
    if (failed_) return 0;
    for (std::size_t i = 0; i < count; ++i)
        for (std::size_t side = 0; side < 2; ++side) {
            const float* const sample = &kept_[i * samples_ + side];
            out[2 * i + side] = samples_ == 2 ? *sample * rest_ : *sample * rest_ + sample[2] * channel_;
        }
    at_ += static_cast<std::int64_t>(count);
    return count;
}

}  // namespace

void KeptMixFile::take(const float* sum, const float* channel, std::size_t frames) {
    if (failure_ != 0) return;
    block_.assign(frames * samples_, 0.0F);
    for (std::size_t i = 0; i < frames; ++i)
        for (std::size_t side = 0; side < 2; ++side) {
            float* const kept = &block_[i * samples_ + side];
            kept[0] = sum[2 * i + side];
            if (samples_ == 2 || !channel) continue;
            kept[0] -= channel[2 * i + side];
            kept[2] = channel[2 * i + side];
        }
    failure_ = file_->append(block_.data(), block_.size() * sizeof(float));
    if (failure_ == 0) frames_ += static_cast<std::int64_t>(frames);
}

std::unique_ptr<PcmSource> KeptMixFile::read(float rest, float channel) const {
    return std::make_unique<KeptReader>(file_, samples_, frames_, rest, channel);
}

}  // namespace melvane::engine
