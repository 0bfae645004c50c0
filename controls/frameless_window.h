// What the program's windows share: an outline and a body of their own, moved with the mouse by their top.
#pragma once

#include <QWidget>
#include <cstdint>
#include <optional>

#include "controls/elided_label.h"
#include "controls/window_outline.h"

namespace melvane {

class FramelessWindow : public QWidget {
    Q_OBJECT

public:
    // As large as the region of that id; without it a rectangle. The top `gripHeight` units move the window while the
    // left button is held there. A window with an owner belongs to it: it stays in front of it, is minimised with it
    // and has no entry of its own in the taskbar, and Escape closes it. At another zoom the window keeps its place, one
    // with such an owner the way to that, stays on the screen, and covers no other that it need not.
    FramelessWindow(std::int16_t regionId, int gripHeight, QWidget* owner = nullptr);

    // The same with an outline of its own, in units, and a size that is no less than `least`.
    FramelessWindow(const QRegion& outline, const QSize& least, int gripHeight, QWidget* owner);

    // False where the window system lets no program place its windows.
    static bool placesItself();

    // Goes to `wanted`, or as near to it as the window is whole on the screen.
    void moveOntoScreen(const QPoint& wanted);

    // Goes to a free place beside its owner, at `edge` if there is one. With `kept`: there, unless it would cover
    // another window of the program that it need not.
    void moveBesideOwner(Qt::Edge edge, const std::optional<QPoint>& kept = {});

    // Shows the window and gives it the focus, or leaves the focus where it is.
    void bringUp(bool takesFocus = true);

    // Back from the taskbar if it is there, in front of other programs' windows, with the focus.
    void comeForward();

    // Grows with its windows, unless another window leads it: part of setZoom().
    void followZoom();

protected:
    // A label in the grip, for the title.
    ElidedLabel* addTitle(const QRect& place);
    // What the window is called: there, and with the product's name where the system lists its windows.
    void setTitle(const QString& title);

    // Another one, of a window that can be resized.
    void setOutline(const QRegion& units);

    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;  // Enter presses the button with the focus

private:
    void fit();
    void follow(const QPoint& place);
    // Where it would stand if the screen were large enough.
    QPoint wantedPlace() const { return pos() == given_ ? wanted_ : pos(); }

    QRegion region_;
    std::optional<QSize> least_;      // none: the size is the outline's
    QPoint wanted_;                   // where it was to stand,
    QPoint given_;                    // and where the screen had room for it
    Qt::Edge edge_ = Qt::BottomEdge;  // of its owner, beside which it opens
    int zoom_ = 0;                    // at which the window fits
    WindowOutline outline_;
    int gripHeight_;
    ElidedLabel* title_ = nullptr;
    std::optional<QPoint> grip_;  // where the window is held
};

}  // namespace melvane
