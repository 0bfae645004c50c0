#include "controls/frameless_window.h"

#include <QAbstractButton>
#include <QApplication>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QWindow>
#include <algorithm>

#include "controls/free_place.h"
#include "controls/window_region.h"
#include "controls/zoom.h"
#include "state/product.h"

namespace melvane {

namespace {
constexpr std::int16_t kNoRegion = 0;
}

FramelessWindow::FramelessWindow(std::int16_t regionId, int gripHeight, QWidget* owner)
    : QWidget(owner), region_(RegionFromResource(regionId)), outline_(region_), gripHeight_(gripHeight) {
    // The window system takes dialogs for parts of their owner.
    setWindowFlags((owner ? Qt::Dialog : Qt::Window | Qt::WindowMinimizeButtonHint) | Qt::FramelessWindowHint |
                   Qt::WindowSystemMenuHint);
    setAttribute(Qt::WA_TranslucentBackground);
    fit();
}

FramelessWindow::FramelessWindow(const QRegion& outline, const QSize& least, int gripHeight, QWidget* owner)
    : FramelessWindow(kNoRegion, gripHeight, owner) {
    region_ = outline;
    least_ = least;
    fit();
}

void FramelessWindow::fit() {
    zoom_ = zoom();
    outline_ = WindowOutline(region_);
    if (least_) {
        setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
        setMinimumSize(0, 0);  // of the zoom before
        resize(outline_.size());
        setMinimumSize(zoomed(*least_));
    } else {
        setFixedSize(outline_.size());
    }
    setMask(outline_.region());
    update();
}

void FramelessWindow::setOutline(const QRegion& units) {
    region_ = units;
    outline_ = WindowOutline(region_);
    setMask(outline_.region());
    update();
}

void FramelessWindow::followZoom() {
    if (zoom_ == zoom() || qobject_cast<FramelessWindow*>(parentWidget())) return;
    follow(wantedPlace());
    if (!placesItself()) return;
    for (auto* owned : findChildren<FramelessWindow*>(QString(), Qt::FindDirectChildrenOnly))
        if (owned->isVisible()) owned->moveBesideOwner(owned->edge_, owned->wantedPlace());
}

void FramelessWindow::follow(const QPoint& place) {
    const QPoint before = pos();
    const double growth = static_cast<double>(zoom()) / zoom_;
    fit();
    if (placesItself()) moveOntoScreen(place);
    for (auto* owned : findChildren<FramelessWindow*>(QString(), Qt::FindDirectChildrenOnly))
        owned->follow(pos() + (owned->wantedPlace() - before) * growth);
}

ElidedLabel* FramelessWindow::addTitle(const QRect& place) {
    title_ = new ElidedLabel(this, Qt::ElideMiddle);
    title_->setObjectName(QStringLiteral("caption"));
    layOut(title_, place);
    return title_;
}

void FramelessWindow::setTitle(const QString& title) {
    if (title_) title_->setFullText(title);
    setWindowTitle(title + QStringLiteral(" – ") + QLatin1String(kProductCaption));
}

void FramelessWindow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    outline_.draw(painter, zoomed(gripHeight_));
}

bool FramelessWindow::placesItself() {
    return !QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

void FramelessWindow::moveOntoScreen(const QPoint& wanted) {
    const QScreen* screen = QGuiApplication::screenAt(wanted + rect().center());
    if (!screen) screen = QGuiApplication::primaryScreen();
    if (!screen) return move(wanted);
    const QRect room = screen->availableGeometry();
    wanted_ = wanted;
    given_ = {std::clamp(wanted.x(), room.left(), std::max(room.left(), room.right() + 1 - width())),
              std::clamp(wanted.y(), room.top(), std::max(room.top(), room.bottom() + 1 - height()))};
    move(given_);
}

void FramelessWindow::moveBesideOwner(Qt::Edge edge, const std::optional<QPoint>& kept) {
    edge_ = edge;
    const QWidget* owner = parentWidget()->window();
    QList<QRect> others{owner->geometry()};
    for (const QWidget* other : QApplication::topLevelWidgets())
        if (other != this && other != owner && other->isVisible() && qobject_cast<const FramelessWindow*>(other))
            others << other->geometry();
    const QPoint free = freePlace(size(), others, owner->screen()->availableGeometry(), edge);
    if (kept) moveOntoScreen(*kept);
    if (!kept || coveredBy(geometry(), others) > coveredBy({free, size()}, others)) move(wanted_ = given_ = free);
}

void FramelessWindow::bringUp(bool takesFocus) {
    setAttribute(Qt::WA_ShowWithoutActivating, !takesFocus);
    show();
    if (!takesFocus) return;
    raise();
    activateWindow();
}

void FramelessWindow::comeForward() {
    setWindowState(windowState() & ~Qt::WindowMinimized);
    bringUp();
    QApplication::alert(this);  // where the desktop leaves the focus to who has it
}

void FramelessWindow::mousePressEvent(QMouseEvent* event) {
    const QPoint position = event->position().toPoint();
    if (event->button() != Qt::LeftButton || position.y() >= zoomed(gripHeight_)) return;
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

void FramelessWindow::keyPressEvent(QKeyEvent* event) {
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    auto* button = qobject_cast<QAbstractButton*>(focusWidget());
    // A key that is held must not undo what it did.
    if (enter && button && !event->isAutoRepeat())
        button->click();
    else if (event->key() == Qt::Key_Escape && parentWidget())
        close();
    else
        QWidget::keyPressEvent(event);
}

}  // namespace melvane
