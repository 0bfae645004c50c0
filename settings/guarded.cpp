#include "settings/guarded.h"

#include <new>
#include <stdexcept>

#include "state/errors.h"

namespace melvane {

std::string errorMessage(const modLang& language, const std::exception& error) {
    if (dynamic_cast<const OverflowError*>(&error)) return language.ownText(OwnText::numberTooLarge);
    if (dynamic_cast<const std::bad_alloc*>(&error)) return language.ownText(OwnText::outOfMemory);
    if (dynamic_cast<const std::logic_error*>(&error)) return language.ownText(OwnText::internalError);
    return language.ownText(OwnText::unexpectedError, error.what());
}

}  // namespace melvane
