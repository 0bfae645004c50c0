// What the card has mixed, in a file without a name.
#pragma once

#include <atomic>
#include <memory>
#include <vector>

#include "engine/decode/nameless_file.h"
#include "engine/graph/card.h"
#include "platform/audio_library.h"

namespace melvane::engine {

class KeptMixFile : public KeptMix, public MixTap {
public:
    // `apart`: a channel is kept beside everything else. Throws std::system_error where there is no place for a file.
    explicit KeptMixFile(bool apart) : samples_(apart ? 4 : 2) {}

    std::int64_t frames() const override { return frames_; }
    int failure() const override { return failure_; }
    std::unique_ptr<PcmSource> read(float rest, float channel) const override;

    void take(const float* sum, const float* channel, std::size_t frames) override;

private:
    const std::size_t samples_;  // of a frame: of everything else, left and right, then of the channel
    const std::shared_ptr<decode::NamelessFile> file_ = std::make_shared<decode::NamelessFile>();
    std::atomic<std::int64_t> frames_{0};
    std::atomic<int> failure_{0};
    std::vector<float> block_;  // of the mixing thread
};

}  // namespace melvane::engine
