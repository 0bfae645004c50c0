// Windows driven as the window system drives them, and looked at.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QWheelEvent>
#include <QWindow>
#include <QtTest>

#include "controls/slider.h"
#include "controls/zoom.h"

namespace melvane::test {

template <typename Widget = Slider>
Widget& find(const QWidget& window, const char* name) {
    return *window.findChild<Widget*>(QLatin1String(name));
}

inline void clickAt(QWidget& window, const QPoint& point, Qt::MouseButton button = Qt::LeftButton) {
    QTest::mouseClick(window.windowHandle(), button, {}, point);
}

// The middle of a slider's knob, in its window: the knob goes along the longer side of the widget.
inline QPoint knobOf(const Slider& slider) {
    constexpr int kInside = 4;
    const QPoint middle = slider.geometry().center();
    const int inside = zoomed(static_cast<int>(slider.position()) + kInside);
    return slider.width() < slider.height() ? QPoint(middle.x(), inside) : QPoint(inside, middle.y());
}

// Takes the knob and moves the mouse as far as the position `to` is away, which may be beyond the track.
inline void drag(Slider& slider, int to, Qt::MouseButton button = Qt::LeftButton) {
    QWindow* window = slider.window()->windowHandle();
    const QPoint from = knobOf(slider);
    const int way = zoomed(to - static_cast<int>(slider.position()));
    const QPoint end = from + (slider.width() < slider.height() ? QPoint(0, way) : QPoint(way, 0));
    QTest::mousePress(window, button, {}, from);
    QTest::mouseMove(window, end);
    QTest::mouseRelease(window, button, {}, end);
}

inline void doubleClick(Slider& slider) {
    QTest::mouseDClick(slider.window()->windowHandle(), Qt::LeftButton, {}, knobOf(slider));
}

inline void turnWheel(QWidget& widget, int angle, Qt::KeyboardModifiers with = {}) {
    const QPointF middle = QRectF(widget.rect()).center();
    QWheelEvent event(middle, widget.mapToGlobal(middle), {}, {0, angle}, Qt::NoButton, with, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&widget, &event);
}

// Where there is no window manager the test gives the focus as one does.
inline bool giveFocus(QWidget& window) {
    window.activateWindow();
    return QTest::qWaitForWindowActive(&window);
}

inline void click(QWidget& control) {
    clickAt(*control.window(), control.mapTo(control.window(), control.rect().center()));
}
inline void click(const QWidget& window, const char* name) {
    click(find<QWidget>(window, name));
}

}  // namespace melvane::test
