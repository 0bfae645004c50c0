#include "engine/graph/limited_source.h"

#include <algorithm>

namespace melvane::engine {

// Behind the source's end silence brings out the rest.
std::size_t LimitedSource::read(float* out, std::size_t frames) {
    block_.assign((frames + early_) * 2, 0.0F);
    inside_ += static_cast<std::int64_t>(source_->read(block_.data(), frames + early_));
    reduction_ = std::max(reduction_, limiter_.process(block_.data(), frames + early_));
    const auto count = static_cast<std::size_t>(std::min<std::int64_t>(static_cast<std::int64_t>(frames), inside_));
    std::copy_n(block_.begin() + static_cast<std::ptrdiff_t>(early_ * 2), count * 2, out);
    inside_ -= static_cast<std::int64_t>(count);
    early_ = 0;
    return count;
}

void LimitedSource::seek(std::int64_t frame) {
    source_->seek(frame);
    limiter_.reset();
    early_ = Limiter::kDelay;
    inside_ = 0;
}

}  // namespace melvane::engine
