// Why the system refused a file, as an error number of <cerrno>; looked up afterwards, so it may be gone by then.
#pragma once

#include <string>

namespace melvane {

// 0 when the file can be read, or is none that is to be opened. Reads 256 MB of it at most.
int readingError(const std::string& path);
// ENOSPC when there is next to no room left where the file is.
int writingError(const std::string& path);

}  // namespace melvane
