// Songs as files; names are UTF-8. What can't be done throws FileError.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace melvane {

struct FileError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// All bytes of a plain file of at most 64 MiB, more than any song has.
std::string readSongFile(const std::string& fileName);
// Half a file is never left behind.
void writeSongFile(const std::string& fileName, std::string_view bytes);
// Nothing but a plain file is ever deleted; one that isn't there is no failure.
void removeSongFile(const std::string& fileName);

}  // namespace melvane
