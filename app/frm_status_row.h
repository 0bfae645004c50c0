// The foot of the main window: the song's overview with the progress of the mix over it, and the status line.
#pragma once

#include <QObject>
#include <array>

#include "app/frm_song_overview.h"
#include "app/main_status.h"
#include "controls/elided_label.h"
#include "controls/overview_bar.h"

namespace melvane {

class StatusRow : public QObject {
    Q_OBJECT

public:
    // Everything outlives it.
    StatusRow(QWidget* window, AudioLibrary& library, Waveforms& waveforms, const QRect& overview, const QRect& line);

    OverviewBar* overview() { return overview_; }

    // Reads the song and the voice, unless it has done so.
    void readFiles(const PathFields& files);
    // The song (0) or the voice (1) was chosen again: it may be another file by now.
    void forget(std::size_t source) { readers_.at(source)->forget(); }
    bool unreadable(std::size_t source) const { return readers_.at(source)->failed(); }

    // `done` of the mix, 0 to 1.
    void show(double done, const StatusLine& line);

Q_SIGNALS:
    // What is known of the files has changed.
    void read();

private:
    OverviewBar* overview_;
    std::array<SongOverview*, 2> readers_{};  // of song and voice
    ElidedLabel* status_;
    StatusLine told_;
};

}  // namespace melvane
