// The shape of a window, and its body drawn in that shape.
#pragma once

#include <QPainter>
#include <QPainterPath>
#include <QRegion>

namespace melvane {

class WindowOutline {
public:
    // Of rows of pixels, each of one rectangle. An empty region makes a rectangle.
    explicit WindowOutline(const QRegion& region);

    const QRegion& region() const { return region_; }
    QSize size() const { return region_.boundingRect().size(); }

    // The body with its edge. The top `strip` pixels are set off when the window goes on below them.
    void draw(QPainter& painter, int strip) const;

private:
    QRegion region_;
    QRegion edge_;       // the outermost pixels of the region
    QPainterPath path_;  // inside the region, without its steps
};

}  // namespace melvane
