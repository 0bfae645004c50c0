// Small words beside the controls of a window, in the colour of what they belong to.
#pragma once

#include <QLabel>

#include "controls/skin.h"

namespace melvane {

QLabel* addCaption(QWidget* window, const QRect& place, Accent accent, Qt::Alignment alignment = Qt::AlignCenter);

}  // namespace melvane
