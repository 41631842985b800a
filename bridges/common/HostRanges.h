#pragma once
// What hosts see of a control and what reaches the effect from it.
//
// Hosts get absolute units: frequencies in hertz with a range that holds at
// every sample rate, levels in decibels down to a floor that means silence.
// Every value a host sends is made safe before the effect's own conversion:
// NaN or infinity becomes the default, anything else is clamped to the
// declared range, a frequency then to what the effect reaches at the running
// rate, and a level at the floor becomes the effect's own silence value.
// Values inside the range reach the effect unchanged.
#include "Catalog.h"

namespace AFBridge {

// The declared frequency range ends at 20 kHz and starts where LADSPA's
// logarithmic "high" default (a quarter of the way down from the top) lands
// on the family's default: 1495 Hz gives a lower bound of 0.6245 Hz. Below
// the effect's own lowest frequency at the running rate a value is clamped.
inline constexpr double kHighestFrequencyHz = 20000.0;
inline constexpr double kLowestFrequencyHz = 10.0;  // at most: used when the default is above 3.56 kHz
// A declared level floor for decibel ports whose own floor is a token
// (-999 dB): at or below it the effect gets that token, i.e. silence.
inline constexpr float kLevelFloorDb = -90.0f;

// Turns the effect's own description (display units at the reference rate)
// into the host-facing one: absolute frequency ranges, the level floor.
void declareForHosts(Control& control);

// The display value handed to ConvertDisplayValueToParameter for `hostValue`.
float displayValueFor(const Control& control, float hostValue, const ML::VSTPropertySupportMixin& properties);

}  // namespace AFBridge
