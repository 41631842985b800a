#pragma once
// What the three equaliser families (Parametric EQ, Bass, Treble) share: the
// four floats of memory a second-order section keeps per channel, the block
// loop that visits the channels in the family's order, and the variant shape.
//
//   x ──┬──────────────► [kernel] ──┬──► y
//       └─► x1 ─► x2                └─► y1 ─► y2
#include <array>

#include <immintrin.h>

#include "AR/AudioBuffer.h"
#include "AudioEffectX.h"
#include "effects/filters/ChannelOrder.h"
#include "effects/filters/VectorPath.h"
#include "frame/Numeric.h"
#include "effects/family/FamilyShape.h"

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

// The four-character code every filter family shares for a channel count.
constexpr VstInt32 eqUniqueId(unsigned channels) {
    switch (channels) {
        case 1: return fourCharCode("AFl1");
        case 2: return fourCharCode("AFl2");
        case 4: return fourCharCode("AFl4");
        case 6: return fourCharCode("AFl6");
        default: return fourCharCode("AF16");
    }
}

// Several channels per instruction. A lane holds one channel; the doubles
// hold exactly the floats the plain loop converts (float to double is exact),
// and every rounding to float is a lane-wise conversion like the plain one.
// -ffp-contract=off keeps each product and sum a separate rounding, as in the
// plain loop, so each lane reproduces that channel's samples bit for bit.
typedef double EqLanesD2 __attribute__((vector_size(16)));
typedef float EqLanesF2 __attribute__((vector_size(8)));
typedef double EqLanesD4 __attribute__((vector_size(32)));
typedef float EqLanesF4 __attribute__((vector_size(16)));

template <unsigned Width> struct EqLaneTypes;
template <> struct EqLaneTypes<2> {
    using D = EqLanesD2;
    using F = EqLanesF2;
};
template <> struct EqLaneTypes<4> {
    using D = EqLanesD4;
    using F = EqLanesF4;
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
                                            VstInt32 frame) {
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

// Four frames of four channels as four rows of one channel each, turned into
// four rows of one frame each and back (a 4 x 4 transpose of floats).
[[gnu::always_inline]] inline void transposeFour(EqLanesF4* rows) {
    __m128 r0 = rows[0], r1 = rows[1], r2 = rows[2], r3 = rows[3];
    _MM_TRANSPOSE4_PS(r0, r1, r2, r3);
    rows[0] = r0;
    rows[1] = r1;
    rows[2] = r2;
    rows[3] = r3;
}

// Four frames of the four-channel groups at once: each channel's four samples
// come in with one load and go out with one store. Every input of the four
// frames is read before any of their outputs is written, which in place (the
// same array in and out for a channel) reads exactly what the plain loop reads.
template <unsigned Groups, EqMode Mode, class Group>
[[gnu::always_inline]] inline void stepFourFrames(Group* groups, const typename Group::D* c, float* const* inputs,
                                                  float* const* outputs, VstInt32 frame) {
    EqLanesF4 rows[Groups][4];
    for (unsigned g = 0; g < Groups; ++g) {
        for (unsigned lane = 0; lane < 4; ++lane) rows[g][lane] = EqLanesF4(_mm_loadu_ps(inputs[g * 4 + lane] + frame));
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
            EqLanesF4 y = rows[g][lane];
            if constexpr (Mode == EqMode::accumulate) y = EqLanesF4(_mm_loadu_ps(out)) + y;
            _mm_storeu_ps(out, __m128(y));
        }
    }
}

// All channels of a call, `Width` at a time (a pair for what is left over),
// every group advancing one frame before the next frame so that the groups'
// independent recursions overlap in the pipeline.
template <unsigned Channels, unsigned Width, EqMode Mode, class Section>
[[gnu::always_inline]] inline void runEqLanes(std::array<EqHistory, Channels>& history, float** inputs,
                                              float** outputs, VstInt32 frames, const float* coefficients) {
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
    VstInt32 frame = 0;
    // (Measured: with a pair left over, as for six channels, the frame-by-frame
    // gather below is faster, since the pair's chain cannot hide behind the
    // four-frame blocks.)
    if constexpr (Width == 4 && kGroups > 0 && !kPair) {
        for (; frames - frame >= 4; frame += 4) {
            stepFourFrames<kGroups, Mode>(wide, wideC, inputs, outputs, frame);
            if constexpr (kPair)
                for (VstInt32 k = 0; k < 4; ++k)
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
void runEqLanesSse2(std::array<EqHistory, Channels>& history, float** inputs, float** outputs, VstInt32 frames,
                    const float* coefficients) {
    runEqLanes<Channels, 2, Mode, Section>(history, inputs, outputs, frames, coefficients);
}

// Compiled for AVX2 on its own; called only where the processor has it.
template <unsigned Channels, EqMode Mode, class Section>
__attribute__((target("avx2"))) void runEqLanesAvx2(std::array<EqHistory, Channels>& history, float** inputs,
                                                    float** outputs, VstInt32 frames, const float* coefficients) {
    runEqLanes<Channels, 4, Mode, Section>(history, inputs, outputs, frames, coefficients);
}

// One call of an equaliser: `refresh()` brings the coefficients up to date (once,
// or before each channel's pass for sixteen channels), `kernel(history, input)`
// returns one output sample and moves that channel's memory on by one frame.
// The memory is copied out of the host buffer for the call and back at its end.
// From four channels on, the channels run several per instruction where the
// processor allows; `Section` gives the section's sum for lanes of doubles and
// `design()` the coefficients it runs on after the refresh.
template <unsigned Channels, EqMode Mode, class Section, class Refresh, class Kernel, class Design>
void runEqBlock(AR::AudioBuffer& memory, float** inputs, float** outputs, VstInt32 frames, Refresh&& refresh,
                Kernel&& kernel, Design&& design) {
    bool usable = inputs != nullptr && outputs != nullptr && memory.GetChannelCount() >= static_cast<int>(Channels);
    for (unsigned channel = 0; usable && channel < Channels; ++channel)
        usable = inputs[channel] != nullptr && outputs[channel] != nullptr;
    if (!usable) frames = 0;  // still refreshes, touches no sample

    std::array<EqHistory, Channels> history{};
    for (unsigned channel = 0; usable && channel < Channels; ++channel) {
        const float* stored = memory.GetChannel(static_cast<int>(channel));
        history[channel] = EqHistory{stored[0], stored[1], stored[2], stored[3]};
    }

    // Two channels stay on the plain loop: their two chains already overlap
    // there, and a pair of lanes only lengthens the chain by its conversions
    // (measured slower).
    const VectorPath path = Channels >= 4 ? vectorPath() : VectorPath::scalar;
    if (path == VectorPath::scalar) {
        forEachSampleInChannelOrder<Channels>(frames, refresh, [&](unsigned channel, VstInt32 frame) {
            const float y = kernel(history[channel], inputs[channel][frame]);
            float& out = outputs[channel][frame];
            if constexpr (Mode == EqMode::accumulate) out = out + y;
            else out = y;
        });
    } else if constexpr (Channels >= 4) {
        // One refresh for all channels, also for sixteen, whose plain loop
        // refreshes before each channel's pass: the two differ only when a host
        // stores a parameter from another thread during the call, and either
        // way the change reaches the next call.
        refresh();
        const auto coefficients = Section::coefficientArray(design());
        if (path == VectorPath::avx2)
            runEqLanesAvx2<Channels, Mode, Section>(history, inputs, outputs, frames, coefficients.data());
        else
            runEqLanesSse2<Channels, Mode, Section>(history, inputs, outputs, frames, coefficients.data());
    }

    for (unsigned channel = 0; usable && channel < Channels; ++channel) {
        float* stored = memory.GetChannel(static_cast<int>(channel));
        stored[0] = history[channel].x1;
        stored[1] = history[channel].x2;
        stored[2] = history[channel].y1;
        stored[3] = history[channel].y2;
    }
}

// A channel variant: the family built for `Channels`, its record set up as the
// host expects, and both processing calls routed to the family's one loop.
// The members are defined out of line and instantiated once, in the family's
// source file, so the module exports them.
template <class Family, unsigned Channels>
class AF_EXPORT EqVariant : public Family {
public:
    explicit EqVariant(audioMasterCallback audioMaster);
    void process(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) override;
};

template <class Family, unsigned Channels>
EqVariant<Family, Channels>::EqVariant(audioMasterCallback audioMaster) : Family(Channels, audioMaster) {
    configureVariant(*this, static_cast<VstInt32>(Channels), eqUniqueId(Channels));
}

template <class Family, unsigned Channels>
void EqVariant<Family, Channels>::process(float** inputs, float** outputs, VstInt32 sampleFrames) {
    this->template run<Channels, EqMode::accumulate>(inputs, outputs, sampleFrames);
}

template <class Family, unsigned Channels>
void EqVariant<Family, Channels>::processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) {
    this->template run<Channels, EqMode::replace>(inputs, outputs, sampleFrames);
}

}  // namespace AF
