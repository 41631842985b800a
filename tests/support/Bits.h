#pragma once
// A float's bit pattern: how the tests compare samples, since the effects
// promise identical bits (-0.0 is not +0.0, and a NaN is told by its payload).
#include <bit>
#include <cstdint>

namespace aftest {

inline std::uint32_t bits(float value) { return std::bit_cast<std::uint32_t>(value); }

}  // namespace aftest
