// What the main window does with files that are dragged over it, and with those that it is handed.
#include <QDragEnterEvent>
#include <QMimeData>
#include <QUrl>
#include <algorithm>

#include "app/frmMain.h"
#include "controls/skin.h"
#include "controls/window_layout.h"
#include "state/window_patience.h"

namespace melvane {

namespace {

// How long the window waits for a disk before the fields are lit.
constexpr std::chrono::milliseconds kDiskPatience{30};

bool isAddress(const std::string& path) {
    return path.find("://") != std::string::npos;
}

// What is dragged, by its names in the file system, or else by its addresses.
std::vector<std::string> pathsOf(const QMimeData& data) {
    std::vector<std::string> paths;
    for (const QUrl& url : data.urls())
        paths.push_back((url.isLocalFile() ? url.toLocalFile() : url.toDisplayString()).toStdString());
    return paths;
}

// Song and voice that come together are told apart by themselves.
std::optional<int> fieldMeant(const std::vector<std::string>& paths, std::optional<int> pointedAt) {
    return paths.size() == 1 || pointedAt == kDestinationField ? pointedAt : std::nullopt;
}

}  // namespace

void frmMain::takeFiles(const std::vector<std::string>& paths, std::optional<int> pointedAt) {
    if (mixer_.isRunning() || choosing_) {
        waiting_.insert(waiting_.end(), paths.begin(), paths.end());
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

frmMain::Takers frmMain::takersOf(const std::vector<std::string>& paths, const PathFields& chosen) {
    Takers takers{};
    for (std::size_t place = 0; place < takers.size(); ++place) {
        FieldSet& fields = takers.at(place);
        const auto pointedAt = place < fields.size() ? std::optional(static_cast<int>(place)) : std::nullopt;
        for (const std::string& path : paths) {
            const auto field = fieldFor(path, fieldMeant(paths, pointedAt), chosen);
            if (field == kSongOrVoice) fields[kBackgroundField] = fields[kVocalField] = true;
            if (field && field != kSongOrVoice) fields.at(static_cast<std::size_t>(*field)) = true;
        }
    }
    return takers;
}

void frmMain::dragEnterEvent(QDragEnterEvent* event) {
    if (mixer_.isRunning() || choosing_ || !event->mimeData()->hasUrls()) return;
    if (!(event->possibleActions() & Qt::CopyAction)) return;
    takers_ = {};
    takersSearch_ =
        beside([paths = pathsOf(*event->mimeData()), chosen = mixer_.fields()] { return takersOf(paths, chosen); });
    isReady(takersSearch_, kDiskPatience);
    dragMoveEvent(event);
}

void frmMain::dragMoveEvent(QDragMoveEvent* event) {
    // A file that is moved would be removed by who gave it.
    event->setDropAction(Qt::CopyAction);
    event->accept();
    showTakers(fieldAt(event->position().toPoint()));
}

void frmMain::dragLeaveEvent(QDragLeaveEvent*) {
    light({});
}

void frmMain::dropEvent(QDropEvent* event) {
    event->setDropAction(Qt::CopyAction);
    event->accept();
    light({});
    // Once the drop is over: opening a song takes a moment, and a box may come.
    QMetaObject::invokeMethod(
        this,
        [this, paths = pathsOf(*event->mimeData()), field = fieldAt(event->position().toPoint())] {
            takeFiles(paths, field);
        },
        Qt::QueuedConnection);
}

std::optional<int> frmMain::fieldAt(const QPoint& place) const {
    for (std::size_t i = 0; i < path_.size(); ++i)
        if (path_[i]->geometry().united(BR_[i]->geometry()).contains(place)) return static_cast<int>(i);
    return std::nullopt;
}

void frmMain::showTakers(std::optional<int> pointedAt) {
    if (takersSearch_.valid() && isReady(takersSearch_)) takers_ = takersSearch_.get();
    light(takers_.at(pointedAt ? static_cast<std::size_t>(*pointedAt) : takers_.size() - 1));
}

void frmMain::light(const FieldSet& fields) {
    for (std::size_t i = 0; i < path_.size(); ++i) setStyleState(*path_[i], "dropping", fields.at(i));
}

}  // namespace melvane
