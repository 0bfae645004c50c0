// The four vocal effects, in the order of their knobs, switches and handles. They are switched by their parameters
// alone: an effect that is off stays attached with parameters that make it inaudible.
#pragma once

#include <array>
#include <cstdint>

#include "platform/audio_library.h"

namespace melvane {

struct VocalEffect {
    EffectType type;
    std::int32_t (*parameter)(std::int16_t level);  // what a knob level 0..100 gives it
};

inline constexpr std::array<VocalEffect, 4> kVocalEffects = {{
    {EffectType::reverb, [](std::int16_t level) { return 20 - level / 5; }},
    {EffectType::echo, [](std::int16_t level) { return level / 2; }},
    {EffectType::chorus, [](std::int16_t level) { return std::int32_t{level}; }},
    {EffectType::flanger, [](std::int16_t level) { return level / 10; }},
}};

// Change what the record of a vocal effect says when it is on, with its parameter, and when it is off. The other
// fields stay.
void switchOn(EffectRecord& record, std::int32_t parameter);
void switchOff(EffectRecord& record);

}  // namespace melvane
