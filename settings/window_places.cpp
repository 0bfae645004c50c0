#include "settings/window_places.h"

#include "state/numbers.h"

namespace melvane {

std::optional<WindowPosition> WindowPlaces::find(const std::string& window) const {
    const auto fields = split(store_.ReadSetting(kWindowsKey, window), ',');
    if (fields.size() != 2) return std::nullopt;
    return WindowPosition{static_cast<float>(leadingNumber(fields[0])), static_cast<float>(leadingNumber(fields[1]))};
}

void WindowPlaces::keep(const std::string& window, const WindowPosition& position) const {
    store_.WriteSetting(kWindowsKey, window, numberText(position.left) + "," + numberText(position.top));
}

}  // namespace melvane
