// A playback channel on the card: a source of frames with its place in it and its level.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/bass/decode/pcm_source.h"
#include "platform/bass/graph/level.h"

namespace melvane::bass {

class Channel {
public:
    Channel(std::shared_ptr<decode::PcmSource> source, bool loop);

    // --- any thread; what they ask for holds from the next block that is mixed on ---
    // Plays on; from the start when `restart` is true or the end was reached.
    void play(bool restart);
    void stop() { playing_ = false; }
    bool playing() const { return playing_; }
    std::int64_t length() const { return length_; }
    std::int64_t position() const;
    // False when `frame` lies outside 0..length.
    bool seek(std::int64_t frame);
    void setLevel(StereoGain gain) { level_.set(gain); }

    // --- mixing thread ---
    // Adds up to `frames` frames to `out`. Fewer only when the channel ended, which stops it.
    std::size_t mixInto(float* out, std::size_t frames);

private:
    std::size_t readLooping(float* out, std::size_t frames);

    static constexpr std::int64_t kNoSeek = -1;

    const std::shared_ptr<decode::PcmSource> source_;
    const std::int64_t length_;
    const bool loop_;
    std::atomic<bool> playing_{false};
    std::atomic<std::int64_t> position_{0};
    std::atomic<std::int64_t> wantedSeek_{kNoSeek};
    Level level_;
    std::vector<float> block_;
};

}  // namespace melvane::bass
