// The files that were chosen last, from one start to the next, under a key of their own.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "settings/settings_store.h"

namespace melvane {

class RecentFiles {
public:
    explicit RecentFiles(const SettingsStore& store) : store_(store) {}

    static constexpr std::size_t kMost = 8;

    // UTF-8 paths, the latest first.
    std::vector<std::string> list() const;
    // Puts files in front, the last one foremost; stored at once. Names with line breaks are not kept.
    void add(const std::vector<std::string>& paths);

    // Where a song (0) and a voice (1) were taken last; "" for nowhere.
    using Folders = std::array<std::string, 2>;
    Folders folders() const;
    void keepFolders(const Folders& folders) const;

private:
    const SettingsStore& store_;
};

}  // namespace melvane
