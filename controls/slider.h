// A control that is dragged along a track of its window: the faders and knobs of every window.
#pragma once

#include <QLabel>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <optional>

#include "controls/skin.h"
#include "controls/track.h"

namespace melvane {

// How far a slider goes at a time, in units from its neutral position on. A drag goes by units, and rests on the whole
// steps that it passes.
struct SliderSteps {
    double whole = 1;  // an arrow key, a notch of the wheel
    double fine = 1;   // the same with Shift
    int page = 10;     // steps of Page Up and Down
};

// Where a slider is; everything in units of its window.
struct SliderPlace {
    Qt::Orientation direction;
    Track track;  // of the knob's top or left edge
    int centre;   // of the knob across its direction
    QSize knob;
    int zero;            // position that stands for nothing: the groove is filled from there to the knob
    bool groove = true;  // false: the window draws what lies behind the knob
    SliderSteps steps = {};
};

// What the positions stand for.
struct SliderValue {
    std::function<double(double position)> at;  // rises or falls along the track
    std::function<QString(double value)> text;
};

class Slider : public QWidget {
    Q_OBJECT

public:
    // The widget covers the whole track.
    Slider(QWidget* window, const SliderPlace& place, Accent accent, SliderValue value);

    const Track& track() const { return place_.track; }
    const SliderSteps& steps() const { return place_.steps; }
    // Of the knob's top or left edge in the window.
    double position() const { return position_; }
    // Goes there, or to the nearer end of the track; tells nobody.
    void setPosition(double position);
    // The same as from the user: tells when the position changed.
    bool place(double position);
    void tellValue();
    void moveTo(double position);

    bool isDragged() const { return grip_.has_value(); }

    // Fainter: what it sets is not heard.
    void setDimmed(bool dimmed);

    double valueAt(double position) const { return value_.at(position); }
    QString valueText() const { return value_.text(value_.at(position_)); }

Q_SIGNALS:
    // The user moved the knob, by mouse while isDragged(). Only when the position changed.
    void moved(double position);
    // The user asked for the neutral value; the knob is at its neutral position already.
    void resetWanted();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    // Arrows, Page Up and Down, Home and End move; Delete and Backspace ask for the neutral value.
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    bool isVertical() const { return place_.direction == Qt::Vertical; }
    double along(const QPointF& point) const { return isVertical() ? point.y() : point.x(); }
    QRectF knobAt(double position) const;
    QRectF grooveBetween(double one, double other) const;
    void drawGroove(QPainter& painter) const;
    void drawKnob(QPainter& painter) const;
    void drawGrip(QPainter& painter, const QRectF& knob, const QColor& colour) const;
    double rested(double position) const;
    void step(int steps, bool fine);
    void reset();
    void release();
    void showValue(bool briefly);

    SliderPlace place_;
    Accent accent_;
    SliderValue value_;
    double position_;
    bool dimmed_ = false;
    std::optional<double> grip_;  // while dragged: where the mouse is, seen from the position
    int wheel_ = 0;               // turned, but not yet a whole step
    QLabel* bubble_;              // shows the value beside the knob
    QTimer hideBubble_;
};

// A value with its sign, such as "+2.5"; "0" for none.
QString signedText(double value, int decimals);

}  // namespace melvane
