#include "midi/song_file.h"

#include <cstdint>
#include <filesystem>
#include <fstream>

#include "base/paths.h"

namespace melvane {

namespace fs = std::filesystem;

namespace {
constexpr std::uintmax_t kLargestFile = std::uintmax_t{64} << 20;
}

std::string readSongFile(const std::string& fileName) {
    if (!isFile(fileName)) throw FileError("This is no file: " + fileName);
    const auto path = toPath(fileName);
    std::ifstream file(path, std::ios::binary);
    std::error_code error;
    const auto size = fs::file_size(path, error);
    if (!file || error || size > kLargestFile) throw FileError("This file can't be read: " + fileName);

    std::string bytes(size, '\0');
    file.read(bytes.data(), static_cast<std::streamsize>(size));
    if (file.bad()) throw FileError("This file can't be read: " + fileName);
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    return bytes;
}

void writeSongFile(const std::string& fileName, std::string_view bytes) {
    std::ofstream file(toPath(fileName), std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (file.good()) return;
    removeSongFile(fileName);
    throw FileError("This file can't be written: " + fileName);
}

void removeSongFile(const std::string& fileName) {
    std::error_code error;
    if (isFile(fileName)) fs::remove(toPath(fileName), error);
}

}  // namespace melvane
