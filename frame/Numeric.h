#pragma once
// The two conversions the module's arithmetic is built on, each defined once.
#include <cmath>
#include <cstdint>
#include <limits>

namespace AF {

// Rounds a double to the nearest float: the one place where "converted to
// float" or "rounded to single precision" happens.
inline float toFloat(double value) noexcept { return static_cast<float>(value); }

// Double to integer: truncation toward zero, saturated to the target's range;
// NaN gives 0. Frame counts, positions and the VU value all go through here.
template <class Int>
inline Int truncateTo(double value) noexcept {
    static_assert(std::numeric_limits<Int>::is_integer);
    if (std::isnan(value)) return 0;
    constexpr double lowest = static_cast<double>(std::numeric_limits<Int>::lowest());
    constexpr double highest = static_cast<double>(std::numeric_limits<Int>::max());
    if (value <= lowest) return std::numeric_limits<Int>::lowest();
    if (value >= highest) return std::numeric_limits<Int>::max();
    return static_cast<Int>(value);
}

inline std::int32_t truncateToInt32(double value) noexcept { return truncateTo<std::int32_t>(value); }
inline std::uint32_t truncateToUInt32(double value) noexcept { return truncateTo<std::uint32_t>(value); }

}  // namespace AF
