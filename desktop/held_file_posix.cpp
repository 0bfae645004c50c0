#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <utility>

#include "desktop/held_file.h"

namespace melvane {

namespace {

constexpr mode_t kUsualMode = 0666;
constexpr mode_t kPrivateMode = 0600;
constexpr mode_t kModeBits = 07777;
constexpr int kAttempts = 100;
constexpr std::size_t kPiece = std::size_t{1} << 20;  // of what is copied, in bytes

// Closes a descriptor with the block.
struct Descriptor {
    const int number;
    explicit Descriptor(int opened) : number(opened) {}
    ~Descriptor() {
        if (number >= 0) close(number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
};

bool writeAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(file, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

bool copyAll(int from, int to) {
    std::string piece(kPiece, '\0');
    for (;;) {
        const ssize_t got = read(from, piece.data(), piece.size());
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return got == 0;
        if (!writeAll(to, std::string_view(piece).substr(0, static_cast<std::size_t>(got)))) return false;
    }
}

}  // namespace

HeldFile::~HeldFile() {
    close();
}

void HeldFile::close() {
    if (file_ >= 0) ::close(std::exchange(file_, -1));
}

// Whoever held the file may have put another one in its place between the opening and the lock.
HoldResult HeldFile::open(const std::filesystem::path& path) {
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        file_ = ::open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
        if (file_ < 0) return errno == ENOENT ? HoldResult::missing : HoldResult::failed;
        struct stat opened {};
        const bool plain = fstat(file_, &opened) == 0 && S_ISREG(opened.st_mode);
        const HoldResult result = plain ? lock() : HoldResult::failed;
        if (result == HoldResult::held && standsAt(path) == 1) return result;
        close();
        if (result != HoldResult::held) return result;
    }
    return HoldResult::busy;
}

// A file system without locks is used without them.
HoldResult HeldFile::lock() {
    int failed = 0;
    while ((failed = flock(file_, LOCK_EX | LOCK_NB)) != 0 && errno == EINTR) continue;
    isLocked_ = failed == 0;
    return failed && errno == EWOULDBLOCK ? HoldResult::busy : HoldResult::held;
}

std::optional<std::string> HeldFile::read(std::size_t most) const {
    std::string bytes(most, '\0');
    const ssize_t got = pread(file_, bytes.data(), bytes.size(), 0);
    if (got < 0) return std::nullopt;
    bytes.resize(static_cast<std::size_t>(got));
    return bytes;
}

HoldResult HeldFile::create(const std::filesystem::path& path, std::string_view bytes) {
    const HoldResult unseen = createUnseen(path, bytes);
    return unseen == HoldResult::failed ? createSeen(path, bytes) : unseen;
}

// Named only when it is written and locked.
HoldResult HeldFile::createUnseen(const std::filesystem::path& path, std::string_view bytes) {
    file_ = ::open(path.parent_path().c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, kUsualMode);
    if (file_ < 0) return HoldResult::failed;
    const std::string opened = "/proc/self/fd/" + std::to_string(file_);
    if (write(bytes) && lock() == HoldResult::held &&
        linkat(AT_FDCWD, opened.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) == 0)
        return HoldResult::held;
    const int error = errno;
    close();
    errno = error;
    return error == EEXIST ? HoldResult::exists : HoldResult::failed;
}

HoldResult HeldFile::createSeen(const std::filesystem::path& path, std::string_view bytes) {
    file_ = ::open(path.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, kUsualMode);
    if (file_ < 0 && errno == ENOENT) return HoldResult::missing;
    if (file_ < 0) return errno == EEXIST ? HoldResult::exists : HoldResult::failed;
    HoldResult result = lock();
    if (result == HoldResult::held && !write(bytes)) {
        unlink(path.c_str());
        result = HoldResult::failed;
    }
    if (result != HoldResult::held) close();
    return result;
}

bool HeldFile::write(std::string_view bytes) const {
    return ::write(file_, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
}

int HeldFile::standsAt(const std::filesystem::path& path) const {
    struct stat mine {};
    struct stat there {};
    if (fstat(file_, &mine) != 0) return -1;
    if (lstat(path.c_str(), &there) != 0) return errno == ENOENT ? 0 : -1;
    return mine.st_dev == there.st_dev && mine.st_ino == there.st_ino ? 1 : 0;
}

bool HeldFile::removeFrom(const std::filesystem::path& path) const {
    const int stands = standsAt(path);
    return stands == 0 || (stands == 1 && unlink(path.c_str()) == 0);
}

bool createPrivateFile(const std::filesystem::path& path) {
    return Descriptor(open(path.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, kPrivateMode)).number >= 0;
}

bool joinFiles(const std::filesystem::path& path, std::string_view bytes, const std::filesystem::path& from) {
    const Descriptor source(open(from.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (source.number < 0) return false;
    const Descriptor file(open(path.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, kPrivateMode));
    if (file.number < 0) return false;
    if (writeAll(file.number, bytes) && copyAll(source.number, file.number) && fsync(file.number) == 0) return true;
    const int error = errno;
    unlink(path.c_str());
    errno = error;
    return false;
}

bool makeSafe(const std::filesystem::path& path, const std::filesystem::path& model) {
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct stat old {};
    if (file.number < 0) return false;
    // Some file systems know no modes.
    if (stat(model.c_str(), &old) == 0) fchmod(file.number, old.st_mode & kModeBits);
    return fsync(file.number) == 0;
}

// What a kill between the two steps below leaves.
bool isEmptyAndFree(const std::filesystem::path& path) {
    HeldFile file;
    return file.open(path) == HoldResult::held && file.read(1) == "";
}

// Where the file system knows no exclusive renaming, the name is taken first.
HoldResult renameToFree(const std::filesystem::path& from, const std::filesystem::path& to) {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return HoldResult::held;
    if (errno != EINVAL && errno != ENOSYS) return errno == EEXIST ? HoldResult::exists : HoldResult::failed;
    if (!createPrivateFile(to)) {
        if (errno != EEXIST) return HoldResult::failed;
        if (!isEmptyAndFree(to)) return HoldResult::exists;
    }
    if (rename(from.c_str(), to.c_str()) == 0) return HoldResult::held;
    unlink(to.c_str());
    return HoldResult::failed;
}

void makeFolderSafe(const std::filesystem::path& folder) {
    const Descriptor opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.number >= 0) fsync(opened.number);
}

}  // namespace melvane
