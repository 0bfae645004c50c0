// The four vocal effects switched on and off while a run plays, by their parameters alone: an effect that is off
// stays attached with parameters that make it inaudible.
#pragma once

#include <cstdint>

#include "platform/audio_library.h"
#include "state/effect_handles.h"
#include "state/settings.h"

namespace melvane {

class EffectSwitches {
public:
    EffectSwitches(AudioLibrary& library, const EffectHandles& handles, const Settings& settings)
        : library_(library), handles_(handles), settings_(settings) {}

    // n: 1 reverb, 2 echo, 3 chorus, 4 flanger; other numbers do nothing.
    void EnableEffect(std::int16_t n);
    void DisableEffect(std::int16_t n);
    // Enables or disables n as EffectState says.
    void applyEffect(std::int16_t n);

private:
    template <typename Record, typename Change>
    void change(std::int16_t n, Change change);

    AudioLibrary& library_;
    const EffectHandles& handles_;
    const Settings& settings_;
};

}  // namespace melvane
