#include "music/song_source.h"

#include <algorithm>
#include <iterator>

namespace melvane::music {

namespace {

// What still sounds at the end fades out over 20 ms.
constexpr std::int64_t kFadeFrames = 882;
// Half a second of what is not heard is rendered: notes that have just begun are as they would be. More would take the
// thickest songs longer than a seek may; strings that were let go before that and ring for seconds are missing.
constexpr std::int64_t kRollFrames = 22050;

bool has(const LiveMessage& message, Sounds state) {
    const auto* patch = std::get_if<PatchMessage>(&message);
    return patch && patch->has(state);
}

}  // namespace

SongSource::SongSource(std::shared_ptr<const Song> song, double tempo, const LiveChannels& live,
                       std::shared_ptr<Instrument> instrument, std::shared_ptr<const SynthBus> bus)
    : instrument_(std::move(instrument)),
      bus_(std::move(bus)),
      sequencer_(std::move(song), tempo, *instrument_),
      live_(live) {}

void SongSource::post(const LiveMessage& message) {
    const std::lock_guard lock(postedMutex_);
    posted_.push_back(message);
}

std::size_t SongSource::read(float* out, std::size_t frames) {
    auto done = static_cast<std::size_t>(std::min<std::int64_t>(skipped_, static_cast<std::int64_t>(frames)));
    std::fill_n(out, done * 2, 0.0F);
    skipped_ -= static_cast<std::int64_t>(done);
    while (done < frames && (pieceAt_ < pieceFrames_ || renderPiece())) {
        const std::size_t count = std::min(frames - done, pieceFrames_ - pieceAt_);
        std::copy_n(&piece_[pieceAt_ * 2], count * 2, out + done * 2);
        pieceAt_ += count;
        done += count;
    }
    if (done < frames) endedAt_ = place();
    gain_.aim(bus_->gain());
    for (std::size_t i = 0; i < done; ++i) {
        const StereoGain gain = gain_.advance();
        out[2 * i] *= gain.left;
        out[2 * i + 1] *= gain.right;
    }
    return done;
}

// A piece begins where it would from the beginning on, so that messages act where they do there.
void SongSource::roll(std::int64_t frame, std::int64_t heard) {
    frame = std::clamp<std::int64_t>(frame, 0, frames());
    drainPosted();
    const std::int64_t unheard = std::clamp<std::int64_t>(heard - frame, 0, frames() - frame);
    const std::int64_t rendered = instrument_->outside() ? 0 : kRollFrames;
    skipped_ = frame > 0 || rendered == 0 ? std::max<std::int64_t>(unheard - rendered, 0) : 0;
    frame += skipped_;
    const auto inside = frame % static_cast<std::int64_t>(kPieceFrames);
    begin(frame - inside);
    gain_.aim(bus_->gain());
    gain_.finish();
    if (inside > 0 && renderPiece()) pieceAt_ = std::min(pieceFrames_, static_cast<std::size_t>(inside));
}

void SongSource::begin(std::int64_t frame) {
    begun_ = true;
    rendered_ = frame;
    pieceAt_ = pieceFrames_ = 0;
    endedAt_ = 0;
    instrument_->begin(frame);
    sequencer_.begin(live_, frame - static_cast<std::int64_t>(kPieceFrames / 2));
    findEnd();
}

void SongSource::findEnd() {
    if (sequencer_.finished())
        end_ = std::max(sequencer_.endFrame() + kFadeFrames, sequencer_.lastRelease() + kTailFrames);
}

// False at the end. A message acts on the piece that begins nearest to it.
bool SongSource::renderPiece() {
    if (!begun_) begin(0);
    if (sequencer_.finished() && (rendered_ >= end_ || (rendered_ >= sequencer_.endFrame() && instrument_->silent())))
        return false;
    drainPosted();
    sequencer_.playTo(rendered_ + static_cast<std::int64_t>(kPieceFrames / 2));
    instrument_->render(piece_.data());
    sounding_ = instrument_->sounding(sequencer_.keysDown());
    pieceAt_ = 0;
    pieceFrames_ = kPieceFrames;
    if (sequencer_.finished()) {
        findEnd();
        pieceFrames_ = std::min(kPieceFrames, static_cast<std::size_t>(end_ - rendered_));
        fadeOut(piece_.data(), pieceFrames_);
    }
    rendered_ += static_cast<std::int64_t>(pieceFrames_);
    return true;
}

// A patch waits for its sounds, and what was posted behind it waits too. Without them the channel stays as it is.
void SongSource::drainPosted() {
    {
        const std::lock_guard lock(postedMutex_);
        const auto end = std::ranges::find_if(posted_, [](const LiveMessage& m) { return has(m, Sounds::awaited); });
        std::move(posted_.begin(), end, std::back_inserter(taken_));
        posted_.erase(posted_.begin(), end);
    }
    for (const LiveMessage& message : taken_) {
        if (has(message, Sounds::missing)) continue;
        live_.keep(message);
        sequencer_.take(message, rendered_);
    }
    taken_.clear();
}

void SongSource::fadeOut(float* block, std::size_t frames) {
    for (std::size_t i = 0; i < frames; ++i) {
        const std::int64_t left = end_ - rendered_ - static_cast<std::int64_t>(i);
        if (left >= kFadeFrames) continue;
        const float gain = static_cast<float>(left) / kFadeFrames;
        block[2 * i] *= gain;
        block[2 * i + 1] *= gain;
    }
}

}  // namespace melvane::music
