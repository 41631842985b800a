#pragma once
// The sample loops behind the buffer operations, at three widths: the plain
// loop, four floats per instruction (SSE2, always there on x86-64) and eight
// (AVX2, where the processor has it). Every lane does the single-precision
// operation of the plain loop with the same operands in the same order, so the
// width changes the speed only, never a bit of the result.
//
// A vector loop reads a whole group of samples before it writes any, which is
// the plain loop's result only when the destination is the source itself or
// does not overlap it; a partly overlapping pair goes through the plain loop.
// Internal to the platform library; the tests include it to hold every width
// to the plain loop.
#include <cstddef>
#include <cstdint>

#include "dsp/simd/VectorPath.h"

#if defined(__x86_64__)
#include <immintrin.h>
#define AR_SAMPLE_LOOPS_X86 1
#endif

namespace AR::loops {

using Width = AF::VectorPath;

// True when the two arrays of `frames` floats are the same array or apart.
inline bool sameOrApart(const float* a, const float* b, int frames) noexcept {
    const auto first = reinterpret_cast<std::uintptr_t>(a);
    const auto second = reinterpret_cast<std::uintptr_t>(b);
    const auto bytes = static_cast<std::uintptr_t>(frames) * sizeof(float);
    return first == second || first + bytes <= second || second + bytes <= first;
}

#if AR_SAMPLE_LOOPS_X86

// Each returns how many leading frames it did: a whole number of groups.

inline int scaleCopyFour(float* out, const float* in, int frames, float gain) noexcept {
    const __m128 gains = _mm_set1_ps(gain);
    int i = 0;
    for (; frames - i >= 8; i += 8) {
        const __m128 first = _mm_mul_ps(_mm_loadu_ps(in + i), gains);
        const __m128 second = _mm_mul_ps(_mm_loadu_ps(in + i + 4), gains);
        _mm_storeu_ps(out + i, first);
        _mm_storeu_ps(out + i + 4, second);
    }
    for (; frames - i >= 4; i += 4) _mm_storeu_ps(out + i, _mm_mul_ps(_mm_loadu_ps(in + i), gains));
    return i;
}

inline int mixFour(float* out, const float* in, int frames) noexcept {
    int i = 0;
    for (; frames - i >= 4; i += 4) _mm_storeu_ps(out + i, _mm_add_ps(_mm_loadu_ps(out + i), _mm_loadu_ps(in + i)));
    return i;
}

__attribute__((target("avx2"))) inline int scaleCopyEight(float* out, const float* in, int frames,
                                                          float gain) noexcept {
    const __m256 gains = _mm256_set1_ps(gain);
    int i = 0;
    // Two groups per pass: fewer loop steps per store.
    for (; frames - i >= 16; i += 16) {
        const __m256 first = _mm256_mul_ps(_mm256_loadu_ps(in + i), gains);
        const __m256 second = _mm256_mul_ps(_mm256_loadu_ps(in + i + 8), gains);
        _mm256_storeu_ps(out + i, first);
        _mm256_storeu_ps(out + i + 8, second);
    }
    for (; frames - i >= 8; i += 8) _mm256_storeu_ps(out + i, _mm256_mul_ps(_mm256_loadu_ps(in + i), gains));
    return i;
}

__attribute__((target("avx2"))) inline int mixEight(float* out, const float* in, int frames) noexcept {
    int i = 0;
    for (; frames - i >= 8; i += 8)
        _mm256_storeu_ps(out + i, _mm256_add_ps(_mm256_loadu_ps(out + i), _mm256_loadu_ps(in + i)));
    return i;
}

#endif

// Frames to do one by one before `out` sits on a 32-byte boundary, so that no
// group's store straddles two cache lines (at most 7, and never past `frames`).
inline int framesToBoundary(const float* out, int frames) noexcept {
    const auto address = reinterpret_cast<std::uintptr_t>(out);
    if (address % sizeof(float) != 0) return 0;
    const int lead = static_cast<int>((32 - address % 32) % 32 / sizeof(float));
    return lead < frames ? lead : frames;
}

// out[i] = in[i] * gain for i = 0 .. frames-1. Scaling in place is out == in.
inline void scaleCopy(Width width, float* out, const float* in, int frames, float gain) noexcept {
    int i = 0;
#if AR_SAMPLE_LOOPS_X86
    if (width != Width::scalar && frames > 0 && sameOrApart(out, in, frames)) {
        // Same or apart: each sample depends on its own input only, so the
        // order in which the frames are done does not matter.
        for (const int lead = framesToBoundary(out, frames); i < lead; ++i) out[i] = in[i] * gain;
        if (width == Width::avx2) i += scaleCopyEight(out + i, in + i, frames - i, gain);
        i += scaleCopyFour(out + i, in + i, frames - i, gain);
    }
#else
    (void)width;
#endif
    for (; i < frames; ++i) out[i] = in[i] * gain;
}

// out[i] = out[i] + in[i] for i = 0 .. frames-1.
inline void mix(Width width, float* out, const float* in, int frames) noexcept {
    int i = 0;
#if AR_SAMPLE_LOOPS_X86
    if (width != Width::scalar && frames > 0 && sameOrApart(out, in, frames)) {
        for (const int lead = framesToBoundary(out, frames); i < lead; ++i) out[i] = out[i] + in[i];
        if (width == Width::avx2) i += mixEight(out + i, in + i, frames - i);
        i += mixFour(out + i, in + i, frames - i);
    }
#else
    (void)width;
#endif
    for (; i < frames; ++i) out[i] = out[i] + in[i];
}

}  // namespace AR::loops
