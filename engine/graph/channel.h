// A playback channel on the card: a source of frames with its place in it, its effects and its level.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "engine/effects/effect.h"
#include "engine/graph/level.h"
#include "engine/graph/peak_meter.h"
#include "platform/pcm_source.h"

namespace melvane::engine {

class Channel {
public:
    Channel(std::shared_ptr<PcmSource> source, bool loop);

    // --- any thread; what they ask for holds from the next block that is mixed on ---
    // Plays on; from the start when `restart` is true or the end was reached.
    void play(bool restart);
    void stop() { playing_ = false; }
    bool playing() const { return playing_; }
    // Its source has failed.
    bool failed() const { return failed_; }
    PcmSource& source() { return *source_; }
    std::int64_t length() const { return length_; }
    // What was mixed and has left the card.
    std::int64_t position() const;
    // False when `frame` lies outside 0..length.
    bool seek(std::int64_t frame);
    // Plays `frames` ahead of its own time (behind it where negative; silence before its start).
    void setOffset(std::int64_t frames) { wantedOffset_ = frames; }
    void setLevel(VolumeAndPan level) { level_.set(level); }
    VolumeAndPan level() const { return level_.get(); }
    // Of what it added to the card since this was asked last.
    PeakLevels takePeaks() { return peaks_.take(); }
    // Higher priorities sound first, equal ones in the order of adding.
    void addEffect(std::shared_ptr<Effect> effect, int priority);

    // --- mixing thread ---
    // Adds up to `frames` frames to `out`, whose first one is the card's frame `cardFrame`. Fewer only when the
    // channel ended, which stops it.
    std::size_t mixInto(float* out, std::size_t frames, std::int64_t cardFrame);
    // Tells position() that the card has handed out its frames up to `cardFrame`.
    void publishPosition(std::int64_t cardFrame);

private:
    struct PlacedEffect {
        std::shared_ptr<Effect> effect;
        int priority;
    };

    void takeSeek();
    void takeOffset();
    // Reads on from where the channel is; fewer frames only at the end.
    std::size_t readAlong(float* out, std::size_t frames);
    // Reads what lies at `place` of the channel's own time line; fewer frames only at the end.
    std::size_t readAt(std::int64_t place, float* out, std::size_t frames);
    void fadeOver(float* block, std::size_t frames);
    void applyEffects(std::size_t frames);

    static constexpr std::int64_t kNoSeek = -1;
    static constexpr int kFadeFrames = 882;  // 20 ms

    const std::shared_ptr<PcmSource> source_;
    const std::int64_t length_;
    const bool loop_;
    std::atomic<bool> playing_{false};
    std::atomic<bool> ended_{false};
    std::atomic<bool> failed_{false};
    std::atomic<std::int64_t> position_{0};
    std::atomic<std::int64_t> wantedSeek_{kNoSeek};
    std::atomic<std::int64_t> wantedOffset_{0};
    Level level_;
    PeakMeter peaks_;
    std::mutex effectsMutex_;
    std::vector<PlacedEffect> effects_;

    // Mixing thread only.
    std::int64_t time_ = 0;  // frames since the start; with offset_ the place in the source
    std::int64_t offset_ = 0;
    std::int64_t sourceAt_ = 0;         // where the source stands
    std::int64_t cardFrameBehind_ = 0;  // the card's frame behind the last one that was mixed
    bool sounded_ = false;
    std::vector<float> block_;
    std::vector<float> fade_;  // what plays on at the old offset
    int fadeLeft_ = 0;
};

}  // namespace melvane::engine
