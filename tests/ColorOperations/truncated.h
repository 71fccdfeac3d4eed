/// @file
/// Results that formulas in float truncate: a value that is nearly whole may fall to either side.

#pragma once

#include <cmath>

/// Whether `stored` is the truncation of a value in 0 to `top` that is as good as `exact`.
inline bool isTruncated(double stored, double exact, double top, double tolerance = 1e-3)
{
    const auto bounded = [top](double value) { return std::trunc(std::fmin(std::fmax(value, 0.0), top)); };
    return stored >= bounded(exact - tolerance) && stored <= bounded(exact + tolerance);
}
