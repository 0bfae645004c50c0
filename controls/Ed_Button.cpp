#include "controls/Ed_Button.h"

#include <QMouseEvent>
#include <QPainter>
#include <utility>

#include "controls/skin.h"

namespace melvane {

namespace {

constexpr int kTickMs = 40;
constexpr int kCaptionPixels = 11;

const QFont& captionFont() {
    static const QFont font = [] {
        // No outline font has this name; the sans of the system stands in.
        QFont made(QStringLiteral("Small Fonts"));
        made.setStyleHint(QFont::SansSerif);
        made.setPixelSize(kCaptionPixels);
        return made;
    }();
    return font;
}

int buttonBits(Qt::MouseButtons held) {
    return (held & Qt::LeftButton ? 1 : 0) + (held & Qt::RightButton ? 2 : 0) + (held & Qt::MiddleButton ? 4 : 0);
}

int shiftBits(Qt::KeyboardModifiers held) {
    return (held & Qt::ShiftModifier ? 1 : 0) + (held & Qt::ControlModifier ? 2 : 0) + (held & Qt::AltModifier ? 4 : 0);
}

}  // namespace

Ed_Button::Ed_Button(QWidget* parent) : QAbstractButton(parent) {
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    Timer1_.setInterval(kTickMs);
    connect(&Timer1_, &QTimer::timeout, this, &Ed_Button::Timer1_Timer);
    connect(this, &QAbstractButton::clicked, this, &Ed_Button::Click);
}

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

bool Ed_Button::event(QEvent* event) {
    if (event->type() != QEvent::ContextMenu || isEnabled()) return QAbstractButton::event(event);
    event->ignore();
    return false;
}

void Ed_Button::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    drawPicture(painter, isHot() ? hot_ : !isEnabled() && !dis_.isNull() ? dis_ : normal_);
    drawButtonState(painter, *this);
    if (caption_.isEmpty()) return;
    painter.setFont(captionFont());
    painter.setPen(QColor(isHot() ? skin::kCaptionHot : skin::kCaption));
    painter.drawText(captionPlace(), Qt::AlignCenter | Qt::TextDontClip, caption_);
}

void Ed_Button::mouseMoveEvent(QMouseEvent* event) {
    QAbstractButton::mouseMoveEvent(event);
    setAttribute(Qt::WA_UnderMouse);  // moves may come without an enter event before them
    if (event->buttons() == Qt::NoButton && !hover_ && isEnabled()) {
        hover_ = true;
        Timer1_.start();
        update();
    }
    Q_EMIT MouseMove(buttonBits(event->buttons()), shiftBits(event->modifiers()),
                     static_cast<float>(event->position().x()), static_cast<float>(event->position().y()));
}

void Ed_Button::Timer1_Timer() {
    if (isUnderCursor(*this)) return;
    hover_ = false;
    drawAtRest();
}

void Ed_Button::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) drawAtRest();
    QAbstractButton::mousePressEvent(event);
}

void Ed_Button::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) hover_ = false;
    QAbstractButton::mouseReleaseEvent(event);
}

void Ed_Button::keyPressEvent(QKeyEvent* event) {
    const int key = event->key();
    if (key == Qt::Key_Right || key == Qt::Key_Left)
        focusNextPrevChild(key == Qt::Key_Right);
    else if (!pressedByEnter(*this, *event))
        QAbstractButton::keyPressEvent(event);
}

void Ed_Button::changeEvent(QEvent* event) {
    QAbstractButton::changeEvent(event);
    if (event->type() != QEvent::EnabledChange) return;
    hover_ = false;
    drawAtRest();
    Q_EMIT PropertyChanged();
}

void Ed_Button::hideEvent(QHideEvent* event) {
    QAbstractButton::hideEvent(event);
    hover_ = false;
    drawAtRest();
}

void Ed_Button::drawAtRest() {
    Timer1_.stop();
    update();
}

Ed_Button* addButton(QWidget* window, const char* name, const QRect& place, ButtonLook look, Symbol symbol,
                     std::function<void()> click) {
    auto* button = new Ed_Button(window);
    button->setObjectName(QLatin1String(name));
    button->setGeometry(place);
    const ButtonPictures pictures = buttonPictures(look, symbol, place.size());
    button->setNormal(pictures.normal);
    button->setHot(pictures.hot);
    button->setDis(pictures.disabled);
    QObject::connect(button, &Ed_Button::Click, window, std::move(click));
    return button;
}

void setButtonText(Ed_Button* button, const QString& caption, const QString& tooltip) {
    button->setCaption(fitsCaption(button->size()) ? caption : QString());
    button->setToolTip(tooltip);
    button->setAccessibleName(tooltip.isEmpty() ? caption : tooltip);
}

}  // namespace melvane
