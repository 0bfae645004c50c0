// The program with its windows. Implementations of the platform's interfaces are chosen here.
#include <QApplication>
#include <QLibraryInfo>
#include <QTranslator>
#include <csignal>
#include <cstdio>
#include <memory>
#include <optional>

#include "app/MixerStart.h"
#include "app/frmMain.h"
#include "app/start_checks.h"
#include "controls/skin.h"
#include "platform/desktop/desktop_dialogs.h"
#include "platform/desktop/library_file.h"
#include "platform/desktop/local_file_names.h"
#include "platform/desktop/registry_file.h"
#include "platform/music/music.h"
#include "state/guarded.h"

namespace melvane {

namespace {

constexpr int kCannotStart = 1;

class Program {
public:
    Program();
    int run();

private:
    void translateDialogs();
    void openMainWindow();
    bool startLibrary();

    // In this order, so that each goes before what it uses.
    RegistryFile registry_{RegistryFile::defaultPath()};
    SettingsStore store_{registry_};
    modLang language_;
    QTranslator dialogTexts_;
    LocalFileNames names_;
    DesktopDialogs dialogs_;
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
    translateDialogs();
    start_.emplace(language_);
    QObject::connect(&*start_, &MixerStart::continued, &*start_, [this] {
        if (!guarded(dialogs_, [this] { openMainWindow(); })) QCoreApplication::exit(kCannotStart);
    });
}

// The toolkit's own texts: the buttons of boxes and file dialogs.
void Program::translateDialogs() {
    const QString code = QString::fromStdString(language_.languageCode());
    if (dialogTexts_.load(QStringLiteral("qtbase_") + code, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&dialogTexts_);
}

int Program::run() {
    start_->show();
    return QApplication::exec();
}

void Program::openMainWindow() {
    if (!startLibrary()) return QCoreApplication::exit(kCannotStart);
    music_ = music::createMusic(*library_, {});
    const Environment environment{
        *library_, *music_.system, *music_.mixer, names_, dialogs_, language_, frmMain::processWindowEvents};
    mixer_.emplace(environment);
    mixer_->Form_Load(&store_);
    main_.emplace(*mixer_, environment, store_);
    main_->DoRest();
    main_->show();
    start_->close();
}

bool Program::startLibrary() {
    StartResult started = startAudioLibrary(libraryFile_, names_, {.programDirectory = names_.programDirectory()});
    library_ = std::move(started.library);
    if (started.message == StartMessage::none) return true;
    dialogs_.messageBox(language_.lang(static_cast<int>(started.message)), kProductCaption, BoxIcon::critical,
                        BoxButtons::ok);
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
    try {
        return melvane::Program().run();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "melvane: %s\n", error.what());
        return melvane::kCannotStart;
    }
}
