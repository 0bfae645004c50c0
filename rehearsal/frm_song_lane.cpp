#include "rehearsal/frm_song_lane.h"

#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <utility>
#include <vector>

#include "controls/skin.h"
#include "controls/zoom.h"

namespace melvane {

namespace {

constexpr int kHueStep = 47;  // neighbours differ
constexpr int kHueOfSong = 35;
constexpr int kSaturation = 150;
constexpr int kBrightness = 235;
constexpr int kDim = 70;  // of 255
constexpr int kLeastKeys = 24;

QColor colourOf(std::int16_t channel, bool heard) {
    QColor colour = QColor::fromHsv((kHueOfSong + kHueStep * channel) % 360, kSaturation, kBrightness);
    if (!heard) colour = QColor::fromRgb(skin::kFaint);
    if (!heard) colour.setAlpha(kDim);
    return colour;
}

}  // namespace

SongLane::SongLane(QWidget* window, const TimeView& view, const Rehearsal& rehearsal, const MidiState& midi)
    : Lane(window, "songLane", view, rehearsal), midi_(midi) {}

void SongLane::setOutline(std::shared_ptr<const WaveformPyramid> outline) {
    outline_ = std::move(outline);
    redraw();
}

void SongLane::setShowsNotes(bool shows) {
    showsNotes_ = shows;
    redraw();
}

bool SongLane::isHeard(std::int16_t channel) const {
    const bool chosen = midi_.soloed == 0 || (midi_.soloed >> channel & 1) != 0;
    return chosen && midi_.ChannelInfo[channel].switchedOn != 0;
}

void SongLane::drawPage(QPainter& painter) {
    if (showsNotes_)
        drawNotes(painter);
    else if (outline_)
        drawWave(painter, QColor(skin::kSong), outline_->between(0, outline_->frames()),
                 [this](std::int64_t begin, std::int64_t end) { return outline_->between(begin, end); });
    drawLoop(painter);
}

// Silenced ones first, under the others. Where many notes of a row lie on one pixel, one of them is enough.
void SongLane::drawNotes(QPainter& painter) const {
    const std::vector<SongNote>& notes = midi_.notes;
    if (notes.empty()) return;
    const auto [lowest, highest] = std::ranges::minmax(notes, {}, &SongNote::key);
    const int keys = std::max(highest.key - lowest.key + 1, kLeastKeys);
    const int least = (lowest.key + highest.key + 1 - keys) / 2;
    const double row = static_cast<double>(height() - zoomed(2)) / keys;
    const double tall = std::max(row, 1.0);
    const std::int64_t first = view().first();
    const std::int64_t behind = first + view().shown();
    for (const bool heard : {false, true}) {
        std::vector<double> drawnTo(static_cast<std::size_t>(keys), -1);
        for (const SongNote& note : notes) {
            if (note.begin >= behind) break;
            if (note.end < first || isHeard(note.channel) != heard) continue;
            const double x = std::max(view().xOf(note.begin), 0.0);
            const double end = std::max(view().xOf(note.end), x + 1);
            const int line = note.key - least;
            double& drawn = drawnTo[static_cast<std::size_t>(line)];
            if (end <= drawn) continue;
            drawn = end;
            painter.fillRect(QRectF(x, height() - zoomed(1) - (line + 1) * row, end - x, tall),
                             colourOf(note.channel, heard));
        }
    }
}

void SongLane::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) Q_EMIT seekWanted(view().frameAt(event->position().x()));
}

}  // namespace melvane
