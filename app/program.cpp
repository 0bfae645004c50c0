#include "app/program.h"

#include <QCoreApplication>
#include <utility>

#include "app/start_checks.h"
#include "settings/guarded.h"
#include "state/window_patience.h"

namespace melvane {

namespace {

// In the language that the user chose last; the windows speak it from the first one on.
modLang storedLanguage(const SettingsStore& store, const FileNames& names) {
    const std::string code = store.ReadSetting(kProductKey, "language");
    modLang language;
    language.InitLanguage(names, code.empty() ? "en" : code);
    return language;
}

}  // namespace

Program::Program(const Foundation& foundation, std::vector<std::string> files)
    : on_(foundation),
      files_(std::move(files)),
      store_(on_.registry),
      zoom_(store_),
      language_(storedLanguage(store_, on_.names)),
      start_(language_) {
    on_.shell.useLanguage(language_.languageCode());
    QObject::connect(&start_, &MixerStart::continued, &start_, [this] {
        try {
            openMainWindow();
        } catch (const std::exception& error) {
            refuseStart(errorMessage(language_, error));
        }
    });
    QObject::connect(&start_, &MixerStart::closed, &start_, [this] {
        if (mixer_ && !main_) mixer_->midi().CloseDevice();
    });
    start_.show();
}

void Program::openMainWindow() {
    if (!startLibrary()) return;
    instruments_ = on_.createMusic(*library_);
    const Environment environment{*library_, *instruments_.music, *instruments_.mixer,
                                  on_.names, on_.destinations,    on_.dialogs,
                                  on_.shell, language_,           frmMain::processWindowEvents};
    mixer_.emplace(environment);
    mixer_->Form_Load(&store_);
    if (!start_.isVisible()) return;
    main_.emplace(*mixer_, environment, store_, on_.documents,
                  Workshop{on_.libraryFile, on_.createPlainMusic, on_.otherNames, on_.destinations});
    main_->DoRest();
    start_.hide();  // the windows that open with the main one may have its place
    main_->show();
    start_.close();
    main_->bringBackMixes();
    main_->takeFiles(files_);
}

void Program::endSession() {
    main_ ? main_->endSession() : static_cast<void>(start_.close());
    if (mixer_) mixer_->sourceFiles().giveUp();
    QCoreApplication::exit();
}

void Program::startedAgain(const std::vector<std::string>& files) {
    if (!main_) {
        files_.insert(files_.end(), files.begin(), files.end());
        return start_.comeForward();
    }
    main_->comeForward();
    main_->takeFiles(files);
}

bool Program::startLibrary() {
    StartResult started =
        startAudioLibrary(on_.libraryFile, on_.names, {.programDirectory = on_.names.programDirectory()},
                          [this](const std::function<void()>& search) { return waitFor(search); });
    library_ = std::move(started.library);
    if (started.message) refuseStart(language_.lang(*started.message));
    return library_ != nullptr;
}

void Program::refuseStart(const std::string& message) {
    on_.dialogs.messageBox(message, kProductCaption, BoxIcon::critical, BoxButtons::ok);
    QCoreApplication::exit(kCannotStart);
}

// False when the start window was closed meanwhile.
bool Program::waitFor(const std::function<void()>& search) {
    const auto wanted = [this] { return start_.isVisible(); };
    return whileWanted(frmMain::processWindowEvents, wanted, [search] { return search(), true; }).has_value();
}

}  // namespace melvane
