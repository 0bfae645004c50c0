// What a control is called, on the screen and where the screen is read out.
#pragma once

#include <QString>
#include <QWidget>

namespace melvane {

// The tooltip is the accessible name as well.
inline void setName(QWidget* control, const QString& name) {
    control->setToolTip(name);
    control->setAccessibleName(name);
}

}  // namespace melvane
