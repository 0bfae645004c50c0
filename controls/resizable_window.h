// A window of the program's look whose size the user chooses, at its left, right and lower edge.
#pragma once

#include "controls/frameless_window.h"

namespace melvane {

class ResizableWindow : public FramelessWindow {
    Q_OBJECT

public:
    // Sizes in units.
    ResizableWindow(const QSize& size, const QSize& least, int gripHeight, QWidget* owner);

    const QSize& units() const { return units_; }
    // As near to it as the least size and the screen allow.
    void setUnits(const QSize& units);

protected:
    // The window has that size now: puts its controls there.
    virtual void arrange(const QSize& units) = 0;

    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    Qt::Edges edgesAt(const QPoint& place) const;
    void pull(const QPoint& to);

    QSize units_;
    QSize least_;
    Qt::Edges held_;
    QRect before_;    // the window when it was taken
    QPoint takenAt_;  // on the screen
};

}  // namespace melvane
