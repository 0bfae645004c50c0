#include "controls/level_meter.h"

#include <QAccessibleWidget>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "controls/zoom.h"

namespace melvane {

namespace {

constexpr int kTickMs = 120;  // a little longer than from peaks to peaks
constexpr int kLamp = 4;      // along the meter, with a gap before it
constexpr int kGap = 1;
constexpr int kTwoBars = 5;  // units across, from which on there are two
constexpr double kMsPerSecond = 1000;

class MeterAccess : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit MeterAccess(LevelMeter* meter) : QAccessibleWidget(meter, QAccessible::Indicator), meter_(*meter) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ValueInterface) return static_cast<QAccessibleValueInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }
    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Value ? meter_.valueText() : QAccessibleWidget::text(kind);
    }

    QVariant currentValue() const override { return meter_.level(); }
    QVariant minimumValue() const override { return PeakFall::kFloor; }
    QVariant maximumValue() const override { return 0.0; }
    QVariant minimumStepSize() const override { return 0.0; }
    void setCurrentValue(const QVariant&) override {}  // only sound moves it

private:
    LevelMeter& meter_;
};

QAccessibleInterface* makeAccess(const QString&, QObject* object) {
    auto* meter = qobject_cast<LevelMeter*>(object);
    return meter ? new MeterAccess(meter) : nullptr;
}

}  // namespace

LevelMeter::LevelMeter(QWidget* window, const QRect& place, Qt::Orientation direction, Accent accent)
    : QWidget(window), direction_(direction), accent_(accent) {
    QAccessible::installFactory(makeAccess);  // once, however often it is called
    layOut(this, place);
    timer_.setInterval(kTickMs);
    connect(&timer_, &QTimer::timeout, this, &LevelMeter::tick);
}

void LevelMeter::setPeaks(float left, float right) {
    passTime();
    sides_[0].take(left);
    sides_[1].take(right);
    refresh();
}

void LevelMeter::clear() {
    sides_ = {};
    refresh();
}

double LevelMeter::level() const {
    return std::max(sides_[0].level(), sides_[1].level());
}

QString LevelMeter::valueText() const {
    return QStringLiteral("%1 dB").arg(std::lround(level()));
}

// While peaks come, the timer is put off: all meters change, and are painted, in one go.
void LevelMeter::passTime() {
    if (!timer_.isActive()) return;
    const double seconds = static_cast<double>(sinceTick_.restart()) / kMsPerSecond;
    for (PeakFall& side : sides_) side.pass(seconds);
    timer_.start();
}

void LevelMeter::tick() {
    passTime();
    refresh();
}

// Has what changed painted, and lets time pass as long as there is something to see.
void LevelMeter::refresh() {
    for (std::size_t i = 0; i < sides_.size(); ++i) {
        const Shown now = shownOf(sides_[i]);
        if (now == shown_[i]) continue;
        const auto [low, high] = std::minmax({shown_[i].level, shown_[i].held, now.level, now.held});
        update(part(std::max(low - zoomed(1), 0), high, static_cast<int>(i)));
        shown_[i] = now;
    }
    const bool lampOn = sides_[0].clipped() || sides_[1].clipped();
    if (lampOn != lampOn_) update(lamp());
    lampOn_ = lampOn;

    const bool rests = sides_[0].atRest() && sides_[1].atRest();
    if (rests) timer_.stop();
    if (rests || timer_.isActive()) return;
    sinceTick_.start();
    timer_.start();
}

void LevelMeter::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    refresh();
}

int LevelMeter::length() const {
    return (direction_ == Qt::Vertical ? height() : width()) - zoomed(kLamp) - zoomed(kGap);
}

int LevelMeter::bars() const {
    return (direction_ == Qt::Vertical ? width() : height()) >= zoomed(kTwoBars) ? 2 : 1;
}

LevelMeter::Shown LevelMeter::shownOf(const PeakFall& side) const {
    const auto pixels = [&](double db) {
        return static_cast<int>(std::lround(length() * (db - PeakFall::kFloor) / -PeakFall::kFloor));
    };
    return {pixels(side.level()), pixels(side.held())};
}

// Of a bar, counted from its quiet end.
QRect LevelMeter::part(int from, int to, int bar) const {
    const int across = direction_ == Qt::Vertical ? width() : height();
    const int thick = bars() == 2 ? (across - zoomed(kGap)) / 2 : across;
    const int edge = bars() == 2 && bar == 1 ? across - thick : 0;
    return direction_ == Qt::Vertical ? QRect(edge, height() - to, thick, to - from)
                                      : QRect(from, edge, to - from, thick);
}

QRect LevelMeter::lamp() const {
    const int along = zoomed(kLamp);
    return direction_ == Qt::Vertical ? QRect(0, 0, width(), along) : QRect(width() - along, 0, along, height());
}

void LevelMeter::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(lamp(), QColor(lampOn_ ? skin::kRecording : skin::kInset));
    const bool two = bars() == 2;
    for (int i = 0; i < bars(); ++i) {
        const auto side = static_cast<std::size_t>(i);
        const Shown shown =
            two ? shown_[side]
                : Shown{std::max(shown_[0].level, shown_[1].level), std::max(shown_[0].held, shown_[1].held)};
        painter.fillRect(part(0, length(), i), QColor(skin::kInset));
        painter.fillRect(part(0, shown.level, i), accentColour(accent_));
        if (shown.held > 0) painter.fillRect(part(shown.held - zoomed(1), shown.held, i), QColor(skin::kText));
    }
}

}  // namespace melvane
