#pragma once
// Which instruction set the multi-channel loops use: several channels per
// instruction with SSE2 (two channels of doubles) or AVX2 (four), or the plain
// per-channel loop. Every vector loop computes, lane by lane, the very
// operations of the plain loop in the same order with the same roundings, so
// the choice changes speed only, never a bit of the output.
//
// The widest set the processor offers is chosen once at load; the environment
// variable AF_FORCE_SCALAR=1 keeps the plain loop. Tests may switch at run time.
#include <array>

#include <immintrin.h>

#include "frame/AEffect.h"

namespace AF {

enum class VectorPath { scalar, sse2, avx2 };

// The path the processing calls take now (one relaxed atomic load).
VectorPath vectorPath() noexcept;

// The widest path this processor runs, ignoring AF_FORCE_SCALAR.
VectorPath widestVectorPath() noexcept;

// For tests and benchmarks: selects a path, limited to what the processor runs.
void setVectorPath(VectorPath path) noexcept;

}  // namespace AF

// ---------------------------------------------------------------------------
// Lanes of channels for the cut filters (high-pass, low-pass, band-pass,
// notch). A lane holds one channel: the doubles hold exactly the floats the
// plain loop converts (float to double is exact), every rounding to float is
// one lane-wise conversion like the plain one, and -ffp-contract=off keeps each
// product and sum a separate rounding, so each lane reproduces its channel's
// samples bit for bit.
namespace AF {

typedef double LanesD2 __attribute__((vector_size(16)));
typedef float LanesF2 __attribute__((vector_size(8)));
typedef double LanesD4 __attribute__((vector_size(32)));
typedef float LanesF4 __attribute__((vector_size(16)));

template <unsigned Width> struct LaneTypes;
template <> struct LaneTypes<2> {
    using D = LanesD2;
    using F = LanesF2;
};
template <> struct LaneTypes<4> {
    using D = LanesD4;
    using F = LanesF4;
};

// One frame of a group of lanes: the inputs gathered, the group's section
// advanced (`Group::advance(coefficients, x, offset)` gives the outputs as
// floats), the outputs written or added as the plain loop does: the sum of
// what the output holds and the new sample, in double, rounded once.
template <bool Accumulate, class Group>
[[gnu::always_inline]] inline void stepLaneGroup(Group& group, const typename Group::Coefficients& c,
                                                 float* const* inputs, float* const* outputs, VstInt32 frame,
                                                 double offset) {
    using D = typename Group::D;
    using F = typename Group::F;
    constexpr unsigned kWidth = sizeof(F) / sizeof(float);
    F input;
    for (unsigned lane = 0; lane < kWidth; ++lane) input[lane] = inputs[lane][frame];
    F y = group.advance(c, __builtin_convertvector(input, D), D{} + offset);
    if constexpr (Accumulate) {
        F held;
        for (unsigned lane = 0; lane < kWidth; ++lane) held[lane] = outputs[lane][frame];
        y = __builtin_convertvector(__builtin_convertvector(held, D) + __builtin_convertvector(y, D), F);
    }
    for (unsigned lane = 0; lane < kWidth; ++lane) outputs[lane][frame] = y[lane];
}

// Four frames of the four-lane groups at once: each channel's four samples
// come in with one load and go out with one store, turned between rows of one
// channel and rows of one frame by a 4 x 4 transpose. Every input of the four
// frames is read before any of their outputs is written, which in place reads
// exactly what the plain loop reads.
template <bool Accumulate, unsigned Groups, class Group>
[[gnu::always_inline]] inline void stepFourFrameBlock(Group* groups, const typename Group::Coefficients& c,
                                                      float* const* inputs, float* const* outputs, VstInt32 frame,
                                                      VstInt32 frames) {
    using D = typename Group::D;
    using F = typename Group::F;
    static_assert(sizeof(F) == 4 * sizeof(float), "four lanes");
    __m128 rows[Groups][4];
    for (unsigned g = 0; g < Groups; ++g) {
        for (unsigned lane = 0; lane < 4; ++lane) rows[g][lane] = _mm_loadu_ps(inputs[g * 4 + lane] + frame);
        _MM_TRANSPOSE4_PS(rows[g][0], rows[g][1], rows[g][2], rows[g][3]);
    }
    for (unsigned k = 0; k < 4; ++k) {
        const D offset = D{} + Group::offset(frames, frame + static_cast<VstInt32>(k));
        for (unsigned g = 0; g < Groups; ++g)
            rows[g][k] = __m128(groups[g].advance(c, __builtin_convertvector(F(rows[g][k]), D), offset));
    }
    for (unsigned g = 0; g < Groups; ++g) {
        _MM_TRANSPOSE4_PS(rows[g][0], rows[g][1], rows[g][2], rows[g][3]);
        for (unsigned lane = 0; lane < 4; ++lane) {
            float* out = outputs[g * 4 + lane] + frame;
            F y = F(rows[g][lane]);
            if constexpr (Accumulate)
                y = __builtin_convertvector(
                    __builtin_convertvector(F(_mm_loadu_ps(out)), D) + __builtin_convertvector(y, D), F);
            _mm_storeu_ps(out, __m128(y));
        }
    }
}

// All channels of a call, `Wide` groups first and a `Pair` group for two
// channels left over (six channels on four lanes), every group advancing one
// frame before the next frame so that their independent recursions overlap.
// The offset depends on the frame alone, so one value serves every lane.
// Inputs of a group are read before its outputs are written, which in place
// (the same array in and out for a channel) reads what the plain loop reads.
template <class Wide, class Pair, unsigned Channels, bool Accumulate, class History, class Design>
[[gnu::always_inline]] inline void runLaneGroups(std::array<History, Channels>& history, float** inputs,
                                                 float** outputs, VstInt32 frames, const Design& design) {
    constexpr unsigned kWidth = sizeof(typename Wide::F) / sizeof(float);
    constexpr unsigned kGroups = Channels / kWidth;
    constexpr bool kPair = Channels % kWidth == 2;
    static_assert(Channels % kWidth == 0 || kPair, "channel count not covered by the lanes");
    const typename Wide::Coefficients wideC(design);
    const typename Pair::Coefficients pairC(design);
    Wide wide[kGroups > 0 ? kGroups : 1];
    Pair pair[1];
    for (unsigned g = 0; g < kGroups; ++g) wide[g].load(&history[g * kWidth]);
    if constexpr (kPair) pair[0].load(&history[kGroups * kWidth]);
    VstInt32 frame = 0;
    // (With a pair left over, as for six channels, the pair's chain cannot hide
    // behind the four-frame blocks; those channels stay frame by frame.)
    if constexpr (kWidth == 4 && kGroups > 0 && !kPair)
        for (; frames - frame >= 4; frame += 4)
            stepFourFrameBlock<Accumulate, kGroups>(wide, wideC, inputs, outputs, frame, frames);
    for (; frame < frames; ++frame) {
        const double offset = Wide::offset(frames, frame);
        for (unsigned g = 0; g < kGroups; ++g)
            stepLaneGroup<Accumulate>(wide[g], wideC, inputs + g * kWidth, outputs + g * kWidth, frame, offset);
        if constexpr (kPair)
            stepLaneGroup<Accumulate>(pair[0], pairC, inputs + kGroups * kWidth, outputs + kGroups * kWidth, frame,
                                      offset);
    }
    for (unsigned g = 0; g < kGroups; ++g) wide[g].store(&history[g * kWidth]);
    if constexpr (kPair) pair[0].store(&history[kGroups * kWidth]);
}

}  // namespace AF
