#include "engine/graph/channel.h"

#include <algorithm>
#include <limits>

namespace melvane::engine {

Channel::Channel(std::shared_ptr<PcmSource> source, bool loop)
    : source_(std::move(source)), length_(source_->frames()), loop_(loop), fade_(kFadeFrames * 2) {}

void Channel::play(bool restart) {
    if (restart || ended_) seek(0);
    playing_ = true;
}

std::int64_t Channel::position() const {
    const std::int64_t wanted = wantedSeek_;
    return wanted == kNoSeek ? position_.load() : wanted;
}

bool Channel::seek(std::int64_t frame) {
    if (frame < 0 || frame > length_) return false;
    wantedSeek_ = frame;
    ended_ = false;
    return true;
}

void Channel::addEffect(std::shared_ptr<Effect> effect, int priority) {
    const std::lock_guard lock(effectsMutex_);
    const auto behind = std::ranges::find_if(effects_, [&](const PlacedEffect& e) { return e.priority < priority; });
    effects_.insert(behind, {std::move(effect), priority});
}

std::size_t Channel::mixInto(float* out, std::size_t frames, std::int64_t cardFrame, bool heard) {
    takeSeek();
    block_.resize(frames * 2);
    const std::size_t got = readAlong(block_.data(), frames);
    if (source_->failed()) failed_ = true;
    cardFrameBehind_ = cardFrame + static_cast<std::int64_t>(got);
    applyTrim(got);
    applyEffects(got);
    const PeakLevels peaks = level_.mixInto(out, block_.data(), got);
    if (heard) peaks_.raise(peaks);
    if (got < frames) {
        ended_ = true;
        playing_ = false;
    }
    return got;
}

void Channel::roll(std::int64_t frame, std::int64_t heard) {
    if (ended_.exchange(false)) playing_ = true;
    wantedSeek_ = kNoSeek;
    time_ = frame;
    place_ = wantedPlace_;
    fadeLeft_ = 0;
    sourceAt_ = std::clamp<std::int64_t>(inside(time_ + place_.earlier), 0, length_);
    source_->roll(sourceAt_, std::clamp<std::int64_t>(inside(heard + place_.earlier), 0, length_));
    trim_.aim({wantedTrim_, wantedTrim_});
    trim_.finish();
    level_.finish();
    const std::lock_guard lock(effectsMutex_);
    for (const PlacedEffect& placed : effects_) placed.effect->restart(frame);
}

std::int64_t Channel::framesLeft() const {
    if (!place_.once) return std::numeric_limits<std::int64_t>::max();
    return std::max<std::int64_t>(length_ - time_ - place_.earlier, 0);
}

bool Channel::lasts() {
    const std::lock_guard lock(effectsMutex_);
    return std::ranges::any_of(effects_, [](const PlacedEffect& placed) { return placed.effect->lasts(); });
}

// In pieces that end with a fade: a place that waits for it is taken at that frame, not with the next block.
std::size_t Channel::readAlong(float* out, std::size_t frames) {
    std::size_t done = 0;
    while (done < frames) {
        takePlace();
        const std::size_t piece =
            fadeLeft_ > 0 ? std::min(frames - done, static_cast<std::size_t>(fadeLeft_)) : frames - done;
        const std::size_t got = readAt(time_ + place_.earlier, out + done * 2, piece);
        fadeOver(out + done * 2, got);
        time_ += static_cast<std::int64_t>(got);
        done += got;
        if (got > 0) sounded_ = true;
        if (got < piece) break;
    }
    return done;
}

void Channel::takeSeek() {
    std::int64_t wanted = wantedSeek_;
    if (wanted == kNoSeek) return;
    time_ = wanted - place_.earlier;
    fadeLeft_ = 0;
    position_ = wanted;
    wantedSeek_.compare_exchange_strong(wanted, kNoSeek);
}

void Channel::takePlace() {
    const Place wanted = wantedPlace_;
    // One move after the other: a fade that runs is not cut off.
    if (wanted == place_ || fadeLeft_ > 0) return;
    if (sounded_) {
        const std::size_t got = readAt(time_ + place_.earlier, fade_.data(), kFadeFrames);
        std::fill(fade_.begin() + static_cast<std::ptrdiff_t>(got * 2), fade_.end(), 0.0F);
        fadeLeft_ = kFadeFrames;
    }
    place_ = wanted;
}

std::size_t Channel::readAt(std::int64_t at, float* out, std::size_t frames) {
    std::size_t done = 0;
    if (at < 0) {
        done = std::min(frames, static_cast<std::size_t>(-at));
        std::fill_n(out, done * 2, 0.0F);
        at += static_cast<std::int64_t>(done);
    }
    while (done < frames) {
        const std::int64_t wanted = inside(at);
        if (wanted != sourceAt_) source_->seek(wanted);
        const std::size_t got = source_->read(out + done * 2, frames - done);
        sourceAt_ = wanted + static_cast<std::int64_t>(got);
        if (got == 0) break;
        if (place_.once) fadeEnds(at, out + done * 2, got);
        done += got;
        at += static_cast<std::int64_t>(got);
    }
    if (!place_.once) return done;
    std::fill(out + done * 2, out + frames * 2, 0.0F);
    return frames;
}

std::int64_t Channel::inside(std::int64_t at) const {
    return loop_ && !place_.once && at >= 0 ? at % length_ : std::min(at, length_);
}

void Channel::fadeEnds(std::int64_t at, float* block, std::size_t frames) const {
    for (std::size_t i = 0; i < frames; ++i, ++at) {
        const std::int64_t toEnd = std::min(at, length_ - 1 - at);
        if (toEnd >= kEndFrames) continue;
        const float gain = (static_cast<float>(toEnd) + 0.5F) / kEndFrames;
        for (std::size_t side = 0; side < 2; ++side) block[2 * i + side] *= gain;
    }
}

void Channel::fadeOver(float* block, std::size_t frames) {
    for (std::size_t i = 0; i < frames && fadeLeft_ > 0; ++i, --fadeLeft_) {
        const float old = static_cast<float>(fadeLeft_) / kFadeFrames;
        const float* from = &fade_[static_cast<std::size_t>(kFadeFrames - fadeLeft_) * 2];
        for (std::size_t side = 0; side < 2; ++side) block[2 * i + side] += old * (from[side] - block[2 * i + side]);
    }
}

void Channel::applyTrim(std::size_t frames) {
    const float wanted = wantedTrim_;
    trim_.aim({wanted, wanted});
    if (!trim_.moving() && wanted == 1) return;
    for (std::size_t i = 0; i < frames; ++i) {
        const float gain = trim_.advance().left;
        for (std::size_t side = 0; side < 2; ++side) block_[2 * i + side] *= gain;
    }
}

void Channel::applyEffects(std::size_t frames) {
    const std::lock_guard lock(effectsMutex_);
    for (const PlacedEffect& placed : effects_) placed.effect->process(block_.data(), frames);
}

void Channel::publishPosition(std::int64_t cardFrame) {
    const std::int64_t ahead = std::max<std::int64_t>(cardFrameBehind_ - cardFrame, 0);
    position_ = inside(std::max<std::int64_t>(time_ + place_.earlier - ahead, 0));
}

}  // namespace melvane::engine
