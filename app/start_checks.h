// The checks that the audio library must pass before the main window opens.
#pragma once

#include <memory>

#include "platform/audio_library.h"
#include "platform/audio_library_file.h"
#include "platform/file_names.h"

namespace melvane {

// Number of the message that a failed check shows; none when all passed.
enum class StartMessage : int {
    none = 0,
    cannotInitialise = 3,
    libraryMissing = 4,
    wrongVersion = 5,
    interfaceTooOld = 6,
};

struct StartResult {
    StartMessage message = StartMessage::none;
    std::unique_ptr<AudioLibrary> library;  // initialised for capture and playback; null after a failed check
};

// Looks for the library in the program's own directory and in the system's, loads it and initialises it.
// Only version 2.2 exactly will do; nothing of another version is called.
StartResult startAudioLibrary(AudioLibraryFile& file, const FileNames& names, const AudioLibraryOptions& options);

}  // namespace melvane
