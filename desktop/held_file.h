// A plain file that is open and locked against whoever holds it in the same way, in this program or in another, and
// what else a file that must not be lost needs of the system.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace melvane {

enum class HoldResult { held, missing, exists, busy, failed };

class HeldFile {
public:
    HeldFile() = default;
    ~HeldFile();
    HeldFile(const HeldFile&) = delete;
    HeldFile& operator=(const HeldFile&) = delete;

    // A file that is there and may be written; links are not followed.
    HoldResult open(const std::filesystem::path& path);
    // A new file with these bytes, locked before anyone else can see it where the file system allows that. Nothing that
    // stands there is touched, nor a link followed. `missing`: there is no folder for it.
    HoldResult create(const std::filesystem::path& path, std::string_view bytes);

    // False when the file system has no locks: then nobody knows of who holds it.
    bool isLocked() const { return isLocked_; }
    // The first bytes of it, `most` of them at most. None when it can't be read.
    std::optional<std::string> read(std::size_t most) const;
    // Removes the file if it still stands at `path`. False when that can't be done or told.
    bool removeFrom(const std::filesystem::path& path) const;

private:
    // 1, or 0 where there is another file or none; -1 when that can't be told.
    int standsAt(const std::filesystem::path& path) const;
    HoldResult lock();
    HoldResult createUnseen(const std::filesystem::path& path, std::string_view bytes);
    HoldResult createSeen(const std::filesystem::path& path, std::string_view bytes);
    bool write(std::string_view bytes) const;
    void close();

    int file_ = -1;
    bool isLocked_ = false;
};

// An empty file for this user alone. False when there is something already.
bool createPrivateFile(const std::filesystem::path& path);
// A new file for this user alone, of these bytes and then those of `from`, safe on the disk. False with the reason in
// errno; there is none then.
bool joinFiles(const std::filesystem::path& path, std::string_view bytes, const std::filesystem::path& from);
// Gives `path` the mode of `model`, where there is one, and waits until its contents are safe on the disk. False with
// the reason in errno.
bool makeSafe(const std::filesystem::path& path, const std::filesystem::path& model);
// Gives a file another name that nothing has.
HoldResult renameToFree(const std::filesystem::path& from, const std::filesystem::path& to);
// Waits until the names in the folder are safe on the disk, where the file system can tell.
void makeFolderSafe(const std::filesystem::path& folder);

}  // namespace melvane
