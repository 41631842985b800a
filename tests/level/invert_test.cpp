// Invert: polarity flip of every channel, through the plug-in record.
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "LevelTestSupport.h"
#include "effects/level/Invert.h"
#include "effects/variants/NamedVariants.h"
#include "module/VariantTable.h"

namespace {

using level_test::bits;
using level_test::ChannelBuffers;
using level_test::HostedEffect;
using level_test::inputSample;
using level_test::kFrameCounts;
using level_test::outputSample;

template <class Effect, unsigned Channels, VstInt32 UniqueId>
struct Variant {
    using Type = Effect;
    static constexpr unsigned kChannels = Channels;
    static constexpr VstInt32 kUniqueId = UniqueId;
};

using Variants = ::testing::Types<Variant<AF::AudioInvert1, 1, 0x41496E31>, Variant<AF::AudioInvert2, 2, 0x41496E32>,
                                  Variant<AF::AudioInvert4, 4, 0x41496E34>, Variant<AF::AudioInvert6, 6, 0x41496E36>,
                                  Variant<AF::AudioInvert16, 16, 0x41493136>>;

// The rule written out: the input times -1 in single precision.
float inverted(float input) {
    const float minusOne = -1.0f;
    return input * minusOne;
}

template <class V>
class InvertTest : public ::testing::Test {
protected:
    static constexpr unsigned kChannels = V::kChannels;
    typename V::Type* effect = new typename V::Type(nullptr);
    HostedEffect host{effect->getAeffect()};
};

TYPED_TEST_SUITE(InvertTest, Variants);

TYPED_TEST(InvertTest, RecordDescribesTheVariant) {
    AEffect* record = this->host.record();
    EXPECT_EQ(record->numInputs, static_cast<VstInt32>(TypeParam::kChannels));
    EXPECT_EQ(record->numOutputs, static_cast<VstInt32>(TypeParam::kChannels));
    EXPECT_EQ(record->uniqueID, TypeParam::kUniqueId);
    EXPECT_EQ(record->numPrograms, 0);
    EXPECT_EQ(record->numParams, 0);
    EXPECT_NE(record->flags & effFlagsCanReplacing, 0);
}

TYPED_TEST(InvertTest, HasNoHistory) { EXPECT_FALSE(this->effect->HasHistory()); }

TYPED_TEST(InvertTest, ReplacingWithSeparateBuffersNegatesEveryChannel) {
    for (int frames : kFrameCounts) {
        ChannelBuffers in(this->kChannels, frames), out(this->kChannels, frames);
        in.fill(inputSample);
        out.fill(outputSample);
        this->host.processReplacing(in, out);
        out.expectSamples([](unsigned c, int i) { return inverted(inputSample(c, i)); },
                          "frames " + std::to_string(frames));
        in.expectSamples(inputSample, "input kept");
    }
}

TYPED_TEST(InvertTest, ReplacingInPlaceNegatesEveryChannel) {
    for (int frames : kFrameCounts) {
        ChannelBuffers buffers(this->kChannels, frames);
        buffers.fill(inputSample);
        this->host.processInPlace(buffers);
        buffers.expectSamples([](unsigned c, int i) { return inverted(inputSample(c, i)); },
                              "frames " + std::to_string(frames));
    }
}

TYPED_TEST(InvertTest, AccumulatingCallSubtractsTheInput) {
    for (int frames : kFrameCounts) {
        ChannelBuffers in(this->kChannels, frames), out(this->kChannels, frames);
        in.fill(inputSample);
        out.fill(outputSample);
        this->host.process(in, out);
        out.expectSamples([](unsigned c, int i) { return outputSample(c, i) - inputSample(c, i); },
                          "frames " + std::to_string(frames));
        in.expectSamples(inputSample, "input kept");
    }
}

// In place the accumulating call subtracts each sample from itself: +0.0.
TYPED_TEST(InvertTest, AccumulatingCallInPlaceGivesPositiveZero) {
    for (int frames : kFrameCounts) {
        ChannelBuffers buffers(this->kChannels, frames);
        buffers.fill(inputSample);
        this->host.process(buffers, buffers);
        buffers.expectSamples([](unsigned, int) { return 0.0f; }, "frames " + std::to_string(frames));
    }
}

TYPED_TEST(InvertTest, ZeroBecomesNegativeZero) {
    ChannelBuffers buffers(this->kChannels, 5);
    buffers.fill([](unsigned, int) { return 0.0f; });
    this->host.processInPlace(buffers);
    buffers.expectSamples([](unsigned, int) { return -0.0f; }, "inverted silence");
    EXPECT_EQ(bits(buffers.at(0, 0)), 0x80000000u);
}

TYPED_TEST(InvertTest, InvertingTwiceRestoresTheInput) {
    ChannelBuffers buffers(this->kChannels, 1024);
    buffers.fill(inputSample);
    this->host.processInPlace(buffers);
    this->host.processInPlace(buffers);
    buffers.expectSamples(inputSample, "inverted twice");
}

TYPED_TEST(InvertTest, ZeroOrNegativeFrameCountWritesNothing) {
    for (int frames : {0, -1, -1024}) {
        ChannelBuffers in(this->kChannels, 4), out(this->kChannels, 4);
        in.fill(inputSample);
        out.fill(outputSample);
        this->host->processReplacing(this->host.record(), in.pointers(), out.pointers(), frames);
        this->host->process(this->host.record(), in.pointers(), out.pointers(), frames);
        out.expectSamples(outputSample, "frames " + std::to_string(frames));
    }
}

TYPED_TEST(InvertTest, NullBuffersAreHarmless) {
    this->host->processReplacing(this->host.record(), nullptr, nullptr, 16);
    this->host->process(this->host.record(), nullptr, nullptr, 16);
    // Missing input channels: their outputs are skipped, not read from null.
    ChannelBuffers out(this->kChannels, 4);
    out.fill(outputSample);
    std::vector<float*> missing(this->kChannels, nullptr);
    this->host->processReplacing(this->host.record(), missing.data(), out.pointers(), 4);
    this->host->process(this->host.record(), missing.data(), out.pointers(), 4);
    out.expectSamples(outputSample, "missing inputs");
}

TYPED_TEST(InvertTest, InfinitiesAndNaNPassThroughTheRule) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    ChannelBuffers buffers(this->kChannels, 3);
    buffers.fill([](unsigned, int i) {
        return i == 0 ? kInfinity : (i == 1 ? -kInfinity : std::numeric_limits<float>::quiet_NaN());
    });
    this->host.processInPlace(buffers);
    for (unsigned c = 0; c < this->kChannels; ++c) {
        EXPECT_EQ(buffers.at(c, 0), -kInfinity);
        EXPECT_EQ(buffers.at(c, 1), kInfinity);
        EXPECT_TRUE(std::isnan(buffers.at(c, 2)));
    }
}

TYPED_TEST(InvertTest, HasNoParametersOrPrograms) {
    EXPECT_EQ(this->host.getParameter(0), 0.0f);
    this->host.setParameter(0, 0.75f);
    EXPECT_EQ(this->host.getParameter(0), 0.0f);
    for (VstInt32 opcode : {effGetParamName, effGetParamLabel, effGetParamDisplay}) {
        level_test::TextAnswer answer(this->host, opcode, 0);
        EXPECT_EQ(answer.text(), "") << "opcode " << opcode;
    }
}

TEST(InvertCreator, MakesTheRegisteredChannelCountsOnly) {
    for (unsigned channels = 0; channels <= 17; ++channels) {
        std::unique_ptr<AudioEffect> effect(AF::createVariant(AF::Family::invert, channels, nullptr));
        switch (channels) {
            case 1: EXPECT_NE(dynamic_cast<AF::AudioInvert1*>(effect.get()), nullptr); break;
            case 2: EXPECT_NE(dynamic_cast<AF::AudioInvert2*>(effect.get()), nullptr); break;
            case 6: EXPECT_NE(dynamic_cast<AF::AudioInvert6*>(effect.get()), nullptr); break;
            case 16: EXPECT_NE(dynamic_cast<AF::AudioInvert16*>(effect.get()), nullptr); break;
            // Four channels included: that class exists but is never offered.
            default: EXPECT_EQ(effect, nullptr) << channels << " channels"; break;
        }
    }
}

}  // namespace
