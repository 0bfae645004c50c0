// A sound file's bytes on the way that every file goes, and what its listeners rely on.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>
#include <vector>

#include "engine/decode/open_source.h"
#include "tests/fuzz/door.h"

namespace melvane::fuzz {

// The path of a file in memory that holds `bytes`, until the next call.
inline std::string inMemory(std::string_view bytes) {
    static const int file = memfd_create("sound", 0);
    const auto size = static_cast<ssize_t>(bytes.size());
    require(ftruncate(file, 0) == 0 && pwrite(file, bytes.data(), bytes.size(), 0) == size);
    return "/proc/self/fd/" + std::to_string(file);
}

inline void listen(PcmSource& source, std::int64_t from) {
    constexpr std::int64_t kBlock = 500;
    std::vector<float> block(2 * kBlock);
    source.seek(from);
    const std::size_t got = source.read(block.data(), kBlock);
    require(std::cmp_equal(got, std::min(kBlock, source.frames() - from)));
    require(std::all_of(block.begin(), block.end(), [](float sample) { return std::abs(sample) < 1e8F; }));
}

inline void hear(std::string_view bytes) {
    const auto source = decode::openSource(inMemory(bytes));
    if (!source) return;
    const std::int64_t frames = source->frames();
    require(frames > 0);
    for (const std::int64_t from : {std::int64_t{0}, frames / 3 * 2, std::max<std::int64_t>(frames - 100, 0), frames})
        listen(*source, from);
    require(!source->failed());
}

}  // namespace melvane::fuzz
