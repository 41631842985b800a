// Fill Left and Fill Right: one side copied over the other, the kept side
// never written, through the plug-in record.
#include <memory>

#include "LevelTestSupport.h"
#include "effects/level/Fill.h"
#include "effects/variants/NamedVariants.h"
#include "module/VariantTable.h"

namespace {

using level_test::ChannelBuffers;
using level_test::HostedEffect;
using level_test::inputSample;
using level_test::kFrameCounts;
using level_test::outputSample;

constexpr unsigned kStereo = 2;

// Fill Left copies channel 0 into output 1; Fill Right channel 1 into output 0.
template <class Effect, unsigned Source, VstInt32 UniqueId>
struct Side {
    using Type = Effect;
    static constexpr unsigned kSource = Source;
    static constexpr unsigned kTarget = 1 - Source;
    static constexpr VstInt32 kUniqueId = UniqueId;
};

using Sides = ::testing::Types<Side<AF::AudioFillLeft, 0, 0x41466C4C>, Side<AF::AudioFillRight, 1, 0x41466C52>>;

template <class S>
class FillTest : public ::testing::Test {
protected:
    typename S::Type* effect = new typename S::Type(nullptr);
    HostedEffect host{effect->getAeffect()};
};

TYPED_TEST_SUITE(FillTest, Sides);

TYPED_TEST(FillTest, RecordDescribesTheEffect) {
    AEffect* record = this->host.record();
    EXPECT_EQ(record->numInputs, 2);
    EXPECT_EQ(record->numOutputs, 2);
    EXPECT_EQ(record->uniqueID, TypeParam::kUniqueId);
    EXPECT_EQ(record->numPrograms, 0);
    EXPECT_EQ(record->numParams, 0);
    EXPECT_NE(record->flags & effFlagsCanReplacing, 0);
}

TYPED_TEST(FillTest, HasNoHistory) { EXPECT_FALSE(this->effect->HasHistory()); }

// With separate buffers the kept side shows what the host put there: it is
// never written.
TYPED_TEST(FillTest, SeparateBuffersWriteOnlyTheFilledSide) {
    for (int frames : kFrameCounts) {
        ChannelBuffers in(kStereo, frames), out(kStereo, frames);
        in.fill(inputSample);
        out.fill(outputSample);
        this->host.processReplacing(in, out);
        out.expectSamples(
            [](unsigned c, int i) {
                return c == TypeParam::kTarget ? inputSample(TypeParam::kSource, i) : outputSample(c, i);
            },
            "frames " + std::to_string(frames));
        in.expectSamples(inputSample, "input kept");
    }
}

TYPED_TEST(FillTest, InPlaceBothSidesCarryTheSource) {
    for (int frames : kFrameCounts) {
        ChannelBuffers buffers(kStereo, frames);
        buffers.fill(inputSample);
        this->host.processInPlace(buffers);
        buffers.expectSamples([](unsigned, int i) { return inputSample(TypeParam::kSource, i); },
                              "frames " + std::to_string(frames));
    }
}

TYPED_TEST(FillTest, AccumulatingCallAddsNothing) {
    for (int frames : kFrameCounts) {
        ChannelBuffers in(kStereo, frames), out(kStereo, frames);
        in.fill(inputSample);
        out.fill(outputSample);
        this->host.process(in, out);
        out.expectSamples(outputSample, "frames " + std::to_string(frames));
        in.expectSamples(inputSample, "input kept");
    }
}

TYPED_TEST(FillTest, ZeroOrNegativeFrameCountWritesNothing) {
    for (int frames : {0, -1, -4096}) {
        ChannelBuffers in(kStereo, 4), out(kStereo, 4);
        in.fill(inputSample);
        out.fill(outputSample);
        this->host->processReplacing(this->host.record(), in.pointers(), out.pointers(), frames);
        out.expectSamples(outputSample, "frames " + std::to_string(frames));
    }
}

TYPED_TEST(FillTest, NullBuffersAreHarmless) {
    this->host->processReplacing(this->host.record(), nullptr, nullptr, 8);
    this->host->process(this->host.record(), nullptr, nullptr, 8);
    ChannelBuffers in(kStereo, 8);
    in.fill(inputSample);
    float* missing[2] = {nullptr, nullptr};
    this->host->processReplacing(this->host.record(), in.pointers(), missing, 8);
    this->host->processReplacing(this->host.record(), missing, in.pointers(), 8);
    in.expectSamples(inputSample, "buffers kept");
}

TEST(FillCreators, MakeStereoOnly) {
    for (unsigned channels = 0; channels <= 17; ++channels) {
        std::unique_ptr<AudioEffect> left(AF::createVariant(AF::Family::fillLeft, channels, nullptr));
        std::unique_ptr<AudioEffect> right(AF::createVariant(AF::Family::fillRight, channels, nullptr));
        if (channels == 2) {
            EXPECT_NE(dynamic_cast<AF::AudioFillLeft*>(left.get()), nullptr);
            EXPECT_NE(dynamic_cast<AF::AudioFillRight*>(right.get()), nullptr);
        } else {
            EXPECT_EQ(left, nullptr) << channels << " channels";
            EXPECT_EQ(right, nullptr) << channels << " channels";
        }
    }
}

}  // namespace
