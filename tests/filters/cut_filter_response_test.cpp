// Frequency responses as an engineer checks a filter: sines run through the
// effect, their steady-state level compared with the analytic response of the
// stated sections (ideal double-precision coefficients).
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

#include "CutFilterHarness.h"
#include "effects/variants/NamedVariants.h"

namespace {

using namespace cuttest;

constexpr double kResponseToleranceDb = 0.05;  // measured vs analytic level
constexpr double kRejectedDb = -90.0;          // "removed": at least this far down
constexpr double kPi = std::numbers::pi;

double toDb(double gain) { return 20.0 * std::log10(gain); }

// Angle of a normalised cutoff/centre in radians per sample.
double angleOf(double p) { return (p * p * 0.99 + 0.000416666) * kPi; }

// |H(e^jw)| of the stated sections, from the textbook formulas.
double analyticGain(Kind kind, double p, double q, double w) {
    const std::complex<double> z1 = std::polar(1.0, -w), z2 = z1 * z1;
    const double w0 = angleOf(p);
    if (kind == Kind::Highpass || kind == Kind::Lowpass) {
        const double a = std::sin(w0) / (2.0 * (1.0 / std::sqrt(2.0)));
        const double sign = kind == Kind::Highpass ? -1.0 : 1.0;
        const double g = (1.0 - sign * std::cos(w0)) / (2.0 * (1.0 + a));
        const std::complex<double> section =
            g * (1.0 + 2.0 * sign * z1 + z2) / (1.0 - 2.0 * std::cos(w0) / (1.0 + a) * z1 + (1.0 - a) / (1.0 + a) * z2);
        return std::abs(section * section);
    }
    const double bigQ = q * q * 9.9 + 0.1;
    const double alpha = std::sin(w0) / (2.0 * bigQ);
    const double a1 = -2.0 * std::cos(w0) / (1.0 + alpha), a2 = (1.0 - alpha) / (1.0 + alpha);
    const std::complex<double> den = 1.0 + a1 * z1 + a2 * z2;
    if (kind == Kind::Bandpass) return std::abs(alpha / (1.0 + alpha) * (1.0 - z2) / den);
    return std::abs((1.0 / (1.0 + alpha) * (1.0 + z2) + a1 * z1) / den);
}

// Runs a cosine of angle w (DC and Nyquist included) through a fresh mono
// effect and measures the steady-state amplitude over whole periods.
template <class Effect>
double measuredGain(double p, double q, double w) {
    Effect* effect = new Effect(nullptr);
    Record host{effect->getAeffect()};
    host.setSampleRate(48000.0f);
    host.setParameter(0, static_cast<float>(p));
    host.setParameter(1, static_cast<float>(q));
    constexpr std::size_t kSettle = 30000;
    // Measure over whole periods so the correlation has no leakage.
    const double perPeriod = w > 0.0 ? 2.0 * kPi / w : 1.0;
    const double cycles = std::max(1.0, std::floor(60000.0 / perPeriod));
    const std::size_t measure = w > 0.0 ? static_cast<std::size_t>(std::llround(cycles * perPeriod)) : 60000;
    Buffers x(1, kSettle + measure);
    for (std::size_t n = 0; n < kSettle + measure; ++n) x.data[0][n] = static_cast<float>(std::cos(w * n));
    for (std::size_t n = 0; n < kSettle + measure; n += 512) {
        const VstInt32 frames = static_cast<VstInt32>(std::min<std::size_t>(512, kSettle + measure - n));
        host.processReplacing(x.at(n), x.at(n), frames);
    }
    host.close();
    double c = 0.0, s = 0.0;
    for (std::size_t n = kSettle; n < kSettle + measure; ++n) {
        c += x.data[0][n] * std::cos(w * n);
        s += x.data[0][n] * std::sin(w * n);
    }
    const double scale = (w == 0.0 || w == kPi) ? 1.0 : 2.0;  // DC and Nyquist have no quadrature part
    return scale * std::hypot(c, s) / static_cast<double>(measure);
}

template <class Effect>
void expectResponse(Kind kind, double p, double q, double w) {
    const double analytic = analyticGain(kind, p, q, w);
    const double measured = measuredGain<Effect>(p, q, w);
    if (toDb(analytic) < kRejectedDb) {
        EXPECT_LT(toDb(measured), kRejectedDb) << "w " << w;
    } else {
        EXPECT_NEAR(toDb(measured), toDb(analytic), kResponseToleranceDb) << "w " << w;
    }
}

TEST(CutFilterResponse, HighpassIsSixDbDownAtCutoffAndFallsTwentyFourPerOctave) {
    const double p = 0.25, wc = angleOf(p);
    EXPECT_NEAR(toDb(analyticGain(Kind::Highpass, p, 0, wc)), -6.0206, 0.001);
    EXPECT_NEAR(toDb(measuredGain<AF::AudioHighpass1>(p, 0, wc)), -6.0206, kResponseToleranceDb);
    expectResponse<AF::AudioHighpass1>(Kind::Highpass, p, 0, 0.0);
    expectResponse<AF::AudioHighpass1>(Kind::Highpass, p, 0, kPi);
    expectResponse<AF::AudioHighpass1>(Kind::Highpass, p, 0, wc);
    // Well below the cutoff each octave down costs 24 dB.
    const double octave = toDb(measuredGain<AF::AudioHighpass1>(p, 0, wc / 8)) -
                          toDb(measuredGain<AF::AudioHighpass1>(p, 0, wc / 16));
    EXPECT_NEAR(octave, 24.0, 0.3);
    expectResponse<AF::AudioHighpass1>(Kind::Highpass, p, 0, wc / 16);
    expectResponse<AF::AudioHighpass1>(Kind::Highpass, 0.6, 0, angleOf(0.6));
}

TEST(CutFilterResponse, LowpassIsUnityAtDcSixDbDownAtCutoffAndNothingAtNyquist) {
    const double p = 0.25, wc = angleOf(p);
    EXPECT_NEAR(toDb(measuredGain<AF::AudioLowpass1>(p, 0, 0.0)), 0.0, kResponseToleranceDb);
    EXPECT_NEAR(toDb(measuredGain<AF::AudioLowpass1>(p, 0, wc)), -6.0206, kResponseToleranceDb);
    expectResponse<AF::AudioLowpass1>(Kind::Lowpass, p, 0, kPi);
    expectResponse<AF::AudioLowpass1>(Kind::Lowpass, p, 0, 2 * wc);
    const double octave = toDb(measuredGain<AF::AudioLowpass1>(p, 0, 4 * wc)) -
                          toDb(measuredGain<AF::AudioLowpass1>(p, 0, 8 * wc));
    EXPECT_GT(octave, 24.0);  // the bilinear zero at Nyquist makes it steeper still
}

TEST(CutFilterResponse, BandpassIsUnityAtCentreAndRejectsDcAndNyquist) {
    for (double q : {0.0, 0.5, 1.0}) {
        const double p = 0.25, w0 = angleOf(p);
        EXPECT_NEAR(toDb(measuredGain<AF::AudioBandpass1>(p, q, w0)), 0.0, kResponseToleranceDb) << q;
        expectResponse<AF::AudioBandpass1>(Kind::Bandpass, p, q, 0.0);
        expectResponse<AF::AudioBandpass1>(Kind::Bandpass, p, q, kPi);
        expectResponse<AF::AudioBandpass1>(Kind::Bandpass, p, q, w0 * 1.5);
    }
}

TEST(CutFilterResponse, NotchPassesDcAndNyquistAndRemovesCentre) {
    for (double q : {0.0, 0.5, 1.0}) {
        const double p = 0.4, w0 = angleOf(p);
        EXPECT_NEAR(toDb(measuredGain<AF::AudioBandreject1>(p, q, 0.0)), 0.0, kResponseToleranceDb);
        EXPECT_NEAR(toDb(measuredGain<AF::AudioBandreject1>(p, q, kPi)), 0.0, kResponseToleranceDb);
        // The centre falls between whole samples of float precision: far down.
        EXPECT_LT(toDb(measuredGain<AF::AudioBandreject1>(p, q, w0)), -60.0) << q;
        expectResponse<AF::AudioBandreject1>(Kind::Notch, p, q, w0 * 0.5);
    }
}

}  // namespace
