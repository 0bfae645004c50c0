// An address that opens when it is pressed: shortened in its middle to its room, whole in its tooltip.
#pragma once

#include <QPushButton>

namespace melvane {

class LinkButton : public QPushButton {
public:
    explicit LinkButton(QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace melvane
