// Follows the reading of a chosen file: tells when it can't be read and how far it is decoded, and draws a song's
// outline behind the progress of the mix.
#pragma once

#include <QObject>
#include <QTimer>
#include <memory>
#include <string>
#include <vector>

#include "controls/overview_bar.h"
#include "platform/audio_library.h"
#include "rehearsal/waveforms.h"

namespace melvane {

class SongOverview : public QObject {
    Q_OBJECT

public:
    // Without a bar nothing is drawn.
    SongOverview(QObject* owner, AudioLibrary& library, Waveforms& waveforms, OverviewBar* bar);

    // Reads another file than the last one; what was being read of that is given up. "" for none.
    void show(const std::string& file);
    // The file was chosen again: it may be another one by now.
    void forget();
    // The file shown last can't be read as sound.
    bool failed() const { return failed_; }

Q_SIGNALS:
    // It can't be read, or more of it has been decoded.
    void told();

private:
    void look();
    void draw();

    OverviewBar* bar_;
    AudioLibrary& library_;
    Waveforms& waveforms_;
    std::string file_;
    bool failed_ = false;
    bool decodes_ = false;
    std::shared_ptr<Waveform> waveform_;
    QTimer timer_;  // runs while a file is read
};

}  // namespace melvane
