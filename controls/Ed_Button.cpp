#include "controls/Ed_Button.h"

#include <QMouseEvent>
#include <QPainter>
#include <utility>

#include "controls/skin.h"
#include "controls/zoom.h"

namespace melvane {

namespace {

constexpr int kTickMs = 40;
constexpr int kCaptionPixels = 11;

QFont captionFont() {
    // No outline font has this name; the sans of the system stands in.
    QFont font(QStringLiteral("Small Fonts"));
    font.setStyleHint(QFont::SansSerif);
    font.setPixelSize(zoomedFont(kCaptionPixels));
    return font;
}

int buttonBits(Qt::MouseButtons held) {
    return (held & Qt::LeftButton ? 1 : 0) + (held & Qt::RightButton ? 2 : 0) + (held & Qt::MiddleButton ? 4 : 0);
}

int shiftBits(Qt::KeyboardModifiers held) {
    return (held & Qt::ShiftModifier ? 1 : 0) + (held & Qt::ControlModifier ? 2 : 0) + (held & Qt::AltModifier ? 4 : 0);
}

}  // namespace

Ed_Button::Ed_Button(QWidget* parent) : HotButton(parent, kTickMs) {}

void Ed_Button::setNormal(const QPicture& picture) {
    setPicture(normal_, picture);
}

void Ed_Button::setHot(const QPicture& picture) {
    setPicture(hot_, picture);
}

void Ed_Button::setDis(const QPicture& picture) {
    setPicture(dis_, picture);
}

void Ed_Button::setPicture(QPicture& own, const QPicture& picture) {
    own = picture;
    Q_EMIT PropertyChanged();
    update();
}

void Ed_Button::setCaption(const QString& caption) {
    caption_ = caption;
    Q_EMIT PropertyChanged();
    update();
}

QRect Ed_Button::captionPlace() const {
    const QFontMetrics metrics(captionFont(), this);
    const QSize text(metrics.horizontalAdvance(caption_), metrics.height());
    // Centred on a point that is half its width left of the middle.
    const double centre = width() / 2.0 - text.width() / 2.0;
    return {QPoint(qRound(centre - text.width() / 2.0), qRound(height() / 2.0 - text.height() / 2.0)), text};
}

void Ed_Button::paintEvent(QPaintEvent*) {
    {
        PlacePainter painter(this);
        drawPicture(painter, isHot() ? hot_ : !isEnabled() && !dis_.isNull() ? dis_ : normal_);
        drawButtonState(painter, *this, placeOf(*this).size());
    }
    if (caption_.isEmpty()) return;
    QPainter painter(this);
    painter.setFont(captionFont());
    painter.setPen(QColor(isHot() ? skin::kCaptionHot : skin::kCaption));
    painter.drawText(captionPlace(), Qt::AlignCenter | Qt::TextDontClip, caption_);
}

bool Ed_Button::isLitBy(const QMouseEvent& move) const {
    return move.buttons() == Qt::NoButton;
}

void Ed_Button::mouseMoveEvent(QMouseEvent* event) {
    HotButton::mouseMoveEvent(event);
    const QPointF at = unzoomed(event->position());
    Q_EMIT MouseMove(buttonBits(event->buttons()), shiftBits(event->modifiers()), static_cast<float>(at.x()),
                     static_cast<float>(at.y()));
}

void Ed_Button::keyPressEvent(QKeyEvent* event) {
    const int key = event->key();
    if (key == Qt::Key_Right || key == Qt::Key_Left)
        focusNextPrevChild(key == Qt::Key_Right);
    else
        HotButton::keyPressEvent(event);
}

void Ed_Button::changeEvent(QEvent* event) {
    HotButton::changeEvent(event);
    if (event->type() == QEvent::EnabledChange) Q_EMIT PropertyChanged();
}

Ed_Button* addButton(QWidget* window, const char* name, const QRect& place, ButtonLook look, Symbol symbol,
                     std::function<void()> click) {
    auto* button = new Ed_Button(window);
    button->setObjectName(QLatin1String(name));
    layOut(button, place);
    setButtonLook(button, look, symbol);
    QObject::connect(button, &Ed_Button::Click, window, std::move(click));
    return button;
}

void setButtonLook(Ed_Button* button, ButtonLook look, Symbol symbol) {
    const ButtonPictures pictures = buttonPictures(look, symbol, placeOf(*button).size());
    button->setNormal(pictures.normal);
    button->setHot(pictures.hot);
    button->setDis(pictures.disabled);
}

void setButtonText(Ed_Button* button, const QString& caption, const QString& tooltip) {
    button->setCaption(fitsCaption(button->size()) ? caption : QString());
    button->setToolTip(tooltip);
    button->setAccessibleName(tooltip.isEmpty() ? caption : tooltip);
}

}  // namespace melvane
