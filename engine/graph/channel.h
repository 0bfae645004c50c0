// A playback channel on the card: a source of frames with its place in it, its effects and its level.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "base/gain_ramp.h"
#include "engine/effects/effect.h"
#include "engine/graph/level.h"
#include "engine/graph/peak_meter.h"
#include "platform/pcm_source.h"

namespace melvane::engine {

// Where a channel lies on the song's time.
struct Place {
    std::int32_t earlier = 0;  // frames by which it begins before the song
    bool once = false;         // it is silent around its sound, and never loops
    bool operator==(const Place&) const = default;
};

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
    // The song's frame behind its last one, as it is placed; how often it loops is not counted.
    std::int64_t end() const { return length_ - wantedPlace_.load().earlier; }
    // What was mixed and has left the card.
    std::int64_t position() const;
    // False when `frame` lies outside 0..length.
    bool seek(std::int64_t frame);
    void place(Place place) { wantedPlace_ = place; }
    // A linear gain, before the effects.
    void trim(float gain) { wantedTrim_ = gain; }
    void setLevel(VolumeAndPan level) { level_.set(level); }
    VolumeAndPan level() const { return level_.get(); }
    // Of what it added to the card since this was asked last.
    PeakLevels takePeaks() { return peaks_.take(); }
    // Higher priorities sound first, equal ones in the order of adding.
    void addEffect(std::shared_ptr<Effect> effect, int priority);

    // --- mixing thread ---
    // Adds up to `frames` frames to `out`, whose first one is the card's frame `cardFrame`. Fewer only when the channel
    // ended, which stops it. One that sounds once does not end: it may still be placed elsewhere.
    std::size_t mixInto(float* out, std::size_t frames, std::int64_t cardFrame, bool heard = true);
    // Goes to the song's frame `frame`, one that has ended too, to be mixed unheard up to the frame `heard`.
    void roll(std::int64_t frame, std::int64_t heard);
    // What is to come of one that sounds once; no end is known of others before it comes.
    std::int64_t framesLeft() const;
    // Its effects sound on for longer than a second.
    bool lasts();
    // Tells position() that the card has handed out its frames up to `cardFrame`.
    void publishPosition(std::int64_t cardFrame);

private:
    struct PlacedEffect {
        std::shared_ptr<Effect> effect;
        int priority;
    };

    void takeSeek();
    void takePlace();
    // Reads on from where the channel is; fewer frames only at the end.
    std::size_t readAlong(float* out, std::size_t frames);
    // Reads what lies at `at` of the channel's own time line; fewer frames only at the end.
    std::size_t readAt(std::int64_t at, float* out, std::size_t frames);
    // Where the source is for `at`.
    std::int64_t inside(std::int64_t at) const;
    void fadeEnds(std::int64_t at, float* block, std::size_t frames) const;
    void fadeOver(float* block, std::size_t frames);
    void applyTrim(std::size_t frames);
    void applyEffects(std::size_t frames);

    static constexpr std::int64_t kNoSeek = -1;
    static constexpr int kFadeFrames = 882;          // 20 ms
    static constexpr std::int64_t kEndFrames = 220;  // 5 ms

    const std::shared_ptr<PcmSource> source_;
    const std::int64_t length_;
    const bool loop_;
    std::atomic<bool> playing_{false};
    std::atomic<bool> ended_{false};
    std::atomic<bool> failed_{false};
    std::atomic<std::int64_t> position_{0};
    std::atomic<std::int64_t> wantedSeek_{kNoSeek};
    std::atomic<Place> wantedPlace_{Place{}};
    std::atomic<float> wantedTrim_{1};
    Level level_;
    PeakMeter peaks_;
    std::mutex effectsMutex_;
    std::vector<PlacedEffect> effects_;

    // Mixing thread only.
    GainRamp trim_{kFadeFrames};
    std::int64_t time_ = 0;  // the song's frame
    Place place_;
    std::int64_t sourceAt_ = 0;         // where the source stands
    std::int64_t cardFrameBehind_ = 0;  // the card's frame behind the last one that was mixed
    bool sounded_ = false;
    std::vector<float> block_;
    std::vector<float> fade_;  // what plays on at the old place
    int fadeLeft_ = 0;
};

}  // namespace melvane::engine
