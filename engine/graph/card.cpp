#include "engine/graph/card.h"

#include <algorithm>
#include <functional>

#include "engine/graph/denormals.h"

namespace melvane::engine {

template <typename Change>
void Card::change(Change change) {
    const std::lock_guard lock(mutex_);
    change();
    ++changes_;
    change_.notify_all();
}

void Card::play(const std::shared_ptr<Channel>& channel, bool restart) {
    change([&] {
        if (!activeLocked()) {
            afresh_ = cut_ = true;
            songFrame_ = 0;
        }
        if (std::ranges::find(channels_, channel) == channels_.end()) channels_.push_back(channel);
        channel->play(restart);
    });
}

void Card::remove(const std::shared_ptr<Channel>& channel) {
    change([&] {
        std::erase(channels_, channel);
        if (holdAtEndOf_ != channel) return;
        holdAtEndOf_.reset();
        afresh_ = cut_ = true;  // its end, if it came already, is no end for what plays next
    });
}

void Card::listen(std::shared_ptr<CardListener> listener) {
    change([&] { listeners_.push_back(std::move(listener)); });
}

void Card::unlisten(const std::shared_ptr<CardListener>& listener) {
    change([&] { std::erase(listeners_, listener); });
}

void Card::tap(const std::shared_ptr<MixTap>& tap, const std::shared_ptr<Channel>& channel) {
    change([&] {
        tap_ = tap;
        tapped_ = channel;
    });
}

void Card::hold(bool held) {
    change([&] {
        held_ = held;
        cut_ |= held;
    });
}

void Card::holdAtEndOf(std::shared_ptr<Channel> channel) {
    change([&] { holdAtEndOf_ = std::move(channel); });
}

void Card::cue(std::int64_t frame) {
    change([&] {
        if (channels_.empty()) return;
        const std::int64_t place = holdAtEndOf_ ? std::min(frame, holdAtEndOf_->end()) : frame;
        wantedCue_ = place;
        songFrame_ = place;
    });
}

void Card::loop(std::int64_t begin, std::int64_t end) {
    change([&] {
        loopBegin_ = begin;
        loopEnd_ = end;
    });
}

void Card::wake() {
    change([] {});
}

std::size_t Card::mix(float* out, std::size_t frames) {
    const DenormalsOff denormalsOff;
    Playing playing;
    std::vector<std::shared_ptr<CardListener>> listeners;
    bool cut = false;
    {
        const std::lock_guard lock(mutex_);
        if (held_ || !activeLocked()) return 0;
        playing = {channels_, holdAtEndOf_, loopBegin_, loopEnd_, tap_.lock(), tapped_.lock()};
        cut = cut_;
        listeners = listeners_;
        if (afresh_) startAfresh();
    }
    if (cued()) goTo(wantedCue_, cut, playing);
    std::size_t done = 0;
    while (done < frames) {
        const std::size_t got = produce(out + done * 2, frames - done, playing);
        done += got;
        if (atLoopEnd(playing))
            goTo(playing.loopBegin, false, playing);
        else if (got == 0 && ended_)
            break;
    }
    for (const auto& listener : listeners) listener->push(out, done);
    framesMixed_ += done;
    finishBlock(playing);
    return done;
}

// Only when the listeners have it: who sees the end may end the capture at once.
void Card::finishBlock(const Playing& playing) {
    const std::lock_guard lock(mutex_);
    cut_ = held_;
    if (cued()) return;
    for (const auto& channel : playing.channels) channel->publishPosition(handedOut_);
    songFrame_ = handedOut_ - songBegin_;
    if (ended_ && mixed_ == handedOut_ && bridgeAt_ == bridge_.size()) held_ = afresh_ = cut_ = true;
}

// What is still inside is forgotten: the next frame mixed is the next to come out.
void Card::startAfresh() {
    afresh_ = false;
    limiter_.reset();
    limiterFed_ = mixed_ = handedOut_;
    songBegin_ = handedOut_;
    drainUntil_ = 0;
    ended_ = false;
    bridge_.clear();
    bridgeAt_ = 0;
}

std::size_t Card::produce(float* out, std::size_t frames, const Playing& playing) {
    if (const std::size_t bridged = std::min(frames, (bridge_.size() - bridgeAt_) / 2); bridged > 0) {
        std::copy_n(&bridge_[bridgeAt_], bridged * 2, out);
        bridgeAt_ += bridged * 2;
        return bridged;
    }
    const std::int64_t toLoopEnd = playing.loopEnd - (handedOut_ - songBegin_);
    if (playing.loopEnd > playing.loopBegin && toLoopEnd > 0)
        frames = std::min(frames, static_cast<std::size_t>(toLoopEnd));
    return limit(out, frames, playing);
}

// A song that ends within the loop goes back, too.
bool Card::atLoopEnd(const Playing& playing) const {
    const std::int64_t at = handedOut_ - songBegin_;
    if (playing.loopEnd <= playing.loopBegin || bridgeAt_ < bridge_.size()) return false;
    return at == playing.loopEnd || (ended_ && mixed_ == handedOut_ && at > playing.loopBegin && at < playing.loopEnd);
}

// From the song's frame `frame` on everything is as in a run from the beginning. Until then what would have come
// instead fades out, but where that was `cut` off long ago, while what lies before the frame fades in.
void Card::goTo(std::int64_t frame, bool cut, const Playing& playing) {
    std::vector<float> tail;
    if (!cut) {
        Playing straight = playing;
        straight.loopEnd = 0;
        tail.resize(kBridge * 2);
        for (std::size_t done = 0, got = 1; done < kBridge && got > 0; done += got)
            got = produce(&tail[done * 2], kBridge - done, straight);
    }
    const std::int64_t unasked = frame;
    do {
        rollingFor_ = wantedCue_;
        frame = rollingFor_ == kNoCue ? unasked : rollingFor_;
    } while (!roll(frame, playing));
    buildBridge(tail, static_cast<std::size_t>(std::min<std::int64_t>(frame, kBridge)), playing);
    std::int64_t reached = rollingFor_;
    wantedCue_.compare_exchange_strong(reached, kNoCue);
}

// Brings the graph to just before the song's frame `frame`. False when another place is wanted meanwhile.
bool Card::roll(std::int64_t frame, const Playing& playing) {
    rolling_ = true;
    const std::int64_t begin = std::max<std::int64_t>(frame - kRoll, 0);
    bool arrives = true;
    for (const auto& channel : playing.channels) arrives = arrives && rollChannel(*channel, begin, frame);
    startAfresh();
    songBegin_ = handedOut_ - begin;
    arrives = arrives && rollCard(std::max<std::int64_t>(frame - kBridge, 0), playing);
    rolling_ = false;
    return arrives;
}

// Brings one channel to the frame `begin`, from where the card mixes it.
bool Card::rollChannel(Channel& channel, std::int64_t begin, std::int64_t heard) {
    std::int64_t at = channel.lasts() ? std::max<std::int64_t>(heard - kEffectsRoll, 0) : begin;
    channel.roll(at, heard);
    for (; at < begin && channel.playing(); at += kPiece) {
        if (wantedCue_ != rollingFor_) return false;
        rolled_.assign(kPiece * 2, 0.0F);
        channel.mixInto(rolled_.data(), static_cast<std::size_t>(std::min(kPiece, begin - at)), 0, false);
    }
    return true;
}

bool Card::rollCard(std::int64_t end, const Playing& playing) {
    rolled_.resize(kPiece * 2);
    for (std::int64_t left = 0; (left = end - (handedOut_ - songBegin_)) > 0;) {
        if (wantedCue_ != rollingFor_) return false;
        if (limit(rolled_.data(), static_cast<std::size_t>(std::min(kPiece, left)), playing) == 0 && ended_) break;
    }
    return true;
}

// What is handed out before the place is reached: `tail`, if any, and the last `before` frames of the way there.
void Card::buildBridge(const std::vector<float>& tail, std::size_t before, const Playing& playing) {
    bridge_.assign(tail.empty() ? before * 2 : tail.size(), 0.0F);
    const std::size_t frames = bridge_.size() / 2;
    float* const in = bridge_.data() + (frames - before) * 2;
    for (std::size_t done = 0, got = 1; done < before && got > 0; done += got)
        got = limit(in + done * 2, before - done, playing);
    for (std::size_t i = 0; i < before * 2; ++i)
        in[i] *= (static_cast<float>(i / 2) + 0.5F) / static_cast<float>(before);
    for (std::size_t i = 0; i < tail.size(); ++i)
        bridge_[i] += tail[i] * (1 - (static_cast<float>(i / 2) + 0.5F) / static_cast<float>(frames));
}

// Feeds the limiter with as much as brings out `frames` frames, and hands out those; fewer at the end.
std::size_t Card::limit(float* out, std::size_t frames, const Playing& playing) {
    constexpr auto kDelay = static_cast<std::int64_t>(Limiter::kDelay);
    const std::int64_t missing = handedOut_ + static_cast<std::int64_t>(frames) + kDelay - limiterFed_;
    if (missing <= 0) return 0;  // behind the end
    const auto needed = static_cast<std::size_t>(missing);
    ahead_.assign(needed * 2, 0.0F);
    if (!ended_) {
        const std::size_t got = mixChannels(ahead_.data(), needed, playing);
        if (!rolling_) peaks_.raise(peakOf(ahead_.data(), got));
        if (!rolling_ && playing.tap) playing.tap->take(ahead_.data(), playing.tapped ? apart_.data() : nullptr, got);
        mixed_ += static_cast<std::int64_t>(got);
        ended_ = got < needed;
    }
    const float taken = limiter_.process(ahead_.data(), needed);
    if (!rolling_) reduction_.raise({taken, taken});
    const std::int64_t first = limiterFed_ - kDelay;
    limiterFed_ += static_cast<std::int64_t>(needed);
    const std::int64_t behind = std::min(limiterFed_ - kDelay, mixed_);
    const auto count = static_cast<std::size_t>(std::max<std::int64_t>(behind - handedOut_, 0));
    std::copy_n(ahead_.begin() + (handedOut_ - first) * 2, count * 2, out);
    handedOut_ += static_cast<std::int64_t>(count);
    return count;
}

// Adds up the channels; fewer frames only when the channel that ends the mix ended.
std::size_t Card::mixChannels(float* out, std::size_t frames, const Playing& playing) {
    // It goes first: it tells how long this block may be.
    const bool ends = playing.last && playing.last->playing();
    if (playing.tapped) apart_.assign(frames * 2, 0.0F);
    if (ends) {
        const auto left = static_cast<std::uint64_t>(playing.last->framesLeft());
        frames =
            mixChannel(*playing.last, out, static_cast<std::size_t>(std::min<std::uint64_t>(frames, left)), playing);
    }
    for (const auto& channel : playing.channels) {
        if (!channel->playing() || (ends && channel == playing.last)) continue;
        const std::size_t got = mixChannel(*channel, out, frames, playing);
        if (got < frames) drainUntil_ = std::max<std::int64_t>(drainUntil_, mixed_ + static_cast<std::int64_t>(got));
    }
    return frames;
}

std::size_t Card::mixChannel(Channel& channel, float* out, std::size_t frames, const Playing& playing) {
    if (playing.tapped.get() != &channel) return channel.mixInto(out, frames, mixed_, !rolling_);
    const std::size_t got = channel.mixInto(apart_.data(), frames, mixed_, !rolling_);
    std::transform(out, out + got * 2, apart_.begin(), out, std::plus());
    return got;
}

bool Card::activeLocked() const {
    return !listeners_.empty() || drainUntil_ > handedOut_ || cued() ||
           std::ranges::any_of(channels_, [](const auto& c) { return c->playing(); });
}

bool Card::active() {
    const std::lock_guard lock(mutex_);
    return activeLocked();
}

bool Card::running() {
    const std::lock_guard lock(mutex_);
    return !held_ && activeLocked();
}

bool Card::congested() {
    const std::lock_guard lock(mutex_);
    return std::ranges::any_of(listeners_, [](const auto& l) { return l->congested(); });
}

void Card::waitForChange() {
    std::unique_lock lock(mutex_);
    change_.wait(lock, [this] { return changes_ != changesSeen_; });
    changesSeen_ = changes_;
}

}  // namespace melvane::engine
