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

}  // namespace melvane
