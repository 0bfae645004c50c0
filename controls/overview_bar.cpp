#include "controls/overview_bar.h"

#include <QMouseEvent>
#include <algorithm>
#include <utility>

#include "controls/skin.h"
#include "controls/zoom.h"

namespace melvane {

namespace {

constexpr double kPlain = 6;    // height of the bar without an overview
constexpr double kSilence = 2;  // height of a column without sound
constexpr double kMargin = 2;
constexpr int kMixedTint = 36;  // of 255

}  // namespace

OverviewBar::OverviewBar(QWidget* window, const QRect& place) : QProgressBar(window) {
    layOut(this, place);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setCursor(Qt::PointingHandCursor);
    setRange(0, kColumns);
    setValue(0);
}

void OverviewBar::setOverview(std::vector<float> peaks) {
    if (peaks == peaks_) return;
    peaks_ = std::move(peaks);
    update();
}

void OverviewBar::setProgress(int width) {
    width = std::clamp(width, 0, kColumns);
    if (width == value()) return;
    setUpdatesEnabled(false);  // it would be painted at once, and once more than the window
    setValue(width);
    setUpdatesEnabled(true);
}

void OverviewBar::setScanned(double part) {
    if (part == scanned_) return;
    scanned_ = part;
    update();
}

double OverviewBar::columnHeight(int column) const {
    if (peaks_.empty()) return column < value() ? kPlain : 0;
    const auto index = static_cast<std::size_t>(column) * peaks_.size() / kColumns;
    const double peak = std::clamp(double{peaks_[index]}, 0.0, 1.0);
    return std::max(kSilence, peak * (placeRect(*this).height() - 2 * kMargin));
}

void OverviewBar::mousePressEvent(QMouseEvent* event) {
    event->accept();
}

void OverviewBar::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint())) Q_EMIT clicked();
}

void OverviewBar::paintEvent(QPaintEvent*) {
    PlacePainter painter(this);
    const QRect area = placeRect(*this);
    painter.fillRect(area, QColor(skin::kInset));
    QColor tint(skin::kSong);
    tint.setAlpha(kMixedTint);
    if (!peaks_.empty()) painter.fillRect(0, 0, value(), area.height(), tint);
    for (int x = 0; x < kColumns; ++x) {
        const double tall = columnHeight(x);
        const QRectF column(x, (area.height() - tall) / 2, 1, tall);
        painter.fillRect(column, QColor(x < value() ? skin::kSong : skin::kFaint));
    }
    if (scanned_ < 1)
        painter.fillRect(QRectF(static_cast<int>(scanned_ * kColumns), 0, 1, area.height()), QColor(skin::kMuted));
}

}  // namespace melvane
