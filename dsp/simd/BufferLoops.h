#pragma once
// Loops over whole buffers of samples, at three widths: the plain loop, four
// floats per instruction (SSE2, always there on x86-64) and eight (AVX2,
// where the processor has it). Every lane does the single-precision operation
// of the plain loop with the same operands in the same order, so the width
// changes the speed only, never a bit of the result.
//
// A group reads all its samples before it writes any. That is the plain
// loop's result only when each written array is the array it reads or lies
// apart from it, so a partly overlapping pair goes through the plain loop.
#include <cstdint>
#include <cstring>

#include "dsp/simd/Lanes.h"
#include "dsp/simd/VectorPath.h"

namespace AF::loops {

// True when the two arrays of `frames` floats are the same array or apart.
inline bool sameOrApart(const float* a, const float* b, int frames) noexcept {
    const auto first = reinterpret_cast<std::uintptr_t>(a);
    const auto second = reinterpret_cast<std::uintptr_t>(b);
    const auto bytes = static_cast<std::uintptr_t>(frames > 0 ? frames : 0) * sizeof(float);
    return first == second || first + bytes <= second || second + bytes <= first;
}

// Frames to do one by one before `out` sits on a 32-byte boundary, so that no
// group's store straddles two cache lines (at most 7, never more than `frames`).
inline int framesToBoundary(const float* out, int frames) noexcept {
    const auto address = reinterpret_cast<std::uintptr_t>(out);
    if (address % sizeof(float) != 0) return 0;
    const int lead = static_cast<int>((32 - address % 32) % 32 / sizeof(float));
    return lead < frames ? lead : frames;
}

// The per-sample rules, out = rule(out, in), at each width. A rule that does
// not need the held output never loads it.
struct Scale {
    float gain;
    float one(float held, float in) const noexcept {
        (void)held;
        return in * gain;
    }
#if AF_SIMD_X86
    __m128 four(const float* held, __m128 in) const noexcept {
        (void)held;
        return _mm_mul_ps(in, _mm_set1_ps(gain));
    }
    __attribute__((target("avx2"))) __m256 eight(const float* held, __m256 in) const noexcept {
        (void)held;
        return _mm256_mul_ps(in, _mm256_set1_ps(gain));
    }
#endif
};

struct Add {
    float one(float held, float in) const noexcept { return held + in; }
#if AF_SIMD_X86
    __m128 four(const float* held, __m128 in) const noexcept { return _mm_add_ps(_mm_loadu_ps(held), in); }
    __attribute__((target("avx2"))) __m256 eight(const float* held, __m256 in) const noexcept {
        return _mm256_add_ps(_mm256_loadu_ps(held), in);
    }
#endif
};

struct Subtract {
    float one(float held, float in) const noexcept { return held - in; }
#if AF_SIMD_X86
    __m128 four(const float* held, __m128 in) const noexcept { return _mm_sub_ps(_mm_loadu_ps(held), in); }
    __attribute__((target("avx2"))) __m256 eight(const float* held, __m256 in) const noexcept {
        return _mm256_sub_ps(_mm256_loadu_ps(held), in);
    }
#endif
};

#if AF_SIMD_X86

// Each returns how many leading frames it did: a whole number of groups. Two
// groups per pass, both read before either is written: fewer loop steps per
// store, and still every output after its own inputs only.
template <class Rule>
inline int fourAtATime(float* out, const float* in, int frames, const Rule rule) noexcept {
    int i = 0;
    for (; frames - i >= 8; i += 8) {
        const __m128 first = rule.four(out + i, _mm_loadu_ps(in + i));
        const __m128 second = rule.four(out + i + 4, _mm_loadu_ps(in + i + 4));
        _mm_storeu_ps(out + i, first);
        _mm_storeu_ps(out + i + 4, second);
    }
    for (; frames - i >= 4; i += 4) _mm_storeu_ps(out + i, rule.four(out + i, _mm_loadu_ps(in + i)));
    return i;
}

template <class Rule>
__attribute__((target("avx2"))) inline int eightAtATime(float* out, const float* in, int frames,
                                                        const Rule rule) noexcept {
    int i = 0;
    for (; frames - i >= 16; i += 16) {
        const __m256 first = rule.eight(out + i, _mm256_loadu_ps(in + i));
        const __m256 second = rule.eight(out + i + 8, _mm256_loadu_ps(in + i + 8));
        _mm256_storeu_ps(out + i, first);
        _mm256_storeu_ps(out + i + 8, second);
    }
    for (; frames - i >= 8; i += 8) _mm256_storeu_ps(out + i, rule.eight(out + i, _mm256_loadu_ps(in + i)));
    return i;
}

#endif

// out[i] = rule(out[i], in[i]) for i = 0 .. frames-1; in place is out == in.
template <class Rule>
inline void apply(VectorPath path, float* out, const float* in, int frames, const Rule rule) noexcept {
    int i = 0;
#if AF_SIMD_X86
    if (path != VectorPath::scalar && frames > 0 && sameOrApart(out, in, frames)) {
        // Each sample depends on its own input and output only, so the order
        // in which the frames are done does not matter.
        for (const int lead = framesToBoundary(out, frames); i < lead; ++i) out[i] = rule.one(out[i], in[i]);
        if (path == VectorPath::avx2) i += eightAtATime(out + i, in + i, frames - i, rule);
        i += fourAtATime(out + i, in + i, frames - i, rule);
    }
#else
    (void)path;
#endif
    for (; i < frames; ++i) out[i] = rule.one(out[i], in[i]);
}

// out[i] = in[i] * gain.
inline void scaleCopy(VectorPath path, float* out, const float* in, int frames, float gain) noexcept {
    apply(path, out, in, frames, Scale{gain});
}

// out[i] = out[i] + in[i].
inline void mix(VectorPath path, float* out, const float* in, int frames) noexcept {
    apply(path, out, in, frames, Add{});
}

// out[i] = out[i] - in[i].
inline void subtract(VectorPath path, float* out, const float* in, int frames) noexcept {
    apply(path, out, in, frames, Subtract{});
}

// The plain exchange of two channels over frames [from, to): both inputs of a
// frame are read before either output is written, left before right.
inline void exchangeFrames(const float* inLeft, const float* inRight, float* outLeft, float* outRight, int from,
                           int to) noexcept {
    for (int frame = from; frame < to; ++frame) {
        const float left = inLeft[frame];
        const float right = inRight[frame];
        outLeft[frame] = right;
        outRight[frame] = left;
    }
}

#if AF_SIMD_X86

// Groups of `sizeof(Group) / sizeof(float)` frames exchanged whole; the
// samples are only moved, so each keeps its bits. Inlined into a function
// compiled for the group's instruction set.
template <class Group>
[[gnu::always_inline]] inline int exchangeGroups(const float* inLeft, const float* inRight, float* outLeft,
                                                 float* outRight, int frames) noexcept {
    constexpr int kWidth = static_cast<int>(sizeof(Group) / sizeof(float));
    int frame = 0;
    for (; frames - frame >= kWidth; frame += kWidth) {
        Group left;
        Group right;
        std::memcpy(&left, inLeft + frame, sizeof left);
        std::memcpy(&right, inRight + frame, sizeof right);
        std::memcpy(outLeft + frame, &right, sizeof right);
        std::memcpy(outRight + frame, &left, sizeof left);
    }
    return frame;
}

__attribute__((target("avx2"))) inline int exchangeEight(const float* inLeft, const float* inRight, float* outLeft,
                                                         float* outRight, int frames) noexcept {
    typedef float Eight __attribute__((vector_size(32)));
    return exchangeGroups<Eight>(inLeft, inRight, outLeft, outRight, frames);
}

inline int exchangeFour(const float* inLeft, const float* inRight, float* outLeft, float* outRight,
                        int frames) noexcept {
    return exchangeGroups<LanesF4>(inLeft, inRight, outLeft, outRight, frames);
}

#endif

// outLeft = inRight and outRight = inLeft, frame by frame. Groups of frames
// give the plain loop's result when no written array partly overlaps another
// array: then no write of a frame reaches a sample of another frame. In place
// (outputs the inputs) and separate buffers both qualify.
inline void exchange(VectorPath path, const float* inLeft, const float* inRight, float* outLeft, float* outRight,
                     int frames) noexcept {
    int frame = 0;
#if AF_SIMD_X86
    const bool groupsAreSafe = sameOrApart(outLeft, outRight, frames) && sameOrApart(outLeft, inLeft, frames) &&
                               sameOrApart(outLeft, inRight, frames) && sameOrApart(outRight, inLeft, frames) &&
                               sameOrApart(outRight, inRight, frames);
    if (path != VectorPath::scalar && frames > 0 && groupsAreSafe) {
        // Single frames up to the left output's boundary, then whole groups.
        frame = framesToBoundary(outLeft, frames);
        exchangeFrames(inLeft, inRight, outLeft, outRight, 0, frame);
        if (path == VectorPath::avx2)
            frame += exchangeEight(inLeft + frame, inRight + frame, outLeft + frame, outRight + frame, frames - frame);
        frame += exchangeFour(inLeft + frame, inRight + frame, outLeft + frame, outRight + frame, frames - frame);
    }
#else
    (void)path;
#endif
    exchangeFrames(inLeft, inRight, outLeft, outRight, frame, frames);
}

}  // namespace AF::loops
