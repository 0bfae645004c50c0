// The effects of a run: attached to its streams, and set to what the user chose, at the start and live.
//
// Indices are those of the settings: effects as kVocalEffects, then the fifth switch; sources 0 background, 1 vocal;
// tones 0 background bass, 1 background treble, 2 vocal bass, 3 vocal treble.
#pragma once

#include <array>
#include <string_view>

#include "audio/mod_Mixer.h"
#include "platform/audio_library.h"
#include "state/run_state.h"
#include "state/settings.h"

namespace melvane {

class EffectChain {
public:
    EffectChain(AudioLibrary& library, const RunState& run, Settings& settings, mod_Mixer& midiLines)
        : library_(library), run_(run), settings_(settings), midiLines_(midiLines) {}

    // Attaches everything to the streams of a run; the bands are flat, the effects at the library's defaults.
    void PrepareEffects();
    // Switches each vocal effect on or off as EffectState says, then sets the equaliser.
    void ApplyAllEffects();
    // Effect n, from 1 to 4; other numbers do nothing.
    void EnableEffect(std::int16_t n);
    void DisableEffect(std::int16_t n);
    // For callers that know the stream instead of the index: its bass or treble; nothing for another handle or 0.
    // Throw OverflowError for a value beyond 16-bit arithmetic.
    void SetBassChannel(Handle channel) { setToneOf(channel, 0); }
    void SetTrebleChannel(Handle channel) { setToneOf(channel, 1); }
    // All tones and both balances, on the streams of the run.
    void applyTone();
    void applyBalance();

    // Makes `index` the current preset; in a run its gains go to the bands. An index outside the table is kept
    // and sets nothing.
    void ApplyPreset(std::int16_t index);
    // Level 0..100 of a vocal effect. In a run the effect is then switched on, unless `leaveOff` is set and it is off.
    void setEffectLevel(std::size_t index, std::int16_t level, bool leaveOff);
    // The fifth switch changes only its flag.
    void setEffectEnabled(std::size_t index, bool on);
    // 0..100.
    void setTone(std::size_t index, std::int16_t value);
    // -100..103.
    void setBalance(std::size_t source, std::int32_t value);

private:
    template <typename Change>
    void change(Handle effect, Change to);
    void applyEffect(std::size_t index);
    void applyTone(std::size_t index);
    void applyBalance(std::size_t source);
    void setToneOf(Handle channel, std::size_t corner);
    void setToneBand(std::size_t index);
    Handle channelOf(std::size_t source) const { return source == 0 ? run_.backgroundChannel : run_.vocalChannel; }

    AudioLibrary& library_;
    const RunState& run_;
    Settings& settings_;
    mod_Mixer& midiLines_;
    // 0: none, or attaching failed.
    std::array<Handle, 4> effectFx_{};
    std::array<Handle, 10> eqFx_{};  // on the vocal, lowest band first
    std::array<Handle, 4> toneFx_{};
};

// Gain of a tone value 0..100: 10..-10 dB. Throws OverflowError for a value beyond 16-bit arithmetic.
double toneGain(std::int16_t value);

}  // namespace melvane
