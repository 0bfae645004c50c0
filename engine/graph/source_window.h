// Random access to a source: the part around the current place is kept, so that several readers at slightly
// different places share one pass through the file. Mixing thread only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/pcm_source.h"

namespace melvane::engine {

class SourceWindow {
public:
    // Frames behind the furthest one read that can be read again without a seek.
    static constexpr std::size_t kFrames = 32768;

    explicit SourceWindow(std::shared_ptr<PcmSource> source);

    std::int64_t frames() const { return source_->frames(); }
    bool failed() const { return source_->failed(); }
    // `count` (at most kFrames) interleaved frames from `frame` on; silence before the start and behind the end.
    void read(std::int64_t frame, float* out, std::size_t count);

private:
    void fillUpTo(std::int64_t end);

    const std::shared_ptr<PcmSource> source_;
    std::vector<float> kept_;  // a ring: frame f lies at f modulo kFrames
    std::int64_t begin_ = 0;   // first frame kept
    std::int64_t end_ = 0;     // behind the last frame kept; where the source stands
};

}  // namespace melvane::engine
