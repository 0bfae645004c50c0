// Tells a bad file from one that only can't be read now: a disk that fails, too many open files.
#pragma once

#include <array>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include "base/paths.h"

namespace melvane {

enum class Verdict { good, bad, unknown };

// From end to end.
inline bool canBeRead(const std::string& utf8) {
    std::ifstream stream(toPath(utf8), std::ios::binary);
    std::array<char, 1 << 16> bytes{};
    while (stream.read(bytes.data(), bytes.size())) continue;
    return stream.eof() && !stream.bad();
}

// `isGood` looks at the file, and once more where it can be read: the first look may have met a fault that passed.
template <typename Look>
Verdict judge(const std::string& utf8, Look isGood) {
    if (isGood()) return Verdict::good;
    std::error_code error;
    const auto type = std::filesystem::symlink_status(toPath(utf8), error).type();
    if (type != std::filesystem::file_type::none && type != std::filesystem::file_type::regular) return Verdict::bad;
    if (!canBeRead(utf8)) return Verdict::unknown;
    return isGood() ? Verdict::good : Verdict::bad;
}

}  // namespace melvane
