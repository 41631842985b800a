// Channel Volume: one decibel level per channel, through the plug-in record
// and the property interface.
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "LevelTestSupport.h"
#include "effects/level/ChannelVolume.h"
#include "effects/variants/NamedVariants.h"
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

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

std::vector<std::string> stereoNames() { return {"Left ", "Right "}; }
std::vector<std::string> surroundNames() {
    return {"Left ", "Right ", "Left Surround", "Right Surround", "Center", "LFE"};
}
std::vector<std::string> numberedNames() {
    std::vector<std::string> names;
    for (int n = 1; n <= 16; ++n) names.push_back("Channel " + std::to_string(n));
    return names;
}

template <class Effect, unsigned Channels, VstInt32 UniqueId, std::vector<std::string> (*Names)()>
struct Variant {
    using Type = Effect;
    static constexpr unsigned kChannels = Channels;
    static constexpr VstInt32 kUniqueId = UniqueId;
    static std::vector<std::string> names() { return Names(); }
};

using Variants = ::testing::Types<Variant<AF::AudioChannelEnvelope2, 2, 0x41456E32, stereoNames>,
                                  Variant<AF::AudioChannelEnvelope6, 6, 0x41456E36, surroundNames>,
                                  Variant<AF::AudioChannelEnvelope16, 16, 0x41453136, numberedNames>>;

// A different level for every channel, none of them unity.
float levelOf(unsigned channel) { return 0.0625f + 0.0546875f * static_cast<float>(channel); }

// The gain of a level: twice the level, in single precision.
float gainOf(float level) { return 2.0f * level; }

template <class V>
class ChannelVolumeTest : public ::testing::Test {
protected:
    static constexpr unsigned kChannels = V::kChannels;
    static constexpr VstInt32 kCount = static_cast<VstInt32>(V::kChannels);

    ChannelVolumeTest() { automateReports().clear(); }

    void setLevels(float (*level)(unsigned)) {
        for (unsigned c = 0; c < kChannels; ++c) host.setParameter(static_cast<VstInt32>(c), level(c));
    }

    // Replacing call on separate buffers: every output is input x gain(c); the
    // inputs are unchanged.
    void expectScaledReplacing(const std::function<float(unsigned)>& gain, const std::string& what) {
        for (int frames : kFrameCounts) {
            ChannelBuffers in(kChannels, frames), out(kChannels, frames);
            in.fill(inputSample);
            out.fill(outputSample);
            host.processReplacing(in, out);
            out.expectSamples([&](unsigned c, int i) { return inputSample(c, i) * gain(c); },
                              what + ", frames " + std::to_string(frames));
            in.expectSamples(inputSample, what + ", input kept");
        }
    }

    typename V::Type* effect = new typename V::Type(level_test::recordingHost);
    ML::VSTPropertySupportMixin* properties = effect;
    HostedEffect host{effect->getAeffect()};
};

TYPED_TEST_SUITE(ChannelVolumeTest, Variants);

TYPED_TEST(ChannelVolumeTest, RecordDescribesTheVariant) {
    AEffect* record = this->host.record();
    EXPECT_EQ(record->numInputs, this->kCount);
    EXPECT_EQ(record->numOutputs, this->kCount);
    EXPECT_EQ(record->uniqueID, TypeParam::kUniqueId);
    EXPECT_EQ(record->numPrograms, 1);
    EXPECT_EQ(record->numParams, this->kCount);
    EXPECT_NE(record->flags & effFlagsCanReplacing, 0);
}

TYPED_TEST(ChannelVolumeTest, NewInstanceIsAtUnity) {
    for (VstInt32 index = 0; index < this->kCount; ++index)
        EXPECT_EQ(bits(this->host.getParameter(index)), bits(0.5f));
}

// All levels at unity: the replacing call returns at once, so even separate
// output buffers keep what the host put there.
TYPED_TEST(ChannelVolumeTest, AllUnityLeavesTheOutputsAsTheyWere) {
    for (int frames : kFrameCounts) {
        ChannelBuffers in(this->kChannels, frames), out(this->kChannels, frames);
        in.fill(inputSample);
        out.fill(outputSample);
        this->host.processReplacing(in, out);
        out.expectSamples(outputSample, "separate, frames " + std::to_string(frames));
        ChannelBuffers buffers(this->kChannels, frames);
        buffers.fill(inputSample);
        this->host.processInPlace(buffers);
        buffers.expectSamples(inputSample, "in place, frames " + std::to_string(frames));
    }
}

TYPED_TEST(ChannelVolumeTest, AllUnityAccumulatingCallAddsTheUnscaledInputs) {
    for (int frames : kFrameCounts) {
        ChannelBuffers in(this->kChannels, frames), out(this->kChannels, frames);
        in.fill(inputSample);
        out.fill(outputSample);
        this->host.process(in, out);
        out.expectSamples([](unsigned c, int i) { return outputSample(c, i) + inputSample(c, i); },
                          "frames " + std::to_string(frames));
        in.expectSamples(inputSample, "unity leaves the inputs");
    }
}

TYPED_TEST(ChannelVolumeTest, EachChannelHasItsOwnGain) {
    this->setLevels(levelOf);
    this->expectScaledReplacing([](unsigned c) { return gainOf(levelOf(c)); }, "levels");
}

TYPED_TEST(ChannelVolumeTest, InPlaceScalesEachChannel) {
    this->setLevels(levelOf);
    for (int frames : kFrameCounts) {
        ChannelBuffers buffers(this->kChannels, frames);
        buffers.fill(inputSample);
        this->host.processInPlace(buffers);
        buffers.expectSamples([](unsigned c, int i) { return inputSample(c, i) * gainOf(levelOf(c)); },
                              "frames " + std::to_string(frames));
    }
}

// One level off unity ends the shortcut: every channel is then copied with its
// gain, so a unity channel's separate output receives the input.
TYPED_TEST(ChannelVolumeTest, OneLevelOffUnityCopiesEveryChannel) {
    const VstInt32 last = this->kCount - 1;
    this->host.setParameter(last, 0.25f);
    this->expectScaledReplacing([](unsigned c) { return c == TypeParam::kChannels - 1 ? 0.5f : 1.0f; }, "last");
    // Back to unity: the shortcut returns from the next buffer on.
    this->host.setParameter(last, 0.5f);
    ChannelBuffers in(this->kChannels, 5), out(this->kChannels, 5);
    in.fill(inputSample);
    out.fill(outputSample);
    this->host.processReplacing(in, out);
    out.expectSamples(outputSample, "unity again");
}

// The accumulating call scales the caller's inputs in place and leaves them
// scaled, then adds them to the outputs.
TYPED_TEST(ChannelVolumeTest, AccumulatingCallScalesTheInputsAndAddsThem) {
    this->setLevels(levelOf);
    for (int frames : kFrameCounts) {
        ChannelBuffers in(this->kChannels, frames), out(this->kChannels, frames);
        in.fill(inputSample);
        out.fill(outputSample);
        this->host.process(in, out);
        const auto scaled = [](unsigned c, int i) { return inputSample(c, i) * gainOf(levelOf(c)); };
        in.expectSamples(scaled, "inputs hold the scaled samples, frames " + std::to_string(frames));
        out.expectSamples([&](unsigned c, int i) { return outputSample(c, i) + scaled(c, i); },
                          "frames " + std::to_string(frames));
    }
}

// In place the accumulating call adds the scaled samples to themselves.
TYPED_TEST(ChannelVolumeTest, AccumulatingCallInPlaceDoublesTheScaledSamples) {
    this->setLevels(levelOf);
    for (int frames : kFrameCounts) {
        ChannelBuffers buffers(this->kChannels, frames);
        buffers.fill(inputSample);
        this->host.process(buffers, buffers);
        buffers.expectSamples(
            [](unsigned c, int i) {
                const float scaled = inputSample(c, i) * gainOf(levelOf(c));
                return scaled + scaled;
            },
            "frames " + std::to_string(frames));
    }
}

TYPED_TEST(ChannelVolumeTest, LevelZeroSilencesTheChannel) {
    this->host.setParameter(0, 0.0f);
    this->expectScaledReplacing([](unsigned c) { return c == 0 ? 0.0f : 1.0f; }, "channel 0 silent");
    ChannelBuffers buffers(this->kChannels, 4);
    buffers.fill(inputSample);
    this->host.processInPlace(buffers);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(std::fabs(buffers.at(0, i)), 0.0f);
}

TYPED_TEST(ChannelVolumeTest, LevelsOutsideTheRangeFollowTheFormula) {
    for (float level : {-0.5f, 1.5f, 3.0f, kInfinity, -kInfinity, kNaN}) {
        this->host.setParameter(0, level);
        EXPECT_EQ(bits(this->host.getParameter(0)), bits(level));
        const float gain = gainOf(level);
        this->expectScaledReplacing([gain](unsigned c) { return c == 0 ? gain : 1.0f; },
                                    "level " + std::to_string(level));
    }
}

TYPED_TEST(ChannelVolumeTest, ANewLevelAppliesFromTheNextBuffer) {
    ChannelBuffers buffers(this->kChannels, 4);
    buffers.fill(inputSample);
    this->host.setParameter(0, 1.0f);
    this->host.processInPlace(buffers);
    this->host.setParameter(0, 0.25f);
    this->host.processInPlace(buffers);
    buffers.expectSamples(
        [](unsigned c, int i) { return c == 0 ? inputSample(c, i) * 2.0f * 0.5f : inputSample(c, i); },
        "two buffers");
}

TYPED_TEST(ChannelVolumeTest, ZeroOrNegativeFrameCountWritesNothing) {
    this->setLevels(levelOf);
    for (int frames : {0, -1, -4096}) {
        ChannelBuffers in(this->kChannels, 4), out(this->kChannels, 4);
        in.fill(inputSample);
        out.fill(outputSample);
        this->host->processReplacing(this->host.record(), in.pointers(), out.pointers(), frames);
        this->host->process(this->host.record(), in.pointers(), out.pointers(), frames);
        out.expectSamples(outputSample, "frames " + std::to_string(frames));
        in.expectSamples(inputSample, "frames " + std::to_string(frames));
    }
}

TYPED_TEST(ChannelVolumeTest, NullBuffersAreHarmless) {
    this->setLevels(levelOf);
    this->host->processReplacing(this->host.record(), nullptr, nullptr, 8);
    this->host->process(this->host.record(), nullptr, nullptr, 8);
    // Without inputs there is nothing to copy or add: the outputs stay.
    ChannelBuffers out(this->kChannels, 8);
    out.fill(outputSample);
    this->host->processReplacing(this->host.record(), nullptr, out.pointers(), 8);
    this->host->process(this->host.record(), nullptr, out.pointers(), 8);
    out.expectSamples(outputSample, "no inputs");
}

// An index outside the channels is ignored by the setter, reads as 0 and
// displays nothing; the channels keep their levels.
TYPED_TEST(ChannelVolumeTest, OutOfRangeIndicesAreIgnored) {
    for (VstInt32 index : {this->kCount, this->kCount + 1, -1, std::numeric_limits<VstInt32>::min(),
                           std::numeric_limits<VstInt32>::max()}) {
        this->host.setParameter(index, 0.0f);
        EXPECT_EQ(bits(this->host.getParameter(index)), 0u) << "index " << index;
        EXPECT_TRUE(TextAnswer(this->host, effGetParamDisplay, index).untouched()) << "index " << index;
    }
    for (VstInt32 index = 0; index < this->kCount; ++index)
        EXPECT_EQ(bits(this->host.getParameter(index)), bits(0.5f));
    // Still all at unity: separate outputs are left alone.
    ChannelBuffers in(this->kChannels, 3), out(this->kChannels, 3);
    in.fill(inputSample);
    out.fill(outputSample);
    this->host.processReplacing(in, out);
    out.expectSamples(outputSample, "unity kept");
}

TYPED_TEST(ChannelVolumeTest, ProgramResetsEveryLevelAndReportsIt) {
    this->setLevels(levelOf);
    automateReports().clear();
    this->host.dispatch(effSetProgram, 0, 0);
    ASSERT_EQ(automateReports().size(), this->kChannels);
    for (unsigned c = 0; c < this->kChannels; ++c) {
        EXPECT_EQ(automateReports()[c].index, static_cast<VstInt32>(c));
        EXPECT_EQ(bits(automateReports()[c].value), bits(0.5f));
        EXPECT_EQ(bits(this->host.getParameter(static_cast<VstInt32>(c))), bits(0.5f));
    }
    EXPECT_EQ(this->host.dispatch(effGetProgram), 0);
    ChannelBuffers in(this->kChannels, 5), out(this->kChannels, 5);
    in.fill(inputSample);
    out.fill(outputSample);
    this->host.processReplacing(in, out);
    out.expectSamples(outputSample, "unity after the program");
}

// A null text pointer gets nothing written, whatever the request.
TYPED_TEST(ChannelVolumeTest, NullTextPointersAreHarmless) {
    for (VstInt32 opcode : {effGetProgramName, effGetParamLabel, effGetParamDisplay,
                            effGetParamName})
        for (VstInt32 index : {0, this->kCount - 1, this->kCount, -1}) this->host.dispatch(opcode, index, 0, nullptr);
    EXPECT_EQ(TextAnswer(this->host, effGetParamLabel, 0).text(), "dB");
}

TYPED_TEST(ChannelVolumeTest, NamesLabelsAndProgramName) {
    const std::vector<std::string> names = TypeParam::names();
    for (VstInt32 index = 0; index < this->kCount; ++index) {
        EXPECT_EQ(TextAnswer(this->host, effGetParamName, index).text(),
                  names[static_cast<std::size_t>(index)]);
    }
    // Past the last channel: stereo and 5.1 write nothing, the numbered names
    // go on counting.
    for (VstInt32 index : {this->kCount, -1}) {
        const TextAnswer past(this->host, effGetParamName, index);
        if (this->kChannels == 16)
            EXPECT_EQ(past.text(), "Channel " + std::to_string(index + 1));
        else
            EXPECT_TRUE(past.untouched()) << "index " << index;
    }
    for (VstInt32 index = -1; index <= this->kCount; ++index)
        EXPECT_EQ(TextAnswer(this->host, effGetParamLabel, index).text(), "dB") << "index " << index;
    EXPECT_EQ(TextAnswer(this->host, effGetProgramName, 0).text(), "Default");
}

TEST(ChannelVolumeNames, NumberedNamesFollowTheInstalledTranslation) {
    level_test::ScopedTranslation translation("$$$/Korvex/AudioFilters/16ChannelDefault=Channel ", u"Kanal ");
    HostedEffect host((new AF::AudioChannelEnvelope16(nullptr))->getAeffect());
    EXPECT_EQ(TextAnswer(host, effGetParamName, 0).text(), "Kanal 1");
    EXPECT_EQ(TextAnswer(host, effGetParamName, 15).text(), "Kanal 16");
}

// Displays are 20 log10(2 x level) with eight characters, digits past the
// eighth dropped (worked out by hand from the float values of the logs).
TYPED_TEST(ChannelVolumeTest, DisplaysInDecibels) {
    struct Case {
        float level;
        const char* text;
    };
    const Case cases[] = {{0.5f, "0.000000"}, {0.0f, "-oo"},      {1.0f, "6.020600"},  {0.25f, "-6.02060"},
                          {0.1f, "-13.9794"}, {0.75f, "3.521825"}, {1.0e30f, "606.0205"}, {-0.5f, "-oo"},
                          {kNaN, "0.000000"}};
    for (VstInt32 index = 0; index < this->kCount; ++index) {
        for (const Case& c : cases) {
            this->host.setParameter(index, c.level);
            EXPECT_EQ(TextAnswer(this->host, effGetParamDisplay, index).text(), c.text)
                << "index " << index << " level " << c.level;
        }
        // +inf dB does not fit eight characters: the buffer keeps its contents.
        this->host.setParameter(index, kInfinity);
        EXPECT_TRUE(TextAnswer(this->host, effGetParamDisplay, index).untouched());
    }
}

TYPED_TEST(ChannelVolumeTest, PropertyAnswersAreTheSameForEveryIndex) {
    ML::VSTPropertySupportMixin* p = this->properties;
    const unsigned count = this->kChannels;
    // Independent transcriptions, in double and rounded once.
    const float sixDb = static_cast<float>(0.5 * std::pow(10.0, 6.0 / 20.0));
    const float twelveDb = static_cast<float>(0.5 * std::pow(10.0, 12.0 / 20.0));
    const float fullScaleDb = static_cast<float>(20.0 * std::log10(2.0 * 1.0));
    const float pointThreeDb = static_cast<float>(20.0 * std::log10(2.0 * static_cast<double>(0.3f)));
    constexpr double kFigureTolerance = 1e-7;  // the quoted figures carry seven decimals
    for (unsigned index : {0u, count - 1, count, count + 1, 1000u}) {
        EXPECT_EQ(p->GetParameterType(index), 1) << "index " << index;
        EXPECT_EQ(bits(p->GetParameterMax(index)), bits(6.0f));
        EXPECT_EQ(bits(p->GetParameterMin(index)), bits(-999.0f));
        EXPECT_EQ(bits(p->GetParameterStep(index)), bits(0.1f));
        EXPECT_TRUE(p->SupportsDisplayValueToParameter(index));
        EXPECT_EQ(bits(p->ConvertParameterValueToDisplay(index, 0.0f)), bits(-999.0f));
        EXPECT_EQ(bits(p->ConvertParameterValueToDisplay(index, 0.5f)), bits(0.0f));
        EXPECT_EQ(bits(p->ConvertParameterValueToDisplay(index, 1.0f)), bits(fullScaleDb));
        EXPECT_EQ(bits(p->ConvertParameterValueToDisplay(index, 0.3f)), bits(pointThreeDb));
        EXPECT_TRUE(std::isnan(p->ConvertParameterValueToDisplay(index, -0.5f)));
        EXPECT_EQ(bits(p->ConvertDisplayValueToParameter(index, -999.0f)), bits(0.0f));
        EXPECT_EQ(bits(p->ConvertDisplayValueToParameter(index, 0.0f)), bits(0.5f));
        EXPECT_EQ(bits(p->ConvertDisplayValueToParameter(index, 6.0f)), bits(sixDb));
        EXPECT_NEAR(p->ConvertDisplayValueToParameter(index, 6.0f), 0.9976312, kFigureTolerance);
        // Not clamped: above +6 dB the level passes 1.
        EXPECT_EQ(bits(p->ConvertDisplayValueToParameter(index, 12.0f)), bits(twelveDb));
        EXPECT_NEAR(p->ConvertDisplayValueToParameter(index, 12.0f), 1.9905359, kFigureTolerance);
        // Below the floor the formula applies: far below, the level underflows to 0.
        EXPECT_EQ(bits(p->ConvertDisplayValueToParameter(index, -1000.0f)), bits(0.0f));
        EXPECT_TRUE(std::isnan(p->ConvertDisplayValueToParameter(index, kNaN)));
        EXPECT_EQ(p->ConvertDisplayValueToParameter(index, kInfinity), kInfinity);
    }
    EXPECT_FALSE(p->HasHistory());
}

TEST(ChannelVolumeLifetime, DeletingThroughThePropertyInterfaceRunsTheWholeDestructor) {
    // The sanitizer build reports the level vectors as leaked if it does not.
    ML::VSTPropertySupportMixin* properties = new AF::AudioChannelEnvelope6(nullptr);
    delete properties;
}

TEST(ChannelVolumeCreator, MakesTheRegisteredChannelCountsOnly) {
    for (unsigned channels = 0; channels <= 17; ++channels) {
        std::unique_ptr<AudioEffect> effect(AF::createVariant(AF::Family::channelVolume, channels, nullptr));
        switch (channels) {
            case 2: EXPECT_NE(dynamic_cast<AF::AudioChannelEnvelope2*>(effect.get()), nullptr); break;
            case 6: EXPECT_NE(dynamic_cast<AF::AudioChannelEnvelope6*>(effect.get()), nullptr); break;
            case 16: EXPECT_NE(dynamic_cast<AF::AudioChannelEnvelope16*>(effect.get()), nullptr); break;
            default: EXPECT_EQ(effect, nullptr) << channels << " channels"; break;
        }
    }
}

}  // namespace
