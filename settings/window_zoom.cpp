#include "settings/window_zoom.h"

#include <QApplication>
#include <QKeyEvent>
#include <QScreen>

#include "controls/zoom.h"
#include "settings/window_places.h"

namespace melvane {

namespace {

constexpr const char* kValue = "zoom";

// Shift is held for the plus of some keyboards, and not for the equals sign on the same key.
bool takeKey(const QKeyEvent& key) {
    if ((key.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier)) != Qt::ControlModifier) return false;
    switch (key.key()) {
        case Qt::Key_Plus:
        case Qt::Key_Equal:
            setZoom(zoom() + kZoomStep);
            return true;
        case Qt::Key_Minus:
            setZoom(zoom() - kZoomStep);
            return true;
        case Qt::Key_0:
            setZoom(kLowestZoom);
            return true;
        default:
            return false;
    }
}

}  // namespace

WindowZoom::WindowZoom(const SettingsStore& store) : store_(store) {
    const int stored = QString::fromStdString(store.ReadSetting(kWindowsKey, kValue)).toInt();
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (stored > 0)
        setZoom(stored);
    else if (screen)
        setZoom(zoomFor(screen->availableGeometry().size()));
    qApp->installEventFilter(this);
}

bool WindowZoom::eventFilter(QObject* object, QEvent* event) {
    if (event->type() == QEvent::KeyPress) return takeKey(static_cast<const QKeyEvent&>(*event));
    if (object == qApp && event->type() == QEvent::DynamicPropertyChange &&
        static_cast<QDynamicPropertyChangeEvent*>(event)->propertyName() == kZoomProperty)
        store_.WriteSetting(kWindowsKey, kValue, std::to_string(zoom()));
    return false;
}

}  // namespace melvane
