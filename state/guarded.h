// The one place where errors that leave an operation end: around the event handlers of the windows.
#pragma once

#include <exception>

#include "platform/dialogs.h"
#include "state/product.h"

namespace melvane {

// Runs `handler`; what it throws is shown in a box. True when nothing was thrown.
template <typename Handler>
bool guarded(Dialogs& dialogs, Handler handler) {
    try {
        handler();
        return true;
    } catch (const std::exception& error) {
        dialogs.messageBox(error.what(), kProductCaption, BoxIcon::critical, BoxButtons::ok);
        return false;
    }
}

}  // namespace melvane
