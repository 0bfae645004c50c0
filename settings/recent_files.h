// Where songs and voices were taken last, from one start to the next, and the files that earlier programs kept.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "settings/settings_store.h"

namespace melvane {

// What is recent has a key of its own.
inline constexpr const char* kRecentKey = R"(software\Tessaro\Melvane\recent files)";

class RecentFiles {
public:
    explicit RecentFiles(const SettingsStore& store) : store_(store) {}

    // UTF-8 paths of songs and voices, the latest first, as they were kept before whole jobs were.
    std::vector<std::string> list() const;

    // Where a song (0) and a voice (1) were taken last; "" for nowhere.
    using Folders = std::array<std::string, 2>;
    Folders folders() const;
    void keepFolders(const Folders& folders) const;

private:
    const SettingsStore& store_;
};

}  // namespace melvane
