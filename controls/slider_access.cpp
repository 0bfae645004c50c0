#include "controls/slider_access.h"

#include <QAccessibleWidget>
#include <algorithm>
#include <cmath>

#include "controls/slider.h"

namespace melvane {

namespace {

class SliderAccess : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit SliderAccess(Slider* slider) : QAccessibleWidget(slider, QAccessible::Slider), slider_(*slider) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ValueInterface) return static_cast<QAccessibleValueInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }
    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Value ? slider_.valueText() : QAccessibleWidget::text(kind);
    }

    QVariant currentValue() const override { return slider_.valueAt(slider_.position()); }
    QVariant minimumValue() const override { return std::min(atFirst(), atLast()); }
    QVariant maximumValue() const override { return std::max(atFirst(), atLast()); }
    QVariant minimumStepSize() const override {
        return std::abs(atLast() - atFirst()) / (slider_.track().last - slider_.track().first) * slider_.steps().fine;
    }
    void setCurrentValue(const QVariant& value) override { slider_.moveTo(nearest(value.toDouble())); }

private:
    double atFirst() const { return slider_.valueAt(slider_.track().first); }
    double atLast() const { return slider_.valueAt(slider_.track().last); }
    double nearest(double value) const {
        const auto [first, last, neutral] = slider_.track();
        const double fine = slider_.steps().fine;
        double best = first;
        for (double step = std::round((first - neutral) / fine); neutral + step * fine < last + fine / 2; ++step)
            if (std::abs(slider_.valueAt(neutral + step * fine) - value) < std::abs(slider_.valueAt(best) - value))
                best = neutral + step * fine;
        return best;
    }

    Slider& slider_;
};

QAccessibleInterface* makeAccess(const QString&, QObject* object) {
    auto* slider = qobject_cast<Slider*>(object);
    return slider ? new SliderAccess(slider) : nullptr;
}

}  // namespace

void installSliderAccess() {
    static const bool installed = [] {
        QAccessible::installFactory(makeAccess);
        return true;
    }();
    static_cast<void>(installed);
}

}  // namespace melvane
