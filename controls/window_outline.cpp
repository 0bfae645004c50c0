#include "controls/window_outline.h"

#include <algorithm>
#include <vector>

#include "controls/skin.h"
#include "controls/zoom.h"

namespace melvane {

namespace {

constexpr QRect kRectangle(0, 0, 460, 196);  // when there is no outline
constexpr qreal kCorner = 1.5;               // from the ends of a higher row on, the outline is straight

// The edge of a region along its rows, from top to bottom, without cutting into what is outside: through the inner
// corners of the steps. `inner` chooses of two places the one that is further inside.
template <typename Place, typename Inner>
std::vector<QPointF> sideOf(const std::vector<QRect>& rows, Place place, Inner inner) {
    std::vector<QPointF> points;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const qreal top = rows[i].top();
        const qreal bottom = top + rows[i].height();
        const qreal own = place(rows[i]);
        const qreal above = i > 0 ? place(rows[i - 1]) : own;
        points.emplace_back(inner(own, above), top);
        if (rows[i].height() < 2 * kCorner) continue;
        points.emplace_back(own, top + kCorner);
        points.emplace_back(own, bottom - kCorner);
    }
    points.emplace_back(place(rows.back()), rows.back().top() + rows.back().height());
    return points;
}

QPainterPath pathInside(const QRegion& region) {
    const std::vector<QRect> rows(region.begin(), region.end());
    const auto left = sideOf(
        rows, [](const QRect& row) { return qreal(row.left()); }, [](qreal a, qreal b) { return std::max(a, b); });
    const auto right = sideOf(
        rows, [](const QRect& row) { return qreal(row.left() + row.width()); },
        [](qreal a, qreal b) { return std::min(a, b); });
    QPainterPath path(left.front());
    std::for_each(left.begin() + 1, left.end(), [&](const QPointF& point) { path.lineTo(point); });
    std::for_each(right.rbegin(), right.rend(), [&](const QPointF& point) { path.lineTo(point); });
    path.closeSubpath();
    return path;
}

QRegion outermost(const QRegion& region, int width) {
    return region - (region.translated(width, 0) & region.translated(-width, 0) & region.translated(0, width) &
                     region.translated(0, -width));
}

// Left and right end at a height: those of the rows hold at their middles, and change evenly in between.
std::pair<double, double> endsAt(const QRegion& region, double height) {
    const QRect* above = region.begin();
    const QRect* row = std::find_if(region.begin(), region.end(), [&](const QRect& r) { return height < r.y() + 0.5; });
    if (row != region.begin()) above = row - 1;
    if (row == region.end()) row = above;
    const double from = above->y() + above->height() - 0.5;
    const double part = row == above ? 0 : std::clamp((height - from) / (row->y() + 0.5 - from), 0.0, 1.0);
    const auto between = [&](int one, int other) { return one + part * (other - one); };
    return {between(above->x(), row->x()), between(above->x() + above->width(), row->x() + row->width())};
}

QBrush body(const QRectF& bound) {
    QLinearGradient gradient(bound.topLeft(), bound.bottomLeft());
    gradient.setColorAt(0, QColor(skin::kBodyLow));
    gradient.setColorAt(1, QColor(skin::kBody));
    return gradient;
}

}  // namespace

QRegion zoomedOutline(const QRegion& units) {
    if (zoom() == kLowestZoom) return units;
    const QRect bound = zoomed(units.boundingRect());
    QRegion region;
    for (int y = 0; y < bound.height(); ++y) {
        const auto [left, right] = endsAt(units, (y + 0.5) / zoomFactor());
        const int first = qRound(left * zoomFactor());
        region += QRect(first, y, qRound(right * zoomFactor()) - first, 1);
    }
    return region;
}

WindowOutline::WindowOutline(const QRegion& units)
    : region_(zoomedOutline(units.isEmpty() ? QRegion(kRectangle) : units)),
      edgeWidth_(zoomed(1)),
      edge_(outermost(region_, edgeWidth_)),
      path_(pathInside(region_)) {}

void WindowOutline::draw(QPainter& painter, int strip) const {
    const QRectF bound = region_.boundingRect();
    const QRectF stripRect(0, 0, bound.width(), strip < bound.height() ? strip : 0);
    if (painter.device()->devicePixelRatio() == 1) {
        // Whole pixels: the region itself.
        painter.setClipRegion(region_, Qt::IntersectClip);
        painter.fillRect(bound, body(bound));
        painter.fillRect(stripRect, QColor(skin::kStrip));
        painter.setClipRegion(edge_, Qt::IntersectClip);
        painter.fillRect(bound, QColor(skin::kEdge));
        return;
    }
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(path_, body(bound));
    QPainterPath upper;
    upper.addRect(stripRect);
    painter.fillPath(path_.intersected(upper), QColor(skin::kStrip));
    QPainterPathStroker stroker;
    stroker.setWidth(2 * edgeWidth_);
    painter.fillPath(stroker.createStroke(path_).intersected(path_), QColor(skin::kEdge));
}

}  // namespace melvane
