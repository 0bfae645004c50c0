#include "midi/frm_strip_parts.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <utility>

#include "controls/button_pictures.h"
#include "controls/skin.h"
#include "controls/zoom.h"

namespace melvane {

namespace {

constexpr qreal kRadius = 3;
constexpr int kWordHeight = 11;
constexpr int kNameHeight = 10;
constexpr int kLineHeight = 12;
constexpr int kNameMargin = 2;  // at both ends of a line

QFont zoomedFontOf(const QWidget& widget, int units, bool bold = false) {
    QFont font = widget.font();
    font.setPixelSize(zoomedFont(units));
    font.setBold(bold);
    return font;
}

// Turns the painter so that its x axis points up; returns the widget's place as it is seen then.
QRect turnUpwards(QPainter& painter, const QWidget& widget) {
    painter.translate(0, widget.height());
    painter.rotate(-90);
    return {0, 0, widget.height(), widget.width()};
}

QPicture key(const QSize& size, const QColor& fill, const QColor& border) {
    QPicture picture;
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(border);
    painter.setBrush(fill);
    painter.drawRoundedRect(QRectF(QPointF(), size).adjusted(1.5, 1.5, -1.5, -1.5), kRadius, kRadius);
    return picture;
}

void drawRing(QPainter& painter, const QWidget& widget, const QColor& colour, qreal width) {
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colour, width));
    const qreal half = width / 2;
    painter.drawRoundedRect(QRectF(placeRect(widget)).adjusted(half, half, -half, -half), kRadius, kRadius);
}

// Below the number.
QRect lightOf(const QRect& toggle) {
    constexpr int kInside = 5;
    constexpr int kTall = 2;
    return {toggle.left() + kInside, toggle.bottom() - 1 - kTall, toggle.width() - 2 * kInside, kTall};
}

// The text in one line, or else in two of which the second is shortened.
QStringList lines(const QString& text, const QFontMetrics& metrics, int room) {
    const auto shortened = [&](const QString& line) { return metrics.elidedText(line, Qt::ElideRight, room); };
    if (metrics.horizontalAdvance(text) <= room) return {text};
    for (auto space = text.lastIndexOf(u' '); space > 0; space = text.lastIndexOf(u' ', space - 1))
        if (metrics.horizontalAdvance(text.left(space)) <= room)
            return {text.left(space), shortened(text.mid(space + 1))};
    return {shortened(text)};
}

}  // namespace

UpwardText::UpwardText(QWidget* window, const QRect& place) : QWidget(window) {
    layOut(this, place);
}

void UpwardText::setText(const QString& text) {
    text_ = text;
    update();
}

void UpwardText::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setFont(zoomedFontOf(*this, kWordHeight));
    painter.setPen(QColor(skin::kSong));
    const QRect room = turnUpwards(painter, *this);
    painter.drawText(room, Qt::AlignCenter, painter.fontMetrics().elidedText(text_, Qt::ElideRight, room.width()));
}

ChannelToggle::ChannelToggle(QWidget* window, const QRect& place, int number)
    : QCheckBox(window),
      pon_(key(place.size(), skin::kSong, skin::kSong)),
      off_(key(place.size(), skin::kInset, skin::kFaint)),
      solo_(key(place.size(), skin::kVoice, skin::kVoiceLight)),
      number_(QString::number(number)) {
    layOut(this, place);
    setAttribute(Qt::WA_Hover);
}

void ChannelToggle::setSounding(bool sounds) {
    if (std::exchange(sounds_, sounds) != sounds) update();
}

void ChannelToggle::setSolo(bool solo) {
    if (std::exchange(alone_, solo) != solo) update();
}

void ChannelToggle::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && event->modifiers() & Qt::ControlModifier)
        Q_EMIT soloWanted();
    else
        QCheckBox::mousePressEvent(event);
}

void ChannelToggle::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Space && event->modifiers() & Qt::ControlModifier)
        Q_EMIT soloWanted();
    else
        QCheckBox::keyPressEvent(event);
}

bool ChannelToggle::hitButton(const QPoint& position) const {
    return rect().contains(position);
}

void ChannelToggle::paintEvent(QPaintEvent*) {
    PlacePainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    drawPicture(painter, !isChecked() ? off_ : alone_ ? solo_ : pon_);
    if (sounds_) painter.fillRect(lightOf(placeRect(*this)), QColor(skin::kWhite));
    if (hasFocus())
        drawRing(painter, *this, skin::kFocus, 2);
    else if (underMouse())
        drawRing(painter, *this, skin::kText, 1);
    painter.resetTransform();
    painter.setFont(zoomedFontOf(*this, kWordHeight, true));
    painter.setPen(QColor(isChecked() ? skin::kInset : skin::kMuted));
    painter.drawText(rect(), Qt::AlignCenter, number_);
}

InstrumentLabel::InstrumentLabel(QWidget* window, const QRect& place) : QPushButton(window) {
    layOut(this, place);
    setAttribute(Qt::WA_Hover);
}

void InstrumentLabel::paintEvent(QPaintEvent*) {
    PlacePainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(underMouse() ? skin::kHover : skin::kInset));
    painter.drawRoundedRect(placeRect(*this), kRadius, kRadius);
    if (hasFocus()) drawRing(painter, *this, skin::kFocus, 2);

    painter.resetTransform();
    painter.setFont(zoomedFontOf(*this, kNameHeight));
    painter.setPen(QColor(skin::kText));
    const QRect room = turnUpwards(painter, *this).adjusted(zoomed(kNameMargin), 0, -zoomed(kNameMargin), 0);
    const QStringList all = lines(text(), painter.fontMetrics(), room.width());
    const int line = zoomed(kLineHeight);
    int top = (room.height() - static_cast<int>(all.size()) * line) / 2;
    for (const QString& words : all) {
        painter.drawText(QRect(room.left(), top, room.width(), line),
                         Qt::AlignRight | Qt::AlignVCenter | Qt::TextDontClip, words);
        top += line;
    }
}

// A single click does nothing; the window must not take it for its own.
void InstrumentLabel::mousePressEvent(QMouseEvent* event) {
    event->accept();
}

void InstrumentLabel::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) click();
}

void InstrumentLabel::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_F2)
        click();
    else
        QPushButton::keyPressEvent(event);
}

}  // namespace melvane
