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

class Card {
public:
    // --- user-interface thread; each takes the lock for a moment ---
    // Plays a channel on, or anew when `restart` is true.
    void play(const std::shared_ptr<Channel>& channel, bool restart);
    void remove(const std::shared_ptr<Channel>& channel);
    void listen(std::shared_ptr<CardListener> listener);
    void unlisten(const std::shared_ptr<CardListener>& listener);
    void hold(bool held);
    // Holds the card behind the last frame of `channel`.
    void holdAtEndOf(std::shared_ptr<Channel> channel);
    // Every channel goes to the song's frame `frame`.
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
    // Returns when wake() or another call above may have changed something.
    void waitForChange();

    // Any thread: the song's frame that is handed out next.
    std::int64_t songFrame() const { return handedOut_ - songBegin_; }
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
    };

    bool activeLocked() const;
    template <typename Change>
    void change(Change change);
    void startAfresh();
    std::size_t mixChannels(float* out, std::size_t frames, const Playing& playing);
    std::size_t limit(float* out, std::size_t frames, const Playing& playing);

    std::mutex mutex_;
    std::condition_variable change_;
    std::uint64_t changes_ = 0;
    std::uint64_t changesSeen_ = 0;
    Channels channels_;
    std::vector<std::shared_ptr<CardListener>> listeners_;
    std::shared_ptr<Channel> holdAtEndOf_;
    bool held_ = false;
    std::int64_t loopBegin_ = 0;
    std::int64_t loopEnd_ = 0;
    std::atomic<std::int64_t> songBegin_{0};  // the song's first frame, counted as handedOut_
    bool afresh_ = true;                      // nothing played before: the next frame mixed is the first to come out

    // Mixing thread only. The limiter is late, so the card mixes ahead of what it hands out.
    Limiter limiter_;
    PeakMeter peaks_;
    PeakMeter reduction_;  // on both sides the same
    std::vector<float> ahead_;
    std::int64_t limiterFed_ = 0;              // frames given to the limiter,
    std::int64_t mixed_ = 0;                   // how many of them were sound,
    std::atomic<std::int64_t> handedOut_{0};   // and how many have come out
    std::atomic<std::int64_t> drainUntil_{0};  // the end of the last channel that ended by itself
    bool ended_ = false;
    std::atomic<std::uint64_t> framesMixed_{0};
};

}  // namespace melvane::engine
