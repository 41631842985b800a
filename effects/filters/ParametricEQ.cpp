#include "effects/filters/ParametricEQ.h"

#include "Math.h"

#include "MF/Constants.h"
#include "effects/filters/Boost.h"

namespace AF {

namespace {

// The centre frequency follows a square law from a floor just above 0 Hz to
// just under Nyquist; these constants are doubles as written.
constexpr double kCenterSpan = 0.99;
constexpr double kCenterFloor = 0.000416666;
constexpr double kCenterCeiling = 0.9904166;  // span + floor, the top of the host-facing range
constexpr float kCenterStepHz = 100.0f;
constexpr double kWidthSpan = 19.9;
constexpr double kWidthFloor = 0.1;
constexpr float kMinWidth = 0.1f;
constexpr float kMaxWidth = 20.0f;
constexpr float kWidthStep = 0.1f;
constexpr unsigned kWidthIndex = 1;
constexpr double kDecibelsToExponent = 0.025;  // A = 10^(dB / 40); the bell peaks at A^2, the full dB

// The centre starts at the top of its range, though the program resets it to
// a quarter; the boost's stale marker is 0, the others' -1.
constexpr float kFirstCenter = 1.0f;
constexpr float kDefaultCenter = 0.25f;
constexpr float kDefaultWidth = 0.5f;
constexpr float kStale = -1.0f;
constexpr float kStaleBoost = 0.0f;

// 0.99 p^2 + 0.000416666: the centre as a fraction of Nyquist.
double centerFractionOfNyquist(double p) { return kCenterSpan * (p * p) + kCenterFloor; }

float centerMinHz(float sampleRate) { return toFloat(sampleRate * 0.5 * kCenterFloor); }

float centerMaxHz(float sampleRate) { return toFloat(sampleRate * 0.5 * kCenterCeiling); }

float centerHz(float p, float sampleRate) { return toFloat(sampleRate * centerFractionOfNyquist(p) * 0.5); }

float centerParameter(float hz, float sampleRate) {
    const double v = hz;
    double fraction = (2.0 * v / sampleRate - kCenterFloor) / kCenterSpan;
    // Clamped before the root; a NaN passes through both tests.
    if (fraction < 0.0) fraction = 0.0;
    if (fraction > 1.0) fraction = 1.0;
    return toFloat(math::sqrt(fraction));
}

float widthDisplay(float p) { return toFloat(kWidthSpan * p + kWidthFloor); }

float widthParameter(float shown) {
    const double v = shown;
    return toFloat((v - kWidthFloor) / kWidthSpan);
}

constexpr RateScale kCenterScale{centerMinHz, centerMaxHz, centerHz, centerParameter};

constexpr std::array<Parameter, 3> kParameters = {{
    {"$$$/Korvex/AudioFilters/Center=Center", kHertzLabelKey, ML::VSTPropertySupportMixin::kHertz, 0.0f, 0.0f,
     kCenterStepHz, kDefaultCenter, nullptr, nullptr, &kCenterScale},
    {"$$$/Korvex/AudioFilters/Q=Q", nullptr, ML::VSTPropertySupportMixin::kNumber, kMinWidth, kMaxWidth,
     kWidthStep, kDefaultWidth, widthDisplay, widthParameter},
    boostScale::parameter("$$$/Korvex/AudioFilters/Boost=Boost"),
}};

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
    const double a = toFloat(math::pow(10.0, boostScale::decibels(boost) * kDecibelsToExponent));
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
    : FilterFamily(audioMaster, kParameters, channels, kEqHistoryLength, ProgramReset::automated,
                   {kFirstCenter, kDefaultWidth, boostScale::kFlat}, {kStale, kStale, kStaleBoost}) {}

AudioParametricEQ::~AudioParametricEQ() = default;

PeakingDesign AudioParametricEQ::designFor(const Values& parameters) noexcept {
    return designPeaking(parameters[0], parameters[1], parameters[2]);
}

float AudioParametricEQ::shownValue(unsigned index, float value) const {
    if (index != kWidthIndex) return FilterFamily::shownValue(index, value);
    const double width = value;
    return toFloat(kWidthSpan * (width * width) + kWidthFloor);
}

}  // namespace AF
