// The program as it is wired for its users, on what a test gives it, and driven through its windows.
#pragma once

#include <QTimer>
#include <optional>

#include "app/program.h"
#include "desktop/local_destinations.h"
#include "desktop/registry_file.h"
#include "tests/fake_library_file.h"
#include "tests/fake_music.h"
#include "tests/fake_platform.h"
#include "tests/temp_dir.h"
#include "tests/window_events.h"

namespace melvane::test {

// Where there is no window manager the test gives the focus as one does.
inline bool giveFocus(QWidget& window) {
    window.activateWindow();
    return QTest::qWaitForWindowActive(&window);
}

inline void click(QWidget& control) {
    clickAt(*control.window(), control.mapTo(control.window(), control.rect().center()));
}
inline void click(const QWidget& window, const char* name) {
    click(find<QWidget>(window, name));
}

// With a registry, dialogs and a shell of the test's own.
struct ProgramUnderTest {
    TempDir dir;
    FakeDialogs dialogs;
    FakeShell shell;
    LocalDestinations destinations;
    RegistryFile registry{dir / "registry.json"};
    std::optional<Program> program;

    // Through the start window into the main one, which has the focus then.
    void start(AudioLibraryFile& file, const FileNames& names, std::function<Instruments(AudioLibrary&)> createMusic) {
        program.reset();
        program.emplace(Foundation{file, std::move(createMusic), registry, names, destinations, dialogs, shell},
                        std::vector<std::string>());
        ASSERT_TRUE(giveFocus(program->startWindow()));
        click(program->startWindow(), "CON");
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
    void restart() {
        start(libraryFile, names, [this](AudioLibrary&) {
            auto made = std::make_unique<FakeMusic>();
            music = made.get();
            return Instruments{std::move(made), std::make_unique<FakeSystemMixer>()};
        });
    }
};

}  // namespace melvane::test
