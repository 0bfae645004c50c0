#include "platform/bass/graph/card.h"

#include <algorithm>
#include <chrono>

namespace melvane::bass {

void Card::changed() {
    ++changes_;
    change_.notify_all();
}

void Card::add(std::shared_ptr<Channel> channel) {
    const std::lock_guard lock(mutex_);
    if (std::ranges::find(channels_, channel) == channels_.end()) channels_.push_back(std::move(channel));
    changed();
}

void Card::remove(const std::shared_ptr<Channel>& channel) {
    const std::lock_guard lock(mutex_);
    std::erase(channels_, channel);
    if (holdAtEndOf_ == channel) holdAtEndOf_.reset();
    changed();
}

void Card::listen(std::shared_ptr<CardListener> listener) {
    const std::lock_guard lock(mutex_);
    listeners_.push_back(std::move(listener));
    changed();
}

void Card::unlisten(const std::shared_ptr<CardListener>& listener) {
    const std::lock_guard lock(mutex_);
    std::erase(listeners_, listener);
    changed();
}

void Card::hold() {
    const std::lock_guard lock(mutex_);
    held_ = true;
    changed();
}

void Card::resume() {
    const std::lock_guard lock(mutex_);
    held_ = false;
    changed();
}

void Card::holdAtEndOf(std::shared_ptr<Channel> channel) {
    const std::lock_guard lock(mutex_);
    holdAtEndOf_ = std::move(channel);
}

void Card::wake() {
    const std::lock_guard lock(mutex_);
    changed();
}

std::size_t Card::mix(float* out, std::size_t frames) {
    std::vector<std::shared_ptr<Channel>> channels;
    std::vector<std::shared_ptr<CardListener>> listeners;
    std::shared_ptr<Channel> last;
    {
        const std::lock_guard lock(mutex_);
        if (held_ || !activeLocked()) return 0;
        channels = channels_;
        listeners = listeners_;
        last = holdAtEndOf_;
    }
    std::fill_n(out, frames * 2, 0.0F);
    // The channel that ends the mix goes first: it tells how long this block may be.
    const bool ends = last && last->playing();
    if (ends) frames = last->mixInto(out, frames);
    for (const auto& channel : channels)
        if (channel->playing() && !(ends && channel == last)) channel->mixInto(out, frames);
    if (ends && !last->playing()) {
        const std::lock_guard lock(mutex_);
        if (holdAtEndOf_ == last) {
            held_ = true;
            holdAtEndOf_.reset();
        }
    }
    for (const auto& listener : listeners) listener->push(out, frames);
    framesMixed_ += frames;
    return frames;
}

bool Card::activeLocked() const {
    return !listeners_.empty() || std::ranges::any_of(channels_, [](const auto& c) { return c->playing(); });
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

void Card::waitForChange(int milliseconds) {
    std::unique_lock lock(mutex_);
    const auto somethingChanged = [this] { return changes_ != changesSeen_; };
    if (milliseconds < 0)
        change_.wait(lock, somethingChanged);
    else
        change_.wait_for(lock, std::chrono::milliseconds(milliseconds), somethingChanged);
    changesSeen_ = changes_;
}

}  // namespace melvane::bass
