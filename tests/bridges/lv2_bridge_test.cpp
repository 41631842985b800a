// The LV2 bridge loaded in process, as an LV2 host loads its binary: every
// registered effect under its URI, rendering like the effect driven directly
// whatever the buffer arrangement, block sizes, rate or control values.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>
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
    // Then the band-reject once more under its users' name, notch.
    std::vector<std::string> notches;
    for (const std::string& uri : uris) {
        const std::string family = "urn:audiofilters:bandreject-";
        if (uri.rfind(family, 0) == 0) notches.push_back("urn:audiofilters:notch-" + uri.substr(family.size()));
    }
    const auto& descriptors = Lv2Library::Get().descriptors;
    ASSERT_EQ(descriptors.size(), uris.size() + notches.size());
    for (std::size_t i = 0; i < uris.size(); ++i) EXPECT_EQ(descriptors[i]->URI, uris[i]);
    for (std::size_t i = 0; i < notches.size(); ++i) EXPECT_EQ(descriptors[uris.size() + i]->URI, notches[i]);
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

// Clamped to -90..+6 dB (the floor is the effect's silence, -999 dB); NaN
// and infinity replaced by the default, 0 dB. The latency port reads 0.
TEST_F(Lv2Bridge, ControlsOutsideTheRangeOrNanAreClampedOrReplaced) {
    const LV2_Descriptor* d = Lv2Library::Get().find("urn:audiofilters:volume-stereo");
    ASSERT_NE(d, nullptr);
    const Channels input = aftest::taggedNoise(2, 1000, 17);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    for (const auto [sent, safe] : {std::pair{12.0f, 6.0f}, std::pair{-1000.0f, -999.0f}, std::pair{nan, 0.0f},
                                    std::pair{-inf, 0.0f}, std::pair{5.25f, 5.25f}}) {
        SCOPED_TRACE(sent);
        bool ok = false;
        const Channels out = runLv2(*d, 48000.0, {sent}, input, {1000}, Buffers::kInPlace, ok);
        ASSERT_TRUE(ok);
        const auto expected = renderDirect("Internal Volume Stereo", 48000.0, {{0, safe}}, input, {1000});
        ASSERT_TRUE(expected);
        EXPECT_TRUE(aftest::sameBits(*expected, out));
    }
}

TEST_F(Lv2Bridge, ReportsNoLatency) {
    const LV2_Descriptor* d = Lv2Library::Get().find("urn:audiofilters:delay-stereo");
    ASSERT_NE(d, nullptr);
    const LV2_Feature* const features[] = {nullptr};
    LV2_Handle handle = d->instantiate(d, 48000.0, "", features);
    ASSERT_NE(handle, nullptr);
    // Ports: 2 inputs, 2 outputs, delay, feedback, mix, then the latency.
    float audio[4][16] = {};
    float controls[3] = {0.5f, 0.0f, 50.0f};
    float latency = -1.0f;
    for (uint32_t port = 0; port < 4; ++port) d->connect_port(handle, port, audio[port]);
    for (uint32_t k = 0; k < 3; ++k) d->connect_port(handle, 4 + k, &controls[k]);
    d->connect_port(handle, 7, &latency);
    d->activate(handle);
    d->run(handle, 16);
    EXPECT_EQ(latency, 0.0f);
    d->deactivate(handle);
    d->cleanup(handle);
}

// After the input ends the host keeps running the plug-in on silence: the
// echoes come out, as the effect driven directly over the same padded input.
TEST_F(Lv2Bridge, ADelayKeepsSoundingAfterItsInput) {
    const LV2_Descriptor* d = Lv2Library::Get().find("urn:audiofilters:delay-stereo");
    ASSERT_NE(d, nullptr);
    constexpr int kInput = 2000;
    constexpr int kTotal = 12000;
    Channels input = aftest::taggedNoise(2, kInput, 23);
    for (auto& channel : input) channel.resize(kTotal, 0.0f);
    const std::vector<float> controls = {0.1f, 50.0f, 50.0f};  // 0.1 s, 50 % feedback, 50 % mix
    bool ok = false;
    const Channels out = runLv2(*d, 48000.0, controls, input, {4000, 4000, 4000}, Buffers::kInPlace, ok);
    ASSERT_TRUE(ok);
    const auto expected = renderDirect("Internal Delay Stereo", 48000.0, settingsOf(controls), input, {4000, 4000, 4000});
    ASSERT_TRUE(expected);
    EXPECT_TRUE(aftest::sameBits(*expected, out));
    float tailPeak = 0.0f;
    for (std::size_t i = kInput; i < kTotal; ++i) tailPeak = std::max(tailPeak, std::fabs(out[0][i]));
    EXPECT_GT(tailPeak, 0.01f) << "echoes after the input";
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
