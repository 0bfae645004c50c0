#include "settings/recent_files.h"

#include <algorithm>

#include "state/numbers.h"

namespace melvane {

namespace {
constexpr const char* kPaths = "paths";
constexpr std::array kFolders = {"song folder", "voice folder"};
constexpr std::size_t kMost = 8;
constexpr char kSeparator = '\n';
}  // namespace

std::vector<std::string> RecentFiles::list() const {
    const RegistryBatch batch = store_.batch(RegistryAccess::read);
    const std::string paths = store_.ReadSetting(kRecentKey, kPaths);
    std::vector<std::string> files = split(paths, kSeparator);
    if (paths.empty())  // once each file had a value of its own
        for (std::size_t i = 0; i < kMost; ++i) files.push_back(store_.ReadSetting(kRecentKey, std::to_string(i)));
    std::erase(files, "");
    files.resize(std::min(files.size(), kMost));
    return files;
}

RecentFiles::Folders RecentFiles::folders() const {
    const RegistryBatch batch = store_.batch(RegistryAccess::read);
    return {store_.ReadSetting(kRecentKey, kFolders[0]), store_.ReadSetting(kRecentKey, kFolders[1])};
}

void RecentFiles::keepFolders(const Folders& folders) const {
    for (std::size_t i = 0; i < folders.size(); ++i) store_.WriteSetting(kRecentKey, kFolders.at(i), folders.at(i));
}

}  // namespace melvane
