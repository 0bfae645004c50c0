#include "controls/program_icon.h"

#include "controls/controls_resources.h"

namespace melvane {

QIcon programIcon() {
    initControlsResources();
    QIcon icon;
    for (const int side : {16, 24, 32, 48, 64, 128, 256})
        icon.addFile(QStringLiteral(":/icons/%1.png").arg(side), QSize(side, side));
    return icon;
}

}  // namespace melvane
