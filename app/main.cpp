// The program with its windows. Implementations of the platform's interfaces are chosen here.
#include <QApplication>
#include <QFileInfo>
#include <csignal>
#include <cstdio>
#include <memory>
#include <optional>

#include "app/MixerStart.h"
#include "app/frmMain.h"
#include "app/start_checks.h"
#include "controls/program_icon.h"
#include "controls/skin.h"
#include "desktop/desktop_dialogs.h"
#include "desktop/desktop_shell.h"
#include "desktop/library_file.h"
#include "desktop/local_file_names.h"
#include "desktop/registry_file.h"
#include "desktop/taskbar_progress.h"
#include "desktop/toolkit_texts.h"
#include "music/music.h"
#include "settings/window_zoom.h"
#include "state/guarded.h"

namespace melvane {

namespace {

constexpr int kCannotStart = 1;

// What was named behind the program's name, as absolute paths.
std::vector<std::string> filesOf(const QStringList& arguments) {
    std::vector<std::string> files;
    for (const QString& argument : arguments.mid(1))
        files.push_back(QFileInfo(argument).absoluteFilePath().toStdString());
    return files;
}

class Program {
public:
    Program();
    int run();

private:
    void openMainWindow();
    bool startLibrary();

    // In this order, so that each goes before what it uses.
    RegistryFile registry_{RegistryFile::defaultPath()};
    SettingsStore store_{registry_};
    WindowZoom zoom_{store_};
    modLang language_;
    ToolkitTexts dialogTexts_;
    LocalFileNames names_;
    DesktopDialogs dialogs_;
    DesktopShell shell_{names_.programDirectory()};
    TaskbarProgress taskbar_;
    LibraryFile libraryFile_;
    std::unique_ptr<AudioLibrary> library_;
    music::Music music_;
    std::optional<Mixer> mixer_;
    std::optional<frmMain> main_;
    std::optional<MixerStart> start_;
};

Program::Program() {
    const std::string code = store_.ReadSetting(kProductKey, "language");
    language_.InitLanguage(names_.systemDirectory(), code.empty() ? "en" : code);
    dialogTexts_.use(language_.languageCode());
    start_.emplace(language_);
    QObject::connect(&*start_, &MixerStart::continued, &*start_, [this] {
        if (!guarded(dialogs_, [this] { openMainWindow(); })) QCoreApplication::exit(kCannotStart);
    });
}

int Program::run() {
    start_->show();
    return QApplication::exec();
}

void Program::openMainWindow() {
    if (!startLibrary()) return QCoreApplication::exit(kCannotStart);
    music_ = music::createMusic(*library_, {});
    const Environment environment{*library_, *music_.system, *music_.mixer, names_,
                                  dialogs_,  shell_,         language_,     frmMain::processWindowEvents};
    mixer_.emplace(environment);
    mixer_->Form_Load(&store_);
    main_.emplace(*mixer_, environment, store_);
    QObject::connect(&*main_, &frmMain::languageChanged, &*main_,
                     [this](const QString& code) { dialogTexts_.use(code.toStdString()); });
    QObject::connect(&*main_, &frmMain::progressChanged, &*main_, [this](double done) { taskbar_.showProgress(done); });
    main_->DoRest();
    main_->show();
    main_->takeFiles(filesOf(QCoreApplication::arguments()));
    start_->close();
}

bool Program::startLibrary() {
    StartResult started = startAudioLibrary(libraryFile_, names_, {.programDirectory = names_.programDirectory()});
    library_ = std::move(started.library);
    if (!started.message) return true;
    dialogs_.messageBox(language_.lang(*started.message), kProductCaption, BoxIcon::critical, BoxButtons::ok);
    return false;
}

}  // namespace

}  // namespace melvane

int main(int argc, char** argv) {
#ifdef SIGCHLD
    // The encoder's exit status is wanted, whatever the parent had set.
    std::signal(SIGCHLD, SIG_DFL);
#endif
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("melvane"));
    QGuiApplication::setDesktopFileName(QStringLiteral("melvane"));
    melvane::applyStyle(app);
    QApplication::setWindowIcon(melvane::programIcon());
    try {
        return melvane::Program().run();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "melvane: %s\n", error.what());
        return melvane::kCannotStart;
    }
}
