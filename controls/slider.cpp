#include "controls/slider.h"

#include <QAccessible>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <utility>

#include "controls/slider_access.h"
#include "controls/zoom.h"

namespace melvane {

namespace {

constexpr int kMargin = 2;  // around the knob, for the focus ring
constexpr qreal kGroove = 4;
constexpr qreal kKnobRadius = 3;
constexpr qreal kMarkGap = 4;  // between the grip on the knob and its edges
constexpr qreal kGripStep = 2.5;
constexpr qreal kGripShorter = 1.5;
constexpr qreal kDimmed = 0.4;
constexpr int kShadow = 110;   // of 255
constexpr int kLighter = 118;  // percent
constexpr int kDarker = 115;
constexpr int kBubbleGap = 6;
constexpr int kReadMs = 1500;
constexpr int kWholeTrack = 1 << 16;
constexpr double kPull = 1;  // units around a whole step, at which a drag rests on it
constexpr double kSamePlace = 1e-6;

// Steps to a higher value.
constexpr std::pair<int, int> kKeys[] = {{Qt::Key_Up, 1},    {Qt::Key_Right, 1},         {Qt::Key_Down, -1},
                                         {Qt::Key_Left, -1}, {Qt::Key_End, kWholeTrack}, {Qt::Key_Home, -kWholeTrack}};

int stepsOf(const QKeyEvent& event, int page) {
    if (event.key() == Qt::Key_PageUp) return page;
    if (event.key() == Qt::Key_PageDown) return -page;
    const auto* found =
        std::find_if(std::begin(kKeys), std::end(kKeys), [&](const auto& row) { return row.first == event.key(); });
    return found == std::end(kKeys) ? 0 : found->second;
}

}  // namespace

Slider::Slider(QWidget* window, const SliderPlace& place, Accent accent, SliderValue value)
    : QWidget(window),
      place_(place),
      accent_(accent),
      value_(std::move(value)),
      position_(place.track.neutral),
      bubble_(new QLabel(window)) {
    installSliderAccess();
    layOut(this, knobAt(place.track.first)
                     .united(knobAt(place.track.last))
                     .toRect()
                     .marginsAdded({kMargin, kMargin, kMargin, kMargin}));
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    bubble_->setObjectName(QStringLiteral("bubble"));
    bubble_->setAttribute(Qt::WA_TransparentForMouseEvents);
    bubble_->hide();
    hideBubble_.setSingleShot(true);
    hideBubble_.setInterval(kReadMs);
    connect(&hideBubble_, &QTimer::timeout, bubble_, &QWidget::hide);
}

void Slider::setPosition(double position) {
    if (place(position)) tellValue();
}

bool Slider::place(double position) {
    position = onTrack(place_.track, position);
    if (position == position_) return false;
    position_ = position;
    update();
    return true;
}

// After whoever owns the value has heard of the new position: the value may be theirs.
void Slider::tellValue() {
    QAccessibleValueChangeEvent change(this, valueAt(position_));
    QAccessible::updateAccessibility(&change);
}

void Slider::setDimmed(bool dimmed) {
    if (dimmed == dimmed_) return;
    dimmed_ = dimmed;
    update();
}

void Slider::moveTo(double position) {
    if (!place(position)) return;
    Q_EMIT moved(position_);
    tellValue();
}

// To the step that is so many away from the last one on the way there.
void Slider::step(int steps, bool fine) {
    const double length = fine ? place_.steps.fine : place_.steps.whole;
    const double at = (position_ - place_.track.neutral) / length;
    const int along = valueAt(place_.track.last) > valueAt(place_.track.first) ? steps : -steps;
    const double from = along > 0 ? std::floor(at + kSamePlace) : std::ceil(at - kSamePlace);
    moveTo(place_.track.neutral + (from + along) * length);
    showValue(true);
}

double Slider::rested(double position) const {
    const double length = place_.steps.whole;
    const double whole = place_.track.neutral + std::round((position - place_.track.neutral) / length) * length;
    return std::abs(position - whole) < kPull ? whole : position;
}

void Slider::reset() {
    place(place_.track.neutral);
    Q_EMIT resetWanted();
    tellValue();
    showValue(true);
}

QRectF Slider::knobAt(double position) const {
    const double edge = place_.centre - (isVertical() ? place_.knob.width() : place_.knob.height()) / 2;
    return {isVertical() ? QPointF(edge, position) : QPointF(position, edge), place_.knob};
}

QRectF Slider::grooveBetween(double one, double other) const {
    const QPointF from = knobAt(one).center();
    const QPointF to = knobAt(other).center();
    constexpr qreal kHalf = kGroove / 2;
    return QRectF(from, to).normalized().adjusted(-kHalf, -kHalf, kHalf, kHalf);
}

void Slider::paintEvent(QPaintEvent*) {
    PlacePainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(-placeOf(*this).topLeft());
    if (dimmed_) painter.setOpacity(kDimmed);
    if (place_.groove) drawGroove(painter);
    drawKnob(painter);
}

void Slider::drawGroove(QPainter& painter) const {
    const auto [first, last, neutral] = place_.track;
    const auto draw = [&](const QRectF& groove, const QColor& colour) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(colour);
        painter.drawRoundedRect(groove, kGroove / 2, kGroove / 2);
    };
    draw(grooveBetween(first, last), skin::kInset);
    if (isEnabled()) draw(grooveBetween(place_.zero, position_), accentColour(accent_));
    if (place_.zero == first || place_.zero == last) return;
    const QRectF knob = knobAt(place_.zero);
    painter.fillRect(isVertical() ? QRectF(knob.left(), knob.center().y() - 0.5, knob.width(), 1)
                                  : QRectF(knob.center().x() - 0.5, knob.top(), 1, knob.height()),
                     QColor(skin::kFaint));
}

void Slider::drawKnob(QPainter& painter) const {
    const PartColours colours = partColours(*this, accent_, grip_.has_value());
    // Edges are sharp on whole pixels.
    const QRectF knob = knobAt(std::round(position_ * zoomFactor()) / zoomFactor());
    const QRectF face = knob.adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, kShadow));
    if (isEnabled()) painter.drawRoundedRect(knob.adjusted(-0.5, 0.5, 0.5, 1.5), kKnobRadius, kKnobRadius);
    QLinearGradient light(knob.topLeft(), knob.bottomLeft());
    light.setColorAt(0, colours.fill.lighter(kLighter));
    light.setColorAt(1, colours.fill.darker(kDarker));
    painter.setPen(colours.border);
    painter.setBrush(light);
    painter.drawRoundedRect(face, kKnobRadius, kKnobRadius);
    drawGrip(painter, knob, colours.mark);
    if (!hasFocus()) return;
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(skin::kFocus), kMargin));
    painter.drawRoundedRect(knob.adjusted(-1, -1, 1, 1), kKnobRadius + 1, kKnobRadius + 1);
}

// Lines across the direction of the slider, as on a fader that is taken between two fingers.
void Slider::drawGrip(QPainter& painter, const QRectF& knob, const QColor& colour) const {
    const QPointF middle = knob.center();
    for (const int step : {-1, 0, 1}) {
        const qreal off = step * kGripStep;
        const qreal gap = kMarkGap + (step == 0 ? 0 : kGripShorter);
        const QRectF line = isVertical() ? QRectF(knob.left() + gap, middle.y() + off - 0.5, knob.width() - 2 * gap, 1)
                                         : QRectF(middle.x() + off - 0.5, knob.top() + gap, 1, knob.height() - 2 * gap);
        painter.fillRect(line, colour);
    }
}

void Slider::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    grip_ = along(unzoomed(event->position())) - position_;
    showValue(false);
    update();
}

void Slider::mouseMoveEvent(QMouseEvent* event) {
    if (!grip_) return;
    const double to = std::round(along(unzoomed(event->position())) - *grip_);
    if (to != std::round(position_)) moveTo(rested(to));
    showValue(false);
}

void Slider::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && grip_) release();
}

void Slider::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) reset();
}

void Slider::wheelEvent(QWheelEvent* event) {
    wheel_ += event->angleDelta().y();
    const int steps = wheel_ / QWheelEvent::DefaultDeltasPerStep;
    wheel_ -= steps * QWheelEvent::DefaultDeltasPerStep;
    if (steps != 0) step(steps, event->modifiers().testFlag(Qt::ShiftModifier));
}

void Slider::keyPressEvent(QKeyEvent* event) {
    if (const int steps = stepsOf(*event, place_.steps.page); steps != 0)
        step(steps, event->modifiers().testFlag(Qt::ShiftModifier));
    else if (event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace)
        reset();
    else
        QWidget::keyPressEvent(event);
}

void Slider::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::EnabledChange && !isEnabled()) release();
}

void Slider::hideEvent(QHideEvent*) {
    release();
}

void Slider::release() {
    grip_.reset();
    bubble_->hide();
    update();
}

void Slider::showValue(bool briefly) {
    bubble_->setText(valueText());
    bubble_->adjustSize();
    const QRect knob = zoomed(knobAt(position_).toRect());
    const int gap = zoomed(kBubbleGap);
    QRect bubble = bubble_->rect();
    bubble.moveCenter(knob.center());
    if (!isVertical())
        bubble.moveBottom(knob.top() - gap);
    else if (knob.left() - gap - bubble.width() > 0)
        bubble.moveRight(knob.left() - gap);
    else
        bubble.moveLeft(knob.right() + gap);
    bubble_->move(bubble.topLeft());
    bubble_->raise();
    bubble_->show();
    if (briefly)
        hideBubble_.start();
    else
        hideBubble_.stop();
}

QString signedText(double value, int decimals) {
    if (value == 0) return QStringLiteral("0");
    return (value > 0 ? QStringLiteral("+") : QString()) + QString::number(value, 'f', decimals);
}

}  // namespace melvane
