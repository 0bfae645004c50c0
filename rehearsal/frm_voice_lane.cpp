#include "rehearsal/frm_voice_lane.h"

#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <utility>

#include "controls/skin.h"
#include "controls/window_layout.h"
#include "controls/zoom.h"
#include "rehearsal/place_text.h"

namespace melvane {

namespace {

constexpr int kDragged = 4;  // units that make a click a drag
constexpr double kShiftPart = 0.1;
constexpr int kRepeated = 110;  // of 255: how strong a loop's later rounds are
constexpr double kMillion = 1e6;
constexpr double kMsFrames = kSampleRate / 1000.0;

}  // namespace

VoiceLane::VoiceLane(QWidget* window, const TimeView& view, const Rehearsal& rehearsal, const RunState& run,
                     const modLang& language)
    : Lane(window, "voiceLane", view, rehearsal), run_(run), language_(language) {
    setFocusPolicy(Qt::TabFocus);
    setCursor(Qt::SizeHorCursor);
}

void VoiceLane::setOutline(std::shared_ptr<const WaveformPyramid> outline) {
    outline_ = std::move(outline);
    redraw();
}

// From the song's time to that of the recording, whose clock may be another.
Extremes VoiceLane::between(std::int64_t begin, std::int64_t end) const {
    const std::int64_t earlier = earlierOf(run_);
    const double rate = 1 + run_.voicePlace.driftPpm / kMillion;
    const auto own = [&](std::int64_t frame) { return std::llround(static_cast<double>(frame + earlier) * rate); };
    return outline_->between(own(begin), own(end));
}

void VoiceLane::drawPage(QPainter& painter) {
    if (!outline_) return;
    const Extremes highest = outline_->between(0, outline_->frames());
    drawWave(painter, QColor(skin::kVoice), highest,
             [this](std::int64_t begin, std::int64_t end) { return between(begin, end); });
    const std::int64_t length = outline_->frames();
    if (!run_.voicePlace.given() && length > 0 && songFrames_ > 0) {
        QColor repeated(skin::kVoice);
        repeated.setAlpha(kRepeated);
        drawWave(painter, repeated, highest, [&](std::int64_t begin, std::int64_t end) {
            const std::int64_t own = begin + earlierOf(run_);
            if (own < length || begin >= songFrames_) return Extremes{};
            return outline_->between(own % length, own % length + end - begin);
        });
    }
    drawLoop(painter);
}

double VoiceLane::withinReach(double earlier) const {
    const double longest = outline_ ? static_cast<double>(outline_->frames()) : 0;
    return std::clamp(earlier, -static_cast<double>(songFrames_), longest);
}

VoicePlace VoiceLane::placeAt(double earlier) const {
    return {std::llround(withinReach(earlier)), run_.voicePlace.driftPpm};
}

void VoiceLane::change(const VoicePlace& place) {
    if (place == run_.voicePlace) return;
    Q_EMIT changeBegins();
    Q_EMIT placeWanted(place);
    Q_EMIT changeEnds();
}

// To whole milliseconds, so that steps add up.
void VoiceLane::moveBy(int milliseconds) {
    const double now = std::round(static_cast<double>(run_.voicePlace.earlier) / kMsFrames);
    if (outline_) change(placeAt((now + milliseconds) * kMsFrames));
}

void VoiceLane::putBack() {
    change({});
}

void VoiceLane::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    hold_ = Hold{event->position().x(), static_cast<double>(run_.voicePlace.earlier)};
}

void VoiceLane::mouseMoveEvent(QMouseEvent* event) {
    if (!hold_ || !outline_) return;
    const double way = event->position().x() - hold_->x;
    if (!hold_->moved && std::abs(way) < zoomed(kDragged)) return;
    if (!std::exchange(hold_->moved, true)) Q_EMIT changeBegins();
    hold_->x = event->position().x();
    const double speed = event->modifiers() & Qt::ShiftModifier ? kShiftPart : 1;
    hold_->earlier = withinReach(hold_->earlier - way * view().framesPerPixel() * speed);
    const VoicePlace place = placeAt(hold_->earlier);
    if (place != run_.voicePlace) Q_EMIT placeWanted(place);
}

void VoiceLane::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !hold_) return;
    const bool moved = hold_->moved;
    hold_.reset();
    if (moved)
        Q_EMIT changeEnds();
    else
        Q_EMIT seekWanted(view().frameAt(event->position().x()));
}

// The press before it was a click of its own.
void VoiceLane::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) putBack();
}

void VoiceLane::keyPressEvent(QKeyEvent* event) {
    const int step = event->modifiers() & Qt::ShiftModifier ? kFineMs : kCoarseMs;
    switch (event->key()) {
        case Qt::Key_Left:
            return moveBy(step);
        case Qt::Key_Right:
            return moveBy(-step);
        case Qt::Key_Delete:
        case Qt::Key_Backspace:
            return putBack();
        default:
            Lane::keyPressEvent(event);
    }
}

Lane::Value VoiceLane::value() const {
    const auto seconds = [](std::int64_t frames) { return static_cast<double>(frames) / kSampleRate; };
    const std::int64_t earlier = run_.voicePlace.earlier;
    return {seconds(std::min(-songFrames_, earlier - 1)), seconds(std::max(outline_ ? outline_->frames() : 0, earlier)),
            kMsFrames / kSampleRate, seconds(earlier), toQt(placeText(language_, earlierOf(run_)))};
}

void VoiceLane::setValue(double seconds) {
    change(placeAt(seconds * kSampleRate));
}

}  // namespace melvane
