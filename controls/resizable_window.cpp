#include "controls/resizable_window.h"

#include <QMouseEvent>
#include <QScreen>
#include <QWindow>
#include <cmath>

#include "controls/zoom.h"

namespace melvane {

namespace {

constexpr int kEdge = 7;     // units of the window's edge that are for pulling
constexpr int kCorner = 18;  // and of a corner
constexpr int kRadius = 8;

// In rows of units.
QRegion roundedCorners(const QSize& size) {
    QRegion region;
    for (int y = 0; y < size.height(); ++y) {
        const double inside = std::max({kRadius - y - 0.5, y + kRadius + 0.5 - size.height(), 0.0});
        const int cut = kRadius - static_cast<int>(std::lround(std::sqrt(kRadius * kRadius - inside * inside)));
        region += QRect(cut, y, size.width() - 2 * cut, 1);
    }
    return region;
}

QSize unitsOf(const QSize& pixels) {
    return {qRound(pixels.width() / zoomFactor()), qRound(pixels.height() / zoomFactor())};
}

Qt::CursorShape shapeOf(Qt::Edges edges) {
    if (edges == (Qt::LeftEdge | Qt::BottomEdge)) return Qt::SizeBDiagCursor;
    if (edges == (Qt::RightEdge | Qt::BottomEdge)) return Qt::SizeFDiagCursor;
    return edges & Qt::BottomEdge ? Qt::SizeVerCursor : Qt::SizeHorCursor;
}

}  // namespace

ResizableWindow::ResizableWindow(const QSize& size, const QSize& least, int gripHeight, QWidget* owner)
    : FramelessWindow(roundedCorners(size), least, gripHeight, owner), units_(size), least_(least) {
    setMouseTracking(true);
}

void ResizableWindow::setUnits(const QSize& units) {
    QSize room = units;
    if (screen()) room = room.boundedTo(unitsOf(screen()->availableSize()));
    resize(zoomed(room.expandedTo(least_)));
}

void ResizableWindow::resizeEvent(QResizeEvent* event) {
    FramelessWindow::resizeEvent(event);
    const QSize units = unitsOf(size());
    if (units != units_) setOutline(roundedCorners(units_ = units));
    arrange(units_);
}

Qt::Edges ResizableWindow::edgesAt(const QPoint& place) const {
    const int edge = zoomed(kEdge);
    const int corner = zoomed(kCorner);
    const bool low = place.y() >= height() - edge;
    Qt::Edges edges;
    if (place.x() < (low ? corner : edge)) edges |= Qt::LeftEdge;
    if (place.x() >= width() - (low ? corner : edge)) edges |= Qt::RightEdge;
    if (low || (edges && place.y() >= height() - corner)) edges |= Qt::BottomEdge;
    return edges;
}

void ResizableWindow::mousePressEvent(QMouseEvent* event) {
    const Qt::Edges edges = edgesAt(event->position().toPoint());
    if (event->button() != Qt::LeftButton || !edges) return FramelessWindow::mousePressEvent(event);
    if (!placesItself() && windowHandle()) {
        windowHandle()->startSystemResize(edges);
        return;
    }
    held_ = edges;
    before_ = geometry();
    takenAt_ = event->globalPosition().toPoint();
}

void ResizableWindow::mouseMoveEvent(QMouseEvent* event) {
    if (held_) return pull(event->globalPosition().toPoint());
    const Qt::Edges edges = edgesAt(event->position().toPoint());
    if (event->buttons() == Qt::NoButton && edges)
        setCursor(shapeOf(edges));
    else
        unsetCursor();
    FramelessWindow::mouseMoveEvent(event);
}

void ResizableWindow::pull(const QPoint& to) {
    const QPoint way = to - takenAt_;
    QRect wanted = before_;
    if (held_ & Qt::BottomEdge) wanted.setHeight(std::max(before_.height() + way.y(), minimumHeight()));
    if (held_ & Qt::RightEdge) wanted.setWidth(std::max(before_.width() + way.x(), minimumWidth()));
    if (held_ & Qt::LeftEdge) wanted.setLeft(std::min(before_.left() + way.x(), before_.right() + 1 - minimumWidth()));
    setGeometry(wanted);
}

void ResizableWindow::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) held_ = {};
    FramelessWindow::mouseReleaseEvent(event);
}

void ResizableWindow::leaveEvent(QEvent* event) {
    unsetCursor();
    FramelessWindow::leaveEvent(event);
}

}  // namespace melvane
