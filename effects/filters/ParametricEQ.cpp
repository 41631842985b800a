#include "effects/filters/ParametricEQ.h"

#include "Math.h"
#include <new>

#include "MF/Constants.h"

namespace AF {

namespace {

// The centre frequency follows a square law from a floor just above 0 Hz to
// just under Nyquist; these constants are doubles as written.
constexpr double kCenterSpan = 0.99;
constexpr double kCenterFloor = 0.000416666;
constexpr double kCenterCeiling = 0.9904166;  // span + floor, the top of the host-facing range
constexpr double kWidthSpan = 19.9;
constexpr double kWidthFloor = 0.1;
constexpr double kBoostRangeDb = 48.0;         // normalised 0..1 spans -24..+24 dB
constexpr double kDecibelsToExponent = 0.025;  // A = 10^(dB / 40); the bell peaks at A^2, the full dB

constexpr ParameterRow kRows[] = {
    {"$$$/Korvex/AudioFilters/Center=Center", kHertzLabelKey, 0.25f},
    {"$$$/Korvex/AudioFilters/Q=Q", nullptr, 0.5f},
    {"$$$/Korvex/AudioFilters/Boost=Boost", kDecibelLabelKey, 0.5f},
};
constexpr unsigned kParameterCount = 3;

// 0.99 p^2 + 0.000416666: the centre as a fraction of Nyquist.
double centerFractionOfNyquist(double p) { return kCenterSpan * (p * p) + kCenterFloor; }

double boostDecibels(double p) { return (p - 0.5) * kBoostRangeDb; }

}  // namespace

PeakingDesign designPeaking(float center, float q, float boost) noexcept {
    // Each rounded step is kept as a double holding the float's value, so the
    // steps after it run in double precision as written.
    // w: the centre as an angle in radians per sample (pi at Nyquist).
    const double w = toFloat(centerFractionOfNyquist(center) * MF::kPi);
    const double s = toFloat(math::sin(w));
    // The width enters as a multiplier: a larger value gives a wider bell.
    const double qValue = q;
    const double width = kWidthSpan * (qValue * qValue) + kWidthFloor;
    const double alpha = toFloat(s * 2.0 * width);
    const double a = toFloat(math::pow(10.0, boostDecibels(boost) * kDecibelsToExponent));
    const double n = toFloat(1.0 / (1.0 + alpha / a));
    const double cosW = toFloat(math::cos(w));
    PeakingDesign design;
    design.c0 = toFloat((1.0 + alpha * a) * n);
    design.c1 = toFloat(-2.0 * cosW * n);
    design.c2 = toFloat((1.0 - alpha * a) * n);
    design.c3 = toFloat(-(1.0 - alpha / a) * n);
    return design;
}

AudioParametricEQ::AudioParametricEQ(unsigned channels, audioMasterCallback audioMaster)
    : AudioEffectX(audioMaster, 1, static_cast<VstInt32>(kParameterCount)), history_(16, true) {
    history_.Init(static_cast<int>(channels), kEqHistoryLength);
    history_.Zero();
}

AudioParametricEQ::~AudioParametricEQ() = default;

void AudioParametricEQ::refreshCoefficients() noexcept {
    const float center = center_.load(std::memory_order_relaxed);
    const float q = q_.load(std::memory_order_relaxed);
    const float boost = boost_.load(std::memory_order_relaxed);
    // An unordered comparison (a NaN on either side) counts as a change.
    if (center == lastCenter_ && q == lastQ_ && boost == lastBoost_) return;
    lastCenter_ = center;
    lastQ_ = q;
    lastBoost_ = boost;
    design_ = designPeaking(center, q, boost);
}

void AudioParametricEQ::forgetState() noexcept {
    lastCenter_ = -1.0f;
    lastQ_ = -1.0f;
    lastBoost_ = 0.0f;
    history_.Zero();
}

float AudioParametricEQ::currentSampleRate() const {
    // The property interface is const; the sample rate is read through the
    // effect's own accessor all the same.
    return const_cast<AudioParametricEQ*>(this)->getSampleRate();
}

void AudioParametricEQ::setProgram(VstInt32 program) {
    AudioEffectX::setProgram(program);
    resetToDefaults(*this, kRows);
}

void AudioParametricEQ::setParameter(VstInt32 index, float value) {
    switch (index) {
        case 0: center_.store(value, std::memory_order_relaxed); break;
        case 1: q_.store(value, std::memory_order_relaxed); break;
        case 2: boost_.store(value, std::memory_order_relaxed); break;
        default: break;
    }
}

float AudioParametricEQ::getParameter(VstInt32 index) {
    switch (index) {
        case 0: return center_.load(std::memory_order_relaxed);
        case 1: return q_.load(std::memory_order_relaxed);
        case 2: return boost_.load(std::memory_order_relaxed);
        default: return 0.0f;
    }
}

void AudioParametricEQ::getProgramName(char* name) { copyLocalizedText(kDefaultProgramKey, name); }

void AudioParametricEQ::getParameterName(VstInt32 index, char* text) { copyParameterName(kRows, index, text); }

void AudioParametricEQ::getParameterLabel(VstInt32 index, char* label) { copyParameterLabel(kRows, index, label); }

void AudioParametricEQ::getParameterDisplay(VstInt32 index, char* text) {
    const float p = getParameter(index);
    switch (index) {
        case 0: float2string(ConvertParameterValueToDisplay(0, p), text, 8); break;
        case 1: {
            // The text shows the square-law width the filter uses, unlike the
            // host-facing conversion, which is linear.
            const double width = p;
            float2string(toFloat(kWidthSpan * (width * width) + kWidthFloor), text, 8);
            break;
        }
        case 2: float2string(ConvertParameterValueToDisplay(2, p), text, 8); break;
        default: break;
    }
}

void AudioParametricEQ::setSampleRate(float newSampleRate) {
    if (newSampleRate == getSampleRate()) return;
    sampleRate = newSampleRate;
    forgetState();
}

void AudioParametricEQ::suspend() { forgetState(); }

ML::VSTPropertySupportMixin::ParameterType AudioParametricEQ::GetParameterType(unsigned index) {
    switch (index) {
        case 0: return kHertz;
        case 1:
        case 2: return kNumber;
        default: return kNotAParameter;
    }
}

float AudioParametricEQ::GetParameterMax(unsigned index) const {
    switch (index) {
        case 0: return toFloat(currentSampleRate() * 0.5 * kCenterCeiling);
        case 1: return 20.0f;
        case 2: return 24.0f;
        default: return 0.0f;
    }
}

float AudioParametricEQ::GetParameterMin(unsigned index) const {
    switch (index) {
        case 0: return toFloat(currentSampleRate() * 0.5 * kCenterFloor);
        case 1: return 0.1f;
        case 2: return -24.0f;
        default: return 0.0f;
    }
}

float AudioParametricEQ::GetParameterStep(unsigned index) const {
    switch (index) {
        case 0: return 100.0f;
        case 1:
        case 2: return 0.1f;
        default: return 0.0f;
    }
}

bool AudioParametricEQ::SupportsDisplayValueToParameter(unsigned index) const { return index < kParameterCount; }

float AudioParametricEQ::ConvertDisplayValueToParameter(unsigned index, float displayValue) const {
    const double v = displayValue;
    switch (index) {
        case 0: {
            double fraction = (2.0 * v / currentSampleRate() - kCenterFloor) / kCenterSpan;
            // Clamped before the root; a NaN passes through both tests.
            if (fraction < 0.0) fraction = 0.0;
            if (fraction > 1.0) fraction = 1.0;
            return toFloat(math::sqrt(fraction));
        }
        case 1: return toFloat((v - kWidthFloor) / kWidthSpan);
        case 2: return toFloat(v / kBoostRangeDb + 0.5);
        default: return 0.0f;
    }
}

float AudioParametricEQ::ConvertParameterValueToDisplay(unsigned index, float parameterValue) const {
    switch (index) {
        case 0:
            return toFloat(currentSampleRate() * centerFractionOfNyquist(parameterValue) * 0.5);
        case 1: return toFloat(kWidthSpan * parameterValue + kWidthFloor);
        case 2: return toFloat(boostDecibels(parameterValue));
        default: return 0.0f;
    }
}

template class EqVariant<AudioParametricEQ, 1>;
template class EqVariant<AudioParametricEQ, 2>;
template class EqVariant<AudioParametricEQ, 4>;
template class EqVariant<AudioParametricEQ, 6>;
template class EqVariant<AudioParametricEQ, 16>;

AudioParametricEQ1::AudioParametricEQ1(audioMasterCallback audioMaster) : EqVariant(audioMaster) {}
AudioParametricEQ1::~AudioParametricEQ1() = default;
AudioParametricEQ2::AudioParametricEQ2(audioMasterCallback audioMaster) : EqVariant(audioMaster) {}
AudioParametricEQ2::~AudioParametricEQ2() = default;
AudioParametricEQ4::AudioParametricEQ4(audioMasterCallback audioMaster) : EqVariant(audioMaster) {}
AudioParametricEQ4::~AudioParametricEQ4() = default;
AudioParametricEQ6::AudioParametricEQ6(audioMasterCallback audioMaster) : EqVariant(audioMaster) {}
AudioParametricEQ6::~AudioParametricEQ6() = default;
AudioParametricEQ16::AudioParametricEQ16(audioMasterCallback audioMaster) : EqVariant(audioMaster) {}
AudioParametricEQ16::~AudioParametricEQ16() = default;

}  // namespace AF
