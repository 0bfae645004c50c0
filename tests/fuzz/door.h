// One door of the program where foreign bytes enter.
#pragma once

#include <cstdlib>
#include <string_view>

#include "state/settings.h"

namespace melvane::fuzz {

// Gives the door any bytes. Ends the program where it lets something through that is not what it promises.
void attack(std::string_view bytes);

inline void require(bool condition) {
    if (!condition) std::abort();
}

// What the sliders and effects of a run take.
inline void requireUsable(const Settings& settings) {
    const auto percent = [](auto value) { require(value >= 0 && value <= 100); };
    for (const auto value : settings.toneValue) percent(value);
    for (const auto value : settings.volume) percent(value);
    for (const EffectSwitch& effect : settings.EffectState) {
        percent(effect.level);
        require(effect.enabled == 0 || effect.enabled == -1);
    }
    for (const auto value : settings.balanceValue) require(value >= -100 && value <= 103);
    require(settings.currentPreset >= 0 && settings.currentPreset <= 13 && settings.mixDevice >= 0);
}

}  // namespace melvane::fuzz
