#include "app/frm_window.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QWindow>

namespace melvane {

FramelessWindow::FramelessWindow(const QSize& size, int gripHeight) : gripHeight_(gripHeight) {
    setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowSystemMenuHint | Qt::WindowMinimizeButtonHint);
    setAttribute(Qt::WA_StyledBackground);
    setFixedSize(size);
}

bool FramelessWindow::placesItself() {
    return !QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

void FramelessWindow::mousePressEvent(QMouseEvent* event) {
    const QPoint position = event->position().toPoint();
    if (event->button() != Qt::LeftButton || position.y() >= gripHeight_) return;
    if (placesItself())
        grip_ = position;
    else if (windowHandle())
        windowHandle()->startSystemMove();
}

void FramelessWindow::mouseMoveEvent(QMouseEvent* event) {
    if (grip_) move(event->globalPosition().toPoint() - *grip_);
}

void FramelessWindow::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) grip_.reset();
}

}  // namespace melvane
