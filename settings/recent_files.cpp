#include "settings/recent_files.h"

#include <algorithm>

namespace melvane {

namespace {
constexpr const char* kKey = R"(software\Tessaro\Melvane\recent files)";
}

std::vector<std::string> RecentFiles::list() const {
    std::vector<std::string> files;
    for (std::size_t i = 0; i < kMost; ++i) {
        std::string path = store_.ReadSetting(kKey, std::to_string(i));
        if (!path.empty()) files.push_back(std::move(path));
    }
    return files;
}

void RecentFiles::add(const std::string& path) {
    std::vector<std::string> files = list();
    std::erase(files, path);
    files.insert(files.begin(), path);
    if (files.size() > kMost) files.resize(kMost);
    for (std::size_t i = 0; i < files.size(); ++i)
        if (!store_.WriteSetting(kKey, std::to_string(i), files[i])) return;
}

}  // namespace melvane
