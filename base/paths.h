// File names between texts, which are UTF-8, and the platform's own form.
#pragma once

#include <filesystem>
#include <string>
#include <system_error>

namespace melvane {

// Where names are bytes, they stay as they are, also those that are no UTF-8.
inline std::filesystem::path toPath(const std::string& utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

inline std::string toText(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

inline std::string fileName(const std::string& utf8) {
    return toText(toPath(utf8).filename());
}

// False for folders, and for pipes and devices, which may keep waiting who opens them.
inline bool isFile(const std::string& utf8) {
    std::error_code error;
    return std::filesystem::is_regular_file(toPath(utf8), error);
}

// True when both name the same file, whatever the spelling, also through links.
inline bool isSameFile(const std::string& one, const std::string& other) {
    namespace fs = std::filesystem;
    std::error_code error;
    if (fs::equivalent(toPath(one), toPath(other), error)) return true;
    const fs::path resolved = fs::weakly_canonical(fs::absolute(toPath(one), error), error);
    return !error && resolved == fs::weakly_canonical(fs::absolute(toPath(other), error), error) && !error;
}

}  // namespace melvane
