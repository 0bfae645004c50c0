#include "app/frm_song_overview.h"

#include <algorithm>
#include <utility>

#include "audio/modAudio.h"

namespace melvane {

namespace {

constexpr int kLookMs = 50;
constexpr float kFullScale = 32767;

std::vector<float> peaksOf(const WaveformPyramid& outline) {
    std::vector<float> peaks;
    const auto place = [&](int column) { return outline.frames() * column / OverviewBar::kColumns; };
    for (int column = 0; column < OverviewBar::kColumns; ++column) {
        const std::int64_t begin = place(column);
        const Extremes extremes = outline.between(begin, std::max(place(column + 1), begin + 1));
        peaks.push_back(static_cast<float>(std::max(int{extremes.highest}, -int{extremes.lowest})) / kFullScale);
    }
    return peaks;
}

}  // namespace

SongOverview::SongOverview(QObject* owner, AudioLibrary& library, Waveforms& waveforms, OverviewBar* bar)
    : QObject(owner), bar_(bar), library_(library), waveforms_(waveforms) {
    timer_.setInterval(kLookMs);
    connect(&timer_, &QTimer::timeout, this, &SongOverview::look);
}

void SongOverview::forget() {
    file_.clear();
    if (waveform_) waveform_->forget();
}

void SongOverview::show(const std::string& file) {
    if (file == file_) return;
    forget();
    file_ = file;
    failed_ = false;
    // A MIDI song has no waveform before it is played.
    waveform_ = file.empty() || isMidiFile(file) ? nullptr : waveforms_.read(file);
    draw();
    if (waveform_)
        timer_.start();
    else
        timer_.stop();
}

void SongOverview::look() {
    const bool ended = waveform_->finished();
    failed_ = ended && waveform_->failed();
    const bool decoded = std::exchange(decodes_, library_.decoding(file_).running);
    draw();
    if (ended) timer_.stop();
    if (failed_ || decoded || decodes_) Q_EMIT told();
}

// Decoding comes before reading.
void SongOverview::draw() {
    if (!bar_) return;
    const auto outline = waveform_ ? waveform_->outline() : nullptr;
    bar_->setOverview(outline ? peaksOf(*outline) : std::vector<float>());
    double scanned = 1;
    if (waveform_ && !waveform_->finished())
        scanned = outline ? static_cast<double>(outline->known()) /
                                static_cast<double>(std::max<std::int64_t>(outline->frames(), 1))
                          : library_.decoding(file_).progress;
    bar_->setScanned(scanned);
}

}  // namespace melvane
