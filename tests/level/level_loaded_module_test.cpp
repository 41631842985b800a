// The level and channel effects as a host meets them: made by the registered
// factory of the module loaded with dlopen, driven through the record and the
// property interface only.
#include <gtest/gtest.h>

#include <string>

#include "support/HostFixture.h"

namespace {

using aftest::bits;
using aftest::Channels;
using aftest::HostEffect;

constexpr int kFrames = 37;

TEST(LevelLoadedModule, ChannelVolumeScalesEachChannel) {
    auto fx = HostEffect::Create("Internal Channel Volume 5.1");
    ASSERT_TRUE(fx);
    fx->start();
    const float levels[6] = {0.0f, 0.25f, 0.5f, 0.75f, 1.0f, 0.125f};
    for (int c = 0; c < 6; ++c) fx->setParameter(c, levels[c]);
    const Channels input = aftest::taggedNoise(6, kFrames, 21);
    Channels output = aftest::makeChannels(6, kFrames, 3.0f);
    Channels in = input;
    fx->processReplacing(in, output);
    for (int c = 0; c < 6; ++c) {
        const float gain = 2.0f * levels[c];
        for (int i = 0; i < kFrames; ++i) ASSERT_EQ(bits(output[c][i]), bits(input[c][i] * gain)) << c << "," << i;
    }
    EXPECT_TRUE(aftest::sameBits(input, in));
    EXPECT_EQ(fx->parameterName(3), "Right Surround");
    EXPECT_EQ(fx->parameterName(5), "LFE");
    EXPECT_EQ(fx->parameterDisplay(0), "-oo");
    ASSERT_NE(fx->properties(), nullptr);
    EXPECT_FALSE(fx->properties()->HasHistory());
}

TEST(LevelLoadedModule, BalanceTurnsTheRightChannelDown) {
    auto fx = HostEffect::Create("Internal Balance");
    ASSERT_TRUE(fx);
    fx->start();
    fx->setParameter(0, 0.25f);
    const Channels input = aftest::taggedNoise(2, kFrames, 22);
    Channels audio = input;
    fx->processReplacing(audio);
    for (int i = 0; i < kFrames; ++i) {
        ASSERT_EQ(bits(audio[0][i]), bits(input[0][i])) << i;
        ASSERT_EQ(bits(audio[1][i]), bits(input[1][i] * 0.5f)) << i;
    }
    EXPECT_EQ(fx->parameterDisplay(0), "-50.0000");
    ASSERT_NE(fx->properties(), nullptr);
    EXPECT_TRUE(fx->properties()->HasHistory());
}

TEST(LevelLoadedModule, MuteClearsOnlyTheToggledChannel) {
    auto fx = HostEffect::Create("Internal Mute 16 Channel");
    ASSERT_TRUE(fx);
    fx->start();
    fx->setParameter(2, 0.51f);
    const Channels input = aftest::taggedNoise(16, kFrames, 23);
    Channels audio = input;
    fx->processReplacing(audio);
    Channels expected = input;
    expected[1].assign(kFrames, 0.0f);
    EXPECT_TRUE(aftest::sameBits(expected, audio, aftest::NanPolicy::kExactBits));
    EXPECT_EQ(fx->parameterName(0), "Mute ");
    EXPECT_EQ(fx->parameterName(3), "Mute 3");
    ASSERT_NE(fx->properties(), nullptr);
    EXPECT_FALSE(fx->properties()->HasHistory());
}

TEST(LevelLoadedModule, ChannelUtilitiesHaveNoPropertyInterface) {
    const Channels input = aftest::taggedNoise(6, kFrames, 24);
    {
        auto fx = HostEffect::Create("Internal Swap Channels");
        ASSERT_TRUE(fx);
        EXPECT_EQ(fx->properties(), nullptr);
        fx->start();
        Channels audio = {input[0], input[1]};
        fx->processReplacing(audio);
        EXPECT_TRUE(aftest::sameBits(input[1], audio[0]));
        EXPECT_TRUE(aftest::sameBits(input[0], audio[1]));
    }
    {
        auto fx = HostEffect::Create("Internal Fill Right");
        ASSERT_TRUE(fx);
        EXPECT_EQ(fx->properties(), nullptr);
        fx->start();
        Channels in = {input[0], input[1]};
        Channels out = aftest::makeChannels(2, kFrames, -7.0f);
        fx->processReplacing(in, out);
        EXPECT_TRUE(aftest::sameBits(input[1], out[0]));
        EXPECT_TRUE(aftest::sameBits(std::vector<float>(kFrames, -7.0f), out[1]));
    }
    {
        auto fx = HostEffect::Create("Internal Invert 5.1");
        ASSERT_TRUE(fx);
        EXPECT_EQ(fx->properties(), nullptr);
        fx->start();
        Channels audio = aftest::makeChannels(6, kFrames, 0.0f);
        fx->processReplacing(audio);
        EXPECT_TRUE(aftest::sameBits(aftest::makeChannels(6, kFrames, -0.0f), audio, aftest::NanPolicy::kExactBits));
    }
}

}  // namespace
