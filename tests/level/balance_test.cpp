// Balance: the linear stereo balance, through the plug-in record and the
// property interface.
#include <cmath>
#include <limits>
#include <memory>
#include <string>

#include "LevelTestSupport.h"
#include "effects/level/Balance.h"
#include "module/VariantTable.h"

namespace {

using level_test::automateReports;
using level_test::bits;
using level_test::ChannelBuffers;
using level_test::HostedEffect;
using level_test::inputSample;
using level_test::kFrameCounts;
using level_test::outputSample;
using level_test::TextAnswer;

constexpr unsigned kStereo = 2;
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

// The balance law written out, in double and rounded once to float.
struct Gains {
    float left;
    float right;
};

Gains gainsFor(float balance) {
    const double p = balance;
    if (p < 0.5) {
        const double right = 2.0 * p;
        return {1.0f, static_cast<float>(right)};
    }
    const double left = 2.0 * (1.0 - p);
    return {static_cast<float>(left), 1.0f};
}

float gainOf(const Gains& gains, unsigned channel) { return channel == 0 ? gains.left : gains.right; }

class BalanceTest : public ::testing::Test {
protected:
    BalanceTest() { automateReports().clear(); }

    // Replacing on separate buffers: out = in x gain; inputs unchanged.
    void expectReplacing(const Gains& gains, const std::string& what) {
        for (int frames : kFrameCounts) {
            ChannelBuffers in(kStereo, frames), out(kStereo, frames);
            in.fill(inputSample);
            out.fill(outputSample);
            host.processReplacing(in, out);
            out.expectSamples([&](unsigned c, int i) { return inputSample(c, i) * gainOf(gains, c); },
                              what + ", frames " + std::to_string(frames));
            in.expectSamples(inputSample, what + ", input kept");
        }
    }

    AF::AudioBalance* effect = new AF::AudioBalance(level_test::recordingHost);
    ML::VSTPropertySupportMixin* properties = effect;
    HostedEffect host{effect->getAeffect()};
};

TEST_F(BalanceTest, RecordDescribesTheEffect) {
    AEffect* record = host.record();
    EXPECT_EQ(record->numInputs, 2);
    EXPECT_EQ(record->numOutputs, 2);
    EXPECT_EQ(record->uniqueID, 0x41426C32);  // "ABl2"
    EXPECT_EQ(record->numPrograms, 1);
    EXPECT_EQ(record->numParams, 1);
    EXPECT_NE(record->flags & effFlagsCanReplacing, 0);
}

// Centre: both channels at gain 1, so separate outputs receive the inputs.
TEST_F(BalanceTest, FirstBufferPassesBothChannelsAtUnity) {
    EXPECT_EQ(bits(host.getParameter(0)), bits(0.5f));
    expectReplacing({1.0f, 1.0f}, "centre");
    for (int frames : kFrameCounts) {
        ChannelBuffers buffers(kStereo, frames);
        buffers.fill(inputSample);
        host.processInPlace(buffers);
        buffers.expectSamples(inputSample, "in place, frames " + std::to_string(frames));
    }
}

TEST_F(BalanceTest, QuarterAndThreeQuarterPositions) {
    host.setParameter(0, 0.25f);
    expectReplacing({1.0f, 0.5f}, "0.25");
    EXPECT_EQ(TextAnswer(host, effGetParamDisplay, 0).text(), "-50.0000");
    host.setParameter(0, 0.75f);
    expectReplacing({0.5f, 1.0f}, "0.75");
    EXPECT_EQ(TextAnswer(host, effGetParamDisplay, 0).text(), "50.00000");
}

TEST_F(BalanceTest, EndsSilenceTheOtherSide) {
    host.setParameter(0, 0.0f);
    expectReplacing({1.0f, 0.0f}, "full left");
    host.setParameter(0, 1.0f);
    expectReplacing({0.0f, 1.0f}, "full right");
}

TEST_F(BalanceTest, EveryPositionFollowsTheLinearLaw) {
    for (float balance : {0.1f, 0.3f, 0.4999f, 0.5f, 0.5001f, 0.7f, 0.9f}) {
        host.setParameter(0, balance);
        expectReplacing(gainsFor(balance), "balance " + std::to_string(balance));
    }
}

TEST_F(BalanceTest, InPlaceBalancesBothChannels) {
    host.setParameter(0, 0.3f);
    const Gains gains = gainsFor(0.3f);
    for (int frames : kFrameCounts) {
        ChannelBuffers buffers(kStereo, frames);
        buffers.fill(inputSample);
        host.processInPlace(buffers);
        buffers.expectSamples([&](unsigned c, int i) { return inputSample(c, i) * gainOf(gains, c); },
                              "frames " + std::to_string(frames));
    }
}

// The accumulating call leaves the balanced samples in the caller's inputs.
TEST_F(BalanceTest, AccumulatingCallScalesTheInputsAndAddsThem) {
    for (float balance : {0.5f, 0.2f, 0.85f}) {
        host.setParameter(0, balance);
        const Gains gains = gainsFor(balance);
        for (int frames : kFrameCounts) {
            ChannelBuffers in(kStereo, frames), out(kStereo, frames);
            in.fill(inputSample);
            out.fill(outputSample);
            host.process(in, out);
            const auto scaled = [&](unsigned c, int i) { return inputSample(c, i) * gainOf(gains, c); };
            const std::string what = "balance " + std::to_string(balance) + ", frames " + std::to_string(frames);
            in.expectSamples(scaled, what + ", inputs");
            out.expectSamples([&](unsigned c, int i) { return outputSample(c, i) + scaled(c, i); }, what);
        }
    }
}

// In place the accumulating call adds the balanced samples to themselves.
TEST_F(BalanceTest, AccumulatingCallInPlaceDoublesTheBalancedSamples) {
    host.setParameter(0, 0.2f);
    const Gains gains = gainsFor(0.2f);
    for (int frames : kFrameCounts) {
        ChannelBuffers buffers(kStereo, frames);
        buffers.fill(inputSample);
        host.process(buffers, buffers);
        buffers.expectSamples(
            [&](unsigned c, int i) {
                const float scaled = inputSample(c, i) * gainOf(gains, c);
                return scaled + scaled;
            },
            "frames " + std::to_string(frames));
    }
}

// 150 on the display is 1.25: the left channel comes out phase-inverted at
// half level, the right untouched.
TEST_F(BalanceTest, DisplayValueAboveTheRangeInvertsTheLeftChannel) {
    const float balance = properties->ConvertDisplayValueToParameter(0, 150.0f);
    EXPECT_EQ(bits(balance), bits(1.25f));
    host.setParameter(0, balance);
    expectReplacing({-0.5f, 1.0f}, "1.25");
    EXPECT_EQ(TextAnswer(host, effGetParamDisplay, 0).text(), "150.0000");
}

TEST_F(BalanceTest, UnusualValuesFollowTheFormulas) {
    for (float balance : {-0.25f, 2.0f, kInfinity, -kInfinity, kNaN}) {
        host.setParameter(0, balance);
        EXPECT_EQ(bits(host.getParameter(0)), bits(balance));
        expectReplacing(gainsFor(balance), "balance " + std::to_string(balance));
    }
    // A NaN takes the right-hand branch: left NaN, right 1.
    EXPECT_TRUE(std::isnan(gainsFor(kNaN).left));
    EXPECT_EQ(gainsFor(kNaN).right, 1.0f);
}

// Storing the stale marker before the first buffer means no computation: the
// starting gains (1 and 1) apply.
TEST_F(BalanceTest, StaleMarkerBeforeTheFirstBufferKeepsUnity) {
    host.setParameter(0, -1.0f);
    expectReplacing({1.0f, 1.0f}, "marker first");
    host.setParameter(0, 0.25f);
    expectReplacing({1.0f, 0.5f}, "then 0.25");
    host.setParameter(0, -1.0f);
    expectReplacing({1.0f, -2.0f}, "then -1");
}

TEST_F(BalanceTest, ZeroOrNegativeFrameCountWritesNothing) {
    host.setParameter(0, 0.2f);
    for (int frames : {0, -1, -4096}) {
        ChannelBuffers in(kStereo, 4), out(kStereo, 4);
        in.fill(inputSample);
        out.fill(outputSample);
        host->processReplacing(host.record(), in.pointers(), out.pointers(), frames);
        host->process(host.record(), in.pointers(), out.pointers(), frames);
        out.expectSamples(outputSample, "frames " + std::to_string(frames));
        in.expectSamples(inputSample, "frames " + std::to_string(frames));
    }
}

TEST_F(BalanceTest, NullBuffersAreHarmless) {
    host.setParameter(0, 0.2f);
    host->processReplacing(host.record(), nullptr, nullptr, 8);
    host->process(host.record(), nullptr, nullptr, 8);
    // Without inputs there is nothing to copy or add: the outputs stay.
    ChannelBuffers out(kStereo, 8);
    out.fill(outputSample);
    host->processReplacing(host.record(), nullptr, out.pointers(), 8);
    host->process(host.record(), nullptr, out.pointers(), 8);
    out.expectSamples(outputSample, "no inputs");
}

TEST_F(BalanceTest, OtherIndicesAreIgnored) {
    for (VstInt32 index : {1, 2, -1, std::numeric_limits<VstInt32>::min()}) {
        host.setParameter(index, 0.0f);
        EXPECT_EQ(bits(host.getParameter(index)), 0u);
        EXPECT_TRUE(TextAnswer(host, effGetParamName, index).untouched()) << "index " << index;
        EXPECT_TRUE(TextAnswer(host, effGetParamLabel, index).untouched()) << "index " << index;
        EXPECT_TRUE(TextAnswer(host, effGetParamDisplay, index).untouched()) << "index " << index;
    }
    EXPECT_EQ(bits(host.getParameter(0)), bits(0.5f));
}

TEST_F(BalanceTest, ProgramReturnsToCentreAndReportsIt) {
    host.setParameter(0, 0.1f);
    automateReports().clear();
    host.dispatch(effSetProgram, 0, 0);
    ASSERT_EQ(automateReports().size(), 1u);
    EXPECT_EQ(automateReports()[0].index, 0);
    EXPECT_EQ(bits(automateReports()[0].value), bits(0.5f));
    EXPECT_EQ(bits(host.getParameter(0)), bits(0.5f));
    expectReplacing({1.0f, 1.0f}, "centre again");
}

// A null text pointer gets nothing written, whatever the request.
TEST_F(BalanceTest, NullTextPointersAreHarmless) {
    for (VstInt32 opcode : {effGetProgramName, effGetParamLabel, effGetParamDisplay,
                            effGetParamName})
        for (VstInt32 index : {0, 1, -1}) host.dispatch(opcode, index, 0, nullptr);
    EXPECT_EQ(TextAnswer(host, effGetParamName, 0).text(), "Balance");
}

TEST_F(BalanceTest, NameLabelAndProgramName) {
    EXPECT_EQ(TextAnswer(host, effGetParamName, 0).text(), "Balance");
    const TextAnswer label(host, effGetParamLabel, 0);
    EXPECT_FALSE(label.untouched());
    EXPECT_EQ(label.text(), "");
    EXPECT_EQ(TextAnswer(host, effGetProgramName, 0).text(), "Default");
}

// balance x 200 - 100 with eight characters, digits past the eighth dropped
// (worked out by hand from the float values).
TEST_F(BalanceTest, Displays) {
    struct Case {
        float balance;
        const char* text;
    };
    const Case cases[] = {{0.5f, "0.000000"}, {0.0f, "-100.000"}, {1.0f, "100.0000"},
                          {0.3f, "-39.9999"}, {0.9f, "79.99999"}, {kNaN, "0.000000"}};
    for (const Case& c : cases) {
        host.setParameter(0, c.balance);
        EXPECT_EQ(TextAnswer(host, effGetParamDisplay, 0).text(), c.text) << "balance " << c.balance;
    }
    for (float huge : {1.0e10f, -1.0e10f, kInfinity}) {
        host.setParameter(0, huge);
        EXPECT_TRUE(TextAnswer(host, effGetParamDisplay, 0).untouched()) << "balance " << huge;
    }
}

TEST_F(BalanceTest, PropertyAnswers) {
    ML::VSTPropertySupportMixin* p = properties;
    EXPECT_EQ(p->GetParameterType(0), 4);
    EXPECT_EQ(bits(p->GetParameterMin(0)), bits(-100.0f));
    EXPECT_EQ(bits(p->GetParameterMax(0)), bits(100.0f));
    EXPECT_EQ(bits(p->GetParameterStep(0)), bits(1.0f));
    EXPECT_TRUE(p->SupportsDisplayValueToParameter(0));
    for (float value : {0.0f, 0.25f, 0.3f, 1.0f, 1.25f, -2.0f}) {
        const float display = static_cast<float>(static_cast<double>(value) * 200.0 - 100.0);
        EXPECT_EQ(bits(p->ConvertParameterValueToDisplay(0, value)), bits(display)) << value;
    }
    for (float display : {-100.0f, -50.0f, 0.0f, 33.3f, 100.0f, 150.0f, -300.0f}) {
        const float value = static_cast<float>((static_cast<double>(display) + 100.0) / 200.0);
        EXPECT_EQ(bits(p->ConvertDisplayValueToParameter(0, display)), bits(value)) << display;
    }
    EXPECT_EQ(bits(p->ConvertDisplayValueToParameter(0, 150.0f)), bits(1.25f));
    for (unsigned index : {1u, 2u, 1000u}) {
        EXPECT_EQ(p->GetParameterType(index), -1);
        EXPECT_EQ(bits(p->GetParameterMin(index)), 0u);
        EXPECT_EQ(bits(p->GetParameterMax(index)), 0u);
        EXPECT_EQ(bits(p->GetParameterStep(index)), 0u);
        EXPECT_FALSE(p->SupportsDisplayValueToParameter(index));
        EXPECT_EQ(bits(p->ConvertDisplayValueToParameter(index, 50.0f)), 0u);
        EXPECT_EQ(bits(p->ConvertParameterValueToDisplay(index, 0.75f)), 0u);
    }
    // The effect keeps no samples, yet answers the interface's default.
    EXPECT_TRUE(p->HasHistory());
}

TEST(BalanceLifetime, DeletingThroughThePropertyInterfaceRunsTheWholeDestructor) {
    ML::VSTPropertySupportMixin* properties = new AF::AudioBalance(nullptr);
    delete properties;
}

TEST(BalanceCreator, MakesStereoOnly) {
    for (unsigned channels = 0; channels <= 17; ++channels) {
        std::unique_ptr<AudioEffect> effect(AF::createVariant(AF::Family::balance, channels, nullptr));
        if (channels == 2)
            EXPECT_NE(dynamic_cast<AF::AudioBalance*>(effect.get()), nullptr);
        else
            EXPECT_EQ(effect, nullptr) << channels << " channels";
    }
}

}  // namespace
