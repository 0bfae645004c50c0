// Values that glide to a goal within 20 ms, counted in frames.
#pragma once

#include <array>
#include <bit>
#include <cstddef>

namespace melvane::engine {

inline constexpr int kRampFrames = 882;

// How far a glide has come behind `frame` of kRampFrames frames: 0..1, smoothly leaving and smoothly arriving
// (3 t^2 - 2 t^3), so that a level has no corners either.
inline double glide(int frame) {
    const double t = static_cast<double>(frame) / kRampFrames;
    return t * t * (3 - 2 * t);
}

// `Values` is a struct of nothing but `Scalar` numbers; they all glide together.
template <typename Values, typename Scalar>
class Ramp {
public:
    void jump(const Values& goal) {
        to_ = now_ = std::bit_cast<Numbers>(goal);
        frame_ = kRampFrames;
    }
    // Leaves from where the values are now.
    void aim(const Values& goal) {
        const auto to = std::bit_cast<Numbers>(goal);
        if (to == to_) return;
        from_ = now_;
        to_ = to;
        frame_ = 0;
    }
    // At the goal at once.
    void finish() {
        now_ = to_;
        frame_ = kRampFrames;
    }
    bool moving() const { return frame_ < kRampFrames; }
    Values goal() const { return std::bit_cast<Values>(to_); }
    Values now() const { return std::bit_cast<Values>(now_); }
    // Goes on by one frame.
    Values advance() {
        const auto done = static_cast<Scalar>(glide(++frame_));
        for (std::size_t i = 0; i < now_.size(); ++i) now_[i] = from_[i] + (to_[i] - from_[i]) * done;
        if (!moving()) now_ = to_;
        return now();
    }

private:
    using Numbers = std::array<Scalar, sizeof(Values) / sizeof(Scalar)>;

    Numbers from_{};
    Numbers to_{};
    Numbers now_{};
    int frame_ = kRampFrames;
};

}  // namespace melvane::engine
