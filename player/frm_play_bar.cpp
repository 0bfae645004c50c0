#include "player/frm_play_bar.h"

#include <QMouseEvent>
#include <algorithm>

#include "controls/skin.h"
#include "controls/zoom.h"

namespace melvane {

namespace {

constexpr qreal kGroove = 6;
constexpr int kStepSeconds = 5;

}  // namespace

PlayBar::PlayBar(QWidget* window) : QProgressBar(window) {
    setRange(0, kUnits);
    setTextVisible(false);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
}

void PlayBar::paintEvent(QPaintEvent*) {
    PlacePainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QRectF area = placeRect(*this);
    const qreal middle = area.height() / 2;
    const auto draw = [&](qreal length, const QColor& colour) {
        painter.setBrush(colour);
        painter.drawRoundedRect(QRectF(kMargin, middle - kGroove / 2, length, kGroove), 2, 2);
    };
    draw(kUnits, skin::kInset);
    draw(value(), isEnabled() ? skin::kSong : skin::kFaint);
    if (hasFocus()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(QColor(skin::kFocus), 2));
        painter.drawRoundedRect(area.adjusted(1, 1, -1, -1), kMargin, kMargin);
    }
}

void PlayBar::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) mouseMoveEvent(event);
}

void PlayBar::mouseMoveEvent(QMouseEvent* event) {
    if (event->buttons() & Qt::LeftButton)
        Q_EMIT pointedAt(std::clamp((unzoomed(event->position()).x() - kMargin) / kUnits, 0.0, 1.0));
}

void PlayBar::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Left)
        Q_EMIT stepped(-kStepSeconds);
    else if (event->key() == Qt::Key_Right)
        Q_EMIT stepped(kStepSeconds);
    else
        QProgressBar::keyPressEvent(event);
}

}  // namespace melvane
