// Volume through the loaded module: every variant driven by its record alone.
//
// Expected samples are the float products input * (p + p) computed here; they
// are compared as bit patterns because the effect promises exactly the plain
// per-sample float product (no rounding other than the multiply's).
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include "support/Buffers.h"
#include "support/HostFixture.h"

namespace {

using aftest::Channels;
using aftest::HostEffect;
using aftest::sameBits;

struct VolumeVariant {
    const char* identifier;
    int channels;
    std::int32_t uniqueId;  // four characters, the first in the high byte
    const char* name;
};

const VolumeVariant kVariants[] = {
    {"Internal Volume Mono", 1, 0x41456E31, "AEn1"},
    {"Internal Volume Stereo", 2, 0x41456E32, "AEn2"},
    {"Internal Volume 5.1", 6, 0x41456E36, "AEn6"},
    {"Internal Volume 16 Channel", 16, 0x41453136, "AE16"},
};

void PrintTo(const VolumeVariant& variant, std::ostream* os) { *os << variant.identifier; }

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

// The test's own model of one buffer: every sample times the gain 2p, in float.
Channels scaled(const Channels& input, float parameter, int frames) {
    const float gain = parameter + parameter;
    Channels out = input;
    for (auto& channel : out) {
        for (int i = 0; i < frames; ++i) channel[i] = channel[i] * gain;
    }
    return out;
}

class VolumeTest : public ::testing::TestWithParam<VolumeVariant> {
protected:
    void SetUp() override {
        fx = HostEffect::Create(GetParam().identifier);
        ASSERT_TRUE(fx) << aftest::LoadedModule::Get().error();
        fx->start(44100.0f, 1024);
    }
    int channels() const { return GetParam().channels; }
    std::unique_ptr<HostEffect> fx;
};

TEST_P(VolumeTest, RecordDescribesTheVariant) {
    AEffect* record = fx->effect();
    EXPECT_EQ(record->numInputs, channels());
    EXPECT_EQ(record->numOutputs, channels());
    EXPECT_EQ(record->uniqueID, GetParam().uniqueId);
    EXPECT_EQ(record->numParams, 1);
    EXPECT_EQ(record->numPrograms, 1);
    EXPECT_NE(record->flags & effFlagsCanReplacing, 0);
    ASSERT_NE(fx->properties(), nullptr);
}

TEST_P(VolumeTest, NewInstanceLeavesBuffersBitIdentical) {
    Channels audio = aftest::taggedNoise(channels(), 1024, 7);
    // Values a multiply by 1 could still disturb: signed zeros, a signalling NaN, infinities.
    audio[0][0] = -0.0f;
    audio[0][1] = std::numeric_limits<float>::signaling_NaN();
    audio[0][2] = -kInfinity;
    audio[0][3] = std::numeric_limits<float>::denorm_min();
    const Channels before = audio;
    fx->processReplacing(audio);
    EXPECT_TRUE(sameBits(before, audio, aftest::NanPolicy::kExactBits));
    EXPECT_EQ(fx->getParameter(0), 0.5f);
}

TEST_P(VolumeTest, QuarterParameterHalvesEverySample) {
    fx->setParameter(0, 0.25f);
    EXPECT_EQ(aftest::bits(fx->getParameter(0)), aftest::bits(0.25f));
    Channels audio = aftest::taggedRamp(channels(), 1024);
    Channels expected = audio;
    for (auto& channel : expected) {
        for (float& sample : channel) sample = sample / 2.0f;  // halving is exact for these integers
    }
    fx->processReplacing(audio);
    EXPECT_TRUE(sameBits(expected, audio));
}

TEST_P(VolumeTest, GainsAndBlockSizesMatchTheFloatProduct) {
    const float parameters[] = {0.0f, 0.125f, 0.25f, 0.5f, 1.0f, 0.3f, 0.77f, kNaN, -0.3f, kInfinity, 1.0e30f};
    const int blockSizes[] = {0, 1, 3, 4, 5, 1024};
    for (float parameter : parameters) {
        for (int frames : blockSizes) {
            SCOPED_TRACE(::testing::Message() << "parameter " << parameter << ", frames " << frames);
            fx->setParameter(0, parameter);
            Channels audio = aftest::taggedNoise(channels(), frames, 11u + static_cast<unsigned>(frames));
            const Channels expected = scaled(audio, parameter, frames);
            fx->processReplacing(audio);
            EXPECT_TRUE(sameBits(expected, audio));
        }
    }
}

TEST_P(VolumeTest, UnityLeavesBuffersUntouchedAfterAnotherGain) {
    fx->setParameter(0, 0.1f);
    Channels first = aftest::taggedNoise(channels(), 64, 3);
    fx->processReplacing(first);
    fx->setParameter(0, 0.5f);
    Channels audio = aftest::taggedNoise(channels(), 64, 4);
    audio[0][5] = std::numeric_limits<float>::signaling_NaN();
    const Channels before = audio;
    fx->processReplacing(audio);
    EXPECT_TRUE(sameBits(before, audio, aftest::NanPolicy::kExactBits));
}

TEST_P(VolumeTest, ZeroSilencesFromTheNextBufferAndShowsMinusInfinity) {
    Channels first = aftest::taggedNoise(channels(), 32, 5);
    const Channels untouched = first;
    fx->processReplacing(first);
    EXPECT_TRUE(sameBits(untouched, first));
    fx->setParameter(0, 0.0f);
    EXPECT_EQ(fx->parameterDisplay(0), "-oo");
    Channels audio = aftest::taggedNoise(channels(), 32, 6);
    const Channels expected = scaled(audio, 0.0f, 32);  // +0 or -0 by the sign of the input
    fx->processReplacing(audio);
    EXPECT_TRUE(sameBits(expected, audio));
    for (const auto& channel : audio) {
        for (float sample : channel) EXPECT_EQ(sample, 0.0f);
    }
}

TEST_P(VolumeTest, NewGainStartsAtTheFirstSampleOfTheNextBuffer) {
    fx->setParameter(0, 0.75f);
    Channels a = aftest::taggedNoise(channels(), 37, 8);
    const Channels expectedA = scaled(a, 0.75f, 37);
    fx->processReplacing(a);
    EXPECT_TRUE(sameBits(expectedA, a));
    fx->setParameter(0, 0.125f);
    Channels b = aftest::taggedNoise(channels(), 37, 9);
    const Channels expectedB = scaled(b, 0.125f, 37);
    fx->processReplacing(b);
    EXPECT_TRUE(sameBits(expectedB, b));
}

TEST_P(VolumeTest, SeparateBuffersScaleTheOutputsInPlaceAndNeverReadTheInputs) {
    fx->setParameter(0, 0.25f);
    Channels inputs = aftest::taggedNoise(channels(), 100, 20);
    Channels outputs = aftest::taggedNoise(channels(), 100, 21);
    const Channels inputsBefore = inputs;
    const Channels expected = scaled(outputs, 0.25f, 100);
    fx->processReplacing(inputs, outputs);
    EXPECT_TRUE(sameBits(expected, outputs));
    EXPECT_TRUE(sameBits(inputsBefore, inputs));
}

TEST_P(VolumeTest, NegativeFrameCountChangesNothing) {
    fx->setParameter(0, 0.25f);
    Channels audio = aftest::taggedNoise(channels(), 8, 30);
    const Channels before = audio;
    fx->processReplacing(audio, -5);
    EXPECT_TRUE(sameBits(before, audio));
    fx->processReplacing(audio, std::numeric_limits<std::int32_t>::min());
    EXPECT_TRUE(sameBits(before, audio));
}

TEST_P(VolumeTest, AccumulatingProcessLeavesOutputsUntouched) {
    for (float parameter : {0.0f, 0.25f, 0.5f, 1.0f, kNaN}) {
        fx->setParameter(0, parameter);
        Channels inputs = aftest::taggedNoise(channels(), 64, 40);
        Channels outputs = aftest::taggedNoise(channels(), 64, 41);
        const Channels inputsBefore = inputs;
        const Channels outputsBefore = outputs;
        fx->process(inputs, outputs);
        EXPECT_TRUE(sameBits(outputsBefore, outputs, aftest::NanPolicy::kExactBits)) << parameter;
        EXPECT_TRUE(sameBits(inputsBefore, inputs, aftest::NanPolicy::kExactBits)) << parameter;
    }
}

TEST_P(VolumeTest, ProgramRestoresUnityAndTellsTheHost) {
    fx->setParameter(0, 0.9f);
    fx->clearCalls();
    fx->setProgram(0);
    EXPECT_EQ(fx->getParameter(0), 0.5f);
    EXPECT_EQ(fx->getProgram(), 0);
    ASSERT_EQ(fx->calls().size(), 1u);
    const aftest::HostCall& call = fx->calls().front();
    EXPECT_EQ(call.effect, fx->effect());
    EXPECT_EQ(call.opcode, audioMasterAutomate);
    EXPECT_EQ(call.index, 0);
    EXPECT_EQ(call.opt, 0.5f);
    // Unity again: the next buffer passes through unchanged.
    Channels audio = aftest::taggedNoise(channels(), 16, 50);
    const Channels before = audio;
    fx->processReplacing(audio);
    EXPECT_TRUE(sameBits(before, audio));
}

TEST_P(VolumeTest, ProgramIndexBoundsFollowTheDispatcher) {
    fx->setParameter(0, 0.9f);
    fx->clearCalls();
    fx->setProgram(1);  // equal to the number of programs: ignored
    EXPECT_EQ(fx->getParameter(0), 0.9f);
    EXPECT_TRUE(fx->calls().empty());
    fx->setProgram(-1);  // a negative program is passed on: it resets too
    EXPECT_EQ(fx->getProgram(), -1);
    EXPECT_EQ(fx->getParameter(0), 0.5f);
    EXPECT_EQ(fx->callsWithOpcode(audioMasterAutomate).size(), 1u);
}

TEST_P(VolumeTest, NamesLabelsAndProgramName) {
    EXPECT_EQ(fx->parameterName(0), "Level");
    EXPECT_EQ(fx->parameterLabel(0), "dB");
    EXPECT_EQ(fx->programName(), "Default");
    for (int index : {1, 2, -1, 1000}) {
        EXPECT_EQ(fx->text(effGetParamName, index, "keep"), "keep") << index;
        EXPECT_EQ(fx->text(effGetParamLabel, index, "keep"), "keep") << index;
        EXPECT_EQ(fx->text(effGetParamDisplay, index, "keep"), "keep") << index;
    }
}

// Display texts derived by hand from the eight-character rule: the gain is 2p;
// the text is float2string(20 * log10(gain)) with the log and the product each
// rounded to float. For example p = 0.25: gain 0.5, log10 -0.30103000998...,
// times 20 gives -6.0206003189...; the sign and "6." take three characters, so
// five fraction digits follow, truncated: -6.02060.
TEST_P(VolumeTest, DisplayTexts) {
    struct Case {
        float parameter;
        const char* text;
    };
    const Case cases[] = {
        {0.5f, "0.000000"},    // unity: 0 dB
        {1.0f, "6.020600"},    // gain 2: 6.0206003189
        {0.25f, "-6.02060"},   // gain 0.5
        {0.125f, "-12.0412"},  // gain 0.25: -12.041200637
        {0.75f, "3.521825"},   // gain 1.5: 3.5218250751
        {0.05f, "-20.0000"},   // gain 0.1f: the log rounds to -1 exactly
        {0.0f, "-oo"},         // silence
        {-0.25f, "-oo"},       // a negative gain is not above 0 either
        {kNaN, "0.000000"},    // a NaN's digits all come out as 0
    };
    for (const Case& c : cases) {
        fx->setParameter(0, c.parameter);
        EXPECT_EQ(fx->parameterDisplay(0), c.text) << "parameter " << c.parameter;
    }
}

TEST_P(VolumeTest, NullTextPointersWriteNothing) {
    fx->setParameter(0, 0.25f);
    for (std::int32_t opcode : {effGetProgramName, effGetParamLabel, effGetParamDisplay,
                                effGetParamName}) {
        EXPECT_EQ(fx->dispatch(opcode, 0, 0, nullptr), 0) << opcode;
    }
    // The effect is unharmed: its texts still come out.
    EXPECT_EQ(fx->parameterDisplay(0), "-6.02060");
}

TEST_P(VolumeTest, OutOfRangeParameterIndicesAreIgnored) {
    fx->setParameter(0, 0.3f);
    fx->setParameter(1, 0.9f);
    fx->setParameter(-1, 0.9f);
    fx->setParameter(1 << 30, kNaN);
    EXPECT_EQ(fx->getParameter(0), 0.3f);
    EXPECT_EQ(fx->getParameter(1), 0.0f);
    EXPECT_EQ(fx->getParameter(-1), 0.0f);
    EXPECT_EQ(fx->getParameter(1 << 30), 0.0f);
}

TEST_P(VolumeTest, ParametersAreStoredUnclamped) {
    // The gain is twice the stored value, so getParameter gives it back exactly
    // for values whose double is representable.
    for (float parameter : {-0.3f, 1.7f, 100.0f, 1.0e-40f}) {
        fx->setParameter(0, parameter);
        EXPECT_EQ(aftest::bits(fx->getParameter(0)), aftest::bits(parameter)) << parameter;
    }
    fx->setParameter(0, kNaN);
    EXPECT_TRUE(std::isnan(fx->getParameter(0)));
}

TEST_P(VolumeTest, SuspendAndResumeKeepTheGain) {
    fx->setParameter(0, 0.25f);
    fx->suspend();
    fx->resume();
    fx->setSampleRate(96000.0f);
    Channels audio = aftest::taggedNoise(channels(), 20, 60);
    const Channels expected = scaled(audio, 0.25f, 20);
    fx->processReplacing(audio);
    EXPECT_TRUE(sameBits(expected, audio));
}

TEST_P(VolumeTest, PropertyAnswers) {
    ML::VSTPropertySupportMixin* properties = fx->properties();
    ASSERT_NE(properties, nullptr);
    EXPECT_EQ(properties->GetParameterType(0), 1);
    EXPECT_EQ(properties->GetParameterMax(0), 6.0f);
    EXPECT_EQ(properties->GetParameterMin(0), -999.0f);
    EXPECT_EQ(properties->GetParameterStep(0), 0.1f);
    EXPECT_TRUE(properties->SupportsDisplayValueToParameter(0));
    EXPECT_FALSE(properties->HasHistory());
    for (unsigned index : {1u, 2u, 0xFFFFFFFFu}) {
        EXPECT_EQ(properties->GetParameterType(index), -1) << index;
        EXPECT_EQ(properties->GetParameterMax(index), 0.0f) << index;
        EXPECT_EQ(properties->GetParameterMin(index), 0.0f) << index;
        EXPECT_EQ(properties->GetParameterStep(index), 0.0f) << index;
        EXPECT_FALSE(properties->SupportsDisplayValueToParameter(index)) << index;
        EXPECT_EQ(properties->ConvertDisplayValueToParameter(index, 6.0f), 0.0f) << index;
        EXPECT_EQ(properties->ConvertParameterValueToDisplay(index, 0.5f), 0.0f) << index;
    }
}

// The conversions, against the stated figures and this test's own transcription:
// display -> parameter is 10^(dB/20) * 0.5 with dB/20 and the power each rounded
// to float; parameter -> display is 20 * log10(2p) with the log rounded to float.
float displayToParameter(float decibels) {
    const float exponent = static_cast<float>(static_cast<double>(decibels) / 20.0);
    const float power = static_cast<float>(std::pow(10.0, static_cast<double>(exponent)));
    return power * 0.5f;
}
float parameterToDisplay(float parameter) {
    const float doubled = parameter + parameter;
    const float logarithm = static_cast<float>(std::log10(static_cast<double>(doubled)));
    return static_cast<float>(20.0 * static_cast<double>(logarithm));
}

TEST_P(VolumeTest, Conversions) {
    ML::VSTPropertySupportMixin* properties = fx->properties();
    ASSERT_NE(properties, nullptr);
    EXPECT_EQ(properties->ConvertParameterValueToDisplay(0, 0.5f), 0.0f);
    EXPECT_NEAR(properties->ConvertDisplayValueToParameter(0, 6.0f), 0.9976, 0.0001);
    EXPECT_EQ(aftest::bits(properties->ConvertDisplayValueToParameter(0, 6.0f)), aftest::bits(displayToParameter(6.0f)));
    // Only the exact floor and the exact zero are special.
    EXPECT_EQ(properties->ConvertDisplayValueToParameter(0, -999.0f), 0.0f);
    EXPECT_EQ(properties->ConvertParameterValueToDisplay(0, 0.0f), -999.0f);
    EXPECT_EQ(properties->ConvertParameterValueToDisplay(0, -0.0f), -999.0f);
    EXPECT_EQ(properties->ConvertDisplayValueToParameter(0, 0.0f), 0.5f);
    for (float decibels : {-998.9f, -1000.0f, -60.0f, -6.0f, 0.1f, 3.0f, 12.0f}) {
        EXPECT_EQ(aftest::bits(properties->ConvertDisplayValueToParameter(0, decibels)),
                  aftest::bits(displayToParameter(decibels)))
            << decibels;
    }
    for (float parameter : {1.0f, 0.25f, 0.001f, 0.7f, 2.0f}) {
        EXPECT_EQ(aftest::bits(properties->ConvertParameterValueToDisplay(0, parameter)),
                  aftest::bits(parameterToDisplay(parameter)))
            << parameter;
    }
    EXPECT_NEAR(properties->ConvertParameterValueToDisplay(0, 1.0f), 6.0206, 0.0001);
    // Out-of-domain values give the formula's own answers without trapping.
    EXPECT_TRUE(std::isnan(properties->ConvertParameterValueToDisplay(0, -0.25f)));
    EXPECT_TRUE(std::isnan(properties->ConvertParameterValueToDisplay(0, kNaN)));
    EXPECT_TRUE(std::isnan(properties->ConvertDisplayValueToParameter(0, kNaN)));
    EXPECT_EQ(properties->ConvertDisplayValueToParameter(0, -kInfinity), 0.0f);
}

TEST_P(VolumeTest, NullBuffersAreHarmless) {
    fx->setParameter(0, 0.25f);
    AEffect* record = fx->effect();
    record->processReplacing(record, nullptr, nullptr, 64);
    record->process(record, nullptr, nullptr, 64);
    // Still working afterwards.
    Channels audio = aftest::taggedNoise(channels(), 16, 70);
    const Channels expected = scaled(audio, 0.25f, 16);
    fx->processReplacing(audio);
    EXPECT_TRUE(sameBits(expected, audio));
}

INSTANTIATE_TEST_SUITE_P(Variants, VolumeTest, ::testing::ValuesIn(kVariants),
                         [](const ::testing::TestParamInfo<VolumeVariant>& info) {
                             return std::string(info.param.name);
                         });

TEST(VolumeWithoutCallback, ProgramAndProcessingNeedNoHost) {
    auto fx = HostEffect::Create("Internal Volume Stereo", /*withCallback=*/false);
    ASSERT_TRUE(fx);
    fx->start();
    fx->setParameter(0, 0.9f);
    const std::size_t strayBefore = aftest::strayHostCalls().size();
    fx->setProgram(0);
    EXPECT_EQ(fx->getParameter(0), 0.5f);
    EXPECT_TRUE(fx->calls().empty());
    EXPECT_EQ(aftest::strayHostCalls().size(), strayBefore);
}

}  // namespace
