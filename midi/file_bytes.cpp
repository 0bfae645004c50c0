#include "midi/file_bytes.h"

#include <cstdint>
#include <filesystem>
#include <fstream>

#include "base/paths.h"

namespace melvane {

namespace {
constexpr std::uintmax_t kLargestFile = std::uintmax_t{1} << 29;
}

std::string fileBytes(const std::string& fileName) {
    if (!isFile(fileName)) throw FileError("This is no file: " + fileName);
    const auto path = toPath(fileName);
    std::ifstream file(path, std::ios::binary);
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    if (!file || error || size > kLargestFile) throw FileError("This file can't be read: " + fileName);

    std::string bytes(size, '\0');
    file.read(bytes.data(), static_cast<std::streamsize>(size));
    if (file.bad()) throw FileError("This file can't be read: " + fileName);
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    return bytes;
}

}  // namespace melvane
