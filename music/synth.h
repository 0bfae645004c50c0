// The built-in synthesiser: FluidSynth on one sound font, whose sounds are read from the file when they are needed.
//
// Only one thread at a time uses a synthesiser. Sounds stay in memory, for all synthesisers on the same font, as long
// as one of them holds them: so the next one holds what the sounding one is going to need, without touching it.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <utility>

#include "music/instrument.h"
#include "music/live_channels.h"
#include "music/song.h"

namespace melvane::music {

// Bank and program as the sound font counts them.
using HeldSounds = std::set<std::pair<int, int>>;

class Synth final : public Instrument {
public:
    // Throws MusicError when `font` can't be read. Takes some 30 ms with a large font.
    explicit Synth(std::string font, const HeldSounds& held = {});
    ~Synth() override;

    // --- before the first message; these read from the file ---
    // Holds the sounds that a song asks for by its own messages, or those of a patch.
    void hold(const Song& song);
    void hold(int channel, const Patch& patch);
    const HeldSounds& held() const { return held_; }

    void begin(std::int64_t frame) override;
    void render(float* out) override;
    bool silent() const override;
    std::uint16_t sounding(std::uint16_t keysDown) const override;
    void send(std::int64_t frame, std::uint8_t status, std::uint8_t data1, std::uint8_t data2) override;
    void sendSysex(std::int64_t frame, std::span<const std::uint8_t> message) override;

private:
    struct Engine;

    void holdSoundOf(int channel);
    void renew();

    const std::string font_;
    HeldSounds held_;
    std::unique_ptr<Engine> engine_;
    std::int64_t turned_ = 0;  // frames that the engine has rendered
    int quietPieces_ = 0;
};

}  // namespace melvane::music
