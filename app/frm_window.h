// What the program's windows share: no frame, moved with the mouse by their top.
#pragma once

#include <QWidget>
#include <optional>

namespace melvane {

class FramelessWindow : public QWidget {
public:
    // The top `gripHeight` pixels move the window while the left button is held there.
    FramelessWindow(const QSize& size, int gripHeight);

    // False where the window system lets no program place its windows.
    static bool placesItself();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    int gripHeight_;
    std::optional<QPoint> grip_;  // where the window is held
};

}  // namespace melvane
