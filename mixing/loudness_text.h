// How loud a mix is, in the current language.
#pragma once

#include <string>

#include "loudness/level_search.h"
#include "settings/modLang.h"
#include "state/loudness.h"

namespace melvane {

// Loudness, range and true peak, as "-14.2 LUFS, 5.1 LU, -0.8 dBTP" or with their names; or why there is none.
std::string loudnessBrief(const modLang& language, const Loudness& loudness);
std::string loudnessText(const modLang& language, const Loudness& loudness);
// The levels that were found, or why none fit.
std::string levelsText(const modLang& language, const LevelMatch& match);
// To a tenth, with a sign where it is below 0.
std::string decibelText(double decibels);

}  // namespace melvane
