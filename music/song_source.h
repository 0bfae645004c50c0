// A song as sound: renders it piece by piece as the card reads on.
#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

#include "music/instrument.h"
#include "music/sequencer.h"
#include "music/synth_bus.h"
#include "platform/pcm_source.h"

namespace melvane::music {

// The longest that a song sounds on behind its last release, in frames.
inline constexpr std::int64_t kTailFrames = 88200;

class SongSource : public PcmSource {
public:
    // `live` are the user's settings so far; further ones are posted.
    SongSource(std::shared_ptr<const Song> song, double tempo, const LiveChannels& live,
               std::shared_ptr<Instrument> instrument, std::shared_ptr<const SynthBus> bus);

    // --- any thread ---
    void post(const LiveMessage& message);
    // A bit for each channel that sounds.
    std::uint16_t sounding() const { return sounding_; }
    // How long the song was, in frames, once its end has been read; 0 before.
    std::int64_t endedAt() const { return endedAt_; }

    // --- mixing thread ---
    std::int64_t frames() const override { return sequencer_.endFrame() + kTailFrames; }
    std::size_t read(float* out, std::size_t frames) override;
    // What sounds there and was struck before is struck again.
    void seek(std::int64_t frame) override { roll(frame, frame); }
    void roll(std::int64_t frame, std::int64_t heard) override;

private:
    std::int64_t place() const { return rendered_ - static_cast<std::int64_t>(pieceFrames_ - pieceAt_); }
    void begin(std::int64_t frame);
    void findEnd();
    bool renderPiece();
    void drainPosted();
    void fadeOut(float* block, std::size_t frames);

    const std::shared_ptr<Instrument> instrument_;
    const std::shared_ptr<const SynthBus> bus_;
    Sequencer sequencer_;
    LiveChannels live_;
    GainRamp gain_{441};  // 10 ms
    bool begun_ = false;
    std::int64_t skipped_ = 0;   // frames that need not be rendered
    std::int64_t rendered_ = 0;  // frames
    std::int64_t end_ = 0;       // once the sequencer has finished
    std::array<float, kPieceFrames * 2> piece_{};
    std::size_t pieceAt_ = 0;
    std::size_t pieceFrames_ = 0;

    std::atomic<std::int64_t> endedAt_{0};
    std::atomic<std::uint16_t> sounding_{0};
    std::mutex postedMutex_;
    std::vector<LiveMessage> posted_;
    std::vector<LiveMessage> taken_;
};

}  // namespace melvane::music
