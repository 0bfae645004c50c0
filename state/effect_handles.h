// The effects of a run. 0: none, or attaching failed.
#pragma once

#include <array>
#include <cstdint>

namespace melvane {

struct EffectHandles {
    std::array<std::uint32_t, 4> effectFx{};  // on the vocal: reverb, echo, chorus, flanger
    std::array<std::uint32_t, 10> eqFx{};     // on the vocal: the bands, lowest first
    std::array<std::uint32_t, 4> toneFx{};    // background bass and treble, vocal bass and treble
};

}  // namespace melvane
