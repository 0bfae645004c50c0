// Which part of the song a timeline shows: frames of the song, at 44100 Hz, on the pixels of a width.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace melvane {

class TimeView {
public:
    static constexpr double kFinest = 32;  // frames a pixel

    std::int64_t first() const { return first_; }
    double framesPerPixel() const { return scale_; }
    std::int64_t shown() const { return std::llround(scale_ * width_); }
    std::int64_t begin() const { return begin_; }
    std::int64_t end() const { return end_; }

    double xOf(std::int64_t frame) const { return static_cast<double>(frame - first_) / scale_; }
    std::int64_t frameAt(double x) const { return first_ + std::llround(x * scale_); }

    // Where it can be scrolled to. Goes on showing what it shows, or all when it did so before.
    void setRange(std::int64_t begin, std::int64_t end) {
        const bool all = showsAll();
        begin_ = begin;
        end_ = std::max(end, begin + 1);
        all ? showAll() : scrollTo(first_);
    }
    // As many pixels, with the same part on them.
    void setWidth(int pixels) {
        if (pixels < 1 || pixels == width_) return;
        scale_ *= static_cast<double>(width_) / pixels;
        width_ = pixels;
        zoomBy(1, 0);
    }

    bool showsAll() const { return first_ <= begin_ && scale_ >= coarsest() * kNearly; }
    void showAll() {
        scale_ = coarsest();
        scrollTo(begin_);
    }
    // Shows `factor` times as much; what is at `x` stays there.
    void zoomBy(double factor, double x) {
        const double fixed = static_cast<double>(first_) + x * scale_;
        scale_ = std::max(std::min(scale_ * factor, coarsest()), kFinest);
        scrollTo(std::llround(fixed - x * scale_));
    }
    void scrollTo(std::int64_t first) { first_ = std::max(std::min(first, end_ - shown()), begin_); }
    // Shows the frame: turns to a page that begins a little before it, unless it is on this one. True when it has
    // turned.
    bool turnTo(std::int64_t frame) {
        constexpr std::int64_t kLead = 20;  // a part of the page
        if (frame >= first_ && frame < first_ + shown()) return false;
        const std::int64_t before = first_;
        scrollTo(frame - shown() / kLead);
        return first_ != before;
    }

private:
    static constexpr double kNearly = 1 - 1e-9;

    double coarsest() const { return std::max(static_cast<double>(end_ - begin_) / width_, kFinest); }

    std::int64_t begin_ = 0;
    std::int64_t end_ = 1;
    std::int64_t first_ = 0;
    double scale_ = kFinest;
    int width_ = 1;
};

}  // namespace melvane
