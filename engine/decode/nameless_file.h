// A file that only this process can find, gone with its last user, whatever becomes of the process.
#pragma once

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
    // Whether more can be written behind its end; does so.
    bool canGrow() const;

private:
    int file_ = -1;
};

}  // namespace melvane::decode
