#include "app/frm_status_row.h"

#include "controls/skin.h"
#include "controls/window_layout.h"
#include "controls/zoom.h"

namespace melvane {

StatusRow::StatusRow(QWidget* window, AudioLibrary& library, Waveforms& waveforms, const QRect& overview,
                     const QRect& line)
    : QObject(window),
      overview_(new OverviewBar(window, overview)),
      readers_{new SongOverview(this, library, waveforms, overview_),
               new SongOverview(this, library, waveforms, nullptr)},
      status_(new ElidedLabel(window, Qt::ElideRight)) {
    overview_->setObjectName(QStringLiteral("progress"));
    status_->setObjectName(QStringLiteral("status"));
    layOut(status_, line);
    for (const SongOverview* reader : readers_) connect(reader, &SongOverview::told, this, &StatusRow::read);
}

void StatusRow::readFiles(const PathFields& files) {
    readers_[0]->show(files.background);
    readers_[1]->show(files.vocal);
}

void StatusRow::show(double done, const StatusLine& line) {
    overview_->setProgress(static_cast<int>(done * OverviewBar::kColumns));
    if (line == told_) return;
    told_ = line;
    status_->setFullText(toQt(line.text), {}, {}, toQt(line.brief));
    setStyleState(*status_, "warned", line.warned);
    setStyleState(*status_, "failed", line.failed);
}

}  // namespace melvane
