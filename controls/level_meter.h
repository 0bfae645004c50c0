// How loud something is, left and right, from -48 dB to full scale, with a lamp for what went beyond.
#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>
#include <array>

#include "controls/peak_fall.h"
#include "controls/skin.h"

namespace melvane {

// Does nothing while there is nothing to show.
class LevelMeter : public QWidget {
    Q_OBJECT

public:
    // Too thin for two bars, it has one for the louder side.
    LevelMeter(QWidget* window, const QRect& place, Qt::Orientation direction, Accent accent);

    // The highest peaks since the last call; linear, 1 for full scale.
    void setPeaks(float left, float right);
    // Goes to rest at once.
    void clear();

    // Of the louder side, in dB.
    double level() const;
    QString valueText() const;  // such as "-6 dB"
    bool isMoving() const { return timer_.isActive(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    // What of a bar can be seen, in pixels along it; 0 for nothing.
    struct Shown {
        int level = 0;
        int held = 0;
        bool operator==(const Shown&) const = default;
    };

    int length() const;
    int bars() const;
    QRect part(int from, int to, int bar) const;
    QRect lamp() const;
    Shown shownOf(const PeakFall& side) const;
    void passTime();
    void tick();
    void refresh();

    Qt::Orientation direction_;
    Accent accent_;
    std::array<PeakFall, 2> sides_;
    std::array<Shown, 2> shown_;
    bool lampOn_ = false;
    QTimer timer_;  // runs while the meter is not at rest
    QElapsedTimer sinceTick_;
};

}  // namespace melvane
