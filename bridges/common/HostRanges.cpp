#include "HostRanges.h"

#include <algorithm>
#include <cmath>

namespace AFBridge {

void declareForHosts(Control& control) {
    if (control.frequency) {
        control.logarithmic = true;
        // lower^0.25 * upper^0.75 = default
        const double fallback = kLowestFrequencyHz;
        const double initial = control.defaultValue;
        const double lower = std::pow(initial, 4.0) / std::pow(kHighestFrequencyHz, 3.0);
        control.minimum = static_cast<float>(lower > 0.0 && lower < fallback ? lower : fallback);
        control.maximum = static_cast<float>(kHighestFrequencyHz);
        return;
    }
    if (control.unit == Unit::Decibel && control.minimum < kLevelFloorDb) {
        control.silenceAtFloor = true;
        control.minimum = kLevelFloorDb;
    }
}

float displayValueFor(const Control& control, float hostValue, const ML::VSTPropertySupportMixin& properties) {
    if (!std::isfinite(hostValue)) return control.defaultValue;
    float value = std::clamp(hostValue, control.minimum, control.maximum);
    if (control.silenceAtFloor && value <= control.minimum) return control.effectMinimum;
    if (control.frequency) {
        // The effect's own range at the running rate (it follows the rate).
        const float lowest = properties.GetParameterMin(control.index);
        const float highest = properties.GetParameterMax(control.index);
        if (lowest <= highest) value = std::clamp(value, lowest, highest);
    }
    return value;
}

}  // namespace AFBridge
