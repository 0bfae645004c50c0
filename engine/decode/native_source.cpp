#include "engine/decode/native_source.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace melvane::decode {
namespace {

constexpr int kLowestRate = 1000;
constexpr int kHighestRate = 768000;
// Nothing that is louder, and no NaN, was ever a sample; a filter behind us would never recover from it.
constexpr float kLoudest = 1e6F;

}  // namespace

std::size_t NativeSource::read(float* out, std::size_t frames) {
    const auto left = static_cast<std::uint64_t>(frames_ - position_);
    auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(frames, left));
    std::size_t done = 0;
    while (done < wanted) {
        const std::size_t got = decode(out + 2 * done, wanted - done);
        if (got == 0 || failed()) break;
        done += got;
    }
    if (failed()) wanted = done;
    std::replace_if(
        out, out + 2 * done, [](float sample) { return !(std::abs(sample) <= kLoudest); }, 0.0F);
    std::fill(out + 2 * done, out + 2 * wanted, 0.0F);
    position_ += static_cast<std::int64_t>(wanted);
    return wanted;
}

void NativeSource::seek(std::int64_t frame) {
    frame = std::clamp<std::int64_t>(frame, 0, frames_);
    if (frame == position_) return;
    position_ = frame;
    if (frame < frames_) reposition(frame);
}

void NativeSource::setFormat(int rate, std::int64_t frames) {
    if (rate < kLowestRate || rate > kHighestRate) throw NotSound("sample rate out of range");
    if (frames <= 0) throw NotSound("no sound in it");
    rate_ = rate;
    frames_ = frames;
}

void NativeSource::setClaimedFormat(int rate, std::int64_t frames) {
    setFormat(rate, frames);
    std::array<float, 2> last{};
    reposition(frames - 1);
    if (decode(last.data(), 1) == 0) {
        reposition(0);
        setFormat(rate, countFrames());
    }
    reposition(0);
}

std::int64_t NativeSource::countFrames() {
    std::array<float, 8192> block;
    std::int64_t count = 0;
    while (const std::size_t got = decode(block.data(), block.size() / 2)) count += static_cast<std::int64_t>(got);
    return count;
}

}  // namespace melvane::decode
