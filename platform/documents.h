// Documents of the user: small files that are read and written whole. Paths are UTF-8. Used on any thread; both wait
// for the disk.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace melvane {

class Documents {
public:
    virtual ~Documents() = default;

    // The bytes of a plain file. 0, or the error number (<cerrno>) of what kept it from that: EFBIG for one of more
    // than `most` bytes.
    virtual int read(const std::string& path, std::size_t most, std::string& bytes) = 0;
    // Puts a file with these bytes there, safe on the disk; one that stood there goes in the same step. 0, or the error
    // number, and then what stood there is still there.
    virtual int write(const std::string& path, std::string_view bytes) = 0;
};

}  // namespace melvane
