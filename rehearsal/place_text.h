// Where the voice is, in words and numbers.
#pragma once

#include <cstdint>
#include <string>

#include "settings/modLang.h"
#include "state/run_state.h"

namespace melvane {

// By how much the voice is heard earlier than the song: its place and the synchronisation. In frames.
std::int64_t earlierOf(const RunState& run);
// "Voice begins 12.750 s before the song".
std::string placeText(const modLang& language, std::int64_t earlier);
// "Voice lined up: begins 12.750 s before the song (98 % sure)"; certainty from 0 to 1.
std::string linedUpText(const modLang& language, std::int64_t earlier, double certainty);
// "1:02.5", before the song "-0:05.0".
std::string timeText(std::int64_t frame, int decimals);

}  // namespace melvane
