#include "engine/graph/source_window.h"

#include <algorithm>

namespace melvane::engine {

namespace {

std::size_t ringPlace(std::int64_t frame) {
    return static_cast<std::size_t>(frame) % SourceWindow::kFrames;
}

}  // namespace

SourceWindow::SourceWindow(std::shared_ptr<PcmSource> source) : source_(std::move(source)), kept_(kFrames * 2) {}

void SourceWindow::read(std::int64_t frame, float* out, std::size_t count) {
    const std::int64_t last = frame + static_cast<std::int64_t>(count);
    const std::int64_t from = std::clamp<std::int64_t>(frame, 0, frames());
    const std::int64_t to = std::clamp<std::int64_t>(last, 0, frames());
    std::fill_n(out, count * 2, 0.0F);
    if (from >= to) return;
    if (from < begin_ || from > end_) {
        source_->seek(from);
        begin_ = end_ = from;
    }
    fillUpTo(to);
    float* place = out + (from - frame) * 2;
    for (std::int64_t f = from; f < to;) {
        const std::size_t at = ringPlace(f);
        const std::size_t run = std::min(kFrames - at, static_cast<std::size_t>(to - f));
        place = std::copy_n(&kept_[at * 2], run * 2, place);
        f += static_cast<std::int64_t>(run);
    }
}

void SourceWindow::fillUpTo(std::int64_t end) {
    while (end_ < end) {
        const std::size_t at = ringPlace(end_);
        const std::size_t run = std::min(kFrames - at, static_cast<std::size_t>(end - end_));
        const std::size_t got = source_->read(&kept_[at * 2], run);
        std::fill_n(&kept_[(at + got) * 2], (run - got) * 2, 0.0F);
        end_ += static_cast<std::int64_t>(run);
    }
    begin_ = std::max(begin_, end_ - static_cast<std::int64_t>(kFrames));
}

}  // namespace melvane::engine
