#pragma once
// The effects the bridge tests render, with control values in display units
// for every parameter (hosts pass every control, so the tests name them all).
#include <ostream>
#include <string>
#include <vector>

namespace bridgetest {

struct RenderCase {
    std::string identifier;
    std::vector<float> controls;  // by parameter index, display units (Hz, dB, s, %)
};

// Test names show the identifier, not the bytes of the case.
inline void PrintTo(const RenderCase& c, std::ostream* out) { *out << c.identifier; }

// Volume at -6 dB, Mute with its second channel toggled, Balance, two filters
// and a delay. Families not in this build of the module are skipped by name.
inline const std::vector<RenderCase>& renderCases() {
    static const std::vector<RenderCase> cases = {
        {"Internal Volume Stereo", {-6.0f}},
        {"Internal Mute Stereo", {0.0f, 0.0f, 1.0f}},
        {"Internal Balance", {30.0f}},
        {"Internal Highpass Stereo", {200.0f}},
        {"Internal Lowpass Stereo", {1000.0f}},
        {"Internal Delay Stereo", {0.05f, 30.0f, 50.0f}},
    };
    return cases;
}

}  // namespace bridgetest
