// The effects of a run: attached to its streams, and set to what the user chose, at the start and live.
#pragma once

#include <string>

#include "audio/effect_switches.h"
#include "audio/mod_Mixer.h"
#include "platform/audio_library.h"
#include "state/effect_handles.h"
#include "state/run_state.h"
#include "state/settings.h"

namespace melvane {

class EffectChain {
public:
    EffectChain(AudioLibrary& library, const RunState& run, Settings& settings, mod_Mixer& midiLines);

    // Attaches everything to the streams of a run; the bands are flat, the effects at the library's defaults.
    void PrepareEffects();
    // Switches each vocal effect on or off as EffectState says, then sets the equaliser.
    void ApplyAllEffects();
    // Bass and treble of the background, then of the vocal.
    void applyTone();
    // The tone value that belongs to the stream, as the gain of its band; nothing for another handle or 0.
    // Throws OverflowError for a value beyond 16-bit arithmetic.
    void SetBassChannel(Handle channel);
    void SetTrebleChannel(Handle channel);

    // Makes `index` the current preset; in a run its gains go to the bands. An index outside the table is kept
    // and sets nothing.
    void ApplyPreset(std::int16_t index);
    // Knob `n` (1..4) at `level` (0..100): stores level and parameter; in a run the effect is then switched on.
    void setEffectLevel(std::int16_t n, std::int16_t level);
    // Switch `n` (1..5); the fifth changes only its flag.
    void setEffectEnabled(std::int16_t n, bool on);
    // Tone knob `index` (0..3, as toneValue) at `value` (0..100).
    void setTone(std::size_t index, std::int16_t value);
    // Balance knob 0 background, 1 vocal.
    void setBalance(std::size_t index, std::int32_t value);
    // Both balances on the streams of the run.
    void applyBalance();

private:
    void setBandGains(std::string_view gains);
    void setTone(Handle effect, float centre, std::int16_t value);
    void applyTone(std::size_t index);
    void applyBalance(std::size_t index);

    AudioLibrary& library_;
    const RunState& run_;
    Settings& settings_;
    mod_Mixer& midiLines_;
    EffectHandles handles_;
    EffectSwitches switches_;
};

// What an effect is given for a knob level 0..100. n: 1 reverb, 2 echo, 3 chorus, 4 flanger.
std::int32_t effectParameter(std::int16_t n, std::int16_t level);

}  // namespace melvane
