#pragma once
// A single peaking (bell) band: one second-order section per channel whose
// centre frequency, width and boost or cut the user sets. Coefficients are
// recomputed at the start of a buffer when a parameter moved; there is no ramp.
#include <atomic>

#include "ML/VSTPropertySupportMixin.h"
#include "frame/Numeric.h"
#include "effects/filters/EqSection.h"

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

// One output sample. The input is read again after y is formed, before the
// caller writes the output, so the same array may be input and output.
inline float peakingKernel(const PeakingDesign& design, EqHistory& history, const float& input) noexcept {
    const double c[PeakingSection::kCoefficients] = {design.c0, design.c1, design.c2, design.c3};
    const double x = input;
    const double x1 = history.x1, x2 = history.x2, y1 = history.y1, y2 = history.y2;
    double sum;
    PeakingSection::sum(sum, c, x, x1, x2, y1, y2);
    const float y = toFloat(sum + kEqAntiDenormal);
    history.y2 = history.y1;
    history.y1 = y;
    history.x2 = history.x1;
    history.x1 = input;
    return y;
}

class AF_EXPORT AudioParametricEQ : public AudioEffectX, public ML::VSTPropertySupportMixin {
public:
    AudioParametricEQ(unsigned channels, audioMasterCallback audioMaster);
    ~AudioParametricEQ() override;

    void setProgram(VstInt32 program) override;
    void setParameter(VstInt32 index, float value) override;
    float getParameter(VstInt32 index) override;
    void getProgramName(char* name) override;
    void getParameterName(VstInt32 index, char* text) override;
    void getParameterLabel(VstInt32 index, char* label) override;
    void getParameterDisplay(VstInt32 index, char* text) override;
    void setSampleRate(float newSampleRate) override;
    void suspend() override;

    ParameterType GetParameterType(unsigned index) override;
    float GetParameterMax(unsigned index) const override;
    float GetParameterMin(unsigned index) const override;
    float GetParameterStep(unsigned index) const override;
    bool SupportsDisplayValueToParameter(unsigned index) const override;
    float ConvertDisplayValueToParameter(unsigned index, float displayValue) const override;
    float ConvertParameterValueToDisplay(unsigned index, float parameterValue) const override;

    // The coefficients the section runs on (for diagnostics and tests).
    const PeakingDesign& coefficients() const noexcept { return design_; }

protected:
    // The one loop of every channel variant.
    template <unsigned Channels, EqMode Mode>
    void run(float** inputs, float** outputs, VstInt32 frames) {
        PeakingDesign design = design_;
        runEqBlock<Channels, Mode, PeakingSection>(
            history_, inputs, outputs, frames,
            [&] {
                refreshCoefficients();
                design = design_;
            },
            [&](EqHistory& history, const float& input) { return peakingKernel(design, history, input); },
            [&]() -> const PeakingDesign& { return design; });
    }

private:
    void refreshCoefficients() noexcept;
    void forgetState() noexcept;
    float currentSampleRate() const;

    AR::AudioBuffer history_;
    float lastCenter_ = -1.0f;
    std::atomic<float> center_{1.0f};
    float lastQ_ = -1.0f;
    std::atomic<float> q_{0.5f};
    float lastBoost_ = 0.0f;
    std::atomic<float> boost_{0.5f};
    PeakingDesign design_;
};

// The variants' shared members are instantiated in the family's source file.
extern template class EqVariant<AudioParametricEQ, 1>;
extern template class EqVariant<AudioParametricEQ, 2>;
extern template class EqVariant<AudioParametricEQ, 4>;
extern template class EqVariant<AudioParametricEQ, 6>;
extern template class EqVariant<AudioParametricEQ, 16>;

class AF_EXPORT AudioParametricEQ1 final : public EqVariant<AudioParametricEQ, 1> {
public:
    explicit AudioParametricEQ1(audioMasterCallback audioMaster);
    ~AudioParametricEQ1() override;
};
class AF_EXPORT AudioParametricEQ2 final : public EqVariant<AudioParametricEQ, 2> {
public:
    explicit AudioParametricEQ2(audioMasterCallback audioMaster);
    ~AudioParametricEQ2() override;
};
// Built and exported, never registered.
class AF_EXPORT AudioParametricEQ4 final : public EqVariant<AudioParametricEQ, 4> {
public:
    explicit AudioParametricEQ4(audioMasterCallback audioMaster);
    ~AudioParametricEQ4() override;
};
class AF_EXPORT AudioParametricEQ6 final : public EqVariant<AudioParametricEQ, 6> {
public:
    explicit AudioParametricEQ6(audioMasterCallback audioMaster);
    ~AudioParametricEQ6() override;
};
class AF_EXPORT AudioParametricEQ16 final : public EqVariant<AudioParametricEQ, 16> {
public:
    explicit AudioParametricEQ16(audioMasterCallback audioMaster);
    ~AudioParametricEQ16() override;
};

}  // namespace AF
