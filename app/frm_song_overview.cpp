#include "app/frm_song_overview.h"

#include "audio/modAudio.h"

namespace melvane {

namespace {
constexpr int kLookMs = 50;
}

SongOverview::SongOverview(OverviewBar* bar, AudioLibrary& library) : QObject(bar), bar_(bar), library_(library) {
    timer_.setInterval(kLookMs);
    connect(&timer_, &QTimer::timeout, this, &SongOverview::look);
}

void SongOverview::show(const std::string& file) {
    if (file == file_) return;
    file_ = file;
    scan_.reset();
    bar_->setOverview({});
    bar_->setScanned(1);
    // A MIDI song has no waveform before it is played.
    if (!file.empty() && !isMidiFile(file)) scan_ = library_.scanWaveform(file, OverviewBar::kColumns);
    if (scan_)
        timer_.start();
    else
        timer_.stop();
}

void SongOverview::look() {
    bar_->setOverview(scan_->peaks());
    bar_->setScanned(scan_->progress());
    if (!scan_->finished() && !scan_->failed()) return;
    bar_->setScanned(1);
    scan_.reset();
    timer_.stop();
}

}  // namespace melvane
