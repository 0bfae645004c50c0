// Errors that leave an operation, and the checked arithmetic that raises them. The event handler of a
// window is the one place that catches them.
#pragma once

#include <cmath>
#include <concepts>
#include <cstdint>
#include <limits>
#include <stdexcept>

namespace melvane {

struct OverflowError : std::overflow_error {
    OverflowError() : std::overflow_error("overflow") {}
};
struct BoundsError : std::out_of_range {
    BoundsError() : std::out_of_range("index out of bounds") {}
};
struct InvalidArgumentError : std::invalid_argument {
    InvalidArgumentError() : std::invalid_argument("invalid argument") {}
};

// `value` as a T. Throws OverflowError when it does not fit.
template <std::integral T>
T checkedCast(std::int64_t value) {
    if (value < std::numeric_limits<T>::min() || value > std::numeric_limits<T>::max()) throw OverflowError();
    return static_cast<T>(value);
}

// `value` rounded to the nearest integer, ties to even. Throws OverflowError when it does not fit.
template <std::integral T>
T roundedCast(double value) {
    const double rounded = std::nearbyint(value);
    if (!(rounded >= static_cast<double>(std::numeric_limits<T>::min()) &&
          rounded <= static_cast<double>(std::numeric_limits<T>::max())))
        throw OverflowError();
    return static_cast<T>(rounded);
}

}  // namespace melvane
