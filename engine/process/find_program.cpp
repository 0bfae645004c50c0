#include "engine/process/find_program.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <vector>

namespace melvane::engine {

namespace fs = std::filesystem;

namespace {

bool isProgram(const fs::path& file) {
    std::error_code error;
    return fs::is_regular_file(file, error) && access(file.c_str(), X_OK) == 0;
}

std::vector<fs::path> searchDirectories(const std::string& besideDirectory, std::string_view path) {
    std::vector<fs::path> directories{besideDirectory};
    while (!path.empty()) {
        const std::size_t end = std::min(path.find(':'), path.size());
        directories.emplace_back(path.substr(0, end));
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    std::erase_if(directories, [](const fs::path& d) { return !d.is_absolute(); });
    return directories;
}

}  // namespace

std::optional<std::string> findProgram(const std::string& name, const std::string& besideDirectory,
                                       std::string_view path) {
    const auto directories = searchDirectories(besideDirectory, path);
    std::vector<std::string> names{name};
    if (name.ends_with(".exe")) names.push_back(name.substr(0, name.size() - 4));
    for (const std::string& candidate : names)
        for (const fs::path& directory : directories)
            if (isProgram(directory / candidate)) return (directory / candidate).string();
    return std::nullopt;
}

std::optional<std::string> findProgram(const std::string& name, const std::string& besideDirectory) {
    const char* const path = std::getenv("PATH");
    return findProgram(name, besideDirectory, path ? path : "");
}

}  // namespace melvane::engine
