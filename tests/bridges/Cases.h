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

// Volume at -6 dB, Mute with its second channel toggled, Balance, filters and
// equalisers (a 200 Hz cut-off among them), and both delays. Families not in this build of the module are skipped by name.
inline const std::vector<RenderCase>& renderCases() {
    static const std::vector<RenderCase> cases = {
        {"Internal Volume Stereo", {-6.0f}},
        {"Internal Mute Stereo", {0.0f, 0.0f, 1.0f}},
        {"Internal Balance", {30.0f}},
        {"Internal Highpass Stereo", {200.0f}},
        {"Internal Lowpass Stereo", {1000.0f}},
        {"Internal Delay Stereo", {0.05f, 30.0f, 50.0f}},
        {"Internal Parametric EQ Stereo", {200.0f, 2.0f, -6.0f}},
        {"Internal Bass Stereo", {6.0f}},
        {"Internal Multitap Delay Stereo",
         {0.01f, 20.0f, -6.0f, 0.02f, 0.0f, -12.0f, 0.03f, 10.0f, -3.0f, 0.04f, 0.0f, -9.0f, 60.0f}},
    };
    return cases;
}

}  // namespace bridgetest
