// Where the user keeps what can be made again.
#pragma once

#include <cstdlib>
#include <filesystem>

namespace melvane {

// As the environment tells, which the disk is not asked about; empty when there is none.
inline std::filesystem::path cacheFolder() {
    const auto usable = [](const char* folder) { return folder && std::filesystem::path(folder).is_absolute(); };
    const char* const cache = std::getenv("XDG_CACHE_HOME");
    const char* const home = std::getenv("HOME");
    if (usable(cache)) return cache;
    return usable(home) ? std::filesystem::path(home) / ".cache" : std::filesystem::path();
}

}  // namespace melvane
