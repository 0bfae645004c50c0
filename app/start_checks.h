// The checks that the audio library must pass before the main window opens.
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "platform/audio_library.h"
#include "platform/audio_library_file.h"
#include "platform/file_names.h"
#include "settings/language_tables.h"

namespace melvane {

struct StartResult {
    std::optional<LangEntry> message;       // of the check that failed; none when all passed
    std::unique_ptr<AudioLibrary> library;  // initialised for capture and playback; null after a failed check
};

// Looks for the library in the program's own directory and in the system's, loads it and initialises it.
// Only version 2.2 exactly will do; nothing of another version is called. `wait` does what waits for the sound server;
// when it returns false, the start is given up, with neither message nor library.
StartResult startAudioLibrary(
    AudioLibraryFile& file, const FileNames& names, const AudioLibraryOptions& options,
    const std::function<bool(const std::function<void()>& search)>& wait = [](const std::function<void()>& search) {
        search();
        return true;
    });

}  // namespace melvane
