// Mute: master and per-channel toggles, strictly above 0.5, through the
// plug-in record and the property interface.
#include <cmath>
#include <limits>
#include <memory>

#include "LevelTestSupport.h"
#include "effects/level/Mute.h"
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

template <class Effect, unsigned Channels, VstInt32 UniqueId>
struct Variant {
    using Type = Effect;
    static constexpr unsigned kChannels = Channels;
    static constexpr VstInt32 kUniqueId = UniqueId;
};

using Variants = ::testing::Types<Variant<AF::AudioMute1, 1, 0x414D6E31>, Variant<AF::AudioMute2, 2, 0x414D6E32>,
                                  Variant<AF::AudioMute6, 6, 0x414D6E36>, Variant<AF::AudioMute16, 16, 0x414D3136>>;

template <class V>
class MuteTest : public ::testing::Test {
protected:
    static constexpr unsigned kChannels = V::kChannels;
    static constexpr VstInt32 kToggles = static_cast<VstInt32>(V::kChannels + 1);

    MuteTest() { automateReports().clear(); }

    // Runs one replacing call on separate buffers and checks that exactly the
    // channels `muted` answers true for are +0.0, the others as the host left
    // them, and the inputs unread and unchanged.
    template <class Muted>
    void expectMutedChannels(Muted muted, const std::string& what) {
        for (int frames : kFrameCounts) {
            ChannelBuffers in(kChannels, frames), out(kChannels, frames);
            in.fill(inputSample);
            out.fill(outputSample);
            host.processReplacing(in, out);
            out.expectSamples([&](unsigned c, int i) { return muted(c) ? 0.0f : outputSample(c, i); },
                              what + ", frames " + std::to_string(frames));
            in.expectSamples(inputSample, what + ", input kept");
        }
    }

    typename V::Type* effect = new typename V::Type(level_test::recordingHost);
    ML::VSTPropertySupportMixin* properties = effect;
    HostedEffect host{effect->getAeffect()};
};

TYPED_TEST_SUITE(MuteTest, Variants);

TYPED_TEST(MuteTest, RecordDescribesTheVariant) {
    AEffect* record = this->host.record();
    EXPECT_EQ(record->numInputs, static_cast<VstInt32>(TypeParam::kChannels));
    EXPECT_EQ(record->numOutputs, static_cast<VstInt32>(TypeParam::kChannels));
    EXPECT_EQ(record->uniqueID, TypeParam::kUniqueId);
    EXPECT_EQ(record->numPrograms, 1);
    EXPECT_EQ(record->numParams, this->kToggles);
    EXPECT_NE(record->flags & effFlagsCanReplacing, 0);
}

TYPED_TEST(MuteTest, NewInstanceHasEveryToggleOffAndLeavesTheOutputs) {
    for (VstInt32 index = 0; index < this->kToggles; ++index) EXPECT_EQ(bits(this->host.getParameter(index)), 0u);
    this->expectMutedChannels([](unsigned) { return false; }, "fresh");
}

TYPED_TEST(MuteTest, MasterOnSilencesEveryChannelWhateverTheChannelToggles) {
    this->host.setParameter(0, 1.0f);
    this->expectMutedChannels([](unsigned) { return true; }, "master on");
    // The channel toggles set explicitly off change nothing.
    for (VstInt32 index = 1; index < this->kToggles; ++index) this->host.setParameter(index, 0.0f);
    this->expectMutedChannels([](unsigned) { return true; }, "master on, channels off");
    this->host.setParameter(1, 1.0f);
    this->expectMutedChannels([](unsigned) { return true; }, "master on, channel 1 on");
}

TYPED_TEST(MuteTest, EachChannelToggleSilencesOnlyItsOwnOutput) {
    for (unsigned toggle = 1; toggle <= this->kChannels; ++toggle) {
        for (VstInt32 index = 0; index < this->kToggles; ++index) this->host.setParameter(index, 0.0f);
        this->host.setParameter(static_cast<VstInt32>(toggle), 1.0f);
        this->expectMutedChannels([toggle](unsigned c) { return c == toggle - 1; },
                                  "toggle " + std::to_string(toggle));
    }
}

// On a mono mute index 2 is past the toggles: it is ignored, nothing is muted.
TYPED_TEST(MuteTest, SecondChannelToggleSilencesOutputOne) {
    this->host.setParameter(2, 1.0f);
    this->expectMutedChannels([&](unsigned c) { return this->kChannels >= 2 && c == 1; }, "toggle 2");
}

TYPED_TEST(MuteTest, OnlyValuesStrictlyAboveHalfCountAsOn) {
    struct Case {
        float value;
        bool on;
    };
    for (const Case& toggle : {Case{0.5f, false}, Case{0.51f, true}, Case{std::nextafter(0.5f, 1.0f), true},
                               Case{kNaN, false}, Case{kInfinity, true}, Case{-kInfinity, false}, Case{-1.0f, false},
                               Case{2.0f, true}}) {
        const std::string what = "value " + std::to_string(toggle.value);
        this->host.setParameter(0, toggle.value);
        this->host.setParameter(1, 0.0f);
        this->expectMutedChannels([&](unsigned) { return toggle.on; }, "master " + what);
        this->host.setParameter(0, 0.0f);
        this->host.setParameter(1, toggle.value);
        this->expectMutedChannels([&](unsigned c) { return toggle.on && c == 0; }, "channel 1 " + what);
    }
}

TYPED_TEST(MuteTest, InPlaceClearsTheMutedChannelOnly) {
    this->host.setParameter(1, 1.0f);
    for (int frames : kFrameCounts) {
        ChannelBuffers buffers(this->kChannels, frames);
        buffers.fill(inputSample);
        this->host.processInPlace(buffers);
        buffers.expectSamples([](unsigned c, int i) { return c == 0 ? 0.0f : inputSample(c, i); },
                              "frames " + std::to_string(frames));
    }
}

TYPED_TEST(MuteTest, TheInputsAreNeverRead) {
    this->host.setParameter(1, 1.0f);
    ChannelBuffers out(this->kChannels, 5);
    out.fill(outputSample);
    this->host->processReplacing(this->host.record(), nullptr, out.pointers(), out.frames());
    out.expectSamples([](unsigned c, int i) { return c == 0 ? 0.0f : outputSample(c, i); }, "no inputs");
}

TYPED_TEST(MuteTest, AccumulatingCallDoesNothing) {
    this->host.setParameter(0, 1.0f);
    for (int frames : kFrameCounts) {
        ChannelBuffers in(this->kChannels, frames), out(this->kChannels, frames);
        in.fill(inputSample);
        out.fill(outputSample);
        this->host.process(in, out);
        out.expectSamples(outputSample, "frames " + std::to_string(frames));
        in.expectSamples(inputSample, "input kept");
    }
}

TYPED_TEST(MuteTest, ZeroOrNegativeFrameCountWritesNothing) {
    this->host.setParameter(0, 1.0f);
    for (int frames : {0, -1, -4096}) {
        ChannelBuffers in(this->kChannels, 4), out(this->kChannels, 4);
        out.fill(outputSample);
        this->host->processReplacing(this->host.record(), in.pointers(), out.pointers(), frames);
        out.expectSamples(outputSample, "frames " + std::to_string(frames));
    }
    this->host->processReplacing(this->host.record(), nullptr, nullptr, 8);
}

TYPED_TEST(MuteTest, ProgramSwitchesOffTheMasterOnly) {
    this->host.setParameter(0, 1.0f);
    this->host.setParameter(1, 1.0f);
    automateReports().clear();
    EXPECT_EQ(this->host.dispatch(effSetProgram, 0, 0), 0);
    ASSERT_EQ(automateReports().size(), 1u);
    EXPECT_EQ(automateReports()[0].index, 0);
    EXPECT_EQ(bits(automateReports()[0].value), bits(0.0f));
    EXPECT_EQ(bits(this->host.getParameter(0)), bits(0.0f));
    EXPECT_EQ(bits(this->host.getParameter(1)), bits(1.0f));
    this->expectMutedChannels([](unsigned c) { return c == 0; }, "after the program");
}

TYPED_TEST(MuteTest, ParametersAreStoredAsTheyComeAndOutOfRangeIndicesIgnored) {
    const float values[] = {0.25f, -3.0f, 7.5f, kInfinity, -kInfinity};
    for (VstInt32 index = 0; index < this->kToggles; ++index) {
        for (float value : values) {
            this->host.setParameter(index, value);
            EXPECT_EQ(bits(this->host.getParameter(index)), bits(value));
        }
        this->host.setParameter(index, kNaN);
        EXPECT_TRUE(std::isnan(this->host.getParameter(index)));
        this->host.setParameter(index, 0.75f);
    }
    for (VstInt32 index : {this->kToggles, this->kToggles + 1, -1, std::numeric_limits<VstInt32>::min()}) {
        this->host.setParameter(index, 1.0f);
        EXPECT_EQ(bits(this->host.getParameter(index)), 0u) << "index " << index;
    }
    for (VstInt32 index = 0; index < this->kToggles; ++index)
        EXPECT_EQ(bits(this->host.getParameter(index)), bits(0.75f));
}

// A null text pointer gets nothing written, whatever the request.
TYPED_TEST(MuteTest, NullTextPointersAreHarmless) {
    for (VstInt32 opcode : {effGetProgramName, effGetParamLabel, effGetParamDisplay,
                            effGetParamName})
        for (VstInt32 index : {0, 1, this->kToggles, -1}) this->host.dispatch(opcode, index, 0, nullptr);
    EXPECT_EQ(TextAnswer(this->host, effGetParamName, 1).text(), "Mute 1");
}

// Names with the English texts: the master is the key's text alone ("Mute ",
// with its blank), channel k appends k; the index is not range-checked.
TYPED_TEST(MuteTest, NamesAndLabels) {
    EXPECT_EQ(TextAnswer(this->host, effGetParamName, 0).text(), "Mute ");
    for (VstInt32 index = 1; index <= this->kToggles; ++index)
        EXPECT_EQ(TextAnswer(this->host, effGetParamName, index).text(), "Mute " + std::to_string(index));
    EXPECT_EQ(TextAnswer(this->host, effGetParamName, -1).text(), "Mute -1");
    for (VstInt32 index = -1; index <= this->kToggles; ++index)
        EXPECT_EQ(TextAnswer(this->host, effGetParamLabel, index).text(), "Mute ") << "index " << index;
    EXPECT_EQ(TextAnswer(this->host, effGetProgramName, 0).text(), "Default");
}

// Every variant names index 3, even those with fewer toggles.
TYPED_TEST(MuteTest, ThirdNameIsMuteThree) {
    EXPECT_EQ(TextAnswer(this->host, effGetParamName, 3).text(), "Mute 3");
}

// The names are looked up afresh on every call, so an installed translation
// shows at once, and reaches the host as UTF-8.
TYPED_TEST(MuteTest, NamesFollowTheInstalledTranslation) {
    level_test::ScopedTranslation translation("$$$/Korvex/AudioFilters/MuteLabel=Mute ", u"D\u00e9sactiver ");
    EXPECT_EQ(TextAnswer(this->host, effGetParamName, 0).text(), "D\xC3\xA9sactiver ");
    EXPECT_EQ(TextAnswer(this->host, effGetParamName, 3).text(), "D\xC3\xA9sactiver 3");
    EXPECT_EQ(TextAnswer(this->host, effGetParamLabel, 1).text(), "D\xC3\xA9sactiver ");
}

// Displays: the raw value with eight characters, digits past the eighth
// dropped; a value too large for eight characters leaves the buffer alone.
TYPED_TEST(MuteTest, DisplaysTheRawValue) {
    struct Case {
        float value;
        const char* text;
    };
    const Case cases[] = {{0.0f, "0.000000"},   {1.0f, "1.000000"},        {0.5f, "0.500000"},
                          {0.51f, "0.509999"},  {-0.25f, "-0.25000"},      {12345.678f, "12345.67"},
                          {kNaN, "0.000000"}};
    for (VstInt32 index = 0; index < this->kToggles; ++index) {
        for (const Case& c : cases) {
            this->host.setParameter(index, c.value);
            EXPECT_EQ(TextAnswer(this->host, effGetParamDisplay, index).text(), c.text)
                << "index " << index;
        }
        for (float huge : {kInfinity, -kInfinity, 1.0e9f}) {
            this->host.setParameter(index, huge);
            EXPECT_TRUE(TextAnswer(this->host, effGetParamDisplay, index).untouched());
        }
    }
    for (VstInt32 index : {this->kToggles, -1})
        EXPECT_TRUE(TextAnswer(this->host, effGetParamDisplay, index).untouched()) << "index " << index;
}

TYPED_TEST(MuteTest, PropertyAnswers) {
    ML::VSTPropertySupportMixin* p = this->properties;
    const unsigned toggles = static_cast<unsigned>(this->kToggles);
    for (unsigned index : {0u, 1u, toggles - 1, toggles, toggles + 1, 1000u}) {
        EXPECT_EQ(p->GetParameterType(index), 4) << "index " << index;
        EXPECT_EQ(bits(p->GetParameterMax(index)), bits(1.0f));
        EXPECT_EQ(bits(p->GetParameterMin(index)), bits(0.0f));
        EXPECT_EQ(bits(p->GetParameterStep(index)), bits(0.1f));
        EXPECT_TRUE(p->SupportsDisplayValueToParameter(index));
        const bool valid = index < toggles;
        for (float value : {0.0f, 0.3f, -2.5f, 42.0f, kInfinity}) {
            EXPECT_EQ(bits(p->ConvertDisplayValueToParameter(index, value)), bits(valid ? value : 0.0f));
            EXPECT_EQ(bits(p->ConvertParameterValueToDisplay(index, value)), bits(valid ? value : 0.0f));
        }
    }
    EXPECT_FALSE(p->HasHistory());
}

TEST(MuteLifetime, DeletingThroughThePropertyInterfaceRunsTheWholeDestructor) {
    // The sanitizer build reports the toggle array as leaked if it does not.
    ML::VSTPropertySupportMixin* properties = new AF::AudioMute16(nullptr);
    delete properties;
}

// A count whose byte size overflows gets no toggles; every operation then
// stays harmless and changes nothing.
TEST(MuteFailedAllocation, EveryOperationIsHarmless) {
    constexpr unsigned kOverflowingChannels = 0x40000000u;
    AF::AudioMute* effect = new AF::AudioMute(kOverflowingChannels, nullptr);
    ML::VSTPropertySupportMixin* properties = effect;
    HostedEffect host(effect->getAeffect());
    EXPECT_EQ(host->numParams, static_cast<VstInt32>(kOverflowingChannels + 1));
    for (VstInt32 index : {0, 1, 5}) {
        host.setParameter(index, 1.0f);
        EXPECT_EQ(bits(host.getParameter(index)), 0u);
        EXPECT_TRUE(TextAnswer(host, effGetParamDisplay, index).untouched());
    }
    EXPECT_EQ(TextAnswer(host, effGetParamName, 5).text(), "Mute 5");
    host.dispatch(effSetProgram, 0, 0);
    const VstInt32 outputs = host->numOutputs;
    ChannelBuffers in(static_cast<unsigned>(outputs), 8), out(static_cast<unsigned>(outputs), 8);
    in.fill(inputSample);
    out.fill(outputSample);
    host.processReplacing(in, out);
    host.process(in, out);
    out.expectSamples(outputSample, "no toggles");
    EXPECT_EQ(bits(properties->ConvertParameterValueToDisplay(3, 0.75f)), bits(0.75f));
}

TEST(MuteCreator, MakesTheRegisteredChannelCountsOnly) {
    for (unsigned channels = 0; channels <= 17; ++channels) {
        std::unique_ptr<AudioEffect> effect(AF::createVariant(AF::Family::mute, channels, nullptr));
        switch (channels) {
            case 1: EXPECT_NE(dynamic_cast<AF::AudioMute1*>(effect.get()), nullptr); break;
            case 2: EXPECT_NE(dynamic_cast<AF::AudioMute2*>(effect.get()), nullptr); break;
            case 6: EXPECT_NE(dynamic_cast<AF::AudioMute6*>(effect.get()), nullptr); break;
            case 16: EXPECT_NE(dynamic_cast<AF::AudioMute16*>(effect.get()), nullptr); break;
            default: EXPECT_EQ(effect, nullptr) << channels << " channels"; break;
        }
    }
}

}  // namespace
