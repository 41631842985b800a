#pragma once

namespace MF {

// The host's mathematics constants, each in the precision the host defines it.
inline constexpr float kPi = 3.14159265358979323846f;          // pi as a float
inline constexpr double kSqrt2Over264 = 0.70710678118654752440; // sqrt(2)/2 as a double

}  // namespace MF
