#pragma once
// The high-pass and the low-pass: two identical Butterworth sections (Q =
// 1/sqrt 2) in series, 24 dB per octave outside the pass band and 6 dB down at
// the cutoff. The two differ only in the sections' numerator and in the
// anti-denormal offset, so one family template serves both.
//
//   x -> [ (num)·gain + fb1·s1 - fb2·s2 + d ] -> s -> [ (num)·gain + fb1·y1 - fb2·y2 ] -> y
//
// Coefficients depend on the normalised cutoff alone (not on the sample rate)
// and are recomputed lazily at the start of a processing call.
#include <array>
#include "Math.h"

#include "CutFilterChannels.h"
#include "CutoffMapping.h"
#include "FilterFamily.h"
#include "dsp/biquad/LaneGroups.h"
#include "MF/Constants.h"
#include "Numeric.h"

namespace AF {

enum class CascadeResponse { Highpass, Lowpass };

// The design: coefficients shared by both sections. They start at 0 so that a
// host storing the stale marker before the first buffer reads nothing unset.
struct CascadeDesign {
    float gain = 0.0f;       // input side of both sections
    float feedback1 = 0.0f;  // previous output, added
    float feedback2 = 0.0f;  // output two samples back, subtracted
};

// One channel's memory, in the order the history buffer keeps it.
struct CascadeHistory {
    float x1, x2;  // previous inputs
    float s1, s2;  // previous outputs of the first section
    float y1, y2;  // previous outputs of the second section (the filter)
};
inline constexpr int kCascadeHistorySize = 6;

template <CascadeResponse Response>
CascadeDesign designCascade(float p) noexcept {
    // the cutoff as an angle in radians per sample (pi at Nyquist)
    const float w = toFloat((static_cast<double>(p) * p * cutoff::kSquareLawSpan + cutoff::kFloorFraction) *
                            MF::kPi);
    const float sinW = toFloat(math::sin(static_cast<double>(w)));
    const float cosW = toFloat(math::cos(static_cast<double>(w)));
    // sin(w)/(2Q) with Q = 1/sqrt 2
    const float a = toFloat(static_cast<double>(sinW) * MF::kSqrt2Over264);
    CascadeDesign design;
    design.feedback2 = toFloat((1.0 - a) / (1.0 + a));
    const double k = 1.0 + design.feedback2;
    design.feedback1 = toFloat(static_cast<double>(cosW) * k);
    if constexpr (Response == CascadeResponse::Highpass)
        design.gain = toFloat((k + design.feedback1) * 0.25);
    else
        design.gain = toFloat((k - design.feedback1) * 0.25);
    return design;
}

// The high-pass adds its offset on every second frame counted from the end of
// the call (an entry of 0 is still added), the low-pass on every frame.
template <CascadeResponse Response>
inline float cascadeOffset(VstInt32 frames, VstInt32 n) noexcept {
    if constexpr (Response == CascadeResponse::Highpass) {
        constexpr float table[2] = {cutoff::kAntiDenormal, 0.0f};
        return table[cutoff::framesAfter(frames, n) % 2];
    } else {
        return cutoff::kAntiDenormal;
    }
}

// The kernel: one sample through both sections, each rounded to float once.
template <CascadeResponse Response>
inline float cascadeStep(const CascadeDesign& d, CascadeHistory& h, float x, float offset) noexcept {
    double s;
    if constexpr (Response == CascadeResponse::Highpass)
        s = (x - 2.0 * h.x1 + h.x2) * d.gain + static_cast<double>(d.feedback1) * h.s1 -
            static_cast<double>(d.feedback2) * h.s2 + offset;
    else
        s = (2.0 * h.x1 + x + h.x2) * d.gain + static_cast<double>(d.feedback1) * h.s1 -
            static_cast<double>(d.feedback2) * h.s2 + offset;
    const float sf = toFloat(s);
    double y;
    if constexpr (Response == CascadeResponse::Highpass)
        y = (sf - 2.0 * h.s1 + h.s2) * d.gain + static_cast<double>(d.feedback1) * h.y1 -
            static_cast<double>(d.feedback2) * h.y2;
    else
        y = (2.0 * h.s1 + sf + h.s2) * d.gain + static_cast<double>(d.feedback1) * h.y1 -
            static_cast<double>(d.feedback2) * h.y2;
    const float yf = toFloat(y);
    h.y2 = h.y1;
    h.y1 = yf;
    h.s2 = h.s1;
    h.s1 = sf;
    h.x2 = h.x1;
    h.x1 = x;
    return yf;
}

#if AF_SIMD_X86
// The kernel for several channels at once, one per lane (`L` is TwoLanes or
// FourLanes): the same double operations as cascadeStep in the same order,
// each section's sum converted to float once per lane.
template <CascadeResponse Response, class L>
struct CascadeLanes {
    using D = typename L::D;
    struct Coefficients {
        D gain, feedback1, feedback2;
        explicit Coefficients(const CascadeDesign& d)
            : gain(D{} + static_cast<double>(d.gain)),
              feedback1(D{} + static_cast<double>(d.feedback1)),
              feedback2(D{} + static_cast<double>(d.feedback2)) {}
    };
    std::array<D, kCascadeHistorySize - 2> state;  // s1, s2, y1, y2

    // One section before its rounding, without the offset: both sections have
    // this shape, the first fed by the input, the second by the first's output.
    [[gnu::always_inline]] static void section(const Coefficients& c, const D& in, const D& in1, const D& in2,
                                               const D& out1, const D& out2, D& sum) noexcept {
        if constexpr (Response == CascadeResponse::Highpass)
            sum = (in - 2.0 * in1 + in2) * c.gain + c.feedback1 * out1 - c.feedback2 * out2;
        else
            sum = (2.0 * in1 + in + in2) * c.gain + c.feedback1 * out1 - c.feedback2 * out2;
    }

    [[gnu::always_inline]] inline __m128 advance(const Coefficients& c, const D& x, const D& x1, const D& x2,
                                                 const D& offset) noexcept {
        auto& [s1, s2, y1, y2] = state;
        D s;
        section(c, x, x1, x2, s1, s2, s);
        s += offset;
        D sf;
        L::widen(L::narrow(s), sf);
        D y;
        section(c, sf, s1, s2, y1, y2, y);
        const __m128 yf = L::narrow(y);
        y2 = y1;
        L::widen(yf, y1);
        s2 = s1;
        s1 = sf;
        return yf;
    }
};
#endif

// What the shared variant loop needs of the family.
template <CascadeResponse Response>
struct CascadeKernel {
    using Design = CascadeDesign;
    using History = CascadeHistory;
#if AF_SIMD_X86
    template <class L> using Lanes = CascadeLanes<Response, L>;
#endif
    // Two sections of one shape and one set of coefficients in series: on four
    // lanes, a lane may carry one section of a channel (see LaneGroups.h).
    static constexpr bool kTwoEqualSections = true;
    static constexpr unsigned kOffsetPeriod = Response == CascadeResponse::Highpass ? 2 : 1;
    static float offset(VstInt32 frames, VstInt32 n) noexcept { return cascadeOffset<Response>(frames, n); }
    static float step(const Design& d, History& h, float x, float offset) noexcept {
        return cascadeStep<Response>(d, h, x, offset);
    }
};

// The family: the cutoff parameter and the lazy design. The channel variants
// (CutFilterChannels.h) add the processing calls.
template <CascadeResponse Response>
class AF_EXPORT CascadeFamily : public FilterFamily<CascadeDesign, 1> {
public:
    using Kernel = CascadeKernel<Response>;

    CascadeFamily(unsigned channels, audioMasterCallback audioMaster);
    ~CascadeFamily() override;

protected:
    CascadeDesign designFor(const Values& parameters) noexcept override;
};

}  // namespace AF
