#pragma once
// One second-order equaliser section (peaking or shelf) per channel: the four
// floats of memory it keeps, its one-sample step, and the loop that runs
// several channels per instruction. The section itself comes from the caller:
// `Section::sum` (its sum in its one order of evaluation, for a double or for
// lanes of doubles), `Section::kCoefficients` and `Section::coefficientArray`.
//
//   x ──┬──────────────► [kernel] ──┬──► y
//       └─► x1 ─► x2                └─► y1 ─► y2
#include <array>
#include <cstdint>

#include "dsp/simd/Lanes.h"
#include "frame/Numeric.h"

namespace AF {

// Added to every output sample so that silence after a signal settles on a
// tiny normal value instead of decaying into subnormal numbers.
inline constexpr float kEqAntiDenormal = 1e-25f;

// One channel's memory, in the order the host buffer keeps it: previous input,
// the input before that, previous output, the output before that.
struct EqHistory {
    float x1 = 0.0f;
    float x2 = 0.0f;
    float y1 = 0.0f;
    float y2 = 0.0f;
};

inline constexpr int kEqHistoryLength = 4;

// Whether a call overwrites the output (processReplacing) or adds to it (process).
enum class EqMode { replace, accumulate };

// One output sample of one channel, with the section's coefficients as
// floats. The input is read again after y is formed, before the caller writes
// the output, so the same array may be input and output.
template <class Section>
inline float stepEqSection(const std::array<float, Section::kCoefficients>& coefficients, EqHistory& history,
                           const float& input) noexcept {
    double c[Section::kCoefficients];
    for (unsigned i = 0; i < Section::kCoefficients; ++i) c[i] = coefficients[i];
    const double x = input;
    const double x1 = history.x1, x2 = history.x2, y1 = history.y1, y2 = history.y2;
    double sum;
    Section::sum(sum, c, x, x1, x2, y1, y2);
    const float y = toFloat(sum + kEqAntiDenormal);
    history.y2 = history.y1;
    history.y1 = y;
    history.x2 = history.x1;
    history.x1 = input;
    return y;
}

// Several channels per instruction. A lane holds one channel; the doubles
// hold exactly the floats the plain loop converts (float to double is exact),
// and every rounding to float is a lane-wise conversion like the plain one.
// -ffp-contract=off keeps each product and sum a separate rounding, as in the
// plain loop, so each lane reproduces that channel's samples bit for bit.
template <unsigned Width> struct EqLaneTypes;
template <> struct EqLaneTypes<2> {
    using D = LanesD2;
    using F = LanesF2;
};
template <> struct EqLaneTypes<4> {
    using D = LanesD4;
    using F = LanesF4;
};

// The state of `Width` channels starting at `first`, and one frame of them.
template <unsigned Width, class Section>
struct EqLaneGroup {
    using D = typename EqLaneTypes<Width>::D;
    using F = typename EqLaneTypes<Width>::F;
    D x1, x2, y1, y2;

    [[gnu::always_inline]] inline void load(const EqHistory* history) {
        for (unsigned lane = 0; lane < Width; ++lane) {
            x1[lane] = history[lane].x1;
            x2[lane] = history[lane].x2;
            y1[lane] = history[lane].y1;
            y2[lane] = history[lane].y2;
        }
    }
    [[gnu::always_inline]] inline void store(EqHistory* history) const {
        for (unsigned lane = 0; lane < Width; ++lane) {
            history[lane].x1 = toFloat(x1[lane]);  // exact: the lanes hold floats
            history[lane].x2 = toFloat(x2[lane]);
            history[lane].y1 = toFloat(y1[lane]);
            history[lane].y2 = toFloat(y2[lane]);
        }
    }
    // One frame of the group's channels: their inputs in, their outputs back.
    [[gnu::always_inline]] inline F advance(const D* c, const F& input) {
        const D x = __builtin_convertvector(input, D);
        D sum;
        Section::sum(sum, c, x, x1, x2, y1, y2);
        const D bias = D{} + static_cast<double>(kEqAntiDenormal);
        const F y = __builtin_convertvector(sum + bias, F);
        y2 = y1;
        y1 = __builtin_convertvector(y, D);
        x2 = x1;
        x1 = x;
        return y;
    }
    template <EqMode Mode>
    [[gnu::always_inline]] inline void step(const D* c, float* const* inputs, float* const* outputs,
                                            std::int32_t frame) {
        F input;
        for (unsigned lane = 0; lane < Width; ++lane) input[lane] = inputs[lane][frame];
        const F y = advance(c, input);
        for (unsigned lane = 0; lane < Width; ++lane) {
            float& out = outputs[lane][frame];
            if constexpr (Mode == EqMode::accumulate) out = out + y[lane];
            else out = y[lane];
        }
    }
};

// Four frames of the four-channel groups at once: each channel's four samples
// come in with one load and go out with one store. Every input of the four
// frames is read before any of their outputs is written, which in place (the
// same array in and out for a channel) reads exactly what the plain loop reads.
template <unsigned Groups, EqMode Mode, class Group>
[[gnu::always_inline]] inline void stepFourFrames(Group* groups, const typename Group::D* c, float* const* inputs,
                                                  float* const* outputs, std::int32_t frame) {
    LanesF4 rows[Groups][4];
    for (unsigned g = 0; g < Groups; ++g) {
        for (unsigned lane = 0; lane < 4; ++lane) rows[g][lane] = loadFour(inputs[g * 4 + lane] + frame);
        transposeFour(rows[g]);
    }
    // Frame by frame, every group before the next frame, so the groups'
    // independent recursions overlap.
    for (unsigned k = 0; k < 4; ++k)
        for (unsigned g = 0; g < Groups; ++g) rows[g][k] = groups[g].advance(c, rows[g][k]);
    for (unsigned g = 0; g < Groups; ++g) {
        transposeFour(rows[g]);
        for (unsigned lane = 0; lane < 4; ++lane) {
            float* out = outputs[g * 4 + lane] + frame;
            LanesF4 y = rows[g][lane];
            if constexpr (Mode == EqMode::accumulate) y = loadFour(out) + y;
            storeFour(out, y);
        }
    }
}

// All channels of a call, `Width` at a time (a pair for what is left over),
// every group advancing one frame before the next frame so that the groups'
// independent recursions overlap in the pipeline.
template <unsigned Channels, unsigned Width, EqMode Mode, class Section>
[[gnu::always_inline]] inline void runEqLanes(std::array<EqHistory, Channels>& history, float** inputs,
                                              float** outputs, std::int32_t frames, const float* coefficients) {
    constexpr unsigned kGroups = Channels / Width;
    constexpr bool kPair = Channels % Width == 2;
    static_assert(Channels % Width == 0 || kPair, "channel count not covered by the lanes");
    using Wide = EqLaneGroup<Width, Section>;
    using Pair = EqLaneGroup<2, Section>;
    typename Wide::D wideC[Section::kCoefficients];
    typename Pair::D pairC[Section::kCoefficients];
    for (unsigned i = 0; i < Section::kCoefficients; ++i) {
        wideC[i] = typename Wide::D{} + static_cast<double>(coefficients[i]);
        pairC[i] = typename Pair::D{} + static_cast<double>(coefficients[i]);
    }
    Wide wide[kGroups > 0 ? kGroups : 1];
    Pair pair[1];
    for (unsigned g = 0; g < kGroups; ++g) wide[g].load(&history[g * Width]);
    if constexpr (kPair) pair[0].load(&history[kGroups * Width]);
    std::int32_t frame = 0;
    // (Measured: with a pair left over, as for six channels, the frame-by-frame
    // gather below is faster, since the pair's chain cannot hide behind the
    // four-frame blocks.)
    if constexpr (Width == 4 && kGroups > 0 && !kPair) {
        for (; frames - frame >= 4; frame += 4) {
            stepFourFrames<kGroups, Mode>(wide, wideC, inputs, outputs, frame);
            if constexpr (kPair)
                for (std::int32_t k = 0; k < 4; ++k)
                    pair[0].template step<Mode>(pairC, inputs + kGroups * Width, outputs + kGroups * Width,
                                                frame + k);
        }
    }
    for (; frame < frames; ++frame) {
        for (unsigned g = 0; g < kGroups; ++g)
            wide[g].template step<Mode>(wideC, inputs + g * Width, outputs + g * Width, frame);
        if constexpr (kPair)
            pair[0].template step<Mode>(pairC, inputs + kGroups * Width, outputs + kGroups * Width, frame);
    }
    for (unsigned g = 0; g < kGroups; ++g) wide[g].store(&history[g * Width]);
    if constexpr (kPair) pair[0].store(&history[kGroups * Width]);
}

template <unsigned Channels, EqMode Mode, class Section>
void runEqLanesSse2(std::array<EqHistory, Channels>& history, float** inputs, float** outputs, std::int32_t frames,
                    const float* coefficients) {
    runEqLanes<Channels, 2, Mode, Section>(history, inputs, outputs, frames, coefficients);
}

// Compiled for AVX2 on its own; called only where the processor has it.
template <unsigned Channels, EqMode Mode, class Section>
AF_TARGET("avx2") void runEqLanesAvx2(std::array<EqHistory, Channels>& history, float** inputs,
                                                    float** outputs, std::int32_t frames, const float* coefficients) {
    runEqLanes<Channels, 4, Mode, Section>(history, inputs, outputs, frames, coefficients);
}

}  // namespace AF
