// The single-tap Delay: its record, parameters and property answers, and the
// behaviour a user hears at the edges (delay 0, the full line, the two line
// lengths, the stereo cross-over, the 16-channel position restore, mix 0).
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
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

// Well below anything audible and far above the subnormal range: what the
// anti-denormal noise may leave where no echo is due.
constexpr double kNoiseFloor = 1e-20;

// Settings through the host's normalised values.
void setDelaySeconds(AudioEffect& effect, float seconds) { effect.setParameter(0, seconds * 0.5f); }

// Processes `frames` frames in calls of `block` frames, in place, with the
// given impulses (frame, amplitude) on every channel (channel c gets
// amplitude / (c + 1)); returns every output sample.
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

// ------------------------------------------------------------ record, parameters

template <class V>
class DelayVariant : public ::testing::Test {};
using DelayVariants = ::testing::Types<Delay1, Delay2, Delay6, Delay16>;
TYPED_TEST_SUITE(DelayVariant, DelayVariants);

TYPED_TEST(DelayVariant, RecordCarriesChannelsIdAndReplacing) {
    typename TypeParam::Effect effect(nullptr);
    const AEffect* record = effect.getAeffect();
    EXPECT_EQ(record->numInputs, TypeParam::channels);
    EXPECT_EQ(record->numOutputs, TypeParam::channels);
    EXPECT_EQ(record->numParams, 3);
    EXPECT_EQ(record->numPrograms, 1);
    EXPECT_NE(record->flags & effFlagsCanReplacing, 0);
    const VstInt32 ids[] = {0x41446C31, 0x41446C32, 0x41446C36, 0x41443136};  // ADl1 ADl2 ADl6 AD16
    const int which = TypeParam::channels == 1 ? 0 : TypeParam::channels == 2 ? 1 : TypeParam::channels == 6 ? 2 : 3;
    EXPECT_EQ(record->uniqueID, ids[which]);
    EXPECT_TRUE(effect.hasDelayLine());
}

TYPED_TEST(DelayVariant, FamilyCreatorMakesThisVariant) {
    AudioEffect* made = AF::createVariant(AF::Family::delay, TypeParam::channels, nullptr);
    ASSERT_NE(made, nullptr);
    EXPECT_NE(dynamic_cast<typename TypeParam::Effect*>(made), nullptr);
    delete made;
}

TYPED_TEST(DelayVariant, MixZeroReplacingGivesTheDryInputExactly) {
    // Mix 0: wet gain 0, dry gain 1; whatever the line holds, out == in.
    LockStep<TypeParam> run;
    auto& effect = *run.effect;
    effect.setSampleRate(300.0f);
    effect.setParameter(1, 1.0f);
    effect.setParameter(2, 0.0f);
    setDelaySeconds(effect, 0.5f);
    for (int call = 0; call < 4; ++call) {
        Block io(TypeParam::channels, 257);
        Block original(TypeParam::channels, 257);
        for (int c = 0; c < TypeParam::channels; ++c)
            for (int i = 0; i < 257; ++i) io.at(c, i) = original.at(c, i) = taggedSample(c, call * 257 + i);
        effect.processReplacing(io.get(), io.get(), 257);
        for (int c = 0; c < TypeParam::channels; ++c)
            for (int i = 0; i < 257; ++i) ASSERT_TRUE(sameBits(io.at(c, i), original.at(c, i))) << c << " " << i;
    }
}

TYPED_TEST(DelayVariant, MixZeroAccumulatingAddsNothing) {
    typename TypeParam::Effect effect(nullptr);
    effect.setSampleRate(300.0f);
    effect.setParameter(1, 0.5f);
    effect.setParameter(2, 0.0f);
    setDelaySeconds(effect, 0.1f);
    for (int call = 0; call < 4; ++call) {
        Block in(TypeParam::channels, 200), out(TypeParam::channels, 200), before(TypeParam::channels, 200);
        for (int c = 0; c < TypeParam::channels; ++c)
            for (int i = 0; i < 200; ++i) {
                in.at(c, i) = taggedSample(c, call * 200 + i);
                out.at(c, i) = before.at(c, i) = taggedSample(c + 20, call * 200 + i);
            }
        effect.process(in.get(), out.get(), 200);
        for (int c = 0; c < TypeParam::channels; ++c)
            for (int i = 0; i < 200; ++i) ASSERT_TRUE(sameBits(out.at(c, i), before.at(c, i))) << c << " " << i;
    }
}

TYPED_TEST(DelayVariant, ZeroAndNegativeFrameCountsTouchNothing) {
    typename TypeParam::Effect effect(nullptr);
    effect.setParameter(2, 1.0f);
    setDelaySeconds(effect, 0.3f);
    effect.setSampleRate(100.0f);
    Block io(TypeParam::channels, 4);
    for (int c = 0; c < TypeParam::channels; ++c)
        for (int i = 0; i < 4; ++i) io.at(c, i) = 9.0f;
    effect.processReplacing(io.get(), io.get(), 0);
    effect.process(io.get(), io.get(), -3);
    effect.processReplacing(io.get(), io.get(), -2147483647 - 1);
    for (int c = 0; c < TypeParam::channels; ++c)
        for (int i = 0; i < 4; ++i) EXPECT_EQ(io.at(c, i), 9.0f);
    // The positions did not move: the echo still arrives 30 frames after the impulse.
    const auto out = render(effect, TypeParam::channels, 40, {{0, 1.0f}});
    for (int c = 0; c < TypeParam::channels; ++c) EXPECT_EQ(sampleAt(out, c, 30), 1.0f / static_cast<float>(c + 1));
}

// Delay 0: the wet signal is the input itself (plus the noise), and the
// feedback term reads the oldest sample of the line, L frames old.
TYPED_TEST(DelayVariant, DelayZeroIsUndelayedAndFeedsBackTheOldestSample) {
    typename TypeParam::Effect effect(nullptr);
    setDelaySeconds(effect, 0.0f);
    effect.setParameter(1, 0.5f);
    effect.setParameter(2, 1.0f);
    effect.setSampleRate(100.0f);  // L = trunc(2 x 100 + 1) = 201
    const int frames = 700;
    const auto out = render(effect, TypeParam::channels, frames, {{0, 1.0f}}, frames);
    for (int c = 0; c < TypeParam::channels; ++c) {
        const float a = 1.0f / static_cast<float>(c + 1);
        EXPECT_EQ(sampleAt(out, c, 0), single(static_cast<double>(a) + noiseForFrame(frames, 0)));
        EXPECT_EQ(sampleAt(out, c, 201), single(static_cast<double>(a) * 0.5 + noiseForFrame(frames, 201)));
        EXPECT_EQ(sampleAt(out, c, 402), single(static_cast<double>(sampleAt(out, c, 201)) * 0.5 + noiseForFrame(frames, 402)));
    }
    // Frame 1 hears only the noise of its own frame.
    EXPECT_EQ(sampleAt(out, 0, 1), noiseForFrame(frames, 1));
    double elsewhere = 0;
    for (int i = 1; i < frames; ++i)
        if (i != 201 && i != 402 && i != 603) elsewhere = std::max(elsewhere, largestMagnitude(out, i, i + 1));
    EXPECT_LT(elsewhere, kNoiseFloor);
}

// After a real sample-rate change the line is 2 x rate + 1 frames, so 2.0 s is
// a full-length echo of L - 1 frames.
TYPED_TEST(DelayVariant, TwoSecondsAfterARateChangeIsAFullLengthEcho) {
    typename TypeParam::Effect effect(nullptr);
    setDelaySeconds(effect, 2.0f);
    effect.setParameter(2, 1.0f);
    effect.setSampleRate(100.0f);  // L = 201
    const auto out = render(effect, TypeParam::channels, 260, {{0, 1.0f}});
    for (int c = 0; c < TypeParam::channels; ++c) EXPECT_EQ(sampleAt(out, c, 200), 1.0f / static_cast<float>(c + 1));
    EXPECT_LT(largestMagnitude(out, 0, 200), kNoiseFloor);
    EXPECT_LT(largestMagnitude(out, 201, 260), kNoiseFloor);
}

// With the constructor's line (exactly 2 x rate, the host's rate never
// changed), 2.0 s gives D = L: the read follows the write, no delay at all.
TYPED_TEST(DelayVariant, TwoSecondsOnTheConstructorsLineIsUndelayed) {
    typename TypeParam::Effect effect(nullptr);
    effect.setSampleRate(44100.0f);  // the rate already held: the line keeps 88200 frames
    setDelaySeconds(effect, 2.0f);
    effect.setParameter(2, 1.0f);
    if constexpr (TypeParam::channels == 16) {
        // The 16-channel variant does not move its read position for a new
        // delay time: the constructor's 1 s (44100 frames) is still heard.
        const auto out = render(effect, TypeParam::channels, 44110, {{0, 1.0f}});
        for (int c = 0; c < TypeParam::channels; ++c) EXPECT_EQ(sampleAt(out, c, 44100), 1.0f / static_cast<float>(c + 1));
        EXPECT_LT(largestMagnitude(out, 0, 44100), kNoiseFloor);
    } else {
        const auto out = render(effect, TypeParam::channels, 64, {{0, 1.0f}}, 64);
        for (int c = 0; c < TypeParam::channels; ++c) EXPECT_EQ(sampleAt(out, c, 0), 1.0f / static_cast<float>(c + 1));
        EXPECT_LT(largestMagnitude(out, 1, 64), kNoiseFloor);
    }
}

// A suspend in that state puts the write position at L, one past the end: the
// first frame writes into the spare frame (never heard), then the positions
// wrap and the echo is L - 1 frames long.
TYPED_TEST(DelayVariant, SuspendWithTheWritePositionPastTheEnd) {
    typename TypeParam::Effect effect(nullptr);
    setDelaySeconds(effect, 2.0f);
    effect.setParameter(2, 1.0f);
    render(effect, TypeParam::channels, 16, {});  // applies the 2 s setting
    effect.suspend();
    const int frames = 88200 + 50;
    const auto out = render(effect, TypeParam::channels, frames, {{0, 1.0f}, {1, 0.5f}});
    for (int c = 0; c < TypeParam::channels; ++c) EXPECT_EQ(sampleAt(out, c, 88200), 0.5f / static_cast<float>(c + 1));
    EXPECT_LT(largestMagnitude(out, 0, 88200), kNoiseFloor);
    EXPECT_LT(largestMagnitude(out, 88201, frames), kNoiseFloor);
}

TYPED_TEST(DelayVariant, SettingTheRateAlreadyHeldKeepsTheConstructorsLength) {
    // Through a different rate and back: now the line is 2 x 44100 + 1 and the
    // same 2 s setting echoes after 88200 frames instead of at once.
    typename TypeParam::Effect effect(nullptr);
    setDelaySeconds(effect, 2.0f);
    effect.setParameter(2, 1.0f);
    effect.setSampleRate(48000.0f);
    effect.setSampleRate(44100.0f);
    const auto out = render(effect, TypeParam::channels, 88210, {{0, 1.0f}});
    for (int c = 0; c < TypeParam::channels; ++c) {
        EXPECT_LT(std::fabs(sampleAt(out, c, 0)), kNoiseFloor);
        EXPECT_EQ(sampleAt(out, c, 88200), 1.0f / static_cast<float>(c + 1));
    }
}

TYPED_TEST(DelayVariant, FeedbackOneNeverDecays) {
    typename TypeParam::Effect effect(nullptr);
    setDelaySeconds(effect, 0.25f);  // 50 frames
    effect.setParameter(1, 1.0f);
    effect.setParameter(2, 1.0f);
    effect.setSampleRate(200.0f);
    const auto out = render(effect, TypeParam::channels, 50 * 120 + 1, {{0, 1.0f}}, 512);
    for (int repeat = 1; repeat <= 120; ++repeat)
        for (int c = 0; c < TypeParam::channels; ++c)
            ASSERT_EQ(sampleAt(out, c, 50 * repeat), 1.0f / static_cast<float>(c + 1)) << "repeat " << repeat;
}

// ------------------------------------------------------------------ echo timing

struct EchoCase {
    float rate;
    float seconds;
    int expectedFrame;  // trunc(rate x seconds)
};

// What a user hears: an impulse at frame 0 comes back after trunc(rate x t)
// frames, and with feedback 0.5 again after twice that at half the height.
TYPED_TEST(DelayVariant, EchoArrivesAtTheDelayTimeAndRepeatsWithFeedback) {
    const EchoCase cases[] = {{44100.0f, 0.1f, 4410},  {44100.0f, 0.5f, 22050}, {44100.0f, 1.0f, 44100},
                              {48000.0f, 0.1f, 4800},  {48000.0f, 0.5f, 24000}, {48000.0f, 1.0f, 48000},
                              {48000.0f, 2.0f, 96000}};
    for (const EchoCase& echo : cases) {
        typename TypeParam::Effect effect(nullptr);
        // The host sets the parameters, then the rate (for 44.1 kHz through
        // another rate, so that it is a real change and the line is 2 x rate + 1).
        setDelaySeconds(effect, echo.seconds);
        effect.setParameter(1, 0.5f);
        effect.setParameter(2, 1.0f);
        if (echo.rate == 44100.0f) effect.setSampleRate(22050.0f);
        effect.setSampleRate(echo.rate);
        const int d = echo.expectedFrame;
        const auto out = render(effect, TypeParam::channels, 2 * d + 10, {{0, 1.0f}});
        for (int c = 0; c < TypeParam::channels; ++c) {
            const float a = 1.0f / static_cast<float>(c + 1);
            EXPECT_EQ(sampleAt(out, c, d), a) << echo.rate << " Hz, " << echo.seconds << " s";
            EXPECT_EQ(sampleAt(out, c, 2 * d), a * 0.5f) << echo.rate << " Hz, " << echo.seconds << " s";
        }
        EXPECT_LT(largestMagnitude(out, 0, d), kNoiseFloor);
        EXPECT_LT(largestMagnitude(out, d + 1, 2 * d), kNoiseFloor);
        EXPECT_LT(largestMagnitude(out, 2 * d + 1, 2 * d + 10), kNoiseFloor);
    }
}

TEST(DelayEcho, TwoSecondsAtFortyFourPointOneKilohertzAfterARealRateChange) {
    AF::AudioDelay2 effect(nullptr);
    setDelaySeconds(effect, 2.0f);
    effect.setParameter(1, 0.5f);
    effect.setParameter(2, 1.0f);
    effect.setSampleRate(48000.0f);
    effect.setSampleRate(44100.0f);  // L = 88201
    const auto out = render(effect, 2, 2 * 88200 + 10, {{0, 1.0f}});
    EXPECT_EQ(sampleAt(out, 0, 88200), 1.0f);
    EXPECT_EQ(sampleAt(out, 1, 88200), 0.5f);
    EXPECT_EQ(sampleAt(out, 0, 176400), 0.5f);
    EXPECT_LT(largestMagnitude(out, 1, 88200), kNoiseFloor);
}

// ------------------------------------------------------- variant behaviours

// The stereo accumulating call: the left output hears the right line, so an
// input on the left only is never heard as an echo, on either side.
TEST(DelayStereo, AccumulatingCallWithLeftInputOnlyStaysSilentOfTheEcho) {
    AF::AudioDelay2 effect(nullptr);
    effect.setSampleRate(100.0f);
    setDelaySeconds(effect, 0.2f);  // 20 frames
    effect.setParameter(1, 0.5f);
    effect.setParameter(2, 1.0f);
    Block in(2, 100), out(2, 100);
    in.at(0, 0) = 1.0f;
    effect.process(in.get(), out.get(), 100);
    EXPECT_LT(largestMagnitude(out.data, 0, 100), kNoiseFloor);

    // The same input through the replacing call echoes on the left at frame 20.
    AF::AudioDelay2 replacing(nullptr);
    replacing.setSampleRate(100.0f);
    setDelaySeconds(replacing, 0.2f);
    replacing.setParameter(1, 0.5f);
    replacing.setParameter(2, 1.0f);
    Block out2(2, 100);
    replacing.processReplacing(in.get(), out2.get(), 100);
    EXPECT_EQ(out2.at(0, 20), 1.0f);
    EXPECT_EQ(out2.at(0, 40), 0.5f);
}

// And a right-only input is heard on both outputs of the accumulating call:
// on the left one frame's write earlier than on the right.
TEST(DelayStereo, AccumulatingCallCrossesTheRightLineToTheLeftOutput) {
    AF::AudioDelay2 effect(nullptr);
    effect.setSampleRate(100.0f);
    setDelaySeconds(effect, 0.2f);  // 20 frames
    effect.setParameter(2, 1.0f);
    Block in(2, 60), out(2, 60);
    in.at(1, 0) = 1.0f;
    effect.process(in.get(), out.get(), 60);
    EXPECT_EQ(out.at(0, 20), 1.0f);
    EXPECT_EQ(out.at(1, 20), 1.0f);
    EXPECT_LT(largestMagnitude(out.data, 0, 20), kNoiseFloor);
}

// On 16 channels the positions are restored after the parameter check, so a
// new delay time alone is not heard until suspend.
TEST(DelaySixteen, DelayTimeChangeAloneWaitsForSuspend) {
    AF::AudioDelay16 effect(nullptr);
    setDelaySeconds(effect, 0.3f);  // 30 frames
    effect.setParameter(2, 1.0f);
    effect.setSampleRate(100.0f);
    auto out = render(effect, 16, 100, {{0, 1.0f}});
    EXPECT_EQ(sampleAt(out, 5, 30), 1.0f / 6.0f);

    setDelaySeconds(effect, 0.1f);  // 10 frames, not heard yet
    out = render(effect, 16, 100, {{0, 1.0f}});
    for (int c = 0; c < 16; ++c) EXPECT_EQ(sampleAt(out, c, 30), 1.0f / static_cast<float>(c + 1));
    EXPECT_LT(largestMagnitude(out, 1, 30), kNoiseFloor);

    // Feedback and mix still take effect at once.
    effect.setParameter(2, 0.5f);
    out = render(effect, 16, 100, {{0, 1.0f}});
    EXPECT_EQ(sampleAt(out, 0, 0), 0.5f);
    EXPECT_EQ(sampleAt(out, 0, 30), 0.5f);

    effect.suspend();
    out = render(effect, 16, 100, {{0, 1.0f}});
    EXPECT_EQ(sampleAt(out, 0, 10), 0.5f);
    EXPECT_LT(std::fabs(sampleAt(out, 0, 30)), kNoiseFloor);
}

// A delay-time change moves only the read position, at once, and keeps the
// line: going from 10 to 30 frames, an impulse written 25 frames before the
// change is heard again 5 frames into the next call. The 16-channel variant
// keeps its read position and hears nothing there.
TYPED_TEST(DelayVariant, DelayTimeChangeMovesOnlyTheReadPosition) {
    typename TypeParam::Effect effect(nullptr);
    setDelaySeconds(effect, 0.1f);  // 10 frames
    effect.setParameter(2, 1.0f);
    effect.setSampleRate(100.0f);
    auto out = render(effect, TypeParam::channels, 25, {{0, 1.0f}});
    EXPECT_EQ(sampleAt(out, 0, 10), 1.0f);
    setDelaySeconds(effect, 0.3f);  // 30 frames
    out = render(effect, TypeParam::channels, 40, {});
    if constexpr (TypeParam::channels == 16) {
        EXPECT_LT(largestMagnitude(out, 0, 40), kNoiseFloor);
    } else {
        for (int c = 0; c < TypeParam::channels; ++c) EXPECT_EQ(sampleAt(out, c, 5), 1.0f / static_cast<float>(c + 1));
        EXPECT_LT(largestMagnitude(out, 0, 40, 5), kNoiseFloor);
    }
}

// ------------------------------------------------ parameters and properties

std::vector<std::pair<VstInt32, float>> automated;
VstIntPtr recordAutomation(AEffect*, VstInt32 opcode, VstInt32 index, VstIntPtr, void*, float opt) {
    if (opcode == audioMasterAutomate) automated.emplace_back(index, opt);
    return 0;
}

TEST(DelayParameters, ProgramResetsToDefaultsAndTellsTheHostInOrder) {
    AF::AudioDelay1 effect(recordAutomation);
    effect.setParameter(0, 0.9f);
    effect.setParameter(1, 0.9f);
    effect.setParameter(2, 0.9f);
    automated.clear();
    effect.setProgram(0);
    const std::vector<std::pair<VstInt32, float>> expected = {{0, 0.5f}, {1, 0.0f}, {2, 0.5f}};
    EXPECT_EQ(automated, expected);
    EXPECT_EQ(effect.getProgram(), 0);
    EXPECT_EQ(effect.getParameter(0), 0.5f);
    EXPECT_EQ(effect.getParameter(1), 0.0f);
    EXPECT_EQ(effect.getParameter(2), 0.5f);
}

TEST(DelayParameters, StoredAsSentAndReadBack) {
    AF::AudioDelay2 effect(nullptr);
    EXPECT_EQ(effect.getParameter(0), 0.5f);  // 1.0 s
    EXPECT_EQ(effect.getParameter(1), 0.0f);
    EXPECT_EQ(effect.getParameter(2), 0.5f);
    effect.setParameter(0, 0.3f);
    EXPECT_EQ(effect.getParameter(0), single(static_cast<double>(0.3f + 0.3f) * 0.5));
    effect.setParameter(1, 1.7f);  // not clamped
    EXPECT_EQ(effect.getParameter(1), 1.7f);
    effect.setParameter(2, -0.25f);
    EXPECT_EQ(effect.getParameter(2), -0.25f);
    effect.setParameter(3, 0.7f);
    effect.setParameter(-1, 0.7f);
    EXPECT_EQ(effect.getParameter(3), 0.0f);
    EXPECT_EQ(effect.getParameter(-1), 0.0f);
}

TEST(DelayParameters, NamesLabelsAndProgramName) {
    AF::AudioDelay2 effect(nullptr);
    const char* names[] = {"Delay", "Feedback", "Mix"};
    const char* labels[] = {"seconds", "%", "%"};
    char text[64];
    for (VstInt32 i = 0; i < 3; ++i) {
        effect.getParameterName(i, text);
        EXPECT_STREQ(text, names[i]);
        effect.getParameterLabel(i, text);
        EXPECT_STREQ(text, labels[i]);
    }
    std::strcpy(text, "untouched");
    effect.getParameterName(3, text);
    effect.getParameterLabel(3, text);
    effect.getParameterDisplay(3, text);
    EXPECT_STREQ(text, "untouched");
    effect.getProgramName(text);
    EXPECT_STREQ(text, "Default");
}

TEST(DelayParameters, DisplayShowsSecondsAndPercent) {
    AF::AudioDelay1 effect(nullptr);
    effect.setParameter(0, 0.3f);
    effect.setParameter(1, 0.25f);
    effect.setParameter(2, 0.7f);
    char shown[64], expected[64];
    effect.getParameterDisplay(0, shown);
    effect.float2string(0.3f + 0.3f, expected, 8);
    EXPECT_STREQ(shown, expected);
    effect.getParameterDisplay(1, shown);
    effect.float2string(25.0f, expected, 8);
    EXPECT_STREQ(shown, expected);
    effect.getParameterDisplay(2, shown);
    effect.float2string(single(static_cast<double>(0.7f) * 100.0), expected, 8);
    EXPECT_STREQ(shown, expected);
}

TEST(DelayProperties, TypesRangesStepsAndConversions) {
    auto effect = std::make_unique<AF::AudioDelay6>(nullptr);
    ML::VSTPropertySupportMixin& properties = *effect;
    EXPECT_EQ(properties.GetParameterType(0), 3);
    EXPECT_EQ(properties.GetParameterType(1), 4);
    EXPECT_EQ(properties.GetParameterType(2), 4);
    EXPECT_EQ(properties.GetParameterType(3), -1);
    EXPECT_EQ(properties.GetParameterMax(0), 2.0f);
    EXPECT_EQ(properties.GetParameterMax(1), 100.0f);
    EXPECT_EQ(properties.GetParameterMax(2), 100.0f);
    EXPECT_EQ(properties.GetParameterMax(3), 0.0f);
    for (unsigned i = 0; i < 4; ++i) EXPECT_EQ(properties.GetParameterMin(i), 0.0f);
    EXPECT_EQ(properties.GetParameterStep(0), 0.01f);
    EXPECT_EQ(properties.GetParameterStep(1), 1.0f);
    EXPECT_EQ(properties.GetParameterStep(2), 1.0f);
    EXPECT_EQ(properties.GetParameterStep(3), 0.0f);
    EXPECT_TRUE(properties.SupportsDisplayValueToParameter(0));
    EXPECT_TRUE(properties.SupportsDisplayValueToParameter(2));
    EXPECT_FALSE(properties.SupportsDisplayValueToParameter(3));
    EXPECT_EQ(properties.ConvertDisplayValueToParameter(0, 1.5f), 0.75f);
    EXPECT_EQ(properties.ConvertDisplayValueToParameter(1, 37.0f), single(37.0 / 100.0));
    EXPECT_EQ(properties.ConvertDisplayValueToParameter(2, 50.0f), 0.5f);
    EXPECT_EQ(properties.ConvertDisplayValueToParameter(3, 50.0f), 0.0f);
    EXPECT_EQ(properties.ConvertParameterValueToDisplay(0, 0.3f), single(static_cast<double>(0.3f) * 2.0));
    EXPECT_EQ(properties.ConvertParameterValueToDisplay(1, 0.37f), single(static_cast<double>(0.37f) * 100.0));
    EXPECT_EQ(properties.ConvertParameterValueToDisplay(3, 0.37f), 0.0f);
    EXPECT_TRUE(properties.HasHistory());
}

TEST(DelayProperties, DeletingThroughThePropertyInterfaceRunsTheWholeDestructor) {
    ML::VSTPropertySupportMixin* properties = new AF::AudioDelay16(nullptr);
    delete properties;  // the sanitizer build reports a leak if the line were not freed
    SUCCEED();
}

TEST(DelayCreator, UnregisteredChannelCountsGiveNull) {
    for (const unsigned channels : {0u, 3u, 4u, 5u, 8u, 17u}) EXPECT_EQ(AF::createVariant(AF::Family::delay, channels, nullptr), nullptr) << channels;
}

}  // namespace
