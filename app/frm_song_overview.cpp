#include "app/frm_song_overview.h"

#include <utility>

#include "audio/modAudio.h"

namespace melvane {

namespace {
constexpr int kLookMs = 50;
}

SongOverview::SongOverview(QObject* owner, AudioLibrary& library, OverviewBar* bar)
    : QObject(owner), bar_(bar), library_(library) {
    timer_.setInterval(kLookMs);
    connect(&timer_, &QTimer::timeout, this, &SongOverview::look);
}

void SongOverview::show(const std::string& file) {
    if (file == file_) return;
    file_ = file;
    failed_ = false;
    scan_.reset();
    draw({}, 1);
    // A MIDI song has no waveform before it is played.
    if (!file.empty() && !isMidiFile(file)) scan_ = library_.scanWaveform(file, OverviewBar::kColumns);
    if (scan_)
        timer_.start();
    else
        timer_.stop();
}

void SongOverview::look() {
    failed_ = scan_->failed();
    const bool ended = failed_ || scan_->finished();
    draw(scan_->peaks(), ended ? 1 : scan_->progress());
    if (!ended) return;
    scan_.reset();
    timer_.stop();
    if (failed_) Q_EMIT unreadable();
}

void SongOverview::draw(std::vector<float> peaks, double scanned) {
    if (!bar_) return;
    bar_->setOverview(std::move(peaks));
    bar_->setScanned(scanned);
}

}  // namespace melvane
