#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
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

int NamelessFile::append(const void* bytes, std::size_t count) {
    for (const char* from = static_cast<const char*>(bytes); count > 0;) {
        const ssize_t written = write(file_, from, count);
        if (written < 0 && errno != EINTR) return errno;
        const auto done = static_cast<std::size_t>(std::max<ssize_t>(written, 0));
        from += done;
        count -= done;
    }
    return 0;
}

std::ptrdiff_t NamelessFile::readAt(std::int64_t offset, void* bytes, std::size_t count) const {
    std::size_t done = 0;
    while (done < count) {
        const ssize_t got = pread(file_, static_cast<char*>(bytes) + done, count - done,
                                  static_cast<off_t>(offset + static_cast<std::int64_t>(done)));
        if (got == 0) break;
        if (got < 0 && errno != EINTR) return -1;
        done += static_cast<std::size_t>(std::max<ssize_t>(got, 0));
    }
    return static_cast<std::ptrdiff_t>(done);
}

bool NamelessFile::canGrow() const {
    constexpr std::size_t kPiece = 1 << 16;
    const std::vector<char> piece(kPiece);
    return pwrite(file_, piece.data(), piece.size(), lseek(file_, 0, SEEK_END)) == static_cast<ssize_t>(kPiece);
}

}  // namespace melvane::decode
