#include "rehearsal/frm_time_ruler.h"

#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <iterator>

#include "controls/skin.h"
#include "controls/window_layout.h"
#include "controls/zoom.h"
#include "rehearsal/place_text.h"

namespace melvane {

namespace {

// Seconds from one number to the next, and between them how many parts.
struct Grid {
    double step;
    int parts;
    int decimals;
};
constexpr Grid kGrids[] = {{0.01, 2, 2}, {0.02, 2, 2}, {0.05, 5, 2}, {0.1, 5, 1}, {0.2, 4, 1},
                           {0.5, 5, 1},  {1, 5, 0},    {2, 4, 0},    {5, 5, 0},   {10, 5, 0},
                           {15, 3, 0},   {30, 3, 0},   {60, 6, 0},   {120, 4, 0}, {300, 5, 0},
                           {600, 5, 0},  {900, 3, 0},  {1800, 6, 0}, {3600, 6, 0}};
constexpr int kLeastStep = 62;  // units from one number to the next
constexpr int kFont = 10;
constexpr int kLongTick = 7;
constexpr int kShortTick = 4;
constexpr int kDragged = 4;  // units that make a click a drag
constexpr double kArrowSeconds = 1;
constexpr double kPageSeconds = 10;

}  // namespace

TimeRuler::TimeRuler(QWidget* window, const TimeView& view, const Rehearsal& rehearsal)
    : Lane(window, "ruler", view, rehearsal) {
    setFocusPolicy(Qt::TabFocus);
}

void TimeRuler::drawPage(QPainter& painter) {
    const double secondsAPixel = view().framesPerPixel() / kSampleRate;
    const Grid& grid = *std::min(
        std::ranges::find_if(kGrids, [&](const Grid& g) { return g.step >= zoomed(kLeastStep) * secondsAPixel; }),
        std::prev(std::end(kGrids)));
    QFont small = font();
    small.setPixelSize(zoomedFont(kFont));
    painter.setFont(small);
    const QFontMetricsF metrics(small);
    const double part = grid.step / grid.parts;
    const auto first =
        static_cast<std::int64_t>(std::floor(static_cast<double>(view().first()) / kSampleRate / grid.step)) *
        grid.parts;
    const double last = static_cast<double>(view().first() + view().shown()) / kSampleRate;
    for (std::int64_t n = first; static_cast<double>(n) * part <= last; ++n) {
        const std::int64_t frame = std::llround(static_cast<double>(n) * part * kSampleRate);
        const bool numbered = n % grid.parts == 0;
        const double x = view().xOf(frame);
        const int tick = zoomed(numbered ? kLongTick : kShortTick);
        painter.fillRect(QRectF(x, height() - tick, 1, tick), QColor(numbered ? skin::kMuted : skin::kFaint));
        if (!numbered) continue;
        const QString number = toQt(timeText(frame, grid.decimals));
        const double left = x + zoomed(3);
        if (left < 0 || left + metrics.horizontalAdvance(number) > width()) continue;
        painter.setPen(QColor(skin::kMuted));
        painter.drawText(QPointF(left, height() - zoomed(kLongTick)), number);
    }
    drawLoop(painter);
    const Rehearsal::Loop& loop = rehearsal().loop();
    if (!loop.given()) return;
    const double begin = view().xOf(loop.begin);
    painter.fillRect(QRectF(begin, 0, view().xOf(loop.end) - begin, zoomed(2)), QColor(skin::kFocus));
}

void TimeRuler::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    pressed_ = event->position().x();
    dragged_ = false;
}

void TimeRuler::mouseMoveEvent(QMouseEvent* event) {
    if (!pressed_) return;
    const double x = std::clamp(event->position().x(), 0.0, double(width()));
    dragged_ = dragged_ || std::abs(x - *pressed_) >= zoomed(kDragged);
    if (dragged_) Q_EMIT loopWanted(view().frameAt(std::min(x, *pressed_)), view().frameAt(std::max(x, *pressed_)));
}

void TimeRuler::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !pressed_) return;
    if (!dragged_) Q_EMIT seekWanted(view().frameAt(*pressed_));
    pressed_.reset();
}

void TimeRuler::keyPressEvent(QKeyEvent* event) {
    const double now = value().now;
    switch (event->key()) {
        case Qt::Key_Left:
        case Qt::Key_Down:
            return setValue(now - kArrowSeconds);
        case Qt::Key_Right:
        case Qt::Key_Up:
            return setValue(now + kArrowSeconds);
        case Qt::Key_PageDown:
            return setValue(now - kPageSeconds);
        case Qt::Key_PageUp:
            return setValue(now + kPageSeconds);
        case Qt::Key_Home:
            return setValue(0);
        case Qt::Key_End:
            return setValue(value().most);
        default:
            Lane::keyPressEvent(event);
    }
}

Lane::Value TimeRuler::value() const {
    const auto seconds = [](std::int64_t frame) { return static_cast<double>(frame) / kSampleRate; };
    const std::int64_t now = rehearsal().position();
    return {0, seconds(std::max<std::int64_t>({view().end(), now, 1})), kArrowSeconds, seconds(now),
            toQt(timeText(now, 1))};
}

void TimeRuler::setValue(double seconds) {
    Q_EMIT seekWanted(std::llround(std::clamp(seconds, 0.0, value().most) * kSampleRate));
}

}  // namespace melvane
