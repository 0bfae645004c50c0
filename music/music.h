// Music for the program: songs on the synthesiser and the machine's MIDI ports, and the mixer lines of the synthesiser.
#pragma once

#include <memory>
#include <string>

#include "platform/audio_library.h"
#include "platform/music_performance.h"
#include "platform/system_mixer.h"

namespace melvane::music {

struct MusicOptions {
    std::string soundFont;    // UTF-8; empty: the best one installed
    bool devicePorts = true;  // false: the synthesiser is the only port
};

struct Music {
    std::unique_ptr<MusicSystem> system;
    std::unique_ptr<SystemMixer> mixer;
};

// The library must live longer than what is returned and what that creates.
Music createMusic(AudioLibrary& library, const MusicOptions& options);

}  // namespace melvane::music
