// What a device plays before and behind a gap, without a click.
#pragma once

#include <algorithm>
#include <cstddef>

namespace melvane::engine {

class GapFade {
public:
    // Of `wanted` stereo frames the first `got` are there; `left` are known to come behind them. Where that is fewer
    // than 5 ms they fade out; the first ones behind a gap fade in.
    void apply(float* out, std::size_t got, std::size_t wanted, std::size_t left) {
        for (std::size_t i = 0; i < got; ++i) {
            const auto behind = static_cast<float>(left + got - 1 - i);
            gain_ = std::min({gain_ + kStep, 1.0F, behind * kStep});
            out[2 * i] *= gain_;
            out[2 * i + 1] *= gain_;
        }
        if (got < wanted) gain_ = 0;
        std::fill(out + got * 2, out + wanted * 2, 0.0F);
    }

private:
    static constexpr float kStep = 1.0F / 220;

    float gain_ = 0;
};

}  // namespace melvane::engine
