// The one place where errors that leave an operation end: around the event handlers of the windows.
#pragma once

#include <exception>
#include <string>

#include "platform/dialogs.h"
#include "settings/modLang.h"
#include "state/product.h"

namespace melvane {

// What an error says to the user.
std::string errorMessage(const modLang& language, const std::exception& error);

// Runs `handler`; what it throws is told in a box, in the language of the windows. True when nothing was thrown.
template <typename Handler>
bool guarded(Dialogs& dialogs, const modLang& language, Handler handler) {
    try {
        handler();
        return true;
    } catch (const std::exception& error) {
        dialogs.tell(errorMessage(language, error), kProductCaption, BoxIcon::critical);
        return false;
    }
}

}  // namespace melvane
