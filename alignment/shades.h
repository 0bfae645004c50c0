// How loud each narrow band of frequencies is from moment to moment: all that two ways of moving a song into another
// key agree on, since each makes phases of its own.
#pragma once

#include "alignment/imprint.h"

namespace melvane {

inline constexpr std::size_t kShadeStep = 64;  // frames of an imprint to one of its shades

// For each band its level over those beside it, against the moments around.
std::vector<Trace> shadesOf(const Trace& imprint);

}  // namespace melvane
