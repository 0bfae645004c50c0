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
        return std::abs(atLast() - atFirst()) / (slider_.track().last - slider_.track().first);
    }
    void setCurrentValue(const QVariant& value) override { slider_.moveTo(nearest(value.toDouble())); }

private:
    double atFirst() const { return slider_.valueAt(slider_.track().first); }
    double atLast() const { return slider_.valueAt(slider_.track().last); }
    int nearest(double value) const {
        int best = slider_.track().first;
        for (int position = best; position <= slider_.track().last; ++position)
            if (std::abs(slider_.valueAt(position) - value) < std::abs(slider_.valueAt(best) - value)) best = position;
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
