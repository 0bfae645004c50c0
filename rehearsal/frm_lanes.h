// What the lanes of the timeline have in common: a page that is painted once, and the playhead that goes over it.
#pragma once

#include <QPixmap>
#include <QWidget>
#include <functional>

#include "rehearsal/rehearsal.h"
#include "rehearsal/time_view.h"
#include "rehearsal/waveform_pyramid.h"

namespace melvane {

class Lane : public QWidget {
    Q_OBJECT

public:
    // Both outlive it.
    Lane(QWidget* window, const char* name, const TimeView& view, const Rehearsal& rehearsal);

    // What it shows is another now.
    void redraw();
    // Paints no more than where it was and where it is.
    void showPlayhead(std::int64_t frame);

    // For a lane that stands for a number.
    struct Value {
        double least = 0;
        double most = 0;
        double step = 1;
        double now = 0;
        QString text;
    };
    virtual Value value() const { return {}; }
    virtual void setValue(double) {}

Q_SIGNALS:
    void seekWanted(std::int64_t frame);
    // So many times as much, with what is at `x` in its place.
    void zoomWanted(double factor, double x);
    void scrollWanted(double pixels);

protected:
    // All of it but the playhead, in pixels of the widget.
    virtual void drawPage(QPainter& painter) = 0;
    const TimeView& view() const { return view_; }
    const Rehearsal& rehearsal() const { return rehearsal_; }
    // The shade over what is not in the loop.
    void drawLoop(QPainter& painter) const;
    // A column for each pixel of the screen: of the frames from `begin` to `end` - 1 of the song. `highest` fills it.
    void drawWave(QPainter& painter, const QColor& colour, const Extremes& highest,
                  const std::function<Extremes(std::int64_t begin, std::int64_t end)>& outline) const;

    void paintEvent(QPaintEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    QRect headAt(std::int64_t frame) const;
    void drawPageAnew();

    const TimeView& view_;
    const Rehearsal& rehearsal_;
    QPixmap page_;
    bool pageHolds_ = false;
    std::int64_t head_ = 0;
};

}  // namespace melvane
