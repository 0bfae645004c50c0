// The outlines of windows.
#include "controls/window_region.h"
#include "tests/fuzz/door.h"

void melvane::fuzz::attack(std::string_view bytes) {
    const QRegion region = regionFromData(QByteArray(bytes.data(), std::ssize(bytes)));
    require(QRect(0, 0, 0x7FFF, 0x7FFF).contains(region.boundingRect()) || region.isEmpty());
}
