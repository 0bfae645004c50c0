// What the main window does with files that are dragged over it.
#include <QDragEnterEvent>
#include <QMimeData>
#include <QUrl>
#include <algorithm>

#include "app/frmMain.h"
#include "base/paths.h"
#include "controls/skin.h"
#include "job/job_file.h"
#include "state/window_patience.h"

namespace melvane {

namespace {

// How long the window waits for a disk before the fields are lit.
constexpr std::chrono::milliseconds kDiskPatience{30};

// What is dragged, by its names in the file system, or else by its addresses.
std::vector<std::string> pathsOf(const QList<QUrl>& files) {
    std::vector<std::string> paths;
    for (const QUrl& url : files)
        paths.push_back((url.isLocalFile() ? url.toLocalFile() : url.toDisplayString()).toStdString());
    return paths;
}

}  // namespace

frmMain::Takers frmMain::takersOf(const std::vector<std::string>& paths, const PathFields& chosen) {
    Takers takers{};
    for (std::size_t place = 0; place < takers.size(); ++place) {
        FieldSet& fields = takers.at(place);
        const auto pointedAt = place < fields.size() ? std::optional(static_cast<int>(place)) : std::nullopt;
        for (const std::string& path : paths) {
            if (isJobFile(path) && isFile(path)) fields.fill(true);
            const auto field = fieldFor(path, fieldMeant(paths, pointedAt), chosen);
            if (field == kSongOrVoice) fields[kBackgroundField] = fields[kVocalField] = true;
            if (field && field != kSongOrVoice) fields.at(static_cast<std::size_t>(*field)) = true;
        }
    }
    return takers;
}

void frmMain::dragEnterEvent(QDragEnterEvent* event) {
    if (mixer_.isRunning() || files_.choosing || !event->mimeData()->hasUrls()) return;
    if (!(event->possibleActions() & Qt::CopyAction)) return;
    takers_ = {};
    takersSearch_ = beside(
        [paths = pathsOf(event->mimeData()->urls()), chosen = mixer_.fields()] { return takersOf(paths, chosen); });
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
    takeDropped(event->mimeData()->urls(), fieldAt(event->position().toPoint()));
}

// Once the drop is over: opening a song takes a moment, and a box may come.
void frmMain::takeDropped(const QList<QUrl>& files, std::optional<int> field) {
    QMetaObject::invokeMethod(
        this, [this, paths = pathsOf(files), field] { takeFiles(paths, field); }, Qt::QueuedConnection);
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
