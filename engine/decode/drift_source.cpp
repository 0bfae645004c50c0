#include "engine/decode/drift_source.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>

#include "platform/audio_library.h"

namespace melvane::decode {
namespace {

constexpr int kZeros = 96;            // of the sinc to each side
constexpr std::size_t kPhases = 512;  // from one frame of the source to the next, straight lines in between
constexpr std::size_t kLanes = 8;
constexpr double kBeta = 11;    // of the window
constexpr double kBand = 0.97;  // of the lower rate's half: the middle of the slope
constexpr std::size_t kBlock = 4096;

// Modified Bessel function of the first kind, order 0, by its power series.
double bessel0(double x) {
    double sum = 1;
    double term = 1;
    for (int k = 1; term > 1e-16 * sum; ++k) {
        term *= x * x / (4.0 * k * k);
        sum += term;
    }
    return sum;
}

// A sinc with zeros at all whole numbers but 0, windowed.
double kernel(double x) {
    if (std::abs(x) >= kZeros) return 0;
    static const double top = bessel0(kBeta);
    const double angle = std::numbers::pi * x;
    const double window = bessel0(kBeta * std::sqrt(1 - std::pow(x / kZeros, 2))) / top;
    return (x == 0 ? 1 : std::sin(angle) / angle) * window;
}

using Lanes __attribute__((vector_size(16))) = float;

Lanes lanes(const float* from) {
    Lanes loaded;
    std::memcpy(&loaded, from, sizeof loaded);
    return loaded;
}

}  // namespace

DriftSource::DriftSource(std::unique_ptr<NativeSource> source, double driftPpm)
    : source_(std::move(source)),
      ratio_(source_->rate() * (1 + driftPpm / 1e6) / kSampleRate),
      cutoff_(kBand * std::min(1.0, 1 / ratio_)),
      reach_(static_cast<std::int64_t>(std::ceil(kZeros / cutoff_))),
      taps_((static_cast<std::size_t>(2 * reach_) / kLanes + 1) * kLanes),
      weights_((kPhases + 1) * taps_) {
    for (std::size_t i = 0; i < weights_.size(); ++i) {
        const double frame = static_cast<double>(i % taps_) - static_cast<double>(reach_);
        const double phase = static_cast<double>(i / taps_) / kPhases;
        weights_[i] = static_cast<float>(cutoff_ * kernel(cutoff_ * (frame - phase)));
    }
    setFormat(kSampleRate, std::llround(static_cast<double>(source_->frames()) / ratio_));
}

std::size_t DriftSource::decode(float* out, std::size_t frames) {
    for (std::size_t i = 0; i < frames; ++i, ++next_) {
        const double place = static_cast<double>(next_) * ratio_;
        fill(static_cast<std::int64_t>(place) - reach_);
        if (failed()) return i;
        sum(place, out + 2 * i);
    }
    return frames;
}

// Keeps what is heard from `begin` on; silence around the source.
void DriftSource::fill(std::int64_t begin) {
    const auto had = static_cast<std::int64_t>(kept_[0].size());
    const std::int64_t unneeded = begin - keptFrom_;
    if (unneeded >= 0 && unneeded + static_cast<std::int64_t>(taps_) <= had) return;
    const bool goesOn = unneeded >= 0 && unneeded <= had;
    const std::int64_t from = goesOn ? keptFrom_ + had : begin;
    if (!goesOn) source_->seek(std::max<std::int64_t>(from, 0));
    const auto silent = static_cast<std::size_t>(std::clamp<std::int64_t>(-from, 0, kBlock));
    read_.assign(kBlock * 2, 0.0F);
    source_->read(&read_[silent * 2], kBlock - silent);
    for (std::size_t side = 0; side < 2; ++side) {
        auto& kept = kept_[side];
        kept.erase(kept.begin(), goesOn ? kept.begin() + unneeded : kept.end());
        for (std::size_t i = 0; i < kBlock; ++i) kept.push_back(read_[2 * i + side]);
    }
    keptFrom_ = begin;
}

// Sums in lanes, which are added up at the end: what the vector units can do at once. Compilers make poor use of them
// where it is written as a loop over lanes.
void DriftSource::sum(double place, float* out) const {
    const double whole = std::floor(place);
    const double phase = (place - whole) * kPhases;
    const auto step = static_cast<std::size_t>(phase);
    const auto share = static_cast<float>(phase - static_cast<double>(step));
    const float* const low = weights(step);
    const float* const high = weights(step + 1);
    const auto first = static_cast<std::size_t>(static_cast<std::int64_t>(whole) - reach_ - keptFrom_);
    const float* const left = &kept_[0][first];
    const float* const right = &kept_[1][first];
    std::array<Lanes, 2> sums[2] = {};
    for (std::size_t tap = 0; tap < taps_; tap += kLanes)
        for (std::size_t half = 0; half < 2; ++half) {
            const std::size_t at = tap + half * kLanes / 2;
            const Lanes weight = lanes(low + at) + share * (lanes(high + at) - lanes(low + at));
            sums[0][half] += weight * lanes(left + at);
            sums[1][half] += weight * lanes(right + at);
        }
    for (std::size_t side = 0; side < 2; ++side) {
        out[side] = 0;
        for (const Lanes& half : sums[side])
            for (std::size_t lane = 0; lane < kLanes / 2; ++lane) out[side] += half[lane];
    }
}

}  // namespace melvane::decode
