#include "controls/switch.h"

#include "controls/zoom.h"

namespace melvane {

namespace {

constexpr QSizeF kPicture(28, 14);
constexpr qreal kPeg = 8;  // diameter
constexpr qreal kPegGap = (14 - kPeg) / 2;
constexpr qreal kRing = 3;

}  // namespace

Switch::Switch(QWidget* window, const QRect& place, Accent accent) : QCheckBox(window), accent_(accent) {
    layOut(this, place);
    setAttribute(Qt::WA_Hover);
}

bool Switch::hitButton(const QPoint& position) const {
    return rect().contains(position);
}

void Switch::paintEvent(QPaintEvent*) {
    PlacePainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QRectF picture(QPointF(), kPicture);
    picture.moveCenter(QRectF(placeRect(*this)).center());
    PartColours colours = partColours(*this, accent_, isDown());
    if (!isChecked() && isEnabled() && !isDown())
        colours = {skin::kInset, underMouse() ? skin::kMuted : skin::kFaint, skin::kMuted};

    painter.setPen(colours.border);
    painter.setBrush(colours.fill);
    const QRectF outline = picture.adjusted(0.5, 0.5, -0.5, -0.5);
    painter.drawRoundedRect(outline, outline.height() / 2, outline.height() / 2);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colours.mark);
    const qreal left = isChecked() ? picture.right() - kPegGap - kPeg : picture.left() + kPegGap;
    painter.drawEllipse(QRectF(left, picture.top() + kPegGap, kPeg, kPeg));
    if (!hasFocus()) return;
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(skin::kFocus), 2));
    const QRectF ring = picture.adjusted(1 - kRing, 1 - kRing, kRing - 1, kRing - 1);
    painter.drawRoundedRect(ring, ring.height() / 2, ring.height() / 2);
}

}  // namespace melvane
