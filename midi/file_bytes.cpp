#include "midi/file_bytes.h"

#include <cstdint>
#include <filesystem>
#include <fstream>

#include "state/text_path.h"

namespace melvane {

namespace {
constexpr std::uintmax_t kLargestFile = std::uintmax_t{1} << 29;
}

std::string fileBytes(const std::string& fileName) {
    const auto path = toPath(fileName);
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) throw FileError("This is no file: " + fileName);
    std::ifstream file(path, std::ios::binary);
    const auto size = std::filesystem::file_size(path, error);
    if (!file || error || size > kLargestFile) throw FileError("This file can't be read: " + fileName);

    std::string bytes(size, '\0');
    file.read(bytes.data(), static_cast<std::streamsize>(size));
    if (file.bad()) throw FileError("This file can't be read: " + fileName);
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    return bytes;
}

}  // namespace melvane
