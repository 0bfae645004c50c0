// The sound fonts of the machine.
#pragma once

#include <string>

namespace melvane::music {

// The file of the best General MIDI font that is installed, in the directories that programs share: the large Fluid
// font, else the small TimGM one, else the first other one by name. Throws MusicError when there is none.
std::string findSoundFont();

// Whether a file begins as a sound font; `fileName` is UTF-8.
bool isSoundFont(const std::string& fileName);

}  // namespace melvane::music
