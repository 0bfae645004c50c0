// A source whose key can be moved while it plays. At key 0 it is the source itself, bit by bit. A change of
// key starts a freshly aligned shifter and fades over to it, so that nothing ever drifts: whatever the key
// was before, frame n of the output is frame n of the source.
#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <vector>

#include "engine/graph/pitch_shifter.h"

namespace melvane::engine {

class TempoSource : public PcmSource {
public:
    explicit TempoSource(std::shared_ptr<PcmSource> source);

    // Any thread; semitones, clamped to -12..12.
    void setPitch(float semitones);

    // Mixing thread.
    std::int64_t frames() const override { return window_.frames(); }
    std::size_t read(float* out, std::size_t frames) override;
    void seek(std::int64_t frame) override { roll(frame, frame); }
    // Shifting takes long: most of what is not heard is left as it is.
    void roll(std::int64_t frame, std::int64_t heard) override;
    bool failed() const override { return window_.failed(); }

private:
    static constexpr int kFadeFrames = 1323;            // 30 ms
    static constexpr std::int64_t kRollFrames = 13230;  // 0.3 s

    // What plays: the source itself (shifter -1) or one of the two shifters.
    struct Lane {
        int shifter = -1;
        float pitch = 0.0F;
    };

    Lane startLane(float pitch, const Lane& other);
    void readLane(const Lane& lane, float* out, std::size_t frames);
    void beginFade();
    void fade(float* out, std::size_t frames);

    SourceWindow window_;
    std::array<std::unique_ptr<PitchShifter>, 2> shifters_;
    std::atomic<float> wantedPitch_{0.0F};
    std::int64_t place_ = 0;
    Lane now_;
    Lane next_;
    int fadeLeft_ = 0;
    std::int64_t plainUntil_ = 0;  // nothing is heard before
    bool started_ = false;
    std::vector<float> other_;
};

}  // namespace melvane::engine
