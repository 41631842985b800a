// Parametric EQ: coefficients against the independent transcription, the
// property answers and texts, the life cycle, and the bell's response.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>

#include "EqResponse.h"
#include "effects/variants/NamedVariants.h"
#include "support/Bits.h"

namespace {

using namespace eqtest;

// Exact floats are compared as bit patterns: the module promises bit-identical
// arithmetic, and a tolerance would hide a misplaced rounding.
using aftest::bits;

void expectSameDesign(const AF::PeakingDesign& actual, const eqref::Peaking& expected) {
    EXPECT_TRUE(sameSample(actual.c0, expected.c0)) << actual.c0 << " vs " << expected.c0;
    EXPECT_TRUE(sameSample(actual.c1, expected.c1)) << actual.c1 << " vs " << expected.c1;
    EXPECT_TRUE(sameSample(actual.c2, expected.c2)) << actual.c2 << " vs " << expected.c2;
    EXPECT_TRUE(sameSample(actual.c3, expected.c3)) << actual.c3 << " vs " << expected.c3;
}

TEST(ParametricEq, CoefficientsMatchTheTranscription) {
    const float centers[] = {0.0f, 0.01f, 0.25f, 0.3f, 0.5f, 0.77f, 1.0f, 1.2f, -0.3f};
    const float widths[] = {0.0f, 0.1f, 0.5f, 0.63f, 1.0f, 1.5f};
    const float boosts[] = {0.0f, 0.25f, 0.5f, 0.61f, 0.75f, 1.0f, 1.3f, -0.2f};
    for (float center : centers)
        for (float q : widths)
            for (float boost : boosts) {
                SCOPED_TRACE(::testing::Message() << center << " " << q << " " << boost);
                expectSameDesign(AF::designPeaking(center, q, boost), eqref::peakingCoefficients(center, q, boost));
            }
}

TEST(ParametricEq, CoefficientsStartAtZero) {
    // A host that stores the stale markers first gets no computation at all:
    // the section runs on zero coefficients and puts out the bias alone.
    AF::AudioParametricEQ2 effect(nullptr);
    expectSameDesign(effect.currentDesign(), eqref::Peaking{});
    effect.setParameter(0, -1.0f);
    effect.setParameter(1, -1.0f);
    effect.setParameter(2, 0.0f);
    Channels buffer = taggedSignal(2, 16);
    std::vector<float*> pointers{buffer[0].data(), buffer[1].data()};
    effect.processReplacing(pointers.data(), pointers.data(), 16);
    expectSameDesign(effect.currentDesign(), eqref::Peaking{});
    for (const auto& channel : buffer)
        for (float y : channel) EXPECT_EQ(bits(y), bits(1e-25f));
}

TEST(ParametricEq, FirstBufferUsesTheConstructionValues) {
    // Centre 1.0 (just under Nyquist), width 5.075, 0 dB unless a parameter was set.
    auto rig = makeRig<AF::AudioParametricEQ1>();
    rig->setSampleRate(48000.0f);
    EXPECT_EQ(rig->getParameter(0), 1.0f);
    EXPECT_EQ(rig->getParameter(1), 0.5f);
    EXPECT_EQ(rig->getParameter(2), 0.5f);
    const float centerHz = rig->properties().ConvertParameterValueToDisplay(0, rig->getParameter(0));
    EXPECT_NEAR(centerHz, 48000.0 * 0.4952083, 0.01);
    EXPECT_LT(centerHz, 24000.0f);
    EXPECT_EQ(rig->display(0), "23770.00");
    EXPECT_EQ(rig->display(1), "5.074999");
    EXPECT_EQ(rig->display(2), "0.000000");

    Channels buffer = taggedSignal(1, 8);
    rig->call(false, buffer, buffer, 0, 8);
    auto& effect = dynamic_cast<AF::AudioParametricEQ&>(rig->effect());
    expectSameDesign(effect.currentDesign(), eqref::peakingCoefficients(1.0f, 0.5f, 0.5f));

    // With only the boost moved, the centre is still the constructor's 1.0.
    auto moved = makeRig<AF::AudioParametricEQ1>();
    moved->setParameter(2, 0.75f);
    moved->call(false, buffer, buffer, 0, 8);
    auto& movedEffect = dynamic_cast<AF::AudioParametricEQ&>(moved->effect());
    expectSameDesign(movedEffect.currentDesign(), eqref::peakingCoefficients(1.0f, 0.5f, 0.75f));
    EXPECT_NE(bits(movedEffect.currentDesign().c1), bits(eqref::peakingCoefficients(0.25f, 0.5f, 0.75f).c1));
}

TEST(ParametricEq, ZeroDecibelsPassesTheSignal) {
    // A = 1: c2 = -c3 exactly and c0 = 1 to within one rounding.
    for (float center : {0.1f, 0.25f, 0.6f, 1.0f})
        for (float q : {0.0f, 0.5f, 1.0f}) {
            const AF::PeakingDesign d = AF::designPeaking(center, q, 0.5f);
            EXPECT_EQ(bits(d.c2), bits(-d.c3));
            EXPECT_NEAR(d.c0, 1.0f, std::numeric_limits<float>::epsilon());
        }
    auto rig = makeRig<AF::AudioParametricEQ1>();
    Channels silent(1, std::vector<float>(1, 0.0f));
    rig->call(false, silent, silent, 0, 1);
    EXPECT_EQ(bits(silent[0][0]), bits(1e-25f)) << "silence in gives the bias alone";

    const Channels input = taggedSignal(1, 2000);
    Channels buffer = input;
    rig->call(false, buffer, buffer, 0, 2000);
    double worst = 0.0;
    for (std::size_t i = 0; i < input[0].size(); ++i) worst = std::max(worst, std::abs(double(buffer[0][i]) - input[0][i]));
    EXPECT_LT(worst, 1e-5) << "unchanged apart from rounding and the bias";
}

TEST(ParametricEq, WidthHasTwoMappings) {
    auto rig = makeRig<AF::AudioParametricEQ1>();
    rig->setParameter(1, 0.5f);
    // The host-facing conversion is linear: 19.9 * 0.5 + 0.1.
    EXPECT_EQ(bits(rig->properties().ConvertParameterValueToDisplay(1, 0.5f)), bits(10.05f));
    // The text and the filter square the value: 19.9 * 0.25 + 0.1 = 5.075, whose
    // float is 5.07499980926513671875; eight characters: "5." and six digits of
    // 74999.809... written right to left by truncation.
    EXPECT_EQ(rig->display(1), "5.074999");
    rig->setParameter(1, 1.0f);
    EXPECT_EQ(rig->display(1), "20.00000");
    EXPECT_EQ(bits(rig->properties().ConvertParameterValueToDisplay(1, 1.0f)), bits(20.0f));
}

TEST(ParametricEq, CentreDisplay) {
    auto rig = makeRig<AF::AudioParametricEQ1>();
    rig->setProgram(0);
    rig->setSampleRate(48000.0f);
    // 24000 * 0.062291666 = 1494.999984, whose float is 1495.
    EXPECT_EQ(rig->display(0), "1495.000");
    rig->setSampleRate(44100.0f);
    // 22050 * 0.062291666 = 1373.5312..., whose float is 1373.53125.
    EXPECT_EQ(rig->display(0), "1373.531");
    rig->setParameter(2, 1.0f);
    EXPECT_EQ(rig->display(2), "24.00000");
    rig->setParameter(2, 0.0f);
    EXPECT_EQ(rig->display(2), "-24.0000");
    char text[16] = "kept";
    rig->effect().getParameterDisplay(3, text);
    EXPECT_STREQ(text, "kept");
}

TEST(ParametricEq, CentreConversionClampsTheOthersDoNot) {
    auto rig = makeRig<AF::AudioParametricEQ1>();
    auto& p = rig->properties();
    for (float fs : {48000.0f, 44100.0f}) {
        rig->setSampleRate(fs);
        EXPECT_EQ(p.ConvertDisplayValueToParameter(0, fs * 0.4952084f), 1.0f);
        EXPECT_EQ(p.ConvertDisplayValueToParameter(0, fs * 0.5f), 1.0f);
        EXPECT_EQ(p.ConvertDisplayValueToParameter(0, 1e9f), 1.0f);
        EXPECT_EQ(p.ConvertDisplayValueToParameter(0, fs * 0.000208332f), 0.0f);
        EXPECT_EQ(p.ConvertDisplayValueToParameter(0, 0.0f), 0.0f);
        EXPECT_EQ(p.ConvertDisplayValueToParameter(0, -500.0f), 0.0f);
        // The round trip lands on the stored value to float precision.
        EXPECT_NEAR(p.ConvertDisplayValueToParameter(0, p.ConvertParameterValueToDisplay(0, 0.25f)), 0.25f, 1e-6f);
    }
    EXPECT_TRUE(std::isnan(p.ConvertDisplayValueToParameter(0, std::numeric_limits<float>::quiet_NaN())));
    // Width and boost: not clamped.
    EXPECT_EQ(bits(p.ConvertDisplayValueToParameter(1, 30.0f)), bits(eqref::single((30.0 - 0.1) / 19.9)));
    EXPECT_GT(p.ConvertDisplayValueToParameter(1, 30.0f), 1.0f);
    EXPECT_EQ(bits(p.ConvertDisplayValueToParameter(1, 0.0f)), bits(eqref::single(-0.1 / 19.9)));
    EXPECT_EQ(p.ConvertDisplayValueToParameter(2, 30.0f), 1.125f);
    EXPECT_EQ(p.ConvertDisplayValueToParameter(2, -48.0f), -0.5f);
    EXPECT_EQ(p.ConvertDisplayValueToParameter(2, 0.0f), 0.5f);
    EXPECT_EQ(p.ConvertParameterValueToDisplay(2, 1.5f), 48.0f);
    EXPECT_EQ(p.ConvertDisplayValueToParameter(3, 1.0f), 0.0f);
    EXPECT_EQ(p.ConvertParameterValueToDisplay(3, 1.0f), 0.0f);
}

TEST(ParametricEq, PropertyAnswers) {
    auto rig = makeRig<AF::AudioParametricEQ1>();
    auto& p = rig->properties();
    rig->setSampleRate(48000.0f);
    EXPECT_EQ(p.GetParameterType(0), 2);
    EXPECT_EQ(p.GetParameterType(1), 4);
    EXPECT_EQ(p.GetParameterType(2), 4);
    EXPECT_EQ(p.GetParameterType(3), -1);
    // The double constant 0.9904166 gives 23769.9984, whose float is 23769.998046875.
    EXPECT_EQ(bits(p.GetParameterMax(0)), bits(23769.998046875f));
    EXPECT_EQ(bits(p.GetParameterMin(0)), bits(9.999984f));
    EXPECT_EQ(p.GetParameterMax(1), 20.0f);
    EXPECT_EQ(bits(p.GetParameterMin(1)), bits(0.1f));
    EXPECT_EQ(p.GetParameterMax(2), 24.0f);
    EXPECT_EQ(p.GetParameterMin(2), -24.0f);
    EXPECT_EQ(p.GetParameterStep(0), 100.0f);
    EXPECT_EQ(bits(p.GetParameterStep(1)), bits(0.1f));
    EXPECT_EQ(bits(p.GetParameterStep(2)), bits(0.1f));
    EXPECT_EQ(p.GetParameterMax(3), 0.0f);
    EXPECT_EQ(p.GetParameterMin(3), 0.0f);
    EXPECT_EQ(p.GetParameterStep(3), 0.0f);
    for (unsigned i = 0; i < 3; ++i) EXPECT_TRUE(p.SupportsDisplayValueToParameter(i));
    EXPECT_FALSE(p.SupportsDisplayValueToParameter(3));
    EXPECT_TRUE(p.HasHistory());
    // The range follows the sample rate.
    rig->setSampleRate(96000.0f);
    EXPECT_EQ(bits(p.GetParameterMax(0)), bits(eqref::single(96000.0 * 0.5 * 0.9904166)));
}

TEST(ParametricEq, NamesLabelsAndProgram) {
    auto rig = makeRig<AF::AudioParametricEQ6>();
    EXPECT_EQ(rig->name(0), "Center");
    EXPECT_EQ(rig->name(1), "Q");
    EXPECT_EQ(rig->name(2), "Boost");
    EXPECT_EQ(rig->name(3), "untouched");
    EXPECT_EQ(rig->label(0), "Hz");
    EXPECT_EQ(rig->label(1), "");
    EXPECT_EQ(rig->label(2), "dB");
    EXPECT_EQ(rig->label(3), "untouched");
    EXPECT_EQ(rig->text(5, 0), "Default");
}

TEST(ParametricEq, ProgramResetsParametersAndTellsTheHost) {
    HostLog log;
    gHostLog = &log;
    {
        auto rig = makeRig<AF::AudioParametricEQ2>(&recordingHost);
        rig->setParameter(0, 0.9f);
        rig->setParameter(1, 0.1f);
        rig->setParameter(2, 0.2f);
        rig->setProgram(0);
        EXPECT_EQ(rig->getParameter(0), 0.25f);
        EXPECT_EQ(rig->getParameter(1), 0.5f);
        EXPECT_EQ(rig->getParameter(2), 0.5f);
        ASSERT_EQ(log.automated.size(), 3u);
        EXPECT_EQ(log.automated[0], (std::pair<int, float>{0, 0.25f}));
        EXPECT_EQ(log.automated[1], (std::pair<int, float>{1, 0.5f}));
        EXPECT_EQ(log.automated[2], (std::pair<int, float>{2, 0.5f}));
        rig->effect().setProgram(5);
        EXPECT_EQ(rig->effect().getProgram(), 5);
    }
    gHostLog = nullptr;
}

TEST(ParametricEq, ParametersAreStoredAsSent) {
    auto rig = makeRig<AF::AudioParametricEQ1>();
    rig->setParameter(0, 1.7f);
    rig->setParameter(1, -3.0f);
    rig->setParameter(2, 12.5f);
    rig->setParameter(3, 0.4f);
    rig->setParameter(-1, 0.4f);
    EXPECT_EQ(rig->getParameter(0), 1.7f);
    EXPECT_EQ(rig->getParameter(1), -3.0f);
    EXPECT_EQ(rig->getParameter(2), 12.5f);
    EXPECT_EQ(rig->getParameter(3), 0.0f);
    EXPECT_EQ(rig->getParameter(-1), 0.0f);
}

TEST(ParametricEq, SameSampleRateKeepsHistoryNewRateClearsIt) {
    for (bool newRate : {false, true}) {
        auto rig = makeRig<AF::AudioParametricEQ2>();
        eqref::Model model = eqref::Model::make(eqref::Family::parametricEq, 2);
        rig->setSampleRate(48000.0f);
        model.setSampleRate(48000.0f);
        rig->setParameter(2, 0.9f);
        model.setParameter(2, 0.9f);
        const Channels input = taggedSignal(2, 200);
        Channels actual = input, expected = input;
        rig->call(false, actual, actual, 0, 100);
        model.run(input, expected, 0, 100, false);
        const float rate = newRate ? 44100.0f : 48000.0f;
        rig->setSampleRate(rate);
        model.setSampleRate(rate);
        Channels silence(2, std::vector<float>(200, 0.0f));
        Channels actualTail = silence, expectedTail = silence;
        rig->call(false, actualTail, actualTail, 100, 100);
        model.run(silence, expectedTail, 100, 100, false);
        EXPECT_TRUE(sameChannels(actualTail, expectedTail));
        // A cleared history gives exactly the bias first; a kept one rings on.
        if (newRate) {
            EXPECT_EQ(bits(actualTail[0][100]), bits(1e-25f));
        } else {
            EXPECT_GT(std::abs(actualTail[0][100]), 1e-6f);
        }
    }
}

TEST(ParametricEq, ProcessAddsTheRingingToWhatTheOutputHeld) {
    auto rig = makeRig<AF::AudioParametricEQ1>();
    eqref::Model model = eqref::Model::make(eqref::Family::parametricEq, 1);
    for (int i : {0, 2}) {
        rig->setParameter(i, 0.8f);
        model.setParameter(i, 0.8f);
    }
    const Channels input = taggedSignal(1, 64);
    Channels scratch = input, scratchExpected = input;
    rig->call(false, scratch, scratch, 0, 64);
    model.run(input, scratchExpected, 0, 64, false);

    Channels silence(1, std::vector<float>(64, 0.0f));
    const Channels held = taggedSignal(1, 64, 4242u);
    Channels actual = held;
    rig->call(true, silence, actual, 0, 64);
    Channels ringing = silence;
    model.run(silence, ringing, 0, 64, false);
    for (int i = 0; i < 64; ++i) {
        const float expected = eqref::single(double(held[0][i]) + ringing[0][i]);
        EXPECT_EQ(bits(actual[0][i]), bits(expected)) << i;
    }
    EXPECT_GT(std::abs(ringing[0][0]), 1e-4f) << "the filter still rings after the signal";
}

TEST(ParametricEq, SuspendClearsHistoryAndResetsTheSnapshot) {
    auto rig = makeRig<AF::AudioParametricEQ1>();
    auto& effect = dynamic_cast<AF::AudioParametricEQ&>(rig->effect());
    rig->setParameter(2, 0.9f);
    Channels buffer = taggedSignal(1, 32);
    rig->call(false, buffer, buffer, 0, 32);
    // A stale marker stored by hand: the suspend must force the computation anyway.
    rig->setParameter(0, -1.0f);
    rig->setParameter(1, -1.0f);
    rig->setParameter(2, 0.0f);
    rig->suspend();
    Channels silence(1, std::vector<float>(1, 0.0f));
    rig->call(false, silence, silence, 0, 1);
    EXPECT_EQ(bits(silence[0][0]), bits(1e-25f));
    // -1, -1, 0 equals the reset snapshot, so nothing was recomputed.
    expectSameDesign(effect.currentDesign(), eqref::peakingCoefficients(1.0f, 0.5f, 0.9f));
    rig->setParameter(2, 0.1f);
    rig->call(false, silence, silence, 0, 1);
    expectSameDesign(effect.currentDesign(), eqref::peakingCoefficients(-1.0f, -1.0f, 0.1f));
}

// ---- Response ---------------------------------------------------------------

// The analytic response of the section as it stands: the width multiplies the
// sine (alpha = sin w0 * 2 * Q) rather than dividing it.
double bellGainDb(float center, float q, float boost, double w, bool widthDivides = false) {
    const double w0 = (0.99 * double(center) * center + 0.000416666) * double(MF::kPi);
    const double width = 19.9 * double(q) * q + 0.1;
    const double alpha = widthDivides ? std::sin(w0) / (2.0 * width) : std::sin(w0) * 2.0 * width;
    const double A = std::pow(10.0, (double(boost) - 0.5) * 48.0 / 40.0);
    const double b[3] = {1 + alpha * A, -2 * std::cos(w0), 1 - alpha * A};
    const double a[3] = {1 + alpha / A, -2 * std::cos(w0), 1 - alpha / A};
    return toDb(sectionGain(b, a, w));
}

double centreAngle(float center) { return (0.99 * double(center) * center + 0.000416666) * double(MF::kPi); }

TEST(ParametricEqResponse, BoostsAndCutsByTheStatedAmountAtTheCentre) {
    for (float boost : {0.75f, 0.25f, 1.0f, 0.0f}) {
        const double statedDb = (double(boost) - 0.5) * 48.0;
        for (float center : {0.2f, 0.4f}) {
            auto rig = makeRig<AF::AudioParametricEQ1>();
            rig->setSampleRate(48000.0f);
            rig->setParameter(0, center);
            rig->setParameter(1, 0.3f);
            rig->setParameter(2, boost);
            const double w0 = centreAngle(center);
            EXPECT_NEAR(bellGainDb(center, 0.3f, boost, w0), statedDb, 1e-9);
            EXPECT_NEAR(toDb(measuredGain(*rig, w0)), statedDb, kResponseToleranceDb)
                << "boost " << boost << " centre " << center;
        }
    }
}

TEST(ParametricEqResponse, WidthActsAsAMultiplier) {
    // Away from the centre the measured bell follows the multiplied width and
    // not the usual divided one, which would be far narrower.
    const float center = 0.2f, boost = 0.75f;
    const double w0 = centreAngle(center);
    for (float q : {0.0f, 0.3f, 0.5f}) {
        for (double ratio : {0.5, 0.8, 1.5, 2.5}) {
            auto rig = makeRig<AF::AudioParametricEQ1>();
            rig->setParameter(0, center);
            rig->setParameter(1, q);
            rig->setParameter(2, boost);
            const double w = w0 * ratio;
            const double measuredDb = toDb(measuredGain(*rig, w));
            EXPECT_NEAR(measuredDb, bellGainDb(center, q, boost, w), kResponseToleranceDb)
                << "q " << q << " ratio " << ratio;
            EXPECT_GT(std::abs(measuredDb - bellGainDb(center, q, boost, w, true)), 0.5)
                << "q " << q << " ratio " << ratio;
        }
    }
    // A larger width value gives a wider bell: more boost an octave away.
    EXPECT_GT(bellGainDb(center, 0.8f, boost, w0 * 2), bellGainDb(center, 0.1f, boost, w0 * 2) + 1.0);
    auto wide = makeRig<AF::AudioParametricEQ1>();
    auto narrow = makeRig<AF::AudioParametricEQ1>();
    for (auto* rig : {wide.get(), narrow.get()}) {
        rig->setParameter(0, center);
        rig->setParameter(2, boost);
    }
    wide->setParameter(1, 0.8f);
    narrow->setParameter(1, 0.1f);
    EXPECT_GT(measuredGain(*wide, w0 * 2), measuredGain(*narrow, w0 * 2));
}

TEST(ParametricEqResponse, UnityAtZeroDecibels) {
    for (double w : {0.01, 0.3, 1.0, 2.5}) {
        auto rig = makeRig<AF::AudioParametricEQ1>();
        rig->setParameter(0, 0.4f);
        rig->setParameter(2, 0.5f);
        EXPECT_NEAR(toDb(measuredGain(*rig, w)), 0.0, kResponseToleranceDb);
    }
}

}  // namespace
