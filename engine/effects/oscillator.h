// The slow oscillators that move delays.
#pragma once

namespace melvane::engine {

// -1..1; begins at 0 and rises. `turns` >= -1.
inline double triangle(double turns) {
    const double shifted = turns + 1.25;
    const double place = shifted - static_cast<double>(static_cast<long>(shifted));
    const double distance = place < 0.5 ? 0.5 - place : place - 0.5;
    return 1 - 4 * distance;
}

// The sine of the same phase: sin(pi/2 x) by its power series, which is within 4e-6 for -1 <= x <= 1.
inline double sineOfTriangle(double x) {
    const double q = x * x;
    return x * (1.5707963268 + q * (-0.6459640975 + q * (0.0796926262 + q * (-0.0046817541 + q * 0.0001604412))));
}

}  // namespace melvane::engine
