#include "controls/hot_button.h"

#include <QApplication>
#include <QMouseEvent>

#include "controls/frameless_window.h"

namespace melvane {

namespace {

// Over the widget itself, not over another one or another program's window. Where windows don't know their places, only
// the window system can tell, and does.
bool isUnderCursor(const QWidget& widget) {
    return widget.underMouse() &&
           (!FramelessWindow::placesItself() || QApplication::widgetAt(QCursor::pos()) == &widget);
}

}  // namespace

HotButton::HotButton(QWidget* parent, int tickMs) : QAbstractButton(parent) {
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    Timer1_.setInterval(tickMs);
    connect(&Timer1_, &QTimer::timeout, this, &HotButton::Timer1_Timer);
    connect(this, &QAbstractButton::clicked, this, &HotButton::Click);
}

bool HotButton::event(QEvent* event) {
    if (event->type() != QEvent::ContextMenu || isEnabled()) return QAbstractButton::event(event);
    event->ignore();
    return false;
}

void HotButton::mouseMoveEvent(QMouseEvent* event) {
    QAbstractButton::mouseMoveEvent(event);
    setAttribute(Qt::WA_UnderMouse);  // moves may come without an enter event before them
    if (hover_ || !isEnabled() || !isLitBy(*event)) return;
    hover_ = true;
    Timer1_.start();
    update();
}

void HotButton::Timer1_Timer() {
    if (!isUnderCursor(*this)) lightDown();
}

void HotButton::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) lightDown();
    QAbstractButton::mousePressEvent(event);
}

void HotButton::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter)
        QAbstractButton::keyPressEvent(event);
    else if (!event->isAutoRepeat())
        click();
}

void HotButton::changeEvent(QEvent* event) {
    QAbstractButton::changeEvent(event);
    if (event->type() == QEvent::EnabledChange) lightDown();
}

void HotButton::hideEvent(QHideEvent* event) {
    QAbstractButton::hideEvent(event);
    lightDown();
}

void HotButton::lightDown() {
    hover_ = false;
    Timer1_.stop();
    update();
}

}  // namespace melvane
