#pragma once
// Lanes of channels or frames: two or four doubles, two or four floats, and
// the 4 x 4 transpose that turns four rows of one channel (one load or store
// each) into four rows of one frame (one vector of lanes each) and back.
//
// A lane of doubles holds exactly the float the plain loop converts (float to
// double is exact), and each rounding to float is one lane-wise conversion,
// like the plain one; with -ffp-contract=off every product and sum stays a
// separate rounding, so a lane reproduces the plain loop bit for bit.
//
// The four-lane double type belongs in code compiled for AVX2.
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#define AF_SIMD_X86 1
#endif

namespace AF {

typedef double LanesD2 __attribute__((vector_size(16)));
typedef float LanesF2 __attribute__((vector_size(8)));
typedef double LanesD4 __attribute__((vector_size(32)));
typedef float LanesF4 __attribute__((vector_size(16)));

// Code compiled for a wider instruction set than the baseline; where there is
// no such set (other processors) the function is plain code the instruction
// set choice never calls.
#if AF_SIMD_X86
#define AF_TARGET(set) __attribute__((target(set)))
#else
#define AF_TARGET(set)
#endif

// Four consecutive floats in and out of a row of lanes, bits unchanged.
[[gnu::always_inline]] inline LanesF4 loadFour(const float* samples) noexcept {
    LanesF4 row;
    std::memcpy(&row, samples, sizeof row);
    return row;
}
[[gnu::always_inline]] inline void storeFour(float* samples, LanesF4 row) noexcept {
    std::memcpy(samples, &row, sizeof row);
}

// Four rows of four floats transposed in place: row r, lane l becomes row l,
// lane r. Only shuffles, so every sample keeps its bits. (On x86, LanesF4
// and __m128 are one type to the compiler.)
[[gnu::always_inline]] inline void transposeFour(LanesF4* rows) noexcept {
#if AF_SIMD_X86
    _MM_TRANSPOSE4_PS(rows[0], rows[1], rows[2], rows[3]);
#else
    const LanesF4 low01 = __builtin_shufflevector(rows[0], rows[1], 0, 4, 1, 5);
    const LanesF4 low23 = __builtin_shufflevector(rows[2], rows[3], 0, 4, 1, 5);
    const LanesF4 high01 = __builtin_shufflevector(rows[0], rows[1], 2, 6, 3, 7);
    const LanesF4 high23 = __builtin_shufflevector(rows[2], rows[3], 2, 6, 3, 7);
    rows[0] = __builtin_shufflevector(low01, low23, 0, 1, 4, 5);
    rows[1] = __builtin_shufflevector(low01, low23, 2, 3, 6, 7);
    rows[2] = __builtin_shufflevector(high01, high23, 0, 1, 4, 5);
    rows[3] = __builtin_shufflevector(high01, high23, 2, 3, 6, 7);
#endif
}

}  // namespace AF
