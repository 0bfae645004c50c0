// Sliders as assistive programs see them: a slider with a name, a value and a range.
#pragma once

namespace melvane {

// For every slider of the program. Further calls do nothing.
void installSliderAccess();

}  // namespace melvane
