// The shape of a window at any zoom, and its body drawn in that shape.
#pragma once

#include <QPainter>
#include <QPainterPath>
#include <QRegion>

namespace melvane {

// As smooth as pixels are: at 200 % a step of one unit becomes two of one pixel. At 100 % the same region.
QRegion zoomedOutline(const QRegion& units);

class WindowOutline {
public:
    // Of rows of units, each of one rectangle. An empty region makes a rectangle. Everything else is in pixels.
    explicit WindowOutline(const QRegion& units);

    const QRegion& region() const { return region_; }
    QSize size() const { return region_.boundingRect().size(); }

    // The body with its edge. The top `strip` pixels are set off when the window goes on below them.
    void draw(QPainter& painter, int strip) const;

private:
    QRegion region_;
    int edgeWidth_;
    QRegion edge_;       // the outermost pixels of the region
    QPainterPath path_;  // inside the region, without its steps
};

}  // namespace melvane
