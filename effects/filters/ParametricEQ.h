#pragma once
// A single peaking (bell) band: one second-order section per channel whose
// centre frequency, width and boost or cut the user sets. Coefficients are
// recomputed at the start of a buffer when a parameter moved; there is no ramp.
#include <array>

#include "effects/filters/EqChannels.h"
#include "effects/filters/FilterFamily.h"
#include "frame/Numeric.h"

namespace AF {

// The section's coefficients. The feed-forward and feedback middle terms of a
// peaking section are equal (both -2 cos w), so c1 serves both; c3 is the
// feedback term two samples back with its sign turned for addition.
// All start at 0: a host that stores the stale markers before the first buffer
// gets no computation and a section running on zero coefficients.
struct PeakingDesign {
    float c0 = 0.0f;
    float c1 = 0.0f;
    float c2 = 0.0f;
    float c3 = 0.0f;
};

// From the normalised parameters; the sample rate does not enter.
PeakingDesign designPeaking(float center, float q, float boost) noexcept;

// The section's sum before the anti-denormal bias, in its one order of
// evaluation, for a double (the plain loop) or lanes of doubles (several
// channels at once); sharing the text keeps the two paths identical.
struct PeakingSection {
    static constexpr unsigned kCoefficients = 4;
    // (The result is written through a reference: a wide vector returned by
    // value would change the calling convention outside the AVX2 code.)
    template <class T>
    [[gnu::always_inline]] static inline void sum(T& result, const T* c, const T& x, const T& x1, const T& x2,
                                                  const T& y1, const T& y2) noexcept {
        result = ((c[1] * (x1 - y1) + c[0] * x) + c[2] * x2) + c[3] * y2;
    }
    static std::array<float, kCoefficients> coefficientArray(const PeakingDesign& d) noexcept {
        return {d.c0, d.c1, d.c2, d.c3};
    }
};

// The family: centre, width and boost and the lazy design. The channel
// variants (EqChannels.h) add the processing calls.
class AF_EXPORT AudioParametricEQ : public FilterFamily<PeakingDesign, 3> {
public:
    using Section = PeakingSection;
    static float step(const PeakingDesign& design, EqHistory& memory, const float& input) noexcept {
        return stepEqSection<Section>(Section::coefficientArray(design), memory, input);
    }

    AudioParametricEQ(unsigned channels, audioMasterCallback audioMaster);
    ~AudioParametricEQ() override;

protected:
    PeakingDesign designFor(const Values& parameters) noexcept override;
    // The width's text shows the square law the filter uses, unlike the
    // host-facing conversion, which is linear.
    float shownValue(unsigned index, float value) const override;
};

}  // namespace AF
