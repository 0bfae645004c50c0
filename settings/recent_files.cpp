#include "settings/recent_files.h"

#include <algorithm>

#include "state/numbers.h"

namespace melvane {

namespace {
constexpr const char* kKey = R"(software\Tessaro\Melvane\recent files)";
constexpr const char* kPaths = "paths";
constexpr std::array kFolders = {"song folder", "voice folder"};
constexpr char kSeparator = '\n';
}  // namespace

std::vector<std::string> RecentFiles::list() const {
    const RegistryBatch batch = store_.batch(RegistryAccess::read);
    const std::string paths = store_.ReadSetting(kKey, kPaths);
    std::vector<std::string> files = split(paths, kSeparator);
    if (paths.empty())  // once each file had a value of its own
        for (std::size_t i = 0; i < kMost; ++i) files.push_back(store_.ReadSetting(kKey, std::to_string(i)));
    std::erase(files, "");
    files.resize(std::min(files.size(), kMost));
    return files;
}

void RecentFiles::add(const std::vector<std::string>& paths) {
    if (paths.empty()) return;
    const RegistryBatch batch = store_.batch(RegistryAccess::change);
    std::vector<std::string> files = list();
    for (const std::string& path : paths) {
        std::erase(files, path);
        files.insert(files.begin(), path);
    }
    std::erase_if(files, [](const std::string& path) { return path.find(kSeparator) != std::string::npos; });
    files.resize(std::min(files.size(), kMost));
    std::string text;
    for (const std::string& path : files) text += path + kSeparator;
    store_.WriteSetting(kKey, kPaths, text);
}

RecentFiles::Folders RecentFiles::folders() const {
    const RegistryBatch batch = store_.batch(RegistryAccess::read);
    return {store_.ReadSetting(kKey, kFolders[0]), store_.ReadSetting(kKey, kFolders[1])};
}

void RecentFiles::keepFolders(const Folders& folders) const {
    for (std::size_t i = 0; i < folders.size(); ++i) store_.WriteSetting(kKey, kFolders.at(i), folders.at(i));
}

}  // namespace melvane
