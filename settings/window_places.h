// Where the windows stood that open over the main window, under a key of their own.
#pragma once

#include <optional>
#include <string>

#include "settings/settings_store.h"
#include "state/settings.h"

namespace melvane {

// What is kept about windows lies below the product's key.
inline constexpr const char* kWindowsKey = R"(software\Tessaro\Melvane\windows)";

class WindowPlaces {
public:
    explicit WindowPlaces(const SettingsStore& store) : store_(store) {}

    // None when the window of that name was never placed.
    std::optional<WindowPosition> find(const std::string& window) const;
    void keep(const std::string& window, const WindowPosition& position) const;

private:
    const SettingsStore& store_;
};

}  // namespace melvane
