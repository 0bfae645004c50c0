#include "alignment/imprint.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

namespace melvane {

namespace {

constexpr std::size_t kStep = 4;
constexpr std::size_t kTaps = 64;
constexpr std::size_t kNeighbours = 16;  // bins on either side
constexpr float kSilence = 1e-5F;        // a level that is no sound: -100 dB
constexpr float kFaintest = 1e-4F;       // of a sound that is heard
constexpr float kLoudness = 1500;        // of the trace, as the root of its mean square, far from its range

// Low-pass at 0.8 of a quarter of the rate's half, a windowed sinc; symmetric, with a gain of 1.
std::array<float, kTaps> lowPass() {
    std::array<float, kTaps> taps{};
    double sum = 0;
    std::array<double, kTaps> exact{};
    for (std::size_t i = 0; i < kTaps; ++i) {
        const double t = static_cast<double>(i) - (kTaps - 1) / 2.0;
        const double angle = std::numbers::pi * t * 0.8 / kStep;
        const double window = 0.5 + 0.5 * std::cos(2 * std::numbers::pi * t / kTaps);
        exact[i] = std::sin(angle) / angle * window;
        sum += exact[i];
    }
    for (std::size_t i = 0; i < kTaps; ++i) taps[i] = static_cast<float>(exact[i] / sum);
    return taps;
}

const std::array<float, kTaps> kLowPass = lowPass();

template <typename Sample>
float filtered(const Sample* from) {
    float sum = 0;
    for (std::size_t i = 0; i < kTaps; ++i) sum += static_cast<float>(from[i]) * kLowPass[i];
    return sum;
}

std::int16_t rounded(float value) {
    return static_cast<std::int16_t>(std::lrint(std::clamp(value, -32767.0F, 32767.0F)));
}

}  // namespace

ImprintMaker::ImprintMaker() : history_(kTaps / 2), window_(kFrame), sums_(kFrame / 2 + 2) {
    for (std::size_t i = 0; i < kFrame; ++i)
        window_[i] = static_cast<float>(std::sin(std::numbers::pi * (static_cast<double>(i) + 0.5) / kFrame));
}

void ImprintMaker::add(const float* stereo, std::size_t frames) {
    heard_ += frames;
    for (std::size_t i = 0; i < frames; ++i) history_.push_back((stereo[2 * i] + stereo[2 * i + 1]) / 2);
    std::size_t at = 0;
    for (; at + kTaps <= history_.size(); at += kStep) addLow(filtered(&history_[at]));
    history_.erase(history_.begin(), history_.begin() + static_cast<std::ptrdiff_t>(at));
}

Trace ImprintMaker::take() {
    const std::size_t end = (heard_ + kStep - 1) / kStep;
    while (trace_.size() < end) addLow(0);
    trace_.resize(end);
    if (loudest_ < kFaintest) std::ranges::fill(trace_, std::int16_t{0});
    return std::move(trace_);
}

void ImprintMaker::addLow(float sample) {
    ++frames_;
    frame_[filled_++] = std::isfinite(sample) ? sample : 0;
    loudest_ = std::max(loudest_, std::abs(frame_[filled_ - 1]));
    if (filled_ < kFrame) return;
    evenOut();
    std::copy(frame_.begin() + kHop, frame_.end(), frame_.begin());
    filled_ = kHop;
}

// The first half of a frame is complete when the frame is; the one before the sound's beginning is left out.
void ImprintMaker::evenOut() {
    const auto time = fourier_.time();
    const auto bins = fourier_.bins();
    for (std::size_t i = 0; i < kFrame; ++i) time[i] = frame_[i] * window_[i];
    fourier_.forward();
    for (std::size_t i = 0; i < bins.size(); ++i) sums_[i + 1] = sums_[i] + static_cast<double>(std::abs(bins[i]));
    for (std::size_t i = 0; i < bins.size(); ++i) {
        const std::size_t from = i < kNeighbours ? 0 : i - kNeighbours;
        const std::size_t to = std::min(i + kNeighbours + 1, bins.size());
        const auto mean = static_cast<float>((sums_[to] - sums_[from]) / static_cast<double>(to - from));
        bins[i] /= mean + kSilence * std::sqrt(static_cast<float>(kHop));
    }
    fourier_.backward();
    for (std::size_t i = 0; i < kFrame; ++i)
        overlap_[i] += time[i] * window_[i] / std::sqrt(static_cast<float>(kFrame));
    if (frames_ > kHop)
        for (std::size_t i = 0; i < kHop; ++i) trace_.push_back(rounded(overlap_[i] * kLoudness));
    std::copy(overlap_.begin() + kHop, overlap_.end(), overlap_.begin());
    std::fill(overlap_.begin() + kHop, overlap_.end(), 0.0F);
}

Trace quarter(const Trace& trace) {
    Trace padded(kTaps / 2);
    padded.insert(padded.end(), trace.begin(), trace.end());
    padded.resize(padded.size() + kTaps);
    Trace quarter;
    for (std::size_t at = 0; at < trace.size(); at += kStep) quarter.push_back(rounded(2 * filtered(&padded[at])));
    return quarter;
}

}  // namespace melvane
