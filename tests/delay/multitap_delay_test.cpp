// The four-tap Multitap Delay: its record, thirteen parameters and property
// answers, and the behaviour at the edges (taps sharing a time, taps at 0 and
// at the full line, the two line lengths, the 16-channel position restore).
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "Opcodes.h"
#include "effects/variants/NamedVariants.h"
#include "module/VariantTable.h"
#include "tests/delay/DelayTestSupport.h"

namespace {

using namespace delay_test;
using delay_reference::noiseForFrame;
using delay_reference::single;

constexpr double kNoiseFloor = 1e-20;  // far below audibility, far above subnormals

struct Tap {
    float seconds;
    float feedback;
    float level;
};

// Sets the four taps (delay as seconds, through the normalised value) and the mix.
void setTaps(AudioEffect& effect, const std::vector<Tap>& taps, float mix) {
    for (int k = 0; k < 4; ++k) {
        const Tap tap = k < static_cast<int>(taps.size()) ? taps[static_cast<std::size_t>(k)] : Tap{0.1f, 0.0f, 0.0f};
        effect.setParameter(3 * k, tap.seconds * 0.5f);
        effect.setParameter(3 * k + 1, tap.feedback);
        effect.setParameter(3 * k + 2, tap.level);
    }
    effect.setParameter(12, mix);
}

std::vector<std::vector<float>> render(AudioEffect& effect, int channels, int frames,
                                       const std::vector<std::pair<int, float>>& impulses, int block = 1024) {
    std::vector<std::vector<float>> out(static_cast<std::size_t>(channels), std::vector<float>(static_cast<std::size_t>(frames), 0.0f));
    for (const auto& [frame, amplitude] : impulses)
        for (int c = 0; c < channels; ++c) out[static_cast<std::size_t>(c)][static_cast<std::size_t>(frame)] = amplitude / static_cast<float>(c + 1);
    std::vector<float*> pointers(static_cast<std::size_t>(channels));
    for (int start = 0; start < frames; start += block) {
        const int n = std::min(block, frames - start);
        for (int c = 0; c < channels; ++c) pointers[static_cast<std::size_t>(c)] = out[static_cast<std::size_t>(c)].data() + start;
        effect.processReplacing(pointers.data(), pointers.data(), n);
    }
    return out;
}

float sampleAt(const std::vector<std::vector<float>>& out, int channel, int frame) {
    return out[static_cast<std::size_t>(channel)][static_cast<std::size_t>(frame)];
}

float tagged(int channel, float amplitude) { return amplitude / static_cast<float>(channel + 1); }

template <class V>
class MultitapVariant : public ::testing::Test {};
using MultitapVariants = ::testing::Types<Multitap1, Multitap2, Multitap6, Multitap16>;
TYPED_TEST_SUITE(MultitapVariant, MultitapVariants);

TYPED_TEST(MultitapVariant, RecordCarriesChannelsAndTheDelaysIds) {
    typename TypeParam::Effect effect(nullptr);
    const AEffect* record = effect.getAeffect();
    EXPECT_EQ(record->numInputs, TypeParam::channels);
    EXPECT_EQ(record->numOutputs, TypeParam::channels);
    EXPECT_EQ(record->numParams, 13);
    EXPECT_EQ(record->numPrograms, 1);
    EXPECT_NE(record->flags & effFlagsCanReplacing, 0);
    const VstInt32 ids[] = {0x41446C31, 0x41446C32, 0x41446C36, 0x41443136};  // the single-tap delay's ids
    const int which = TypeParam::channels == 1 ? 0 : TypeParam::channels == 2 ? 1 : TypeParam::channels == 6 ? 2 : 3;
    EXPECT_EQ(record->uniqueID, ids[which]);
    AudioEffect* made = AF::createVariant(AF::Family::multitapDelay, TypeParam::channels, nullptr);
    ASSERT_NE(made, nullptr);
    EXPECT_NE(dynamic_cast<typename TypeParam::Effect*>(made), nullptr);
    delete made;
}

// Two taps at the same time read the same sample: levels and feedbacks add.
TYPED_TEST(MultitapVariant, TapsSharingATimeAddTheirLevelsAndFeedbacks) {
    typename TypeParam::Effect effect(nullptr);
    setTaps(effect, {{0.3f, 0.25f, 0.25f}, {0.3f, 0.25f, 0.5f}}, 1.0f);
    effect.setSampleRate(100.0f);  // 30 frames
    const auto out = render(effect, TypeParam::channels, 100, {{0, 1.0f}});
    for (int c = 0; c < TypeParam::channels; ++c) {
        const double a = tagged(c, 1.0f);
        EXPECT_EQ(sampleAt(out, c, 30), single(a * 0.25 + a * 0.5));
        const double fedBack = single(a * 0.25 + 0.0 + a * 0.25);  // both feedbacks, once round the line
        EXPECT_EQ(sampleAt(out, c, 60), single(fedBack * 0.25 + fedBack * 0.5));
    }
    EXPECT_LT(largestMagnitude(out, 0, 30), kNoiseFloor);
}

// A tap moved to delay 0 by a parameter change reads the sample just written,
// and its feedback term reads the oldest sample of the line (L frames old).
// The 16-channel variant keeps the tap where the last reset put it.
TYPED_TEST(MultitapVariant, TapAtZeroAfterAChangeHearsTheSampleJustWritten) {
    typename TypeParam::Effect effect(nullptr);
    effect.setSampleRate(100.0f);  // L = 200; taps reset from the defaults (tap 1 at 50 frames)
    setTaps(effect, {{0.0f, 0.5f, 1.0f}}, 1.0f);
    const int frames = 420;
    const auto out = render(effect, TypeParam::channels, frames, {{0, 1.0f}}, frames);
    if constexpr (TypeParam::channels == 16) {
        for (int c = 0; c < 16; ++c) EXPECT_EQ(sampleAt(out, c, 50), tagged(c, 1.0f));
        EXPECT_LT(std::fabs(sampleAt(out, 0, 0)), kNoiseFloor);
    } else {
        for (int c = 0; c < TypeParam::channels; ++c) {
            const double a = tagged(c, 1.0f);
            EXPECT_EQ(sampleAt(out, c, 0), single(a + noiseForFrame(frames, 0)));
            EXPECT_EQ(sampleAt(out, c, 200), single(a * 0.5 + noiseForFrame(frames, 200)));
            EXPECT_EQ(sampleAt(out, c, 400), single(static_cast<double>(sampleAt(out, c, 200)) * 0.5 + noiseForFrame(frames, 400)));
        }
        EXPECT_EQ(sampleAt(out, 0, 1), noiseForFrame(frames, 1));
        EXPECT_LT(largestMagnitude(out, 1, 200), kNoiseFloor);
    }
}

// After a reset a tap at delay 0 sits at L, one past the end: its first read
// is the spare frame (silent), then it wraps to 0 one frame behind the write,
// so it repeats every frame at the feedback's rate.
TYPED_TEST(MultitapVariant, TapAtZeroAfterAResetStartsOnePastTheEnd) {
    typename TypeParam::Effect effect(nullptr);
    setTaps(effect, {{0.0f, 0.5f, 1.0f}}, 1.0f);
    effect.setSampleRate(100.0f);
    render(effect, TypeParam::channels, 8, {});  // applies the settings
    effect.suspend();                              // tap 1 back at L = 200
    const auto out = render(effect, TypeParam::channels, 12, {{0, 1.0f}});
    for (int c = 0; c < TypeParam::channels; ++c) {
        const float a = tagged(c, 1.0f);
        EXPECT_EQ(sampleAt(out, c, 0), 0.0f);
        EXPECT_EQ(sampleAt(out, c, 1), a);
        EXPECT_EQ(sampleAt(out, c, 2), a * 0.5f);
        EXPECT_EQ(sampleAt(out, c, 3), a * 0.25f);
    }
}

// At the setSampleRate length, trunc(2 x rate), a 2 s tap has D = L and
// hears the sample just written: no delay at all.
TYPED_TEST(MultitapVariant, TwoSecondsAtTheRateChangeLengthIsUndelayed) {
    typename TypeParam::Effect effect(nullptr);
    setTaps(effect, {{2.0f, 0.0f, 1.0f}}, 1.0f);
    effect.setSampleRate(100.0f);  // L = 200
    const auto out = render(effect, TypeParam::channels, 300, {{0, 1.0f}});
    for (int c = 0; c < TypeParam::channels; ++c) EXPECT_EQ(sampleAt(out, c, 0), tagged(c, 1.0f));
    EXPECT_LT(largestMagnitude(out, 1, 300), kNoiseFloor);
}

// The rate already held leaves the constructor's line, 2 x rate + 1 frames,
// where the same 2 s tap is a full-length echo.
TYPED_TEST(MultitapVariant, TheRateAlreadyHeldKeepsTheConstructorsLength) {
    typename TypeParam::Effect effect(nullptr);
    setTaps(effect, {{2.0f, 0.0f, 1.0f}}, 1.0f);
    effect.setSampleRate(44100.0f);  // nothing happens: L stays 88201
    effect.suspend();                // taps from the new times
    const auto out = render(effect, TypeParam::channels, 88210, {{0, 1.0f}});
    for (int c = 0; c < TypeParam::channels; ++c) EXPECT_EQ(sampleAt(out, c, 88200), tagged(c, 1.0f));
    EXPECT_LT(largestMagnitude(out, 0, 88200), kNoiseFloor);
}

struct EchoCase {
    float rate;
    float seconds;
    int expectedFrame;  // trunc(rate x seconds)
};

TYPED_TEST(MultitapVariant, EchoArrivesAtTheTapTimeAndRepeatsWithFeedback) {
    const EchoCase cases[] = {{44100.0f, 0.1f, 4410}, {44100.0f, 0.5f, 22050}, {44100.0f, 1.0f, 44100},
                              {48000.0f, 0.1f, 4800}, {48000.0f, 0.5f, 24000}, {48000.0f, 1.0f, 48000},
                              {44100.0f, 2.0f, 88200}};
    for (const EchoCase& echo : cases) {
        typename TypeParam::Effect effect(nullptr);
        setTaps(effect, {{echo.seconds, 0.5f, 1.0f}}, 1.0f);
        if (echo.seconds == 2.0f) {
            effect.suspend();  // 2 s needs the constructor's longer line: keep the host's 44.1 kHz
        } else {
            // A real change of rate (through another one for 44.1 kHz).
            effect.setSampleRate(echo.rate == 44100.0f ? 22050.0f : 44100.0f);
            effect.setSampleRate(echo.rate);
        }
        const int d = echo.expectedFrame;
        const auto out = render(effect, TypeParam::channels, 2 * d + 10, {{0, 1.0f}});
        for (int c = 0; c < TypeParam::channels; ++c) {
            EXPECT_EQ(sampleAt(out, c, d), tagged(c, 1.0f)) << echo.rate << " Hz, " << echo.seconds << " s";
            EXPECT_EQ(sampleAt(out, c, 2 * d), tagged(c, 0.5f)) << echo.rate << " Hz, " << echo.seconds << " s";
        }
        EXPECT_LT(largestMagnitude(out, 0, d), kNoiseFloor);
        EXPECT_LT(largestMagnitude(out, d + 1, 2 * d), kNoiseFloor);
    }
}

// The accumulating call is channel-correct here, unlike the single-tap stereo delay.
TEST(MultitapStereo, AccumulatingCallKeepsTheChannelsApart) {
    AF::AudioMultitapDelay2 effect(nullptr);
    setTaps(effect, {{0.2f, 0.5f, 1.0f}}, 1.0f);
    effect.setSampleRate(100.0f);
    Block in(2, 60), out(2, 60);
    in.at(0, 0) = 1.0f;
    effect.process(in.get(), out.get(), 60);
    EXPECT_EQ(out.at(0, 20), 1.0f);
    EXPECT_EQ(out.at(0, 40), 0.5f);
    EXPECT_LT(largestMagnitude({out.data[1]}, 0, 60), kNoiseFloor);
}

// Mix 0: the replacing call gives the dry input exactly, the accumulating one adds nothing.
TYPED_TEST(MultitapVariant, MixZeroIsDryOnly) {
    typename TypeParam::Effect effect(nullptr);
    setTaps(effect, {{0.3f, 0.5f, 1.0f}, {0.1f, 0.5f, 1.0f}}, 0.0f);
    effect.setSampleRate(100.0f);
    Block io(TypeParam::channels, 300), original(TypeParam::channels, 300), out(TypeParam::channels, 300);
    for (int c = 0; c < TypeParam::channels; ++c)
        for (int i = 0; i < 300; ++i) io.at(c, i) = original.at(c, i) = out.at(c, i) = taggedSample(c, i);
    effect.processReplacing(io.get(), io.get(), 300);
    effect.process(original.get(), out.get(), 300);
    for (int c = 0; c < TypeParam::channels; ++c)
        for (int i = 0; i < 300; ++i) {
            ASSERT_TRUE(sameBits(io.at(c, i), original.at(c, i))) << c << " " << i;
            ASSERT_TRUE(sameBits(out.at(c, i), original.at(c, i))) << c << " " << i;
        }
}

TEST(MultitapSixteen, DelayTimeChangeWaitsForSuspendWhileLevelsApplyAtOnce) {
    AF::AudioMultitapDelay16 effect(nullptr);
    setTaps(effect, {{0.3f, 0.0f, 1.0f}}, 1.0f);
    effect.setSampleRate(100.0f);
    auto out = render(effect, 16, 100, {{0, 1.0f}});
    EXPECT_EQ(sampleAt(out, 3, 30), 0.25f);
    setTaps(effect, {{0.1f, 0.0f, 0.5f}}, 1.0f);  // new time (not heard yet), new level (heard)
    out = render(effect, 16, 100, {{0, 1.0f}});
    EXPECT_EQ(sampleAt(out, 0, 30), 0.5f);
    EXPECT_LT(largestMagnitude(out, 1, 30), kNoiseFloor);
    effect.suspend();
    out = render(effect, 16, 100, {{0, 1.0f}});
    EXPECT_EQ(sampleAt(out, 0, 10), 0.5f);
    EXPECT_LT(largestMagnitude(out, 11, 100), kNoiseFloor);
}

// ------------------------------------------------ parameters and properties

std::vector<std::pair<VstInt32, float>> automated;
VstIntPtr recordAutomation(AEffect*, VstInt32 opcode, VstInt32 index, VstIntPtr, void*, float opt) {
    if (opcode == audioMasterAutomate) automated.emplace_back(index, opt);
    return 0;
}

TEST(MultitapParameters, ProgramStartsWithTheMixAndTellsTheHost) {
    AF::AudioMultitapDelay2 effect(recordAutomation);
    for (VstInt32 i = 0; i < 13; ++i) effect.setParameter(i, 0.9f);
    automated.clear();
    effect.setProgram(0);
    const std::vector<std::pair<VstInt32, float>> expected = {
        {12, 0.5f}, {0, 0.25f}, {1, 0.0f}, {2, 0.5f}, {3, 0.4f},  {4, 0.0f},  {5, 0.5f},
        {6, 0.6f},  {7, 0.0f},  {8, 0.5f}, {9, 0.75f}, {10, 0.0f}, {11, 0.5f}};
    EXPECT_EQ(automated, expected);
    EXPECT_EQ(effect.getProgram(), 0);
    for (const auto& [index, value] : expected) EXPECT_EQ(effect.getParameter(index), value) << index;
}

TEST(MultitapParameters, InitialTargetsAreTheDefaultProgram) {
    AF::AudioMultitapDelay1 effect(nullptr);
    const float expected[13] = {0.25f, 0.0f, 0.5f, 0.4f, 0.0f, 0.5f, 0.6f, 0.0f, 0.5f, 0.75f, 0.0f, 0.5f, 0.5f};
    for (VstInt32 i = 0; i < 13; ++i) EXPECT_EQ(effect.getParameter(i), expected[i]) << i;
    EXPECT_EQ(effect.getParameter(13), 0.0f);
    EXPECT_EQ(effect.getParameter(-1), 0.0f);
    effect.setParameter(13, 0.3f);
    effect.setParameter(-4, 0.3f);
    for (VstInt32 i = 0; i < 13; ++i) EXPECT_EQ(effect.getParameter(i), expected[i]) << i;
}

TEST(MultitapParameters, NamesAndLabelsWithLevelFourTwice) {
    AF::AudioMultitapDelay6 effect(nullptr);
    const char* names[13] = {"Delay 1", "Feedback 1", "Level 1", "Delay 2", "Feedback 2", "Level 2", "Delay 3",
                             "Feedback 3", "Level 4", "Delay 4", "Feedback 4", "Level 4", "  Mix  "};
    const char* labels[13] = {"seconds", "%", "  db  ", "seconds", "%", "  db  ", "seconds",
                              "%", "  db  ", "seconds", "%", "  db  ", "%"};
    char text[64];
    for (VstInt32 i = 0; i < 13; ++i) {
        effect.getParameterName(i, text);
        EXPECT_STREQ(text, names[i]) << i;
        effect.getParameterLabel(i, text);
        EXPECT_STREQ(text, labels[i]) << i;
    }
    std::strcpy(text, "untouched");
    effect.getParameterName(13, text);
    effect.getParameterLabel(13, text);
    effect.getParameterDisplay(13, text);
    EXPECT_STREQ(text, "untouched");
    effect.getProgramName(text);
    EXPECT_STREQ(text, "Default");
}

TEST(MultitapParameters, DisplayBySeveralKinds) {
    AF::AudioMultitapDelay1 effect(nullptr);
    effect.setParameter(3, 0.4f);
    effect.setParameter(4, 0.25f);
    effect.setParameter(5, 0.5f);
    effect.setParameter(8, 0.0f);
    effect.setParameter(12, 0.3f);
    // Expected texts worked out by hand: eight characters, the fraction truncated;
    // level 0.5 is 20 log10(0.5) = -6.0206003 dB.
    char shown[64];
    effect.getParameterDisplay(3, shown);
    EXPECT_STREQ(shown, "0.800000");
    effect.getParameterDisplay(4, shown);
    EXPECT_STREQ(shown, "25.00000");
    effect.getParameterDisplay(5, shown);
    EXPECT_STREQ(shown, "-6.02060");
    effect.getParameterDisplay(8, shown);
    EXPECT_STREQ(shown, "-oo");  // a level of 0 shows minus infinity
    effect.getParameterDisplay(12, shown);
    EXPECT_STREQ(shown, "30.00000");  // 0.3 x 100 rounded to float is 30
}

TEST(MultitapProperties, TypesRangesAndSteps) {
    AF::AudioMultitapDelay2 effect(nullptr);
    ML::VSTPropertySupportMixin& properties = effect;
    for (unsigned tap = 0; tap < 4; ++tap) {
        EXPECT_EQ(properties.GetParameterType(3 * tap), 3);
        EXPECT_EQ(properties.GetParameterType(3 * tap + 1), 4);
        EXPECT_EQ(properties.GetParameterType(3 * tap + 2), 1);
        EXPECT_EQ(properties.GetParameterMax(3 * tap), 2.0f);
        EXPECT_EQ(properties.GetParameterMax(3 * tap + 1), 100.0f);
        EXPECT_EQ(properties.GetParameterMax(3 * tap + 2), 0.0f);
        EXPECT_EQ(properties.GetParameterMin(3 * tap), 0.0f);
        EXPECT_EQ(properties.GetParameterMin(3 * tap + 1), 0.0f);
        EXPECT_EQ(properties.GetParameterMin(3 * tap + 2), -999.0f);
        EXPECT_EQ(properties.GetParameterStep(3 * tap), 0.01f);
        EXPECT_EQ(properties.GetParameterStep(3 * tap + 1), 1.0f);
        EXPECT_EQ(properties.GetParameterStep(3 * tap + 2), 0.1f);
    }
    EXPECT_EQ(properties.GetParameterType(12), 4);
    EXPECT_EQ(properties.GetParameterMax(12), 100.0f);
    EXPECT_EQ(properties.GetParameterMin(12), 0.0f);
    EXPECT_EQ(properties.GetParameterStep(12), 1.0f);
    EXPECT_EQ(properties.GetParameterType(13), -1);
    EXPECT_EQ(properties.GetParameterMax(13), 0.0f);
    EXPECT_EQ(properties.GetParameterMin(13), 0.0f);
    EXPECT_EQ(properties.GetParameterStep(13), 0.0f);
    EXPECT_TRUE(properties.SupportsDisplayValueToParameter(0));
    EXPECT_TRUE(properties.SupportsDisplayValueToParameter(12));
    EXPECT_FALSE(properties.SupportsDisplayValueToParameter(13));
    EXPECT_TRUE(properties.HasHistory());
}

TEST(MultitapProperties, LevelConversionsAndTheirSpecialValues) {
    AF::AudioMultitapDelay16 effect(nullptr);
    ML::VSTPropertySupportMixin& properties = effect;
    EXPECT_EQ(properties.ConvertParameterValueToDisplay(2, 0.0f), -999.0f);
    EXPECT_EQ(properties.ConvertParameterValueToDisplay(8, 1.0f), 0.0f);
    const float halfDb = properties.ConvertParameterValueToDisplay(11, 0.5f);
    EXPECT_NEAR(halfDb, -6.0206, 1e-4);  // 20 log10(0.5)
    EXPECT_EQ(halfDb, single(20.0 * static_cast<double>(single(std::log10(0.5)))));
    EXPECT_EQ(properties.ConvertDisplayValueToParameter(5, -999.0f), 0.0f);
    EXPECT_EQ(properties.ConvertDisplayValueToParameter(5, 0.0f), 1.0f);
    EXPECT_EQ(properties.ConvertDisplayValueToParameter(5, -6.0f), single(std::pow(10.0, static_cast<double>(single(-6.0 / 20.0)))));
    EXPECT_NEAR(properties.ConvertDisplayValueToParameter(5, -20.0f), 0.1, 1e-7);
    // Delay, feedback and mix.
    EXPECT_EQ(properties.ConvertDisplayValueToParameter(0, 1.5f), 0.75f);
    EXPECT_EQ(properties.ConvertParameterValueToDisplay(9, 0.4f), single(static_cast<double>(0.4f) * 2.0));
    EXPECT_EQ(properties.ConvertDisplayValueToParameter(1, 37.0f), single(37.0 / 100.0));
    EXPECT_EQ(properties.ConvertParameterValueToDisplay(12, 0.37f), single(static_cast<double>(0.37f) * 100.0));
    EXPECT_EQ(properties.ConvertDisplayValueToParameter(13, 5.0f), 0.0f);
    EXPECT_EQ(properties.ConvertParameterValueToDisplay(13, 5.0f), 0.0f);
}

TEST(MultitapProperties, DeletingThroughThePropertyInterfaceRunsTheWholeDestructor) {
    ML::VSTPropertySupportMixin* properties = new AF::AudioMultitapDelay6(nullptr);
    delete properties;  // the sanitizer build reports a leak if the line were not freed
    SUCCEED();
}

TEST(MultitapCreator, UnregisteredChannelCountsGiveNull) {
    for (const unsigned channels : {0u, 3u, 4u, 5u, 8u, 17u})
        EXPECT_EQ(AF::createVariant(AF::Family::multitapDelay, channels, nullptr), nullptr) << channels;
}

}  // namespace
