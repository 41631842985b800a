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
#include <atomic>
#include <cmath>

#include "AR/AudioBuffer.h"
#include "AudioEffectX.h"
#include "ChannelOrder.h"
#include "CutoffMapping.h"
#include "host/FamilyShape.h"
#include "ML/VSTPropertySupportMixin.h"
#include "MF/Constants.h"
#include "Numeric.h"
#include "VectorPath.h"

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
    const float sinW = toFloat(std::sin(static_cast<double>(w)));
    const float cosW = toFloat(std::cos(static_cast<double>(w)));
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

// The kernel for `Width` channels at once, one per lane: the same double
// operations as cascadeStep in the same order, each section's sum converted
// to float once per lane.
template <CascadeResponse Response, unsigned Width>
struct CascadeLanes {
    using D = typename LaneTypes<Width>::D;
    using F = typename LaneTypes<Width>::F;
    struct Coefficients {
        D gain, feedback1, feedback2;
        explicit Coefficients(const CascadeDesign& d)
            : gain(D{} + static_cast<double>(d.gain)),
              feedback1(D{} + static_cast<double>(d.feedback1)),
              feedback2(D{} + static_cast<double>(d.feedback2)) {}
    };
    D x1, x2, s1, s2, y1, y2;

    static double offset(VstInt32 frames, VstInt32 n) noexcept {
        return static_cast<double>(cascadeOffset<Response>(frames, n));
    }
    [[gnu::always_inline]] inline void load(const CascadeHistory* h) noexcept {
        for (unsigned lane = 0; lane < Width; ++lane) {
            x1[lane] = h[lane].x1;
            x2[lane] = h[lane].x2;
            s1[lane] = h[lane].s1;
            s2[lane] = h[lane].s2;
            y1[lane] = h[lane].y1;
            y2[lane] = h[lane].y2;
        }
    }
    [[gnu::always_inline]] inline void store(CascadeHistory* h) const noexcept {
        for (unsigned lane = 0; lane < Width; ++lane) {
            h[lane] = {toFloat(x1[lane]), toFloat(x2[lane]), toFloat(s1[lane]),  // exact: the lanes hold floats
                       toFloat(s2[lane]), toFloat(y1[lane]), toFloat(y2[lane])};
        }
    }
    [[gnu::always_inline]] inline F advance(const Coefficients& c, const D& x, const D& offset) noexcept {
        D s;
        if constexpr (Response == CascadeResponse::Highpass)
            s = (x - 2.0 * x1 + x2) * c.gain + c.feedback1 * s1 - c.feedback2 * s2 + offset;
        else
            s = (2.0 * x1 + x + x2) * c.gain + c.feedback1 * s1 - c.feedback2 * s2 + offset;
        const D sf = __builtin_convertvector(__builtin_convertvector(s, F), D);
        D y;
        if constexpr (Response == CascadeResponse::Highpass)
            y = (sf - 2.0 * s1 + s2) * c.gain + c.feedback1 * y1 - c.feedback2 * y2;
        else
            y = (2.0 * s1 + sf + s2) * c.gain + c.feedback1 * y1 - c.feedback2 * y2;
        const F yf = __builtin_convertvector(y, F);
        y2 = y1;
        y1 = __builtin_convertvector(yf, D);
        s2 = s1;
        s1 = sf;
        x2 = x1;
        x1 = x;
        return yf;
    }
};

template <CascadeResponse Response, unsigned Channels, bool Accumulate>
void runCascadeLanesSse2(std::array<CascadeHistory, Channels>& h, float** inputs, float** outputs, VstInt32 frames,
                         const CascadeDesign& d) {
    using Pair = CascadeLanes<Response, 2>;
    runLaneGroups<Pair, Pair, Channels, Accumulate>(h, inputs, outputs, frames, d);
}

// Compiled for AVX2 on its own; called only where the processor has it.
template <CascadeResponse Response, unsigned Channels, bool Accumulate>
__attribute__((target("avx2"))) void runCascadeLanesAvx2(std::array<CascadeHistory, Channels>& h, float** inputs,
                                                         float** outputs, VstInt32 frames, const CascadeDesign& d) {
    runLaneGroups<CascadeLanes<Response, 4>, CascadeLanes<Response, 2>, Channels, Accumulate>(h, inputs, outputs,
                                                                                              frames, d);
}

inline constexpr ParameterRow kCutoffRows[] = {
    {"$$$/Korvex/AudioFilters/Cutoff=Cutoff", kHertzLabelKey, 0.25f},
};

// The family: parameter, properties, lifecycle and the lazy design. The
// channel variants below add the processing calls.
template <CascadeResponse Response>
class AF_EXPORT CascadeFamily : public AudioEffectX, public ML::VSTPropertySupportMixin {
public:
    static constexpr CascadeResponse kResponse = Response;

    CascadeFamily(unsigned channels, audioMasterCallback audioMaster);
    ~CascadeFamily() override;

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

    // For inspection: the coefficients in use and the filter memory.
    CascadeDesign currentDesign() const noexcept { return design; }
    const AR::AudioBuffer& historyBuffer() const noexcept { return history; }

protected:
    // Recomputes the design when the cutoff differs from the applied one (a
    // NaN always differs).
    void refreshDesign() noexcept;
    float currentSampleRate() const;

    AR::AudioBuffer history;
    float appliedCutoff = -1.0f;
    std::atomic<float> cutoff{0.25f};
    CascadeDesign design;
};

// One processing loop for every channel count: frame by frame up to six
// channels, channel by channel for sixteen (see ChannelOrder.h). From four
// channels on, the channels run several per instruction where the processor
// allows (see VectorPath.h), with the same samples as the plain loop.
template <class Family, unsigned Channels>
class AF_EXPORT CascadeVariant : public Family {
public:
    explicit CascadeVariant(audioMasterCallback audioMaster);
    void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    // Adds the filtered signal into what the outputs hold.
    void process(float** inputs, float** outputs, VstInt32 sampleFrames) override;

private:
    template <bool Accumulate>
    void run(float** inputs, float** outputs, VstInt32 frames) noexcept;
    bool loadMemory(std::array<float*, Channels>& memory, float** inputs, float** outputs) noexcept;
    static CascadeHistory load(const float* m) noexcept { return {m[0], m[1], m[2], m[3], m[4], m[5]}; }
    static void store(const CascadeHistory& h, float* m) noexcept {
        m[0] = h.x1;
        m[1] = h.x2;
        m[2] = h.s1;
        m[3] = h.s2;
        m[4] = h.y1;
        m[5] = h.y2;
    }
};

template <class Family, unsigned Channels>
CascadeVariant<Family, Channels>::CascadeVariant(audioMasterCallback audioMaster) : Family(Channels, audioMaster) {
    configureVariant(*this, Channels, cutoff::uniqueId<Channels>());
}

template <class Family, unsigned Channels>
void CascadeVariant<Family, Channels>::processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) {
    run<false>(inputs, outputs, sampleFrames);
}

template <class Family, unsigned Channels>
void CascadeVariant<Family, Channels>::process(float** inputs, float** outputs, VstInt32 sampleFrames) {
    run<true>(inputs, outputs, sampleFrames);
}

template <class Family, unsigned Channels>
template <bool Accumulate>
void CascadeVariant<Family, Channels>::run(float** inputs, float** outputs, VstInt32 frames) noexcept {
    constexpr CascadeResponse response = Family::kResponse;
    std::array<float*, Channels> memory{};
    const bool usable = loadMemory(memory, inputs, outputs);
    if (!usable) frames = 0;  // still refreshes, as a call of no frames does
    std::array<CascadeHistory, Channels> h{};
    for (unsigned c = 0; c < Channels && usable; ++c) h[c] = load(memory[c]);
    CascadeDesign d;
    const VectorPath path = Channels >= 4 ? vectorPath() : VectorPath::scalar;
    if (path == VectorPath::scalar) {
        forEachSampleInChannelOrder<Channels>(
            frames,
            [&] {
                this->refreshDesign();
                d = this->design;
            },
            [&](unsigned c, VstInt32 n) {
                const float x = inputs[c][n];  // read before the write: in place is safe
                const float y = cascadeStep<response>(d, h[c], x, cascadeOffset<response>(frames, n));
                if constexpr (Accumulate)
                    outputs[c][n] = toFloat(static_cast<double>(outputs[c][n]) + y);
                else
                    outputs[c][n] = y;
            });
    } else if constexpr (Channels >= 4) {
        // One refresh for all channels, also for sixteen, whose plain loop
        // refreshes before each channel's pass: the two differ only when a host
        // stores the cutoff from another thread during the call, and either way
        // the change reaches the next call.
        this->refreshDesign();
        d = this->design;
        if (path == VectorPath::avx2) runCascadeLanesAvx2<response, Channels, Accumulate>(h, inputs, outputs, frames, d);
        else runCascadeLanesSse2<response, Channels, Accumulate>(h, inputs, outputs, frames, d);
    }
    for (unsigned c = 0; c < Channels && usable; ++c) store(h[c], memory[c]);
}

template <class Family, unsigned Channels>
bool CascadeVariant<Family, Channels>::loadMemory(std::array<float*, Channels>& memory, float** inputs,
                                             float** outputs) noexcept {
    if (inputs == nullptr || outputs == nullptr) return false;
    for (unsigned c = 0; c < Channels; ++c) {
        memory[c] = this->history.GetChannel(static_cast<int>(c));
        if (memory[c] == nullptr || inputs[c] == nullptr || outputs[c] == nullptr) return false;
    }
    return true;
}

}  // namespace AF
