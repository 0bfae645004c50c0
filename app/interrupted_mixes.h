// Mixes whose program was killed, or whose machine lost its power.
#pragma once

#include <string>
#include <vector>

#include "platform/audio_library.h"
#include "platform/destinations.h"

namespace melvane {

// Puts what they had recorded beside their destinations, and removes what can't be played. Opens files; any thread.
// Where what they had is now, the newest last; UTF-8.
std::vector<std::string> bringBackMixes(Destinations& destinations, AudioLibrary& library);

}  // namespace melvane
