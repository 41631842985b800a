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
#if defined(__x86_64__)
#include <immintrin.h>
#define AF_SIMD_X86 1
#endif

namespace AF {

typedef double LanesD2 __attribute__((vector_size(16)));
typedef float LanesF2 __attribute__((vector_size(8)));
typedef double LanesD4 __attribute__((vector_size(32)));
typedef float LanesF4 __attribute__((vector_size(16)));

#if AF_SIMD_X86

// Four rows of four floats transposed in place: row r, lane l becomes row l,
// lane r. Only shuffles, so every sample keeps its bits. (Rows of LanesF4
// are rows of __m128: the two are one type to the compiler.)
[[gnu::always_inline]] inline void transposeFour(__m128* rows) noexcept {
    _MM_TRANSPOSE4_PS(rows[0], rows[1], rows[2], rows[3]);
}

#endif

}  // namespace AF
