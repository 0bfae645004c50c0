// How the position of a knob and the value that it stands for follow from each other. Positions are pixels of the
// window in base units; keeping them on the knob's track is the knob's own affair.
#pragma once

#include <cmath>

namespace melvane {

// What becomes of the part of a value behind the point.
enum class Fraction { kept, cut, rounded };

struct Scale {
    int zero;    // the position of the value 0
    int units;   // what `pixels` down or to the right add to the value
    int pixels;  // above 0
    Fraction fraction;

    // The value of a position.
    double operator()(double position) const {
        return whole((position - zero) * units / pixels, fraction) + 0.0;  // which makes 0 of -0
    }
    // The position of a value. It is whole, so nothing is kept behind the point; values are far inside an int's range.
    int positionOf(double value) const {
        const Fraction position = fraction == Fraction::cut ? Fraction::cut : Fraction::rounded;
        return zero + static_cast<int>(whole(value * pixels / units, position));
    }

    // Of a knob that may stand between two pixels.
    double exactPositionOf(double value) const { return zero + value * pixels / units; }

private:
    // Halves are rounded to the even neighbour.
    static double whole(double value, Fraction fraction) {
        if (fraction == Fraction::kept) return value;
        return fraction == Fraction::cut ? std::trunc(value) : std::nearbyint(value);
    }
};

}  // namespace melvane
