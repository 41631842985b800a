// Bass and Treble: coefficients against the two shelf tables transcribed
// separately, the angle and slope figures, texts, property answers, life
// cycle and the shelves' response.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <numbers>

#include "EqResponse.h"
#include "effects/variants/NamedVariants.h"
#include "support/Bits.h"

namespace {

using namespace eqtest;

// Exact floats are compared as bit patterns: the module promises bit-identical
// arithmetic, and a tolerance would hide a misplaced rounding.
using aftest::bits;

void expectSameDesign(const AF::ShelfDesign& actual, const eqref::Shelf& expected) {
    EXPECT_TRUE(sameSample(actual.c0, expected.c0)) << actual.c0 << " vs " << expected.c0;
    EXPECT_TRUE(sameSample(actual.c1, expected.c1)) << actual.c1 << " vs " << expected.c1;
    EXPECT_TRUE(sameSample(actual.c2, expected.c2)) << actual.c2 << " vs " << expected.c2;
    EXPECT_TRUE(sameSample(actual.c3, expected.c3)) << actual.c3 << " vs " << expected.c3;
    EXPECT_TRUE(sameSample(actual.c4, expected.c4)) << actual.c4 << " vs " << expected.c4;
}

// The shapes as the families use them, read back from a constructed effect's
// coefficients so the test never names the module's private constants.
template <class Effect>
AF::ShelfDesign designOf(float sampleRate, float boost) {
    Effect effect(nullptr);
    effect.setSampleRate(sampleRate);
    effect.setParameter(0, boost);
    float sample = 0.0f;
    float* pointers[1] = {&sample};
    effect.processReplacing(pointers, pointers, 1);
    return effect.currentDesign();
}

TEST(Shelf, CoefficientsMatchTheTwoTables) {
    const float rates[] = {8000.0f, 22050.0f, 44100.0f, 48000.0f, 96000.0f, 192000.0f};
    const float boosts[] = {0.0f, 0.1f, 0.25f, 0.5f, 0.6f, 0.75f, 1.0f, 1.5f, -0.25f};
    for (float fs : rates)
        for (float boost : boosts) {
            SCOPED_TRACE(::testing::Message() << fs << " Hz, boost " << boost);
            expectSameDesign(designOf<AF::AudioBass1>(fs, boost), eqref::bassCoefficients(fs, boost));
            expectSameDesign(designOf<AF::AudioTreble1>(fs, boost), eqref::trebleCoefficients(fs, boost));
        }
}

TEST(Shelf, CoefficientsStartAtZero) {
    // A host that stores the stale marker first gets no computation: zero
    // coefficients, and the bias alone comes out.
    AF::AudioTreble2 effect(nullptr);
    expectSameDesign(effect.currentDesign(), eqref::Shelf{});
    effect.setParameter(0, -1.0f);
    Channels buffer = taggedSignal(2, 16);
    float* pointers[2] = {buffer[0].data(), buffer[1].data()};
    effect.processReplacing(pointers, pointers, 16);
    expectSameDesign(effect.currentDesign(), eqref::Shelf{});
    for (const auto& channel : buffer)
        for (float y : channel) EXPECT_EQ(bits(y), bits(1e-25f));
}

TEST(Shelf, AngleAndSlopeAt44100) {
    // The figures are given to six significant digits.
    AF::AudioTreble1 treble(nullptr);
    AF::AudioBass1 bass(nullptr);
    const eqref::ShelfAngles trebleAngles = eqref::shelfAngles(8000.0, 5.0, 44100.0f);
    const eqref::ShelfAngles bassAngles = eqref::shelfAngles(400.0, 1.5, 44100.0f);
    EXPECT_NEAR(trebleAngles.w, 0.569903, 5e-7);
    EXPECT_NEAR(trebleAngles.beta, 2.537512, 5e-7);
    EXPECT_NEAR(bassAngles.w, 0.028495, 5e-7);
    EXPECT_NEAR(bassAngles.beta, 0.74659, 5e-6);
    // About 0.7434 and 2.4787 at 48 kHz.
    EXPECT_NEAR(eqref::shelfAngles(400.0, 1.5, 48000.0f).beta, 0.7434, 5e-5);
    EXPECT_NEAR(eqref::shelfAngles(8000.0, 5.0, 48000.0f).beta, 2.4787, 5e-5);
    // The module's own angle steps give the same floats.
    const AF::ShelfShape trebleShape{8000.0, 5.0, AF::ShelfKind::high, {}};
    const AF::ShelfShape bassShape{400.0, 1.5, AF::ShelfKind::low, {}};
    const AF::ShelfAngle t = AF::shelfAngle(trebleShape, 44100.0f);
    const AF::ShelfAngle b = AF::shelfAngle(bassShape, 44100.0f);
    EXPECT_EQ(bits(t.w), bits(trebleAngles.w));
    EXPECT_EQ(bits(t.beta), bits(trebleAngles.beta));
    EXPECT_EQ(bits(t.sinW), bits(trebleAngles.s));
    EXPECT_EQ(bits(t.cosW), bits(trebleAngles.k));
    EXPECT_EQ(bits(b.w), bits(bassAngles.w));
    EXPECT_EQ(bits(b.beta), bits(bassAngles.beta));
    // And the families run on them: the treble coefficients at 44.1 kHz
    // follow from w = 0.569903, not from another corner.
    expectSameDesign(designOf<AF::AudioTreble1>(44100.0f, 0.8f), eqref::trebleCoefficients(44100.0f, 0.8f));
}

TEST(Shelf, ZeroDecibelsPassesTheSignal) {
    for (float fs : {44100.0f, 48000.0f, 96000.0f}) {
        for (const AF::ShelfDesign& d : {designOf<AF::AudioBass1>(fs, 0.5f), designOf<AF::AudioTreble1>(fs, 0.5f)}) {
            EXPECT_NEAR(d.c0, 1.0f, std::numeric_limits<float>::epsilon());
            EXPECT_EQ(bits(d.c1), bits(-d.c3));
            EXPECT_EQ(bits(d.c2), bits(-d.c4));
        }
    }
    auto rig = makeRig<AF::AudioBass1>();
    Channels silent(1, std::vector<float>(1, 0.0f));
    rig->call(false, silent, silent, 0, 1);
    EXPECT_EQ(bits(silent[0][0]), bits(1e-25f)) << "silence in gives the bias alone";
    for (auto* effectRig : {rig.get()}) {
        const Channels input = taggedSignal(1, 2000);
        Channels buffer = input;
        effectRig->call(false, buffer, buffer, 0, 2000);
        double worst = 0.0;
        for (std::size_t i = 0; i < input[0].size(); ++i)
            worst = std::max(worst, std::abs(double(buffer[0][i]) - input[0][i]));
        EXPECT_LT(worst, 1e-5) << "unchanged apart from rounding and the bias";
    }
}

TEST(Shelf, DisplayAndConversions) {
    for (bool treble : {false, true}) {
        auto rig = treble ? makeRig<AF::AudioTreble1>() : makeRig<AF::AudioBass1>();
        auto& p = rig->properties();
        EXPECT_EQ(rig->display(0), "0.000000");
        rig->setParameter(0, 1.0f);
        // 24 takes three of the eight characters with its point; five zeros follow.
        EXPECT_EQ(rig->display(0), "24.00000");
        rig->setParameter(0, 0.0f);
        // The sign counts: "-24." and four zeros.
        EXPECT_EQ(rig->display(0), "-24.0000");
        EXPECT_EQ(rig->display(1), "untouched");
        EXPECT_EQ(p.ConvertDisplayValueToParameter(0, 30.0f), 1.125f);
        EXPECT_EQ(p.ConvertDisplayValueToParameter(0, -30.0f), -0.125f);
        EXPECT_EQ(p.ConvertDisplayValueToParameter(0, 12.0f), 0.75f);
        EXPECT_EQ(p.ConvertParameterValueToDisplay(0, 1.5f), 48.0f);
        EXPECT_EQ(p.ConvertParameterValueToDisplay(0, 0.75f), 12.0f);
        EXPECT_EQ(p.ConvertDisplayValueToParameter(1, 12.0f), 0.0f);
        EXPECT_EQ(p.ConvertParameterValueToDisplay(1, 0.75f), 0.0f);
        EXPECT_EQ(p.GetParameterType(0), 4);
        EXPECT_EQ(p.GetParameterType(1), -1);
        EXPECT_EQ(p.GetParameterMin(0), -24.0f);
        EXPECT_EQ(p.GetParameterMax(0), 24.0f);
        EXPECT_EQ(bits(p.GetParameterStep(0)), bits(0.1f));
        EXPECT_EQ(p.GetParameterMin(1), 0.0f);
        EXPECT_EQ(p.GetParameterMax(1), 0.0f);
        EXPECT_EQ(p.GetParameterStep(1), 0.0f);
        EXPECT_TRUE(p.SupportsDisplayValueToParameter(0));
        EXPECT_FALSE(p.SupportsDisplayValueToParameter(1));
        EXPECT_TRUE(p.HasHistory());
    }
}

TEST(Shelf, NamesLabelsAndProgram) {
    auto bass = makeRig<AF::AudioBass2>();
    auto treble = makeRig<AF::AudioTreble2>();
    EXPECT_EQ(bass->name(0), "Boost");
    EXPECT_EQ(treble->name(0), " Boost ") << "the treble key keeps its blanks";
    EXPECT_EQ(bass->label(0), "dB");
    EXPECT_EQ(treble->label(0), "dB");
    EXPECT_EQ(bass->name(1), "untouched");
    EXPECT_EQ(treble->label(1), "untouched");
    EXPECT_EQ(bass->text(5, 0), "Default");
    EXPECT_EQ(treble->text(5, 0), "Default");
}

TEST(Shelf, ProgramResetsTheBoostAndTellsTheHost) {
    HostLog log;
    gHostLog = &log;
    {
        auto rig = makeRig<AF::AudioTreble6>(&recordingHost);
        rig->setParameter(0, 0.9f);
        rig->setProgram(0);
        EXPECT_EQ(rig->getParameter(0), 0.5f);
        ASSERT_EQ(log.automated.size(), 1u);
        EXPECT_EQ(log.automated[0], (std::pair<int, float>{0, 0.5f}));
    }
    gHostLog = nullptr;
    auto rig = makeRig<AF::AudioBass1>();
    rig->setParameter(0, 2.5f);
    rig->setParameter(1, 0.1f);
    EXPECT_EQ(rig->getParameter(0), 2.5f) << "stored as sent, no clamping";
    EXPECT_EQ(rig->getParameter(1), 0.0f);
}

TEST(Shelf, SampleRateChangeRecomputesFromTheNewRate) {
    auto rig = makeRig<AF::AudioBass2>();
    auto& effect = dynamic_cast<AF::AudioBass&>(rig->effect());
    rig->setSampleRate(48000.0f);
    rig->setParameter(0, 0.8f);
    Channels buffer = taggedSignal(2, 50);
    rig->call(false, buffer, buffer, 0, 50);
    expectSameDesign(effect.currentDesign(), eqref::bassCoefficients(48000.0f, 0.8f));
    rig->setSampleRate(48000.0f);
    Channels silence(2, std::vector<float>(4, 0.0f));
    rig->call(false, silence, silence, 0, 4);
    EXPECT_GT(std::abs(silence[0][0]), 1e-4f) << "the same rate keeps the history";
    rig->setSampleRate(96000.0f);
    silence.assign(2, std::vector<float>(4, 0.0f));
    rig->call(false, silence, silence, 0, 4);
    EXPECT_EQ(bits(silence[0][0]), bits(1e-25f)) << "a new rate clears it";
    expectSameDesign(effect.currentDesign(), eqref::bassCoefficients(96000.0f, 0.8f));
}

TEST(Shelf, LfeChannelIsFilteredLikeTheOthers) {
    for (bool treble : {false, true}) {
        auto rig = treble ? makeRig<AF::AudioTreble6>() : makeRig<AF::AudioBass6>();
        rig->setParameter(0, 0.9f);
        const Channels one = taggedSignal(1, 256);
        Channels buffer(6, one[0]);
        rig->call(false, buffer, buffer, 0, 256);
        for (unsigned c = 1; c < 6; ++c) EXPECT_TRUE(sameChannels({buffer[c]}, {buffer[0]})) << "channel " << c;
        double change = 0.0;
        for (int i = 0; i < 256; ++i) change = std::max(change, std::abs(double(buffer[3][i]) - one[0][i]));
        EXPECT_GT(change, 0.01) << "the LFE channel is changed, not passed through";
    }
}

// ---- Response ---------------------------------------------------------------

TEST(ShelfResponse, BassReachesTheBoostAtLowFrequencies) {
    for (float boost : {0.75f, 0.25f, 1.0f}) {
        const double statedDb = (double(boost) - 0.5) * 48.0;
        auto rig = makeRig<AF::AudioBass1>();
        rig->setSampleRate(48000.0f);
        rig->setParameter(0, boost);
        // A constant input settles at the DC gain.
        Channels dc(1, std::vector<float>(48000, 0.25f));
        rig->call(false, dc, dc, 0, 48000);
        EXPECT_NEAR(toDb(dc[0].back() / 0.25), statedDb, kResponseToleranceDb);
        // Far above the corner the shelf leaves the signal alone.
        auto high = makeRig<AF::AudioBass1>();
        high->setSampleRate(48000.0f);
        high->setParameter(0, boost);
        EXPECT_NEAR(toDb(measuredGain(*high, 2.0 * std::numbers::pi * 12000.0 / 48000.0)), 0.0, 0.2);
    }
}

TEST(ShelfResponse, TrebleReachesTheBoostAtHighFrequencies) {
    for (float boost : {0.75f, 0.25f, 1.0f}) {
        const double statedDb = (double(boost) - 0.5) * 48.0;
        auto rig = makeRig<AF::AudioTreble1>();
        rig->setSampleRate(48000.0f);
        rig->setParameter(0, boost);
        // An alternating input at Nyquist settles at the Nyquist gain.
        Channels nyquist(1, std::vector<float>(48000));
        for (int i = 0; i < 48000; ++i) nyquist[0][i] = i % 2 ? -0.25f : 0.25f;
        rig->call(false, nyquist, nyquist, 0, 48000);
        EXPECT_NEAR(toDb(std::abs(nyquist[0].back()) / 0.25), statedDb, kResponseToleranceDb);
        // Far below the corner: unchanged.
        auto low = makeRig<AF::AudioTreble1>();
        low->setSampleRate(48000.0f);
        low->setParameter(0, boost);
        Channels dc(1, std::vector<float>(48000, 0.25f));
        low->call(false, dc, dc, 0, 48000);
        EXPECT_NEAR(toDb(dc[0].back() / 0.25), 0.0, kResponseToleranceDb);
    }
}

// The analytic response of a shelf section from its coefficient table.
double shelfGainDb(const eqref::Shelf& c, double w) {
    const double b[3] = {c.c0, c.c1, c.c2};
    const double a[3] = {1.0, -double(c.c3), -double(c.c4)};
    return toDb(sectionGain(b, a, w));
}

TEST(ShelfResponse, FollowsTheSectionAcrossTheBand) {
    for (double hz : {50.0, 200.0, 1000.0, 4000.0, 10000.0}) {
        const double w = 2.0 * std::numbers::pi * hz / 48000.0;
        auto bass = makeRig<AF::AudioBass1>();
        auto treble = makeRig<AF::AudioTreble1>();
        for (auto* rig : {bass.get(), treble.get()}) {
            rig->setSampleRate(48000.0f);
            rig->setParameter(0, 0.8f);
        }
        EXPECT_NEAR(toDb(measuredGain(*bass, w, 96000)), shelfGainDb(eqref::bassCoefficients(48000.0f, 0.8f), w),
                    kResponseToleranceDb)
            << hz << " Hz";
        EXPECT_NEAR(toDb(measuredGain(*treble, w, 96000)),
                    shelfGainDb(eqref::trebleCoefficients(48000.0f, 0.8f), w), kResponseToleranceDb)
            << hz << " Hz";
    }
}

TEST(ShelfResponse, UnityAtZeroDecibels) {
    for (double w : {0.005, 0.3, 1.5, 3.0}) {
        auto bass = makeRig<AF::AudioBass1>();
        auto treble = makeRig<AF::AudioTreble1>();
        EXPECT_NEAR(toDb(measuredGain(*bass, w)), 0.0, kResponseToleranceDb);
        EXPECT_NEAR(toDb(measuredGain(*treble, w)), 0.0, kResponseToleranceDb);
    }
}

}  // namespace
