// A file that only this process can find, gone with its last user, whatever becomes of the process.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace melvane::decode {

class NamelessFile {
public:
    // In the user's folder for caches, else in that for temporary files. Throws std::system_error.
    NamelessFile();
    ~NamelessFile();
    NamelessFile(const NamelessFile&) = delete;
    NamelessFile& operator=(const NamelessFile&) = delete;

    // For a child that writes into it.
    int descriptor() const { return file_; }
    // What this process may open it by.
    std::string path() const;
    // Writes behind its end: 0, or the error number (<cerrno>) by which not all of it could be written.
    int append(const void* bytes, std::size_t count);
    // Reads from `offset` on, and returns how much there was of it; -1 when the drive fails.
    std::ptrdiff_t readAt(std::int64_t offset, void* bytes, std::size_t count) const;
    // Whether more can be written behind its end; does so.
    bool canGrow() const;

private:
    int file_ = -1;
};

}  // namespace melvane::decode
