// What the program's windows share: no frame, moved with the mouse by their top.
#pragma once

#include <QWidget>
#include <optional>

namespace melvane {

class FramelessWindow : public QWidget {
public:
    // The top `gripHeight` pixels move the window while the left button is held there. A window with an owner stays
    // in front of it.
    FramelessWindow(const QSize& size, int gripHeight, QWidget* owner = nullptr);

    // False where the window system lets no program place its windows.
    static bool placesItself();

    // Goes to `wanted`, or as near to it as the window is whole on the screen.
    void moveOntoScreen(const QPoint& wanted);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;  // Enter presses the button with the focus

private:
    int gripHeight_;
    std::optional<QPoint> grip_;  // where the window is held
};

}  // namespace melvane
