// The moments at which something begins to sound.
#pragma once

#include "alignment/imprint.h"

namespace melvane {

inline constexpr std::size_t kOnsetStep = 32;  // frames of an imprint to one of its onsets

// For each band of frequencies how much begins in each moment, against what does around it.
std::vector<Trace> onsetsOf(const Trace& imprint);

}  // namespace melvane
