// The program with its windows: the start window, the start checks, the main window and all that these need.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/MixerStart.h"
#include "app/frmMain.h"
#include "app/mixer.h"
#include "platform/audio_library_file.h"
#include "platform/destinations.h"
#include "platform/documents.h"
#include "platform/registry.h"
#include "settings/window_zoom.h"

namespace melvane {

// What the program stands on; everything outlives it.
struct Foundation {
    AudioLibraryFile& libraryFile;
    std::function<Instruments(AudioLibrary&)> createMusic;
    Registry& registry;
    const FileNames& names;
    Destinations& destinations;
    Documents& documents;
    Dialogs& dialogs;
    Shell& shell;
    // For a mix beside the windows, with music that has no ports and file names of its own. The library's file and the
    // destinations are the same.
    std::function<Instruments(AudioLibrary&)> createPlainMusic;
    const FileNames& otherNames;
};

class Program {
public:
    static constexpr int kCannotStart = 1;

    // Shows the start window. Its button opens the main window, which takes `files` (absolute paths, UTF-8) as if they
    // were dropped on it; when it can't be opened, the event loop ends with kCannotStart. The start window stays, and
    // may be closed, while the machine's servers are asked for ports and inputs.
    Program(const Foundation& foundation, std::vector<std::string> files);

    // Ends a run, keeps everything and ends the event loop.
    void endSession();
    // Brings its window forward, which takes these files too, or will when it is open.
    void startedAgain(const std::vector<std::string>& files);

    MixerStart& startWindow() { return start_; }
    // These are there once the main window was opened.
    frmMain& mainWindow() { return main_.value(); }
    Mixer& mixer() { return mixer_.value(); }

private:
    void openMainWindow();
    bool startLibrary();
    void refuseStart(const std::string& message);
    bool waitFor(const std::function<void()>& search);

    const Foundation on_;
    std::vector<std::string> files_;  // for the main window, once it is open
    // In this order, so that each goes before what it uses.
    SettingsStore store_;
    WindowZoom zoom_;
    modLang language_;
    std::unique_ptr<AudioLibrary> library_;
    Instruments instruments_;
    std::optional<Mixer> mixer_;
    std::optional<frmMain> main_;
    MixerStart start_;
};

}  // namespace melvane
