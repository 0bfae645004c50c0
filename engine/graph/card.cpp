#include "engine/graph/card.h"

#include <algorithm>

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
            afresh_ = true;
            songBegin_ = handedOut_.load();
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
        afresh_ = true;  // its end, if it came already, is no end for what plays next
    });
}

void Card::listen(std::shared_ptr<CardListener> listener) {
    change([&] { listeners_.push_back(std::move(listener)); });
}

void Card::unlisten(const std::shared_ptr<CardListener>& listener) {
    change([&] { std::erase(listeners_, listener); });
}

void Card::hold(bool held) {
    change([&] { held_ = held; });
}

void Card::holdAtEndOf(std::shared_ptr<Channel> channel) {
    change([&] { holdAtEndOf_ = std::move(channel); });
}

void Card::cue(std::int64_t frame) {
    change([&] {
        for (const auto& channel : channels_) channel->cue(frame);
        afresh_ = true;
        songBegin_ = handedOut_ - frame;
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
    {
        const std::lock_guard lock(mutex_);
        if (held_ || !activeLocked()) return 0;
        playing = {channels_, holdAtEndOf_};
        listeners = listeners_;
        if (afresh_) startAfresh();
    }
    std::size_t done = 0;
    while (done < frames) {
        const std::size_t got = limit(out + done * 2, frames - done, playing);
        done += got;
        if (got == 0 && ended_) break;
    }
    for (const auto& listener : listeners) listener->push(out, done);
    // Only now: who sees the end may end the capture at once.
    for (const auto& channel : playing.channels) channel->publishPosition(handedOut_);
    if (ended_ && mixed_ == handedOut_) {
        const std::lock_guard lock(mutex_);
        held_ = afresh_ = true;
        holdAtEndOf_.reset();
    }
    framesMixed_ += done;
    return done;
}

// What is still inside is forgotten: the next frame mixed is the next to come out.
void Card::startAfresh() {
    afresh_ = false;
    limiter_.reset();
    limiterFed_ = mixed_ = handedOut_;
    drainUntil_ = 0;
    ended_ = false;
}

// Feeds the limiter with as much as brings out `frames` frames, and hands out those; fewer at the end.
std::size_t Card::limit(float* out, std::size_t frames, const Playing& playing) {
    constexpr auto kDelay = static_cast<std::int64_t>(Limiter::kDelay);
    const auto needed = static_cast<std::size_t>(handedOut_ + static_cast<std::int64_t>(frames) + kDelay - limiterFed_);
    if (needed == 0) return 0;
    ahead_.assign(needed * 2, 0.0F);
    if (!ended_) {
        const std::size_t got = mixChannels(ahead_.data(), needed, playing);
        peaks_.raise(peakOf(ahead_.data(), got));
        mixed_ += static_cast<std::int64_t>(got);
        ended_ = got < needed;
    }
    const float taken = limiter_.process(ahead_.data(), needed);
    reduction_.raise({taken, taken});
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
    if (ends) frames = playing.last->mixInto(out, frames, mixed_);
    for (const auto& channel : playing.channels) {
        if (!channel->playing() || (ends && channel == playing.last)) continue;
        const std::size_t got = channel->mixInto(out, frames, mixed_);
        if (got < frames) drainUntil_ = std::max<std::int64_t>(drainUntil_, mixed_ + static_cast<std::int64_t>(got));
    }
    return frames;
}

bool Card::activeLocked() const {
    return !listeners_.empty() || drainUntil_ > handedOut_ ||
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
