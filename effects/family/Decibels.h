#pragma once
// The level parameters' decibel scale: a normalised level p is the linear gain
// 2p, so 0.5 is 0 dB. The -999 dB floor stands for silence; only exactly
// -999 dB and exactly 0 are special, anything else goes through the formula.
#include "Math.h"

#include "Numeric.h"

namespace AF::decibels {

inline constexpr float kSilence = -999.0f;

// Where the arithmetic rounds to float: after each step (Volume) or only at the end.
enum class Rounding { eachStep, once };

inline constexpr double kTwenty = 20.0;  // 20 log10 for an amplitude ratio
inline constexpr double kTen = 10.0;
inline constexpr double kTwo = 2.0;
inline constexpr double kHalf = 0.5;
inline constexpr float kHalfFloat = 0.5f;

// p = 0.5 x 10^(dB / 20), not clamped.
template <Rounding rounding>
float toLevel(float decibels) noexcept {
    if (decibels == kSilence) return 0.0f;
    if constexpr (rounding == Rounding::eachStep) {
        const float exponent = toFloat(static_cast<double>(decibels) / kTwenty);
        const float gain = toFloat(math::pow(kTen, static_cast<double>(exponent)));
        return gain * kHalfFloat;
    } else {
        const double exponent = static_cast<double>(decibels) / kTwenty;
        return toFloat(kHalf * math::pow(kTen, exponent));
    }
}

// dB = 20 log10(2p).
template <Rounding rounding>
float ofLevel(float level) noexcept {
    if (level == 0.0f) return kSilence;
    if constexpr (rounding == Rounding::eachStep) {
        const float gain = level + level;
        const float logGain = toFloat(math::log10(static_cast<double>(gain)));
        return toFloat(kTwenty * static_cast<double>(logGain));
    } else {
        const double gain = kTwo * static_cast<double>(level);
        return toFloat(kTwenty * math::log10(gain));
    }
}

}  // namespace AF::decibels
