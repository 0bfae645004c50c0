// The icon of the program's windows.
#pragma once

#include <QIcon>

namespace melvane {

QIcon programIcon();

}  // namespace melvane
