// Reads a chosen file in the background: tells when it can't be read, and draws a song's waveform behind the progress
// of the mix.
#pragma once

#include <QObject>
#include <QTimer>
#include <memory>
#include <string>
#include <vector>

#include "controls/overview_bar.h"
#include "platform/audio_library.h"

namespace melvane {

class SongOverview : public QObject {
    Q_OBJECT

public:
    // Without a bar nothing is drawn.
    SongOverview(QObject* owner, AudioLibrary& library, OverviewBar* bar);

    // Reads another song than the last one; what was being read of that is given up. "" for none.
    void show(const std::string& file);
    // The file was chosen again: it may be another one by now.
    void forget() { file_.clear(); }
    // The file shown last can't be read as sound.
    bool failed() const { return failed_; }

Q_SIGNALS:
    void unreadable();

private:
    void draw(std::vector<float> peaks, double scanned);
    void look();

    OverviewBar* bar_;
    AudioLibrary& library_;
    std::string file_;
    bool failed_ = false;
    std::unique_ptr<WaveformScan> scan_;
    QTimer timer_;  // runs while a file is read
};

}  // namespace melvane
