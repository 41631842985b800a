#pragma once
// The equalisers' boost: the normalised 0..1 spans -24..+24 dB, linear in
// decibels, 0.5 flat.
#include "ML/VSTPropertySupportMixin.h"
#include "Numeric.h"
#include "effects/family/Localized.h"
#include "effects/family/ParameterFamily.h"

namespace AF::boostScale {

inline constexpr double kRangeDb = 48.0;
inline constexpr float kMaxDb = 24.0f;
inline constexpr float kStepDb = 0.1f;
inline constexpr float kFlat = 0.5f;

inline double decibels(double p) noexcept { return (p - 0.5) * kRangeDb; }

inline float toDisplay(float p) noexcept { return toFloat(decibels(p)); }

// Not clamped: 30 dB gives 1.125.
inline float toParameter(float db) noexcept { return toFloat(db / kRangeDb + 0.5); }

// The boost parameter under a family's own name key, reset to flat.
constexpr Parameter parameter(const char* nameKey) {
    return {nameKey, kDecibelLabelKey, ML::VSTPropertySupportMixin::kNumber, -kMaxDb, kMaxDb, kStepDb, kFlat,
            toDisplay, toParameter};
}

}  // namespace AF::boostScale
