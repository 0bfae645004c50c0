// The synthesiser's way to the card: stereo volume and master volume of its sound, bass and treble of its stream.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

#include "base/gain_ramp.h"
#include "platform/audio_library.h"

namespace melvane::music {

enum class Tone { bass, treble };

// Values are those of the mixer's controls, 0..65535. The middle leaves the sound as it is, bit by bit: for a volume
// that is 32767, for a tone both 32767 and 32768. Volume is linear amplitude; a tone reaches from -10 dB to 10 dB.
class SynthBus {
public:
    static constexpr std::uint32_t kMiddle = 32767;

    explicit SynthBus(AudioLibrary& library) : library_(library) {}

    // --- user-interface thread; takes effect on what sounds ---
    void setVolume(std::uint32_t left, std::uint32_t right);
    std::array<std::uint32_t, 2> volume() const { return volume_; }
    void setTone(Tone tone, std::uint32_t value);
    std::uint32_t tone(Tone tone) const { return controls_[static_cast<std::size_t>(tone)].value; }
    // Hundredths of a decibel.
    void setMasterVolume(std::int32_t hundredthsOfDecibel);
    // Gives a new stream of the library its tone.
    void attach(Handle stream);

    // --- any thread ---
    StereoGain gain() const { return gain_; }

private:
    struct ToneControl {
        ParametricEqRecord record;
        std::uint32_t value = kMiddle + 1;
        Handle effect = 0;
    };

    void updateGain();
    void updateTone(ToneControl& control);

    AudioLibrary& library_;
    std::array<std::uint32_t, 2> volume_{kMiddle, kMiddle};
    std::int32_t masterVolume_ = 0;
    std::array<ToneControl, 2> controls_{{{kToneBands[0]}, {kToneBands[1]}}};
    std::atomic<StereoGain> gain_{StereoGain{}};
};

}  // namespace melvane::music
