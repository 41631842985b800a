#pragma once
// The mathematics the module computes with: the C library's double functions
// and nothing else. Each takes and returns double only, so a float argument is
// promoted to double instead of selecting a single-precision overload (a
// float logarithm differs from the double one rounded to float in about one
// value in twenty). Where a result is stored as a float, the caller rounds it
// with AF::toFloat. Every mathematics call of the module goes through here.
#include <cmath>

namespace AF::math {

inline double log10(double x) noexcept { return std::log10(x); }
inline double pow(double base, double exponent) noexcept { return std::pow(base, exponent); }
inline double sin(double radians) noexcept { return std::sin(radians); }
inline double cos(double radians) noexcept { return std::cos(radians); }
inline double sqrt(double x) noexcept { return std::sqrt(x); }
inline double floor(double x) noexcept { return std::floor(x); }
inline double fmod(double x, double y) noexcept { return std::fmod(x, y); }

}  // namespace AF::math
