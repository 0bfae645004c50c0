#include "rehearsal/frm_lanes.h"

#include <QAccessibleWidget>
#include <QPaintEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "controls/skin.h"
#include "controls/zoom.h"

namespace melvane {

namespace {

constexpr int kHeadWidth = 2;  // units
constexpr double kNotch = 120;
constexpr double kZoomANotch = 1.25;
constexpr double kScrollANotch = 0.1;  // of the page
constexpr int kLeastFull = 1024;       // noise alone stays small
constexpr QRgb kOutsideLoop = 0x90171A1F;

class LaneAccess : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit LaneAccess(Lane* lane) : QAccessibleWidget(lane, QAccessible::Slider), lane_(*lane) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ValueInterface) return static_cast<QAccessibleValueInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }
    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Value ? lane_.value().text : QAccessibleWidget::text(kind);
    }

    QVariant currentValue() const override { return lane_.value().now; }
    QVariant minimumValue() const override { return lane_.value().least; }
    QVariant maximumValue() const override { return lane_.value().most; }
    QVariant minimumStepSize() const override { return lane_.value().step; }
    void setCurrentValue(const QVariant& value) override { lane_.setValue(value.toDouble()); }

private:
    Lane& lane_;
};

// A lane that takes no focus is a picture of what another one stands for.
QAccessibleInterface* makeAccess(const QString&, QObject* object) {
    auto* lane = qobject_cast<Lane*>(object);
    return lane && lane->focusPolicy() != Qt::NoFocus ? new LaneAccess(lane) : nullptr;
}

}  // namespace

Lane::Lane(QWidget* window, const char* name, const TimeView& view, const Rehearsal& rehearsal)
    : QWidget(window), view_(view), rehearsal_(rehearsal) {
    QAccessible::installFactory(makeAccess);  // once, however often it is called
    setObjectName(QLatin1String(name));
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void Lane::redraw() {
    pageHolds_ = false;
    update();
}

QRect Lane::headAt(std::int64_t frame) const {
    const int wide = zoomed(kHeadWidth);
    return {static_cast<int>(std::floor(std::clamp(view_.xOf(frame), -1.0 - wide, width() + 1.0))) - wide / 2, 0, wide,
            height()};
}

void Lane::showPlayhead(std::int64_t frame) {
    const QRect before = headAt(head_);
    const QRect now = headAt(frame);
    head_ = frame;
    if (before == now) return;
    update(before);
    update(now);
}

void Lane::drawPageAnew() {
    const QSize pixels = size() * devicePixelRatio();
    if (page_.size() != pixels) page_ = QPixmap(pixels);
    page_.setDevicePixelRatio(devicePixelRatio());
    QPainter painter(&page_);
    painter.fillRect(rect(), QColor(skin::kInset));
    painter.setFont(font());
    drawPage(painter);
    pageHolds_ = true;
}

void Lane::paintEvent(QPaintEvent* event) {
    if (!pageHolds_ || page_.size() != size() * devicePixelRatio()) drawPageAnew();
    QPainter painter(this);
    for (const QRect& part : event->region())
        painter.drawPixmap(
            QRectF(part), page_,
            QRectF(QPointF(part.topLeft()) * devicePixelRatio(), QSizeF(part.size()) * devicePixelRatio()));
    painter.fillRect(headAt(head_), QColor(skin::kText));
    if (!hasFocus()) return;
    painter.setPen(QPen(QColor(skin::kFocus), zoomed(2)));
    painter.drawRect(rect().adjusted(1, 1, -1, -1));
}

void Lane::drawLoop(QPainter& painter) const {
    const Rehearsal::Loop& loop = rehearsal_.loop();
    if (!loop.given()) return;
    const double begin = std::clamp(view_.xOf(loop.begin), 0.0, double(width()));
    const double end = std::clamp(view_.xOf(loop.end), 0.0, double(width()));
    const QColor shade = QColor::fromRgba(kOutsideLoop);
    painter.fillRect(QRectF(0, 0, begin, height()), shade);
    painter.fillRect(QRectF(end, 0, width() - end, height()), shade);
}

void Lane::drawWave(QPainter& painter, const QColor& colour, const Extremes& highest,
                    const std::function<Extremes(std::int64_t, std::int64_t)>& outline) const {
    const double ratio = devicePixelRatio();
    const int columns = static_cast<int>(std::lround(width() * ratio));
    const double middle = height() / 2.0;
    const int full = std::max({int{highest.highest}, -int{highest.lowest}, kLeastFull});
    const double tall = (middle - zoomed(1)) / full;
    for (int column = 0; column < columns; ++column) {
        const std::int64_t begin = view_.frameAt(column / ratio);
        const std::int64_t end = std::max(view_.frameAt((column + 1) / ratio), begin + 1);
        const Extremes extremes = outline(begin, end);
        if (extremes == Extremes{}) continue;
        const double top = middle - extremes.highest * tall;
        const double low = middle - extremes.lowest * tall;
        painter.fillRect(QRectF(column / ratio, top, 1 / ratio, std::max(low - top, 1 / ratio)), colour);
    }
}

void Lane::wheelEvent(QWheelEvent* event) {
    const double notches = (event->angleDelta().y() + event->angleDelta().x()) / kNotch;
    if (event->modifiers() & Qt::ControlModifier)
        Q_EMIT zoomWanted(std::pow(kZoomANotch, -notches), event->position().x());
    else
        Q_EMIT scrollWanted(-notches * kScrollANotch * width());
    event->accept();
}

void Lane::focusInEvent(QFocusEvent* event) {
    QWidget::focusInEvent(event);
    update();
}

void Lane::focusOutEvent(QFocusEvent* event) {
    QWidget::focusOutEvent(event);
    update();
}

}  // namespace melvane
