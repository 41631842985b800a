// Every channel variant of Parametric EQ, Bass and Treble, driven through its
// AEffect record, against the independent per-sample transcription: exact bit
// patterns over odd block sizes, parameter changes, suspend, sample-rate
// changes, program selection, accumulation, in place and with separate buffers.
#include <gtest/gtest.h>

#include <cmath>

#include "EqHarness.h"

namespace {

using namespace eqtest;

template <class Effect>
class EqVariantTest : public ::testing::Test {};

TYPED_TEST_SUITE(EqVariantTest, EqVariants);

// Blocks of 1, 3, 4, 5 and 64 frames, twice, then long blocks and a short last one.
constexpr int kBlocks[] = {1, 3, 4, 5, 64, 1, 3, 4, 5, 64, 64, 64, 64, 54};
constexpr int kTotalFrames = 400;

// The same host actions on the effect and on the reference, block by block.
template <class Effect>
void runScenario(bool inPlace) {
    const unsigned channels = channelsOf<Effect>();
    const eqref::Family family = familyOf<Effect>();
    const bool peaking = family == eqref::Family::parametricEq;
    const Channels input = taggedSignal(channels, kTotalFrames, 7u);
    const Channels earlier = taggedSignal(channels, kTotalFrames, 99u);  // what a separate output held before

    auto rig = makeRig<Effect>();
    eqref::Model model = eqref::Model::make(family, channels);
    auto both = [&](int index, float value) {
        rig->setParameter(index, value);
        model.setParameter(index, value);
    };

    rig->setSampleRate(48000.0f);
    model.setSampleRate(48000.0f);
    rig->resume();
    if (peaking) {
        both(0, 0.3f);
        both(1, 0.2f);
        both(2, 0.8f);
    } else {
        both(0, 0.7f);
    }

    Channels inputCopy = input;
    Channels actual = inPlace ? input : earlier;
    Channels expected = actual;
    int offset = 0;
    int blockIndex = 0;
    for (int frames : kBlocks) {
        switch (blockIndex) {
            case 2: both(peaking ? 2 : 0, 0.2f); break;
            case 4:  // a call of no frames still refreshes and touches nothing
                rig->call(false, inPlace ? actual : inputCopy, actual, offset, 0);
                model.run(input, expected, offset, 0, false);
                both(peaking ? 1 : 0, 0.9f);
                break;
            case 7:
                rig->suspend();
                model.suspend();
                rig->resume();
                break;
            case 8:
                rig->call(false, inPlace ? actual : inputCopy, actual, offset, -5);
                model.run(input, expected, offset, -5, false);
                break;
            case 9:
                rig->setSampleRate(44100.0f);
                model.setSampleRate(44100.0f);
                break;
            case 10:  // the same rate again keeps the history
                rig->setSampleRate(44100.0f);
                model.setSampleRate(44100.0f);
                break;
            case 11:  // a program resets the parameters, not the history
                rig->setProgram(0);
                model.selectProgram();
                break;
            case 12: both(0, 0.9f); break;
            default: break;
        }
        const bool accumulate = blockIndex == 5 || blockIndex == 6 || blockIndex == 12;
        if (inPlace) rig->call(accumulate, actual, actual, offset, frames);
        else rig->call(accumulate, inputCopy, actual, offset, frames);
        model.run(input, expected, offset, frames, accumulate);
        offset += frames;
        ++blockIndex;
    }
    ASSERT_EQ(offset, kTotalFrames);
    EXPECT_TRUE(sameChannels(actual, expected));
    if (!inPlace) {
        EXPECT_TRUE(sameChannels(inputCopy, input)) << "the input must stay as it was";
    }
}

TYPED_TEST(EqVariantTest, MatchesReferenceInPlace) { runScenario<TypeParam>(true); }

TYPED_TEST(EqVariantTest, MatchesReferenceWithSeparateBuffers) { runScenario<TypeParam>(false); }

// In place and separate buffers give the very same samples.
TYPED_TEST(EqVariantTest, InPlaceEqualsSeparate) {
    const unsigned channels = channelsOf<TypeParam>();
    const Channels input = taggedSignal(channels, 300);
    auto separate = makeRig<TypeParam>();
    auto inPlace = makeRig<TypeParam>();
    for (auto* rig : {separate.get(), inPlace.get()}) rig->setParameter(0, 0.8f);
    Channels in = input;
    Channels out(channels, std::vector<float>(300, 0.0f));
    Channels shared = input;
    for (int offset = 0; offset < 300; offset += 100) {
        separate->call(false, in, out, offset, 100);
        inPlace->call(false, shared, shared, offset, 100);
    }
    EXPECT_TRUE(sameChannels(shared, out));
}

// Each variant reports its channel count and the filters' shared code.
TYPED_TEST(EqVariantTest, VariantRecord) {
    auto rig = makeRig<TypeParam>();
    const unsigned channels = channelsOf<TypeParam>();
    EXPECT_EQ(rig->record()->numInputs, static_cast<VstInt32>(channels));
    EXPECT_EQ(rig->record()->numOutputs, static_cast<VstInt32>(channels));
    const VstInt32 expectedId = channels == 1   ? fourCharCode("AFl1")
                                : channels == 2 ? fourCharCode("AFl2")
                                : channels == 4 ? fourCharCode("AFl4")
                                : channels == 6 ? fourCharCode("AFl6")
                                                : fourCharCode("AF16");
    EXPECT_EQ(rig->record()->uniqueID, expectedId);
    EXPECT_NE(rig->record()->flags & effFlagsCanReplacing, 0);
    EXPECT_EQ(rig->record()->numPrograms, 1);
    EXPECT_EQ(rig->record()->numParams, familyOf<TypeParam>() == eqref::Family::parametricEq ? 3 : 1);
    EXPECT_TRUE(rig->properties().HasHistory());
}

// A signal followed by ten seconds of silence never yields a subnormal sample.
TYPED_TEST(EqVariantTest, SilenceNeverGoesSubnormal) {
    const unsigned channels = channelsOf<TypeParam>();
    constexpr int kBlock = 512;
    constexpr int kRate = 44100;
    auto rig = makeRig<TypeParam>();
    rig->setSampleRate(static_cast<float>(kRate));
    if (familyOf<TypeParam>() == eqref::Family::parametricEq) {
        rig->setParameter(0, 0.05f);  // low centre, narrow bell: the longest ringing
        rig->setParameter(1, 0.0f);
        rig->setParameter(2, 1.0f);
    } else {
        rig->setParameter(0, 1.0f);
    }
    Channels buffer(channels, std::vector<float>(kBlock));
    const Channels signal = taggedSignal(channels, kRate);
    long subnormals = 0;
    for (int done = 0; done < 11 * kRate; done += kBlock) {
        for (unsigned c = 0; c < channels; ++c)
            for (int i = 0; i < kBlock; ++i)
                buffer[c][i] = done + i < kRate ? signal[c][static_cast<std::size_t>(done + i)] : 0.0f;
        rig->call(false, buffer, buffer, 0, kBlock);
        for (const auto& channel : buffer)
            for (float y : channel) subnormals += std::fpclassify(y) == FP_SUBNORMAL;
    }
    EXPECT_EQ(subnormals, 0);
}

}  // namespace
