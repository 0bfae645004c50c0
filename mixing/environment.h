// What the program runs in, as its operations and windows see it; everything outlives them.
#pragma once

#include "platform/audio_library.h"
#include "platform/destinations.h"
#include "platform/dialogs.h"
#include "platform/file_names.h"
#include "platform/music_performance.h"
#include "platform/shell.h"
#include "platform/system_mixer.h"
#include "settings/modLang.h"
#include "state/run_state.h"

namespace melvane {

struct Environment {
    AudioLibrary& library;
    MusicSystem& music;
    SystemMixer& systemMixer;
    const FileNames& names;
    Destinations& destinations;
    Dialogs& dialogs;
    Shell& shell;
    modLang& language;
    DoEvents doEvents;
};

}  // namespace melvane
