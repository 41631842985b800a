#pragma once
// The band-pass and the notch: one second-order section around a centre
// frequency with a quality factor Q. The band-pass has unity gain at the
// centre; the notch removes the centre and passes DC and Nyquist unchanged.
//
//   band-pass: y = (x - x2)·b0 - a1·y1 - a2·y2 + d
//   notch:     y = (x1 - y1)·a1 + (x + x2)·b0 - a2·y2 + d
//
// Coefficients depend on the normalised centre and Q alone and are recomputed
// lazily at the start of a processing call.
#include <array>
#include "Math.h"

#include "CutFilterChannels.h"
#include "CutoffMapping.h"
#include "FilterFamily.h"
#include "dsp/biquad/LaneGroups.h"
#include "MF/Constants.h"
#include "Numeric.h"

namespace AF {

enum class SectionResponse { Bandpass, Notch };

namespace quality {
// Q = q·q·9.9 + 0.1. The display side uses the double constants; the inverse
// and the coefficients their float values. Both are kept as they were built.
inline constexpr double kSpanDisplay = 9.9;
inline constexpr double kFloorDisplay = 0.1;
inline constexpr float kSpan = 9.9f;
inline constexpr float kFloor = 0.1f;
inline constexpr float kMax = 10.0f;
inline constexpr float kStep = 0.1f;

inline float displayQ(float q) noexcept { return toFloat(static_cast<double>(q) * q * kSpanDisplay + kFloorDisplay); }

// Not clamped: a Q below the floor gives the root of a negative number (NaN).
inline float parameterForQ(float shownQ) noexcept {
    const float fraction = toFloat((static_cast<double>(shownQ) - kFloor) / kSpan);
    return toFloat(math::sqrt(static_cast<double>(fraction)));
}
}  // namespace quality

// The design; all 0 until first computed.
struct SectionDesign {
    float b0 = 0.0f;  // input
    float a1 = 0.0f;  // -2cos(w)/(1 + alpha), on the previous sample terms
    float a2 = 0.0f;  // (1 - alpha)/(1 + alpha), on the output two samples back
};

// One channel's memory, in the order the history buffer keeps it.
struct SectionHistory {
    float x1, x2;  // previous inputs
    float y1, y2;  // previous outputs
};
inline constexpr int kSectionHistorySize = 4;

template <SectionResponse Response>
SectionDesign designSection(float center, float q) noexcept {
    // the centre as an angle in radians per sample, with the float floor fraction
    const float w = toFloat((static_cast<double>(center) * center * cutoff::kSquareLawSpan +
                             static_cast<double>(cutoff::kFloorFractionFloat)) *
                            MF::kPi);
    const double qFactor = static_cast<double>(q) * q * quality::kSpan + quality::kFloor;
    const float sinW = toFloat(math::sin(static_cast<double>(w)));
    const float cosW = toFloat(math::cos(static_cast<double>(w)));
    const float alpha = toFloat(sinW / (2.0 * qFactor));
    SectionDesign design;
    if constexpr (Response == SectionResponse::Bandpass)
        design.b0 = toFloat(alpha / (1.0 + alpha));
    else
        design.b0 = toFloat(1.0 / (1.0 + alpha));
    const float minusTwoCosW = toFloat(cosW * -2.0);
    design.a1 = toFloat(minusTwoCosW / (1.0 + alpha));
    design.a2 = toFloat((1.0 - alpha) / (1.0 + alpha));
    return design;
}

// The band-pass adds its offset on every fourth frame counted from the end of
// the call (the zero entries are added too); the notch on every frame.
template <SectionResponse Response>
inline float sectionOffset(VstInt32 frames, VstInt32 n) noexcept {
    if constexpr (Response == SectionResponse::Bandpass) {
        constexpr float table[4] = {cutoff::kAntiDenormal, 0.0f, 0.0f, 0.0f};
        return table[cutoff::framesAfter(frames, n) % 4];
    } else {
        return cutoff::kAntiDenormal;
    }
}

// The kernel: one sample, rounded to float once.
template <SectionResponse Response>
inline float sectionStep(const SectionDesign& d, SectionHistory& h, float x, float offset) noexcept {
    double y;
    if constexpr (Response == SectionResponse::Bandpass)
        y = (static_cast<double>(x) - h.x2) * d.b0 - static_cast<double>(d.a1) * h.y1 -
            static_cast<double>(d.a2) * h.y2 + offset;
    else
        y = (static_cast<double>(h.x1) - h.y1) * d.a1 + (static_cast<double>(x) + h.x2) * d.b0 -
            static_cast<double>(d.a2) * h.y2 + offset;
    const float yf = toFloat(y);
    h.y2 = h.y1;
    h.y1 = yf;
    h.x2 = h.x1;
    h.x1 = x;
    return yf;
}

#if AF_SIMD_X86
// The kernel for several channels at once, one per lane (`L` is TwoLanes or
// FourLanes): the same double operations as sectionStep in the same order, the
// sum converted to float once per lane.
template <SectionResponse Response, class L>
struct SectionLanes {
    using D = typename L::D;
    struct Coefficients {
        D b0, a1, a2;
        explicit Coefficients(const SectionDesign& d)
            : b0(D{} + static_cast<double>(d.b0)),
              a1(D{} + static_cast<double>(d.a1)),
              a2(D{} + static_cast<double>(d.a2)) {}
    };
    std::array<D, kSectionHistorySize - 2> state;  // y1, y2

    [[gnu::always_inline]] inline __m128 advance(const Coefficients& c, const D& x, [[maybe_unused]] const D& x1,
                                                 const D& x2, const D& offset) noexcept {
        auto& [y1, y2] = state;
        D y;
        if constexpr (Response == SectionResponse::Bandpass)
            y = (x - x2) * c.b0 - c.a1 * y1 - c.a2 * y2 + offset;
        else
            y = (x1 - y1) * c.a1 + (x + x2) * c.b0 - c.a2 * y2 + offset;
        const __m128 yf = L::narrow(y);
        y2 = y1;
        L::widen(yf, y1);
        return yf;
    }
};
#endif

// What the shared variant loop needs of the family.
template <SectionResponse Response>
struct SectionKernel {
    using Design = SectionDesign;
    using History = SectionHistory;
#if AF_SIMD_X86
    template <class L> using Lanes = SectionLanes<Response, L>;
#endif
    static constexpr unsigned kOffsetPeriod = Response == SectionResponse::Bandpass ? 4 : 1;
    static float offset(VstInt32 frames, VstInt32 n) noexcept { return sectionOffset<Response>(frames, n); }
    static float step(const Design& d, History& h, float x, float offset) noexcept {
        return sectionStep<Response>(d, h, x, offset);
    }
};

// The family: centre and Q and the lazy design. The channel variants
// (CutFilterChannels.h) add the processing calls.
template <SectionResponse Response>
class AF_EXPORT SectionFamily : public FilterFamily<SectionDesign, 2> {
public:
    using Kernel = SectionKernel<Response>;

    SectionFamily(unsigned channels, audioMasterCallback audioMaster);
    ~SectionFamily() override;

protected:
    SectionDesign designFor(const Values& parameters) noexcept override;
};

}  // namespace AF
