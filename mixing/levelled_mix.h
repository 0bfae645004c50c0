// What is found out by measuring a pass: the gain that brings a mix to a loudness, and levels that fit each other.
#pragma once

#include <memory>
#include <optional>

#include "loudness/level_search.h"
#include "mixing/kept_pass.h"
#include "state/mix_state.h"

namespace melvane {

// Mixes what `graph` plays in a pass and finds what brings it to `lufs`: the result as it is to be encoded. Sets
// RunState::missesTarget. nullptr: RunState::failure tells why. Throws GivenUp.
std::unique_ptr<PcmSource> levelledMix(AudioLibrary& library, RunState& run, MixGraph& graph, double lufs,
                                       const MeasuringProgress& goOn);

// The levels with which song and voice of the state's fields fit each other, as they reach the card: opens them on the
// stepped clock, mixes them in a pass and closes them. Changes no level. Nothing: RunState::failure tells why, unless
// it was given up.
std::optional<LevelMatch> findLevels(AudioLibrary& library, MixState& state, MixGraph& graph, MidiBackground& midi,
                                     const MeasuringProgress& goOn);

}  // namespace melvane
