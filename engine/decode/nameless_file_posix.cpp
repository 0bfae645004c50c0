#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <vector>

#include "base/cache_folder.h"
#include "engine/decode/nameless_file.h"

namespace melvane::decode {

namespace fs = std::filesystem;

namespace {

int openIn(const fs::path& folder) {
    constexpr mode_t kPrivate = 0600;
#ifdef O_TMPFILE
    const int file = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, kPrivate);
    if (file >= 0) return file;
#endif
    // Not every file system knows files without a name.
    std::string name = (folder / "melvane-XXXXXX").string();
    const int named = mkostemp(name.data(), O_CLOEXEC);
    if (named >= 0) unlink(name.c_str());
    return named;
}

}  // namespace

NamelessFile::NamelessFile() {
    std::error_code error;
    const fs::path cache = cacheFolder();
    fs::create_directory(cache, error);
    if (fs::is_directory(cache, error)) file_ = openIn(cache);
    if (file_ < 0) file_ = openIn(fs::temp_directory_path(error));
    if (file_ < 0) throw std::system_error(errno, std::generic_category());
}

NamelessFile::~NamelessFile() {
    close(file_);
}

std::string NamelessFile::path() const {
    return "/proc/self/fd/" + std::to_string(file_);
}

bool NamelessFile::canGrow() const {
    constexpr std::size_t kPiece = 1 << 16;
    const std::vector<char> piece(kPiece);
    return pwrite(file_, piece.data(), piece.size(), lseek(file_, 0, SEEK_END)) == static_cast<ssize_t>(kPiece);
}

}  // namespace melvane::decode
