#include "engine/capture/command_line.h"

#include <unistd.h>

#include <filesystem>

namespace melvane::engine {

namespace fs = std::filesystem;

std::vector<std::string> commandWords(std::string_view commandLine) {
    std::vector<std::string> words;
    bool inWord = false;
    bool quoted = false;
    for (std::size_t i = 0; i < commandLine.size(); ++i) {
        char c = commandLine[i];
        if (!quoted && c == ' ') {
            inWord = false;
            continue;
        }
        if (!inWord) words.emplace_back();
        inWord = true;
        if (c == '"') {
            quoted = !quoted;
            continue;
        }
        if (quoted && c == '\\' && i + 1 < commandLine.size()) c = commandLine[++i];
        words.back() += c;
    }
    return words;
}

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

}  // namespace melvane::engine
