// Draws the waveform of the chosen song behind the progress of the mix. The file is read in the background.
#pragma once

#include <QObject>
#include <QTimer>
#include <memory>
#include <string>

#include "controls/overview_bar.h"
#include "platform/audio_library.h"

namespace melvane {

class SongOverview : public QObject {
    Q_OBJECT

public:
    SongOverview(OverviewBar* bar, AudioLibrary& library);

    // Reads another song than the last one; what was being read of that is given up. "" for none.
    void show(const std::string& file);

private:
    void look();

    OverviewBar* bar_;
    AudioLibrary& library_;
    std::string file_;
    std::unique_ptr<WaveformScan> scan_;
    QTimer timer_;  // runs while a file is read
};

}  // namespace melvane
