#include "engine/graph/tempo_source.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace melvane::engine {

TempoSource::TempoSource(std::shared_ptr<PcmSource> source) : window_(std::move(source)) {}

void TempoSource::setPitch(float semitones) {
    if (std::isfinite(semitones)) wantedPitch_ = std::clamp(semitones, -12.0F, 12.0F);
}

std::size_t TempoSource::read(float* out, std::size_t frames) {
    frames = std::min(frames, static_cast<std::size_t>(std::max<std::int64_t>(window_.frames() - place_, 0)));
    std::size_t left = frames;
    while (left > 0 && place_ < plainUntil_) {
        const std::size_t run = std::min(left, static_cast<std::size_t>(plainUntil_ - place_));
        readLane({}, out, run);
        place_ += static_cast<std::int64_t>(run);
        out += run * 2;
        left -= run;
    }
    while (left > 0) {
        beginFade();
        const std::size_t run = fadeLeft_ > 0 ? std::min(left, static_cast<std::size_t>(fadeLeft_)) : left;
        readLane(now_, out, run);
        if (fadeLeft_ > 0) fade(out, run);
        place_ += static_cast<std::int64_t>(run);
        out += run * 2;
        left -= run;
    }
    return frames;
}

void TempoSource::roll(std::int64_t frame, std::int64_t heard) {
    place_ = frame;
    plainUntil_ = frame > 0 ? heard - kRollFrames : 0;
    fadeLeft_ = 0;
    started_ = false;
}

// A key that was set before the first frame is there from the first frame on; later ones fade in, one after
// the other.
void TempoSource::beginFade() {
    const float wanted = wantedPitch_;
    if (!started_) {
        started_ = true;
        now_ = startLane(wanted, {});
    } else if (fadeLeft_ == 0 && wanted != now_.pitch) {
        next_ = startLane(wanted, now_);
        fadeLeft_ = kFadeFrames;
    }
}

TempoSource::Lane TempoSource::startLane(float pitch, const Lane& other) {
    if (pitch == 0.0F) return {};
    const int free = other.shifter == 0 ? 1 : 0;
    auto& shifter = shifters_[static_cast<std::size_t>(free)];
    if (!shifter) shifter = std::make_unique<PitchShifter>(window_);
    shifter->start(place_, pitch);
    return {free, pitch};
}

void TempoSource::readLane(const Lane& lane, float* out, std::size_t frames) {
    if (lane.shifter < 0)
        window_.read(place_, out, frames);
    else
        shifters_[static_cast<std::size_t>(lane.shifter)]->read(out, frames);
}

void TempoSource::fade(float* out, std::size_t frames) {
    other_.resize(frames * 2);
    readLane(next_, other_.data(), frames);
    for (std::size_t i = 0; i < frames; ++i, --fadeLeft_) {
        const float done = 1.0F - static_cast<float>(fadeLeft_) / kFadeFrames;
        const float share = 0.5F - 0.5F * std::cos(std::numbers::pi_v<float> * done);
        for (std::size_t c = 2 * i; c < 2 * i + 2; ++c) out[c] += share * (other_[c] - out[c]);
    }
    if (fadeLeft_ == 0) now_ = next_;
}

}  // namespace melvane::engine
