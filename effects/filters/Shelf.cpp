#include "effects/filters/Shelf.h"

#include "Math.h"

#include "MF/Constants.h"

namespace AF {

namespace {

constexpr double kBoostRangeDb = 48.0;         // normalised 0..1 spans -24..+24 dB
constexpr double kDecibelsToExponent = 0.025;  // 10^(dB / 40): the shelf's amplitude factor

double boostDecibels(double p) { return (p - 0.5) * kBoostRangeDb; }

}  // namespace

ShelfAngle shelfAngle(const ShelfShape& shape, float sampleRate) noexcept {
    // Each rounded step is kept as a double holding the float's value, so the
    // steps after it run in double precision as written.
    const double fs = sampleRate;
    const double w = toFloat(MF::kPi * shape.cornerScale / fs);
    // The slope term is the usual shelving term with the gain replaced by the
    // angle: the steepness follows the sample rate, not the boost.
    const double wMinusOne = w - 1.0;
    const double beta = toFloat(math::sqrt((w * w + 1.0) * shape.slope - wMinusOne * wMinusOne));
    ShelfAngle angle;
    angle.w = toFloat(w);
    angle.beta = toFloat(beta);
    angle.sinW = toFloat(math::sin(w));
    angle.cosW = toFloat(math::cos(w));
    return angle;
}

ShelfDesign designShelf(const ShelfShape& shape, float sampleRate, float boost) noexcept {
    const ShelfAngle angle = shelfAngle(shape, sampleRate);
    const double beta = angle.beta;
    const double s = angle.sinW;
    // The high shelf is the low shelf mirrored about a quarter of the sample
    // rate: cos w changes sign, and so do the odd coefficients c1 and c3.
    // Negation is exact, so every sum below is the one each shelf's own
    // formula writes, term for term.
    const double mirror = shape.kind == ShelfKind::low ? 1.0 : -1.0;
    const double k = mirror * angle.cosW;
    const double a = toFloat(math::pow(10.0, boostDecibels(boost) * kDecibelsToExponent));
    const double a0 = toFloat((a + 1.0) + (a - 1.0) * k + beta * s);
    ShelfDesign design;
    design.c0 = toFloat(a * ((a + 1.0) - (a - 1.0) * k + beta * s) / a0);
    design.c1 = toFloat(mirror * 2.0 * a * ((a - 1.0) - (a + 1.0) * k) / a0);
    design.c2 = toFloat(a * ((a + 1.0) - (a - 1.0) * k - beta * s) / a0);
    design.c3 = toFloat(mirror * 2.0 * ((a - 1.0) + (a + 1.0) * k) / a0);
    design.c4 = toFloat(-((a + 1.0) + (a - 1.0) * k - beta * s) / a0);
    return design;
}

AudioShelf::AudioShelf(unsigned channels, audioMasterCallback audioMaster, const ShelfShape& shape)
    : AudioEffectX(audioMaster, 1, 1), shape_(shape), history_(16, true) {
    history_.Init(static_cast<int>(channels), kEqHistoryLength);
    lastBoost_ = -1.0f;
    history_.Zero();
}

AudioShelf::~AudioShelf() = default;

void AudioShelf::refreshCoefficients() noexcept {
    const float boost = boost_.load(std::memory_order_relaxed);
    // An unordered comparison (a NaN on either side) counts as a change.
    if (boost == lastBoost_) return;
    lastBoost_ = boost;
    design_ = designShelf(shape_, getSampleRate(), boost);
}

void AudioShelf::forgetState() noexcept {
    lastBoost_ = -1.0f;
    history_.Zero();
}

void AudioShelf::setProgram(VstInt32 program) {
    AudioEffectX::setProgram(program);
    resetToDefaults(*this, shape_.rows);
}

void AudioShelf::setParameter(VstInt32 index, float value) {
    if (index == 0) boost_.store(value, std::memory_order_relaxed);
}

float AudioShelf::getParameter(VstInt32 index) {
    return index == 0 ? boost_.load(std::memory_order_relaxed) : 0.0f;
}

void AudioShelf::getProgramName(char* name) { copyLocalizedText(kDefaultProgramKey, name); }

void AudioShelf::getParameterName(VstInt32 index, char* text) { copyParameterName(shape_.rows, index, text); }

void AudioShelf::getParameterLabel(VstInt32 index, char* label) { copyParameterLabel(shape_.rows, index, label); }

void AudioShelf::getParameterDisplay(VstInt32 index, char* text) {
    if (index == 0) float2string(toFloat(boostDecibels(getParameter(0))), text, 8);
}

void AudioShelf::setSampleRate(float newSampleRate) {
    if (newSampleRate == getSampleRate()) return;
    sampleRate = newSampleRate;
    forgetState();
}

void AudioShelf::suspend() { forgetState(); }

ML::VSTPropertySupportMixin::ParameterType AudioShelf::GetParameterType(unsigned index) {
    return index == 0 ? kNumber : kNotAParameter;
}

float AudioShelf::GetParameterMax(unsigned index) const { return index == 0 ? 24.0f : 0.0f; }

float AudioShelf::GetParameterMin(unsigned index) const { return index == 0 ? -24.0f : 0.0f; }

float AudioShelf::GetParameterStep(unsigned index) const { return index == 0 ? 0.1f : 0.0f; }

bool AudioShelf::SupportsDisplayValueToParameter(unsigned index) const { return index == 0; }

float AudioShelf::ConvertDisplayValueToParameter(unsigned index, float displayValue) const {
    // Not clamped: 30 dB gives 1.125.
    return index == 0 ? toFloat(displayValue / kBoostRangeDb + 0.5) : 0.0f;
}

float AudioShelf::ConvertParameterValueToDisplay(unsigned index, float parameterValue) const {
    return index == 0 ? toFloat(boostDecibels(parameterValue)) : 0.0f;
}

}  // namespace AF
