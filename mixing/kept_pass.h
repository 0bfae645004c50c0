// A pass through song and voice that nobody hears or records: what they add up to is kept, to be measured.
#pragma once

#include <functional>
#include <memory>

#include "mixing/mix_graph.h"
#include "platform/audio_library.h"
#include "state/run_state.h"

namespace melvane {

// No longer wanted: thrown by what measures for long.
struct GivenUp {};

using MeasuringProgress = std::function<bool(double done)>;  // 0..1; whether to go on

// Mixes what `graph` plays from its beginning to its end, as it is set, on the stepped clock; the card is held before
// and after. `apart`: the voice is kept apart from the song. nullptr: RunState::failure tells why. Throws GivenUp.
std::shared_ptr<KeptMix> keepPass(AudioLibrary& library, RunState& run, MixGraph& graph, bool apart,
                                  const MeasuringProgress& goOn);

// Reads a sound from its beginning to its end in pieces of `frames`, and hands each to `take`. Throws GivenUp, and
// std::system_error where it can't be read.
void readThrough(PcmSource& sound, std::size_t frames, const std::function<bool()>& wanted,
                 const std::function<void(const float* samples, std::size_t frames)>& take);

}  // namespace melvane
