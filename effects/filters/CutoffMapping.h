#pragma once
// What the high-pass, low-pass, band-pass and notch share: the square-law map
// between the normalised cutoff (or centre) and hertz, the frequency
// parameter's property answers, their anti-denormal offset and unique ids.
//
// The map picks a fraction of Nyquist: hz = (p·p·0.99 + 0.000416666)·rate/2.
// The constants keep the precision each side was built with: the forward map
// and the high/low-pass angle use a double floor fraction, the inverse map and
// the band-pass/notch angle the float one. They are kept apart on purpose.
#include "Math.h"

#include "AEffect.h"
#include "Numeric.h"

namespace AF::cutoff {

inline constexpr float kSquareLawSpan = 0.99f;             // share of Nyquist the square law covers
inline constexpr double kFloorFraction = 0.000416666;      // lowest fraction of Nyquist, as a double
inline constexpr float kFloorFractionFloat = 0.000416666f;  // the same, as a float
inline constexpr float kMaxFraction = 0.99041665f;         // span + floor, rounded to float
inline constexpr float kStepHz = 100.0f;
inline constexpr double kHalf = 0.5;

// Forward map for displays and ConvertParameterValueToDisplay.
inline float cutoffHz(float p, float sampleRate) noexcept {
    const double fraction = static_cast<double>(p) * p * kSquareLawSpan + kFloorFraction;
    return toFloat(fraction * sampleRate * kHalf);
}

// Inverse map: clamped to 0..1 before the square root, so any frequency below
// the minimum or above the maximum lands on an end of the range.
inline float cutoffParameter(float hz, float sampleRate) noexcept {
    float r = toFloat((2.0 * hz) / sampleRate);
    r = toFloat(static_cast<double>(r) - kFloorFractionFloat);
    float t = toFloat(static_cast<double>(r) / kSquareLawSpan);
    if (t < 0.0f) t = 0.0f;
    if (t > 1.0f) t = 1.0f;
    return toFloat(math::sqrt(static_cast<double>(t)));
}

inline float maxHz(float sampleRate) noexcept {
    return toFloat(static_cast<double>(sampleRate) * kHalf * kMaxFraction);
}

inline float minHz(float sampleRate) noexcept {
    return toFloat(static_cast<double>(sampleRate) * kHalf * kFloorFractionFloat);
}

// The offset that keeps silent recursions out of subnormal numbers.
inline constexpr float kAntiDenormal = 1e-25f;

// Every filter family shares its four-character code by channel count.
template <unsigned Channels>
constexpr VstInt32 uniqueId() {
    static_assert(Channels == 1 || Channels == 2 || Channels == 4 || Channels == 6 || Channels == 16);
    if constexpr (Channels == 1) return fourCharCode("AFl1");
    else if constexpr (Channels == 2) return fourCharCode("AFl2");
    else if constexpr (Channels == 4) return fourCharCode("AFl4");
    else if constexpr (Channels == 6) return fourCharCode("AFl6");
    else return fourCharCode("AF16");
}

// Frames of a call left after frame n (0 for the last one): the offset
// patterns count from the end of the call.
inline unsigned framesAfter(VstInt32 frames, VstInt32 n) noexcept {
    return static_cast<unsigned>(frames - 1 - n);
}

}  // namespace AF::cutoff
