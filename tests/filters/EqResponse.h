#pragma once
// Measuring a filter's gain the way an engineer does: a steady sine through
// the effect, its amplitude fitted once the transient has died away, compared
// with the analytic response of the second-order section it is meant to be.
#include <algorithm>
#include <cmath>
#include <complex>
#include <vector>

#include "EqHarness.h"

namespace eqtest {

// A gain measurement agrees with the analytic response within this much.
constexpr double kResponseToleranceDb = 0.05;

inline double toDb(double gain) { return 20.0 * std::log10(gain); }

// |H(e^jw)| of (b0 + b1 z^-1 + b2 z^-2) / (a0 + a1 z^-1 + a2 z^-2).
inline double sectionGain(const double (&b)[3], const double (&a)[3], double w) {
    const std::complex<double> z1 = std::polar(1.0, -w);
    const std::complex<double> z2 = z1 * z1;
    return std::abs((b[0] + b[1] * z1 + b[2] * z2) / (a[0] + a[1] * z1 + a[2] * z2));
}

// Gain of a mono effect at w radians per sample: a sine of amplitude 0.25
// for `frames` frames; the last half is fitted with a sin + b cos.
inline double measuredGain(Rig& rig, double w, int frames = 48000) {
    constexpr double kAmplitude = 0.25;
    Channels buffer(1, std::vector<float>(static_cast<std::size_t>(frames)));
    for (int n = 0; n < frames; ++n) buffer[0][static_cast<std::size_t>(n)] = eqref::single(kAmplitude * std::sin(w * n));
    for (int offset = 0; offset < frames; offset += 1000) rig.call(false, buffer, buffer, offset, std::min(1000, frames - offset));
    double ss = 0, cc = 0, sc = 0, ys = 0, yc = 0;
    for (int n = frames / 2; n < frames; ++n) {
        const double s = std::sin(w * n), c = std::cos(w * n), y = buffer[0][static_cast<std::size_t>(n)];
        ss += s * s;
        cc += c * c;
        sc += s * c;
        ys += y * s;
        yc += y * c;
    }
    const double det = ss * cc - sc * sc;
    const double a = (ys * cc - yc * sc) / det;
    const double b = (yc * ss - ys * sc) / det;
    return std::hypot(a, b) / kAmplitude;
}

}  // namespace eqtest
