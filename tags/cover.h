// Pictures for the cover: JPEG and PNG, which every player shows.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "state/tag_choice.h"

namespace melvane {

inline constexpr std::size_t kLargestCover = std::size_t{16} << 20;  // bytes

struct Cover {
    std::string bytes;
    const char* mime;
};

struct CoverRead {
    std::shared_ptr<const Cover> cover;  // null: there is a fault
    TagFault fault = TagFault::none;
};

// The picture that the bytes are, as they are.
CoverRead takeCover(std::string bytes);
// From a file, of any size. Waits for the disk; any thread.
CoverRead readCover(const std::string& file);

}  // namespace melvane
