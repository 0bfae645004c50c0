// The sound card: mixes all playing channels, frame by frame, and hands the mix to the captures that listen
// to it. Who asks for frames, and when, is not its business; the samples never depend on it.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "engine/graph/channel.h"
#include "engine/graph/limiter.h"
#include "engine/graph/peak_meter.h"

namespace melvane::engine {

// Takes the card's mix. push() is called on the mixing thread with every block, in order.
class CardListener {
public:
    virtual ~CardListener() = default;
    virtual void push(const float* mix, std::size_t frames) = 0;
    // True while the listener has more waiting than it can take at leisure.
    virtual bool congested() const = 0;
};

// Sees what is mixed before it is limited, on the mixing thread, in order.
class MixTap {
public:
    virtual ~MixTap() = default;
    // The sum of all channels, and what one of them has added to it (nullptr: nobody asked).
    virtual void take(const float* sum, const float* channel, std::size_t frames) = 0;
};

class Card {
public:
    // --- user-interface thread; each takes the lock for a moment ---
    // Plays a channel on, or anew when `restart` is true.
    void play(const std::shared_ptr<Channel>& channel, bool restart);
    void remove(const std::shared_ptr<Channel>& channel);
    void listen(std::shared_ptr<CardListener> listener);
    void unlisten(const std::shared_ptr<CardListener>& listener);
    // Lets `tap` see what is mixed, as long as it lives, with what `channel` (may be null) adds to it.
    void tap(const std::shared_ptr<MixTap>& tap, const std::shared_ptr<Channel>& channel);
    void hold(bool held);
    // Holds the card behind the last frame of `channel`.
    void holdAtEndOf(std::shared_ptr<Channel> channel);
    // Everything goes to the song's frame `frame`, those that have ended too. What sounds fades over within 5 ms.
    void cue(std::int64_t frame);
    // While `end` > `begin`, `begin` comes behind the frame `end` - 1.
    void loop(std::int64_t begin, std::int64_t end);
    // Wakes the mixing thread to look again at what plays.
    void wake();

    // --- mixing thread ---
    // Mixes up to `frames` frames into `out`; 0 while held or idle, fewer at the end that the card holds at.
    std::size_t mix(float* out, std::size_t frames);
    // Something plays or listens, held or not.
    bool active();
    // True while active() and not held.
    bool running();
    bool congested();
    // The next block may take long: the graph has a way to go unheard.
    bool cued() const { return wantedCue_ != kNoCue; }
    // Returns when wake() or another call above may have changed something.
    void waitForChange();

    // Any thread: the song's frame that is handed out next, also while the card is on its way there.
    std::int64_t songFrame() const { return songFrame_; }
    std::uint64_t framesMixed() const { return framesMixed_; }
    // Any thread: of the channels' sum, before the limiter, since this was asked last.
    PeakLevels takePeaks() { return peaks_.take(); }
    // Any thread: the most that the limiter has taken away since this was asked last, 0..1.
    float takeReduction() { return reduction_.take().left; }

private:
    using Channels = std::vector<std::shared_ptr<Channel>>;

    // What one block is mixed from.
    struct Playing {
        Channels channels;
        std::shared_ptr<Channel> last;  // the channel that ends the mix
        std::int64_t loopBegin = 0;
        std::int64_t loopEnd = 0;
        std::shared_ptr<MixTap> tap;
        std::shared_ptr<Channel> tapped;
    };

    static constexpr std::int64_t kNoCue = -1;
    // In frames.
    static constexpr std::int64_t kRoll = 66150;          // 1.5 s, by which the limiter has forgotten
    static constexpr std::int64_t kEffectsRoll = 352800;  // 8 s
    static constexpr std::int64_t kBridge = 220;          // 5 ms
    static constexpr std::int64_t kPiece = 4096;          // rolled before it is asked whether another place is wanted

    bool activeLocked() const;
    template <typename Change>
    void change(Change change);
    void startAfresh();
    void finishBlock(const Playing& playing);
    // Up to `frames` of what comes next; fewer at the song's end and where a loop goes back.
    std::size_t produce(float* out, std::size_t frames, const Playing& playing);
    bool atLoopEnd(const Playing& playing) const;
    void goTo(std::int64_t frame, bool cut, const Playing& playing);
    bool roll(std::int64_t frame, const Playing& playing);
    bool rollChannel(Channel& channel, std::int64_t begin, std::int64_t heard);
    bool rollCard(std::int64_t end, const Playing& playing);
    void buildBridge(const std::vector<float>& tail, std::size_t before, const Playing& playing);
    std::size_t mixChannels(float* out, std::size_t frames, const Playing& playing);
    std::size_t mixChannel(Channel& channel, float* out, std::size_t frames, const Playing& playing);
    std::size_t limit(float* out, std::size_t frames, const Playing& playing);

    std::mutex mutex_;
    std::condition_variable change_;
    std::uint64_t changes_ = 0;
    std::uint64_t changesSeen_ = 0;
    Channels channels_;
    std::vector<std::shared_ptr<CardListener>> listeners_;
    std::shared_ptr<Channel> holdAtEndOf_;
    bool held_ = false;
    bool afresh_ = true;  // nothing played before: the next frame mixed is the first to come out
    bool cut_ = true;     // what was handed out last has been heard to its end
    std::int64_t loopBegin_ = 0;
    std::int64_t loopEnd_ = 0;
    std::weak_ptr<MixTap> tap_;
    std::weak_ptr<Channel> tapped_;
    std::atomic<std::int64_t> wantedCue_{kNoCue};
    std::atomic<std::int64_t> songFrame_{0};

    // Mixing thread only. The limiter is late, so the card mixes ahead of what it hands out.
    Limiter limiter_;
    PeakMeter peaks_;
    PeakMeter reduction_;  // on both sides the same
    std::vector<float> ahead_;
    std::vector<float> apart_;                 // what the tapped channel adds
    std::int64_t limiterFed_ = 0;              // frames given to the limiter,
    std::int64_t mixed_ = 0;                   // how many of them were sound,
    std::atomic<std::int64_t> handedOut_{0};   // and how many have come out
    std::atomic<std::int64_t> drainUntil_{0};  // the end of the last channel that ended by itself
    std::int64_t songBegin_ = 0;               // the song's first frame, counted like these
    bool ended_ = false;
    bool rolling_ = false;              // what is mixed is not heard
    std::int64_t rollingFor_ = kNoCue;  // the cue that asked for it
    std::vector<float> rolled_;         // a piece of it
    std::vector<float> bridge_;         // from one place in the song to another, to be handed out first
    std::size_t bridgeAt_ = 0;
    std::atomic<std::uint64_t> framesMixed_{0};
};

}  // namespace melvane::engine
