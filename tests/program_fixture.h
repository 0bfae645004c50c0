// The program as it is wired for its users, on what a test gives it, and driven through its windows.
#pragma once

#include <QTimer>
#include <optional>

#include "app/program.h"
#include "desktop/local_destinations.h"
#include "desktop/local_documents.h"
#include "desktop/local_file_names.h"
#include "desktop/registry_file.h"
#include "tests/fake_audio_library.h"
#include "tests/fake_music.h"
#include "tests/fake_platform.h"
#include "tests/temp_dir.h"
#include "tests/window_events.h"

namespace melvane::test {

// With a registry, dialogs and a shell of the test's own.
struct ProgramUnderTest {
    TempDir dir;
    TempDir state;
    FakeDialogs dialogs;
    FakeShell shell;
    LocalDestinations destinations{state / "mixes"};
    RegistryFile registry{dir / "registry.json"};
    LocalDocuments documents;
    LocalFileNames otherNames;
    std::optional<Program> program;

    // Shows the start window.
    void launch(AudioLibraryFile& file, const FileNames& names,
                const std::function<Instruments(AudioLibrary&)>& createMusic,
                const std::vector<std::string>& files = {}) {
        program.reset();
        program.emplace(Foundation{file, createMusic, registry, names, destinations, documents, dialogs, shell,
                                   createMusic, otherNames},
                        files);
    }
    // Into the main window, which has the focus then.
    void enter() {
        ASSERT_TRUE(giveFocus(program->startWindow()));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        ASSERT_FALSE(program->startWindow().isVisible());
        ASSERT_TRUE(giveFocus(main()));
    }

    frmMain& main() { return program->mainWindow(); }
    Mixer& mixer() { return program->mixer(); }
    std::string status() { return find<QLabel>(main(), "status").toolTip().toStdString(); }
    bool waitFor(const std::string& text) {
        return QTest::qWaitFor([&] { return status() == text; });
    }
    void press(const char* name) { click(main(), name); }
    // As the user does it, in the preferences.
    void chooseLanguage(const std::string& code) {
        press("bHelp");
        auto& preferences = *main().findChild<mnuHelp*>();
        find<QAbstractButton>(preferences, "TABA1").click();
        find<QAbstractButton>(preferences, ("language_" + code).c_str()).click();
        preferences.close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
};

// On a library and music that make no sound.
struct SilentProgram : ProgramUnderTest {
    FakeLibraryFile libraryFile;
    FakeAudioLibrary& library = *libraryFile.first;
    FakeMusic* music = nullptr;
    FakeFileNames names;

    SilentProgram() { restart(); }
    ~SilentProgram() { program.reset(); }
    void launch(const std::vector<std::string>& files = {}) {
        const auto createMusic = [this](AudioLibrary&) {
            auto made = std::make_unique<FakeMusic>();
            music = made.get();
            return Instruments{std::move(made), std::make_unique<FakeSystemMixer>()};
        };
        ProgramUnderTest::launch(libraryFile, names, createMusic, files);
    }
    void restart() {
        launch();
        enter();
    }
};

}  // namespace melvane::test
