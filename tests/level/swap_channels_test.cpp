// Swap Channels: left and right exchanged, through the plug-in record.
#include <memory>

#include "LevelTestSupport.h"
#include "effects/level/SwapChannels.h"
#include "module/VariantTable.h"

namespace {

using level_test::ChannelBuffers;
using level_test::HostedEffect;
using level_test::inputSample;
using level_test::kFrameCounts;
using level_test::outputSample;

constexpr unsigned kStereo = 2;

// Output channel c carries input channel 1 - c.
float swapped(unsigned channel, int frame) { return inputSample(1 - channel, frame); }

class SwapChannelsTest : public ::testing::Test {
protected:
    AF::AudioSwapChannels* effect = new AF::AudioSwapChannels(nullptr);
    HostedEffect host{effect->getAeffect()};
};

TEST_F(SwapChannelsTest, RecordDescribesTheEffect) {
    AEffect* record = host.record();
    EXPECT_EQ(record->numInputs, 2);
    EXPECT_EQ(record->numOutputs, 2);
    EXPECT_EQ(record->uniqueID, 0x41537743);  // "ASwC"
    EXPECT_EQ(record->numPrograms, 0);
    EXPECT_EQ(record->numParams, 0);
    EXPECT_NE(record->flags & effFlagsCanReplacing, 0);
}

TEST_F(SwapChannelsTest, HasNoHistory) { EXPECT_FALSE(effect->HasHistory()); }

TEST_F(SwapChannelsTest, SeparateBuffersAreExchanged) {
    for (int frames : kFrameCounts) {
        ChannelBuffers in(kStereo, frames), out(kStereo, frames);
        in.fill(inputSample);
        out.fill(outputSample);
        host.processReplacing(in, out);
        out.expectSamples(swapped, "frames " + std::to_string(frames));
        in.expectSamples(inputSample, "input kept");
    }
}

// Both samples of a frame are read before either is written: in place the
// channels are exchanged, not duplicated.
TEST_F(SwapChannelsTest, SameBuffersAreExchangedNotDuplicated) {
    for (int frames : kFrameCounts) {
        ChannelBuffers buffers(kStereo, frames);
        buffers.fill(inputSample);
        host.processInPlace(buffers);
        buffers.expectSamples(swapped, "frames " + std::to_string(frames));
    }
}

TEST_F(SwapChannelsTest, AccumulatingCallAddsNothing) {
    for (int frames : kFrameCounts) {
        ChannelBuffers in(kStereo, frames), out(kStereo, frames);
        in.fill(inputSample);
        out.fill(outputSample);
        host.process(in, out);
        out.expectSamples(outputSample, "frames " + std::to_string(frames));
        in.expectSamples(inputSample, "input kept");
    }
}

TEST_F(SwapChannelsTest, ZeroOrNegativeFrameCountWritesNothing) {
    for (int frames : {0, -1, -4096}) {
        ChannelBuffers in(kStereo, 4), out(kStereo, 4);
        in.fill(inputSample);
        out.fill(outputSample);
        host->processReplacing(host.record(), in.pointers(), out.pointers(), frames);
        out.expectSamples(outputSample, "frames " + std::to_string(frames));
    }
}

TEST_F(SwapChannelsTest, NullBuffersAreHarmless) {
    host->processReplacing(host.record(), nullptr, nullptr, 8);
    host->process(host.record(), nullptr, nullptr, 8);
    ChannelBuffers in(kStereo, 8);
    in.fill(inputSample);
    float* missingRight[2] = {in.pointers()[0], nullptr};
    host->processReplacing(host.record(), in.pointers(), missingRight, 8);
    in.expectSamples(inputSample, "input kept");
}

TEST_F(SwapChannelsTest, HasNoParameters) {
    host.setParameter(0, 1.0f);
    EXPECT_EQ(host.getParameter(0), 0.0f);
    level_test::TextAnswer name(host, effGetParamName, 0);
    EXPECT_EQ(name.text(), "");
}

TEST(SwapChannelsCreator, MakesStereoOnly) {
    for (unsigned channels = 0; channels <= 17; ++channels) {
        std::unique_ptr<AudioEffect> effect(AF::createVariant(AF::Family::swapChannels, channels, nullptr));
        if (channels == 2)
            EXPECT_NE(dynamic_cast<AF::AudioSwapChannels*>(effect.get()), nullptr);
        else
            EXPECT_EQ(effect, nullptr) << channels << " channels";
    }
}

}  // namespace
