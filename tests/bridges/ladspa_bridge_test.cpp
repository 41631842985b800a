// The LADSPA bridge loaded in process, as a LADSPA host loads it: the listing
// against the module's own answers, and rendering against the effect driven
// directly through its record with the same parameters and block partition.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "bridges/BridgeSupport.h"
#include "bridges/Cases.h"

#if __has_include(<ladspa.h>) && __has_include(<lv2/core/lv2.h>)
#include "bridges/InProcess.h"

namespace {

using namespace bridgetest;
using aftest::HostEffect;
using aftest::LoadedModule;

// Our own transcription of the documented id rule: 0xAF0000 plus the low 16
// bits of the 32-bit FNV-1a hash (offset basis 2166136261, prime 16777619).
unsigned long expectedUniqueId(const std::string& identifier) {
    std::uint32_t hash = 2166136261u;
    for (unsigned char ch : identifier) {
        hash = hash ^ ch;
        hash = hash * 16777619u;
    }
    return 0xAF0000ul + (hash & 0xFFFFu);
}

// "Internal Channel Volume 5.1" -> "af_channel_volume_5_1", written out by hand.
std::string expectedLabel(const std::string& identifier) {
    std::string rest = identifier.substr(std::string("Internal ").size());
    std::string label = "af_";
    for (char ch : rest) {
        if (ch == ' ' || ch == '.') label += '_';
        else label += static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
    }
    return label;
}

std::vector<std::string> makeableIdentifiers() {
    std::vector<std::string> out;
    for (const auto& registration : LoadedModule::Get().registrations()) {
        const std::string identifier = registration.id.c_str();
        if (effectAvailable(identifier)) out.push_back(identifier);
    }
    return out;
}

class LadspaBridge : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(LoadedModule::Get().loaded()) << LoadedModule::Get().error();
        ASSERT_TRUE(LadspaLibrary::Get().error.empty()) << LadspaLibrary::Get().error;
    }
};

TEST_F(LadspaBridge, ListsEveryMakeableEffectInRegistrationOrder) {
    const std::vector<std::string> identifiers = makeableIdentifiers();
    const auto& descriptors = LadspaLibrary::Get().descriptors;
    ASSERT_FALSE(identifiers.empty());
    // The band-reject comes once more at the end, under its users' name, notch.
    std::vector<std::string> notches;
    for (const std::string& identifier : identifiers) {
        if (identifier.rfind("Internal Bandreject", 0) == 0) notches.push_back("Internal Notch" + identifier.substr(19));
    }
    ASSERT_EQ(descriptors.size(), identifiers.size() + notches.size());
    for (std::size_t i = 0; i < notches.size(); ++i) {
        const LADSPA_Descriptor* alias = descriptors[identifiers.size() + i];
        EXPECT_EQ(alias->Label, expectedLabel(notches[i]));
        EXPECT_EQ(alias->UniqueID, expectedUniqueId(notches[i]));
        for (std::size_t j = 0; j < identifiers.size(); ++j) EXPECT_NE(descriptors[j]->UniqueID, alias->UniqueID);
    }
    for (std::size_t i = 0; i < identifiers.size(); ++i) {
        EXPECT_EQ(descriptors[i]->Label, expectedLabel(identifiers[i]));
        EXPECT_EQ(descriptors[i]->UniqueID, expectedUniqueId(identifiers[i])) << identifiers[i];
        EXPECT_LT(descriptors[i]->UniqueID, 0x1000000ul);
        EXPECT_TRUE(LADSPA_IS_HARD_RT_CAPABLE(descriptors[i]->Properties));
        EXPECT_FALSE(LADSPA_IS_INPLACE_BROKEN(descriptors[i]->Properties));
        for (std::size_t j = 0; j < i; ++j) EXPECT_NE(descriptors[j]->UniqueID, descriptors[i]->UniqueID);
    }
    EXPECT_EQ(LadspaLibrary::Get().find("af_volume_5_1") != nullptr, effectAvailable("Internal Volume 5.1"));
    EXPECT_EQ(LadspaLibrary::Get().find("af_highpass_stereo") != nullptr, effectAvailable("Internal Highpass Stereo"));
}

TEST_F(LadspaBridge, PortsFollowThePropertyInterface) {
    for (const std::string& identifier : makeableIdentifiers()) {
        SCOPED_TRACE(identifier);
        const LADSPA_Descriptor* d = LadspaLibrary::Get().find(expectedLabel(identifier));
        ASSERT_NE(d, nullptr);
        auto fx = HostEffect::Create(identifier);
        fx->start(48000.0f, 8192);
        fx->setProgram(0);  // the defaults hosts are given are the default program's
        const int channels = fx->channels();
        const int controls = fx->properties() != nullptr ? fx->effect()->numParams : 0;
        ASSERT_EQ(d->PortCount, static_cast<unsigned long>(2 * channels + controls));
        for (int c = 0; c < channels; ++c) {
            EXPECT_EQ(d->PortDescriptors[c], LADSPA_PORT_INPUT | LADSPA_PORT_AUDIO);
            EXPECT_EQ(d->PortDescriptors[channels + c], LADSPA_PORT_OUTPUT | LADSPA_PORT_AUDIO);
        }
        for (int k = 0; k < controls; ++k) {
            const unsigned long port = static_cast<unsigned long>(2 * channels + k);
            const auto index = static_cast<unsigned>(k);
            EXPECT_EQ(d->PortDescriptors[port], LADSPA_PORT_INPUT | LADSPA_PORT_CONTROL);
            EXPECT_EQ(d->PortNames[port], expectedPortName(*fx, k));
            const LADSPA_PortRangeHint& hint = d->PortRangeHints[port];
            const auto type = fx->properties()->GetParameterType(index);
            const float minimum = fx->properties()->GetParameterMin(index);
            const float maximum = fx->properties()->GetParameterMax(index);
            if (type == ML::VSTPropertySupportMixin::kNumber && minimum == 0.0f && maximum == 1.0f) {
                EXPECT_TRUE(LADSPA_IS_HINT_TOGGLED(hint.HintDescriptor)) << "a 0..1 switch";
                continue;
            }
            // Absolute units, bounded on both sides, in every host the same.
            EXPECT_TRUE(LADSPA_IS_HINT_BOUNDED_BELOW(hint.HintDescriptor));
            EXPECT_TRUE(LADSPA_IS_HINT_BOUNDED_ABOVE(hint.HintDescriptor));
            EXPECT_FALSE(LADSPA_IS_HINT_SAMPLE_RATE(hint.HintDescriptor));
            EXPECT_NE(hint.HintDescriptor & LADSPA_HINT_DEFAULT_MASK, 0);
            EXPECT_EQ(LADSPA_IS_HINT_LOGARITHMIC(hint.HintDescriptor) != 0, type == ML::VSTPropertySupportMixin::kHertz);
            const auto [lower, upper] = hostRange(*fx, index);
            EXPECT_EQ(aftest::bits(hint.LowerBound), aftest::bits(static_cast<float>(lower)));
            EXPECT_EQ(aftest::bits(hint.UpperBound), aftest::bits(static_cast<float>(upper)));
        }
    }
}

TEST_F(LadspaBridge, VolumeDefaultIsUnityGain) {
    const LADSPA_Descriptor* d = LadspaLibrary::Get().find("af_volume_stereo");
    ASSERT_NE(d, nullptr);
    // Volume starts at 0 dB, which LADSPA can say exactly.
    EXPECT_EQ(d->PortRangeHints[4].HintDescriptor & LADSPA_HINT_DEFAULT_MASK, LADSPA_HINT_DEFAULT_0);
}

// Every buffer arrangement and the larger-than-planned block give what the
// effect gives when driven directly.
class LadspaRender : public LadspaBridge, public testing::WithParamInterface<RenderCase> {};

TEST_P(LadspaRender, MatchesTheEffectDrivenDirectly) {
    const RenderCase& c = GetParam();
    if (!effectAvailable(c.identifier)) GTEST_SKIP() << c.identifier << " is not made by this build of the module";
    const LADSPA_Descriptor* d = LadspaLibrary::Get().find(expectedLabel(c.identifier));
    ASSERT_NE(d, nullptr);
    const Channels input = aftest::taggedNoise(2, 5000, 7);
    // Uneven blocks, an empty one among them, as hosts may send.
    const std::vector<int> blocks = {1000, 1, 0, 2048, 1951};
    const auto expected = renderDirect(c.identifier, 44100.0, settingsOf(c.controls), input, blocks);
    ASSERT_TRUE(expected);
    const Channels& reference = *expected;
    for (Buffers buffers : {Buffers::kSeparate, Buffers::kInPlace, Buffers::kCrossed}) {
        bool ok = false;
        const Channels out = runLadspa(*d, 44100, c.controls, input, blocks, buffers, ok);
        ASSERT_TRUE(ok);
        EXPECT_TRUE(aftest::sameBits(reference, out)) << "buffers " << static_cast<int>(buffers);
    }
}

INSTANTIATE_TEST_SUITE_P(Effects, LadspaRender, testing::ValuesIn(renderCases()),
                         [](const testing::TestParamInfo<RenderCase>& info) {
                             std::string name;
                             for (char ch : info.param.identifier) {
                                 if (std::isalnum(static_cast<unsigned char>(ch))) name += ch;
                             }
                             return name;
                         });

TEST_F(LadspaBridge, MinusSixDecibelsReachTheEffectAsTheConversionSays) {
    const LADSPA_Descriptor* d = LadspaLibrary::Get().find("af_volume_stereo");
    ASSERT_NE(d, nullptr);
    // Our own transcription: -6 / 20 rounded to float, 10 to that power rounded
    // to float, halved into the parameter, which the effect doubles back into its gain.
    const float exponent = static_cast<float>(-6.0 / 20.0);
    const float gain = static_cast<float>(std::pow(10.0, static_cast<double>(exponent)));
    const float parameter = gain * 0.5f;
    const float applied = parameter + parameter;
    const Channels input = aftest::taggedNoise(2, 300, 3);
    bool ok = false;
    const Channels out = runLadspa(*d, 44100, {-6.0f}, input, {300}, Buffers::kSeparate, ok);
    ASSERT_TRUE(ok);
    Channels expected = input;
    for (auto& channel : expected) {
        for (float& sample : channel) sample = sample * applied;
    }
    EXPECT_TRUE(aftest::sameBits(expected, out));
}

TEST_F(LadspaBridge, LongBlocksAreProcessedInPlannedChunks) {
    for (const RenderCase& c : renderCases()) {
        if (!effectAvailable(c.identifier)) continue;
        SCOPED_TRACE(c.identifier);
        const LADSPA_Descriptor* d = LadspaLibrary::Get().find(expectedLabel(c.identifier));
        ASSERT_NE(d, nullptr);
        const Channels input = aftest::taggedNoise(2, 20000, 11);
        bool ok = false;
        const Channels out = runLadspa(*d, 48000, c.controls, input, {20000}, Buffers::kSeparate, ok);
        ASSERT_TRUE(ok);
        // One host block of 20000 frames reaches the effect as 8192, 8192 and 3616.
        const auto expected = renderDirect(c.identifier, 48000.0, settingsOf(c.controls), input, {8192, 8192, 3616});
        ASSERT_TRUE(expected);
        EXPECT_TRUE(aftest::sameBits(*expected, out));
    }
}

// Values a host should not send are made safe first: clamped to the declared
// -90..+6 dB (the floor is the effect's silence, -999 dB), NaN and infinity
// replaced by the default, 0 dB.
TEST_F(LadspaBridge, OutOfRangeAndNanControlsAreClampedOrReplaced) {
    const LADSPA_Descriptor* d = LadspaLibrary::Get().find("af_volume_stereo");
    ASSERT_NE(d, nullptr);
    const Channels input = aftest::taggedNoise(2, 700, 5);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    for (const auto [sent, safe] : {std::pair{40.0f, 6.0f}, std::pair{-2000.0f, -999.0f}, std::pair{-90.0f, -999.0f},
                                    std::pair{nan, 0.0f}, std::pair{inf, 0.0f}, std::pair{-3.5f, -3.5f}}) {
        SCOPED_TRACE(sent);
        bool ok = false;
        const Channels out = runLadspa(*d, 44100, {sent}, input, {300, 400}, Buffers::kInPlace, ok);
        ASSERT_TRUE(ok);
        const auto expected = renderDirect("Internal Volume Stereo", 44100.0, {{0, safe}}, input, {300, 300, 100});
        ASSERT_TRUE(expected);
        // Blocks of 300 and 400 against 300, 300, 100: Volume does not depend on the partition.
        EXPECT_TRUE(aftest::sameBits(*expected, out));
    }
}

TEST_F(LadspaBridge, ExtremeSampleRatesRunAsTheModuleDoes) {
    for (unsigned long rate : {8000ul, 384000ul}) {
        SCOPED_TRACE(rate);
        for (const RenderCase& c : renderCases()) {
            if (!effectAvailable(c.identifier)) continue;
            SCOPED_TRACE(c.identifier);
            const LADSPA_Descriptor* d = LadspaLibrary::Get().find(expectedLabel(c.identifier));
            ASSERT_NE(d, nullptr);
            const Channels input = aftest::taggedNoise(2, 3000, 9);
            bool ok = false;
            const Channels out = runLadspa(*d, rate, c.controls, input, {1024, 1024, 952}, Buffers::kSeparate, ok);
            ASSERT_TRUE(ok);
            const auto expected = renderDirect(c.identifier, static_cast<double>(rate), settingsOf(c.controls), input,
                                               {1024, 1024, 952});
            ASSERT_TRUE(expected);
            EXPECT_TRUE(aftest::sameBits(*expected, out));
        }
    }
}

TEST_F(LadspaBridge, BadHostsDoNoHarm) {
    const LADSPA_Descriptor* d = LadspaLibrary::Get().find("af_volume_stereo");
    ASSERT_NE(d, nullptr);
    // A copy of the descriptor that lost its link to the effect makes nothing.
    LADSPA_Descriptor stranger = *d;
    stranger.ImplementationData = nullptr;
    EXPECT_EQ(stranger.instantiate(&stranger, 44100), nullptr);
    EXPECT_EQ(d->instantiate(d, 0), nullptr) << "a rate of 0 is refused";
    EXPECT_EQ(LadspaLibrary::Get().find("af_no_such_effect"), nullptr);
    // Unconnected ports, zero frames and port numbers past the end.
    LADSPA_Handle handle = d->instantiate(d, 44100);
    ASSERT_NE(handle, nullptr);
    float level = -6.0f;
    d->connect_port(handle, 99, &level);
    d->run(handle, 0);
    d->run(handle, 64);  // no output connected: nothing is written anywhere
    std::vector<float> left(64, 0.5f);
    std::vector<float> right(64, 0.25f);
    d->connect_port(handle, 2, left.data());
    d->connect_port(handle, 3, right.data());
    d->connect_port(handle, 4, &level);
    d->run(handle, 64);  // inputs unconnected: silence in, silence out
    for (float sample : left) EXPECT_EQ(aftest::bits(sample), aftest::bits(0.0f));
    d->deactivate(handle);
    d->cleanup(handle);
}

}  // namespace

#else

TEST(LadspaBridge, HeadersAreInstalled) {
    FAIL() << "ladspa.h or the LV2 headers are missing: apt-get install -y ladspa-sdk lv2-dev";
}

#endif
