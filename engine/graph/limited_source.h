// A sound through the card's limiter, beside the card.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "engine/graph/limiter.h"
#include "platform/audio_library.h"

namespace melvane::engine {

class LimitedSource : public LimitedSound {
public:
    explicit LimitedSource(std::unique_ptr<PcmSource> source) : source_(std::move(source)) {}

    std::int64_t frames() const override { return source_->frames(); }
    std::size_t read(float* out, std::size_t frames) override;
    void seek(std::int64_t frame) override;
    bool failed() const override { return source_->failed(); }
    float takeReduction() override { return std::exchange(reduction_, 0.0F); }

private:
    const std::unique_ptr<PcmSource> source_;
    Limiter limiter_;
    std::vector<float> block_;
    std::size_t early_ = Limiter::kDelay;  // frames that come out before the first one
    std::int64_t inside_ = 0;              // frames of the source that have not come out
    float reduction_ = 0;
};

}  // namespace melvane::engine
