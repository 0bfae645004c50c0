// How the main window takes files: one choice or opening at a time, and what waits for it.
#include <QPointer>
#include <algorithm>
#include <utility>

#include "app/frmMain.h"
#include "base/paths.h"
#include "controls/window_layout.h"
#include "job/job_file.h"

namespace melvane {

namespace {

constexpr std::array kRowTexts = {OwnText::karaokeBackground, OwnText::vocalRecording, OwnText::mixingDestination};
constexpr std::array kEmptyTexts = {OwnText::dropSongHere, OwnText::dropVoiceHere, OwnText::dropDestinationHere};

bool isAddress(const std::string& path) {
    return path.find("://") != std::string::npos;
}

}  // namespace

void frmMain::withButtonsOff(const std::function<void()>& action) {
    if (files_.choosing) return;
    files_.choosing = true;
    const QPointer<QWidget> focus = focusWidget();
    refresh();
    attempt(action);
    files_.choosing = false;
    refresh();
    if (focus && focus->isEnabled()) focus->setFocus();
}

void frmMain::BR_Click(int index) {
    withButtonsOff([&] { mixer_.sourceFiles().BR_Click(index); });
    rememberFiles();
}

// The run before was one of other files.
void frmMain::noteTaken(int index) {
    report_.told = false;
    if (index == kDestinationField) return;
    files_.toRemember = true;
    steps_->clear();
    status_->forget(static_cast<std::size_t>(index));
    mixer_.rehearsal().forget();
    files_.toShow = files_.toLineUp = true;
}

void frmMain::rememberFiles() {
    if (!std::exchange(files_.toRemember, false)) return;
    const RegistryBatch batch = store_.batch(RegistryAccess::change);
    jobs_->remember();
    recent_.keepFolders(mixer_.sourceFiles().lastFolder);
}

void frmMain::usePort(bool running) {
    if (!files_.otherPort || files_.choosing || running) return;
    files_.otherPort = false;
    mixer_.rehearsal().end();
    withButtonsOff([this] { mixer_.sourceFiles().reopenMidi(); });
}

void frmMain::takeWaiting(bool running) {
    if (files_.waiting.empty() || files_.choosing || running) return;
    // Once what is under way is over.
    QMetaObject::invokeMethod(
        this, [this] { takeFiles(std::exchange(files_.waiting, {})); }, Qt::QueuedConnection);
}

std::optional<int> frmMain::fieldMeant(const std::vector<std::string>& paths, std::optional<int> pointedAt) {
    return paths.size() == 1 || pointedAt == kDestinationField ? pointedAt : std::nullopt;
}

void frmMain::takeFiles(const std::vector<std::string>& paths, std::optional<int> pointedAt) {
    if (mixer_.isRunning() || files_.choosing) {
        files_.waiting.insert(files_.waiting.end(), paths.begin(), paths.end());
        return;
    }
    std::vector<std::string> ordered = openJobsAmong(paths);
    if (ordered.empty()) return refresh();
    pointedAt = fieldMeant(ordered, pointedAt);
    std::vector<std::string> unusable;
    withButtonsOff([&] {
        mixer_.sourceFiles().putInOrder(ordered, pointedAt);
        for (const std::string& path : ordered)
            if (!mixer_.sourceFiles().take(path, pointedAt)) unusable.push_back(path);
    });
    rememberFiles();
    refresh();
    if (!unusable.empty()) tellUnusable(unusable);
}

// In one message, however many they are.
void frmMain::tellUnusable(const std::vector<std::string>& paths) {
    constexpr std::size_t kShown = 8;
    std::string names;
    for (std::size_t i = 0; i < std::min(paths.size(), kShown); ++i) names += "\n" + paths[i];
    if (paths.size() > kShown) names += "\n…";
    const modLang& language = environment_.language;
    std::string text = language.ownText(OwnText::cannotUseFiles, names);
    if (std::ranges::any_of(paths, isAddress)) text += "\n" + language.ownText(OwnText::cannotUseAddresses);
    tell(text, BoxIcon::information);
}

// Of several jobs the last one stays.
std::vector<std::string> frmMain::openJobsAmong(std::vector<std::string> paths) {
    const auto jobs = std::ranges::stable_partition(paths, [](const std::string& path) { return !isJobFile(path); });
    for (const std::string& job : jobs) withButtonsOff([&] { jobs_->openFile(job); });
    paths.erase(jobs.begin(), jobs.end());
    return paths;
}

// A voice is lined up once nothing else is under way; a mix comes first.
void frmMain::showFiles(bool running) {
    if (std::exchange(files_.toShow, false)) windows_->takeFiles();
    if (files_.choosing || running || fast_.going()) return;
    if (std::exchange(files_.toLineUp, false)) lineUp_->startByItself();
}

void frmMain::refreshPaths() {
    const PathFields& fields = mixer_.fields();
    const std::array paths = {&fields.background, &fields.vocal, &fields.destination};
    for (std::size_t i = 0; i < paths.size(); ++i) {
        const auto text = [&](OwnText t) { return toQt(environment_.language.ownText(t)); };
        path_[i]->setFullText(toQt(*paths[i]), text(kRowTexts[i]), text(kEmptyTexts[i]), toQt(fileName(*paths[i])));
    }
    status_->readFiles(fields);
}

}  // namespace melvane
