// The LV2 bridge loaded in process, as an LV2 host loads its binary: every
// registered effect under its URI, rendering like the effect driven directly
// whatever the buffer arrangement, block sizes, rate or control values.
#include <gtest/gtest.h>

#include <cctype>
#include <limits>
#include <string>

#include "bridges/BridgeSupport.h"
#include "bridges/Cases.h"

#if __has_include(<ladspa.h>) && __has_include(<lv2/core/lv2.h>)
#include "bridges/InProcess.h"

namespace {

using namespace bridgetest;
using aftest::LoadedModule;

std::string expectedUri(const std::string& identifier) {
    std::string slug;
    for (char ch : identifier.substr(std::string("Internal ").size())) {
        slug += (ch == ' ' || ch == '.') ? '-' : static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
    }
    return "urn:audiofilters:" + slug;
}

class Lv2Bridge : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(LoadedModule::Get().loaded()) << LoadedModule::Get().error();
        ASSERT_TRUE(Lv2Library::Get().error.empty()) << Lv2Library::Get().error;
    }
};

TEST_F(Lv2Bridge, OneDescriptorPerMakeableEffectInRegistrationOrder) {
    std::vector<std::string> uris;
    for (const auto& registration : LoadedModule::Get().registrations()) {
        if (effectAvailable(registration.id.c_str())) uris.push_back(expectedUri(registration.id.c_str()));
    }
    const auto& descriptors = Lv2Library::Get().descriptors;
    ASSERT_EQ(descriptors.size(), uris.size());
    for (std::size_t i = 0; i < uris.size(); ++i) EXPECT_EQ(descriptors[i]->URI, uris[i]);
    EXPECT_EQ(Lv2Library::Get().find("urn:audiofilters:no-such-effect"), nullptr);
}

TEST_F(Lv2Bridge, RendersLikeTheEffectDrivenDirectly) {
    for (const RenderCase& c : renderCases()) {
        if (!effectAvailable(c.identifier)) continue;
        SCOPED_TRACE(c.identifier);
        const LV2_Descriptor* d = Lv2Library::Get().find(expectedUri(c.identifier));
        ASSERT_NE(d, nullptr);
        const Channels input = aftest::taggedNoise(2, 20000, 13);
        // The 12000-frame block is longer than the bridge's plan: it goes to the effect as 8192 + 3808.
        const std::vector<int> hostBlocks = {512, 12000, 7, 7481};
        const std::vector<int> effectBlocks = {512, 8192, 3808, 7, 7481};
        for (double rate : {44100.0, 8000.0, 384000.0}) {
            SCOPED_TRACE(rate);
            const auto expected = renderDirect(c.identifier, rate, settingsOf(c.controls), input, effectBlocks);
            ASSERT_TRUE(expected);
            for (Buffers buffers : {Buffers::kSeparate, Buffers::kInPlace, Buffers::kCrossed}) {
                bool ok = false;
                const Channels out = runLv2(*d, rate, c.controls, input, hostBlocks, buffers, ok);
                ASSERT_TRUE(ok);
                EXPECT_TRUE(aftest::sameBits(*expected, out)) << "buffers " << static_cast<int>(buffers);
            }
        }
    }
}

TEST_F(Lv2Bridge, ControlsOutsideTheRangeOrNanReachTheEffectAsConverted) {
    const LV2_Descriptor* d = Lv2Library::Get().find("urn:audiofilters:volume-stereo");
    ASSERT_NE(d, nullptr);
    const Channels input = aftest::taggedNoise(2, 1000, 17);
    for (float level : {12.0f, -1000.0f, std::numeric_limits<float>::quiet_NaN(), -std::numeric_limits<float>::infinity()}) {
        SCOPED_TRACE(level);
        bool ok = false;
        const Channels out = runLv2(*d, 48000.0, {level}, input, {1000}, Buffers::kInPlace, ok);
        ASSERT_TRUE(ok);
        const auto expected = renderDirect("Internal Volume Stereo", 48000.0, {{0, level}}, input, {1000});
        ASSERT_TRUE(expected);
        EXPECT_TRUE(aftest::sameBits(*expected, out));
    }
}

TEST_F(Lv2Bridge, RefusesWhatItCannotMake) {
    const LV2_Descriptor* d = Lv2Library::Get().find("urn:audiofilters:volume-stereo");
    ASSERT_NE(d, nullptr);
    const LV2_Feature* const features[] = {nullptr};
    LV2_Descriptor stranger = *d;
    stranger.URI = "urn:audiofilters:no-such-effect";
    EXPECT_EQ(stranger.instantiate(&stranger, 48000.0, "", features), nullptr);
    EXPECT_EQ(d->instantiate(d, std::numeric_limits<double>::quiet_NaN(), "", features), nullptr);
    EXPECT_EQ(d->instantiate(d, -44100.0, "", features), nullptr);
    // A copy that keeps a known URI is still recognised by it.
    LV2_Descriptor copy = *d;
    LV2_Handle handle = copy.instantiate(&copy, 48000.0, "", features);
    ASSERT_NE(handle, nullptr);
    copy.run(handle, 0);
    copy.cleanup(handle);
}

}  // namespace

#endif
