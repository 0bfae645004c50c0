// A switch with a picture for on and one for off.
#pragma once

#include <QCheckBox>

#include "controls/skin.h"

namespace melvane {

class Switch : public QCheckBox {
    Q_OBJECT

public:
    // Fills `place`; the picture is in its middle.
    Switch(QWidget* window, const QRect& place, Accent accent);

protected:
    bool hitButton(const QPoint& position) const override;
    void paintEvent(QPaintEvent* event) override;

private:
    Accent accent_;
};

}  // namespace melvane
