#pragma once
// The parameter rows both delays share: a delay time in seconds, whose
// normalised value is half of it, and the percentages (feedback, mix).
#include "Numeric.h"
#include "effects/family/Localized.h"
#include "effects/family/ParameterFamily.h"

namespace AF::delay {

inline constexpr float kMaxDelaySeconds = 2.0f;
inline constexpr float kDelayStepSeconds = 0.01f;
inline constexpr float kMaxPercent = 100.0f;
inline constexpr float kPercentStep = 1.0f;
inline constexpr double kHalf = 0.5;
inline constexpr double kPercentPerUnit = 100.0;

// Seconds = 2p and p = seconds / 2, each in double and rounded once.
inline float secondsOfParameter(float parameterValue) noexcept {
    const double parameter = parameterValue;
    return toFloat(parameter + parameter);
}
inline float parameterOfSeconds(float seconds) noexcept { return toFloat(static_cast<double>(seconds) * kHalf); }

// Percent = 100p and p = percent / 100, each in double and rounded once.
inline float percentOfParameter(float parameterValue) noexcept {
    return toFloat(static_cast<double>(parameterValue) * kPercentPerUnit);
}
inline float parameterOfPercent(float percent) noexcept { return toFloat(static_cast<double>(percent) / kPercentPerUnit); }

// A delay time of 0 to 2 s in steps of 10 ms.
constexpr Parameter delayTimeRow(const char* nameKey, const char* labelKey, float defaultValue) noexcept {
    return {nameKey,           labelKey,           ML::VSTPropertySupportMixin::kTime, 0.0f, kMaxDelaySeconds,
            kDelayStepSeconds, defaultValue,       secondsOfParameter,                 parameterOfSeconds};
}

// A proportion shown as 0 to 100 % in steps of 1.
constexpr Parameter percentRow(const char* nameKey, float defaultValue) noexcept {
    return {nameKey,      kPercentLabelKey, ML::VSTPropertySupportMixin::kNumber, 0.0f, kMaxPercent,
            kPercentStep, defaultValue,     percentOfParameter,                   parameterOfPercent};
}

}  // namespace AF::delay
