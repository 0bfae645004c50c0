// The symbols of the buttons as lines.
#pragma once

#include <QPainterPath>

#include "controls/button_pictures.h"

namespace melvane {

inline constexpr qreal kSymbolGrid = 16;  // a symbol is drawn on a square of this side

QPainterPath symbolPath(Symbol symbol);

}  // namespace melvane
