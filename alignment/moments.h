// What a sound is like from moment to moment, and how that differs from the moments around.
#pragma once

#include <functional>
#include <span>
#include <vector>

#include "alignment/fourier.h"
#include "alignment/imprint.h"

namespace melvane {

// Gives `take` the spectrum of `length` frames, a power of two, around each moment; one every `step` frames.
void eachMoment(const Trace& imprint, std::size_t length, std::size_t step,
                const std::function<void(std::span<const Bin>)>& take);

// Each value against up to `around` on either side of it, in deviations of those.
Trace againstOthers(const std::vector<float>& values, std::size_t around);

}  // namespace melvane
