// What the delays work in: pieces that are short enough for the cache and long enough for the vector units.
#pragma once

#include <array>
#include <cstddef>

namespace melvane::engine {

// Less than the shortest delay of the reverb, so that what goes into a line within a chunk does not come out in it.
inline constexpr std::size_t kChunk = 64;

// One number for each frame of a chunk.
template <typename Number>
using Row = std::array<Number, kChunk>;

}  // namespace melvane::engine
