// A song's file as a string of bytes.
#pragma once

#include <stdexcept>
#include <string>

namespace melvane {

struct FileError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// `fileName` is UTF-8. Throws FileError when it can't be read, is no plain file or is longer than any song.
std::string fileBytes(const std::string& fileName);

}  // namespace melvane
