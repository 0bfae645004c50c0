#include "app/program.h"

#include <QCoreApplication>
#include <utility>

#include "app/start_checks.h"
#include "state/guarded.h"

namespace melvane {

namespace {

// In the language that the user chose last; the windows speak it from the first one on.
modLang storedLanguage(const SettingsStore& store, const FileNames& names) {
    const std::string code = store.ReadSetting(kProductKey, "language");
    modLang language;
    language.InitLanguage(names.systemDirectory(), code.empty() ? "en" : code);
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
        if (!guarded(on_.dialogs, [this] { openMainWindow(); })) QCoreApplication::exit(kCannotStart);
    });
    start_.show();
}

void Program::openMainWindow() {
    if (!startLibrary()) return QCoreApplication::exit(kCannotStart);
    instruments_ = on_.createMusic(*library_);
    const Environment environment{*library_, *instruments_.music, *instruments_.mixer,
                                  on_.names, on_.destinations,    on_.dialogs,
                                  on_.shell, language_,           frmMain::processWindowEvents};
    mixer_.emplace(environment);
    mixer_->Form_Load(&store_);
    main_.emplace(*mixer_, environment, store_);
    main_->DoRest();
    main_->show();
    start_.close();
    main_->bringBackMixes();
    main_->takeFiles(files_);
}

void Program::endSession() {
    if (main_) main_->endSession();
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
        startAudioLibrary(on_.libraryFile, on_.names, {.programDirectory = on_.names.programDirectory()});
    library_ = std::move(started.library);
    if (!started.message) return true;
    on_.dialogs.messageBox(language_.lang(*started.message), kProductCaption, BoxIcon::critical, BoxButtons::ok);
    return false;
}

}  // namespace melvane
