// The multi-channel loops run several channels per instruction (SSE2, AVX2)
// where the processor allows. They must produce, lane by lane, exactly the
// samples of the plain per-channel loop, which stays in the module as the
// reference. Each case drives two instances of the same variant with the same
// long random signal, parameter moves, sample-rate changes, suspends, both
// processing calls and odd block sizes, one instance on a vector path and one
// on the plain path, and compares every output sample as a bit pattern:
// "close" is not good enough, the paths must not be told apart.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "dsp/simd/VectorPath.h"
#include "effects/filters/CutFilters.h"
#include "effects/filters/ParametricEQ.h"
#include "effects/filters/Shelf.h"
#include "effects/level/Invert.h"
#include "effects/level/Volume.h"
#include "effects/variants/NamedVariants.h"
#include "support/VectorPaths.h"

namespace {

using AF::VectorPath;

// Odd sizes and sizes of every remainder by four, so that the offsets counted
// from the end of a call (every second, every fourth frame) fall on every lane
// position; a call of no frames still refreshes the coefficients. One, two and
// three blocks of four frames with nothing left over: loops that keep a block
// back must hand everything over by the end of each call.
constexpr VstInt32 kBlockSizes[] = {1, 3, 7, 64, 513, 512, 2, 0, 5, 258, 4, 8, 6, 12};
constexpr int kCalls = 260;  // about 35000 frames per channel

using PathGuard = aftest::VectorPathGuard;
using aftest::vectorPathName;

// In-place channel buffers for one instance.
struct Buffers {
    std::vector<std::vector<float>> samples;
    std::vector<float*> pointers;
    Buffers(int channels, VstInt32 frames)
        : samples(static_cast<std::size_t>(channels), std::vector<float>(static_cast<std::size_t>(frames))) {
        for (auto& channel : samples) pointers.push_back(channel.data());
    }
};

// Runs `Effect` on `path` and on the plain path side by side and fails at the
// first sample whose bits differ.
// In place (the host's way) or with separate output buffers that hold other
// samples before each call, so that a loop reading its outputs where it should
// read its inputs, or writing an input, cannot pass.
enum class Buffering { inPlace, separate };

template <class Effect>
void expectIdenticalToPlainLoop(VectorPath path, unsigned seed, Buffering buffering = Buffering::inPlace) {
    PathGuard guard;
    Effect vectorEffect(nullptr);
    Effect plainEffect(nullptr);
    AEffect* vectorRecord = vectorEffect.getAeffect();
    AEffect* plainRecord = plainEffect.getAeffect();
    const int channels = vectorRecord->numInputs;
    const VstInt32 parameters = vectorRecord->numParams;
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> signal(-1.0f, 1.0f);
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    std::uniform_int_distribution<int> event(0, 19);
    constexpr VstInt32 kLargest = 513;
    Buffers vectorBuffers(channels, kLargest), plainBuffers(channels, kLargest);
    Buffers vectorOutputs(channels, kLargest), plainOutputs(channels, kLargest);
    const bool inPlace = buffering == Buffering::inPlace;
    float** vectorOut = inPlace ? vectorBuffers.pointers.data() : vectorOutputs.pointers.data();
    float** plainOut = inPlace ? plainBuffers.pointers.data() : plainOutputs.pointers.data();

    for (AudioEffect* effect : {static_cast<AudioEffect*>(&vectorEffect), static_cast<AudioEffect*>(&plainEffect)}) {
        effect->setSampleRate(48000.0f);
        effect->resume();
    }
    for (int call = 0; call < kCalls; ++call) {
        const VstInt32 frames = kBlockSizes[static_cast<std::size_t>(call) % std::size(kBlockSizes)];
        // Between calls, now and then: a parameter move (sometimes out of the
        // 0..1 range), a suspend, a new sample rate. Both instances get the same.
        const int what = event(random);
        if (what < 6 && parameters > 0) {
            const VstInt32 index = static_cast<VstInt32>(random() % static_cast<unsigned>(parameters));
            const float value = what == 0 ? unit(random) * 1.4f - 0.2f : unit(random);
            vectorEffect.setParameter(index, value);
            plainEffect.setParameter(index, value);
        } else if (what == 6) {
            vectorEffect.suspend();
            plainEffect.suspend();
        } else if (what == 7) {
            const float rate = call % 2 == 0 ? 44100.0f : 96000.0f;
            vectorEffect.setSampleRate(rate);
            plainEffect.setSampleRate(rate);
        }
        // A fresh random block; loud or quiet stretches, sometimes silence so
        // the recursions ring down onto the anti-denormal bias.
        // Tiny stretches push products below the normal range; negative zeros
        // check that adding an offset of +0 turns -0 sums into +0 on every lane.
        const float scale = what == 8 ? 0.0f : (what == 9 ? 1000.0f : (what == 10 ? 1e-36f : 1.0f));
        for (int c = 0; c < channels; ++c)
            for (VstInt32 i = 0; i < frames; ++i) {
                const float x = what == 11 ? -0.0f : signal(random) * scale;
                vectorBuffers.samples[static_cast<std::size_t>(c)][static_cast<std::size_t>(i)] = x;
                plainBuffers.samples[static_cast<std::size_t>(c)][static_cast<std::size_t>(i)] = x;
                const float held = signal(random);
                vectorOutputs.samples[static_cast<std::size_t>(c)][static_cast<std::size_t>(i)] = held;
                plainOutputs.samples[static_cast<std::size_t>(c)][static_cast<std::size_t>(i)] = held;
            }
        const Buffers inputsBefore = vectorBuffers;
        // Mostly processReplacing; every fifth call the accumulating process,
        // which adds the output onto the samples already in the buffer.
        const bool accumulate = call % 5 == 4;
        AF::setVectorPath(path);
        if (accumulate) vectorRecord->process(vectorRecord, vectorBuffers.pointers.data(), vectorOut, frames);
        else vectorRecord->processReplacing(vectorRecord, vectorBuffers.pointers.data(), vectorOut, frames);
        AF::setVectorPath(VectorPath::scalar);
        if (accumulate) plainRecord->process(plainRecord, plainBuffers.pointers.data(), plainOut, frames);
        else plainRecord->processReplacing(plainRecord, plainBuffers.pointers.data(), plainOut, frames);

        for (int c = 0; c < channels; ++c)
            for (VstInt32 i = 0; i < frames; ++i) {
                const float got = vectorOut[c][i];
                const float want = plainOut[c][i];
                ASSERT_EQ(std::bit_cast<std::uint32_t>(got), std::bit_cast<std::uint32_t>(want))
                    << vectorPathName(path) << " call " << call << " channel " << c << " frame " << i << ": " << got
                    << " vs plain " << want;
                if (!inPlace) {
                    const auto index = static_cast<std::size_t>(i);
                    const float input = vectorBuffers.samples[static_cast<std::size_t>(c)][index];
                    const float before = inputsBefore.samples[static_cast<std::size_t>(c)][index];
                    ASSERT_EQ(std::bit_cast<std::uint32_t>(input), std::bit_cast<std::uint32_t>(before))
                        << vectorPathName(path) << " wrote its input: call " << call << " channel " << c << " frame " << i;
                }
            }
    }
}

template <class Effect>
void checkEveryPath(unsigned seed, Buffering buffering = Buffering::inPlace) {
    aftest::forEveryVectorPath([&](VectorPath path) { expectIdenticalToPlainLoop<Effect>(path, seed, buffering); });
}

template <class Effect>
class VectorScalarIdentity : public ::testing::Test {};

using Variants = ::testing::Types<AF::AudioParametricEQ1, AF::AudioParametricEQ2, AF::AudioParametricEQ4,
                                  AF::AudioParametricEQ6, AF::AudioParametricEQ16, AF::AudioBass1, AF::AudioBass2,
                                  AF::AudioBass4, AF::AudioBass6, AF::AudioBass16, AF::AudioTreble1,
                                  AF::AudioTreble2, AF::AudioTreble4, AF::AudioTreble6, AF::AudioTreble16,
                                  AF::AudioEnvelope1, AF::AudioEnvelope2, AF::AudioEnvelope6,
                                  AF::AudioEnvelope16, AF::AudioInvert1, AF::AudioInvert2, AF::AudioInvert6,
                                  AF::AudioInvert16, AF::AudioHighpass1, AF::AudioHighpass2,
                                  AF::AudioHighpass6, AF::AudioHighpass16, AF::AudioLowpass1, AF::AudioLowpass2,
                                  AF::AudioLowpass6, AF::AudioLowpass16, AF::AudioBandpass1, AF::AudioBandpass2,
                                  AF::AudioBandpass6, AF::AudioBandpass16, AF::AudioBandreject1,
                                  AF::AudioBandreject2, AF::AudioBandreject6, AF::AudioBandreject16>;
TYPED_TEST_SUITE(VectorScalarIdentity, Variants);

TYPED_TEST(VectorScalarIdentity, EveryPathGivesThePlainLoopsBits) { checkEveryPath<TypeParam>(20261122u); }

TYPED_TEST(VectorScalarIdentity, AnotherSeedAgrees) { checkEveryPath<TypeParam>(7u); }

TYPED_TEST(VectorScalarIdentity, SeparateOutputBuffersAgree) {
    checkEveryPath<TypeParam>(424242u, Buffering::separate);
}

// Short calls around the block of four frames, a new cutoff before every one
// and every third call accumulating: the vector loops carry nothing from call
// to call but the filter memory, so each call must match the plain loop's from
// its first frame, whatever block the call before ended in.
// With `specials`, some calls also carry infinities and NaN, which the filter
// memory keeps until a suspend two calls later; where both sides give NaN its
// payload may differ (two NaNs meeting in a sum keep either), so NaN matches
// NaN there, and every other sample must match bit for bit.
template <class Effect>
void expectShortCallsIdentical(VectorPath path, bool specials = false) {
    PathGuard guard;
    Effect vectorEffect(nullptr), plainEffect(nullptr);
    AEffect* records[2] = {vectorEffect.getAeffect(), plainEffect.getAeffect()};
    vectorEffect.resume();
    plainEffect.resume();
    const int channels = records[0]->numInputs;
    constexpr VstInt32 kSizes[] = {4, 9, 8, 1, 4, 0, 12, 3, 5, 4, 16, 2, 7, 4};
    constexpr float kCutoffs[] = {0.9f, 0.1f, 0.55f, 0.3f, 1.0f, 0.0f, 0.7f};
    std::vector<std::vector<float>> samples[2], outputs[2];
    for (int side = 0; side < 2; ++side) {
        samples[side].assign(static_cast<std::size_t>(channels), std::vector<float>(16));
        outputs[side].assign(static_cast<std::size_t>(channels), std::vector<float>(16));
    }
    std::mt19937 random(99u);
    std::uniform_real_distribution<float> signal(-1.0f, 1.0f);
    for (std::size_t call = 0; call < std::size(kSizes) * 4; ++call) {
        const VstInt32 frames = kSizes[call % std::size(kSizes)];
        const float cutoff = kCutoffs[call % std::size(kCutoffs)];
        const bool accumulate = call % 3 == 2;
        const bool poisoned = specials && call % 7 == 3;
        if (specials && call % 7 == 5) {
            vectorEffect.suspend();
            plainEffect.suspend();
        }
        for (int c = 0; c < channels; ++c)
            for (std::size_t i = 0; i < 16; ++i) {
                constexpr float kSpecial[] = {std::numeric_limits<float>::infinity(),
                                              -std::numeric_limits<float>::infinity(),
                                              std::numeric_limits<float>::quiet_NaN()};
                float x = signal(random);
                if (poisoned && (i + static_cast<std::size_t>(c)) % 5 == 1) x = kSpecial[(i / 5) % 3];
                const float held = signal(random);
                for (int side = 0; side < 2; ++side) {
                    samples[side][static_cast<std::size_t>(c)][i] = x;
                    outputs[side][static_cast<std::size_t>(c)][i] = held;
                }
            }
        for (int side = 0; side < 2; ++side) {
            AF::setVectorPath(side == 0 ? path : VectorPath::scalar);
            records[side]->setParameter(records[side], 0, cutoff);
            std::vector<float*> in, out;
            for (int c = 0; c < channels; ++c) {
                in.push_back(samples[side][static_cast<std::size_t>(c)].data());
                out.push_back(outputs[side][static_cast<std::size_t>(c)].data());
            }
            if (accumulate) records[side]->process(records[side], in.data(), out.data(), frames);
            else records[side]->processReplacing(records[side], in.data(), out.data(), frames);
        }
        // all sixteen frames, so that writes past the end of a call show too
        for (int c = 0; c < channels; ++c)
            for (std::size_t i = 0; i < 16; ++i) {
                const float got = outputs[0][static_cast<std::size_t>(c)][i];
                const float want = outputs[1][static_cast<std::size_t>(c)][i];
                if (specials && std::isnan(got) && std::isnan(want)) continue;
                ASSERT_EQ(std::bit_cast<std::uint32_t>(got), std::bit_cast<std::uint32_t>(want))
                    << vectorPathName(path) << " call " << call << " (" << frames << " frames) channel " << c
                    << " frame " << i << ": " << got << " vs plain " << want;
            }
    }
}

template <class Effect>
class ShortCallIdentity : public ::testing::Test {};

using CutVariants = ::testing::Types<AF::AudioHighpass1, AF::AudioHighpass2, AF::AudioHighpass6, AF::AudioHighpass16,
                                     AF::AudioLowpass1, AF::AudioLowpass2, AF::AudioLowpass6, AF::AudioLowpass16,
                                     AF::AudioBandpass6, AF::AudioBandreject6>;
TYPED_TEST_SUITE(ShortCallIdentity, CutVariants);

TYPED_TEST(ShortCallIdentity, EachCallStartsWhereThePlainLoopDoes) {
    aftest::forEveryVectorPath([](VectorPath path) { expectShortCallsIdentical<TypeParam>(path); });
}

TYPED_TEST(ShortCallIdentity, InfinitiesAndNaNTakeThePlainLoopsCourse) {
    aftest::forEveryVectorPath([](VectorPath path) { expectShortCallsIdentical<TypeParam>(path, true); });
}

// Switching the registers off is honoured, and switching them on is limited to
// what the processor has.
TEST(VectorPathChoice, ExtendedRegistersAreLimitedToTheProcessor) {
    PathGuard guard;
    AF::setExtendedRegisters(true);
    EXPECT_EQ(AF::extendedRegisters(), AF::extendedRegistersAvailable());
    AF::setExtendedRegisters(false);
    EXPECT_FALSE(AF::extendedRegisters());
}

// The vector path really differs in the code it runs: the switch is honoured
// and limited to what the processor offers.
TEST(VectorPathChoice, SwitchIsLimitedToTheProcessor) {
    PathGuard guard;
    AF::setVectorPath(VectorPath::avx2);
    EXPECT_EQ(AF::vectorPath(), AF::widestVectorPath());
    AF::setVectorPath(VectorPath::scalar);
    EXPECT_EQ(AF::vectorPath(), VectorPath::scalar);
}

// At load the widest path is chosen unless AF_FORCE_SCALAR=1 keeps the plain
// loop; run the suite once with the variable set to see the forced side.
TEST(VectorPathChoice, LoadChoiceFollowsTheEnvironment) {
    const char* forced = std::getenv("AF_FORCE_SCALAR");
    const bool scalarAsked = forced != nullptr && std::string(forced) == "1";
    // This test may run after others that restored the load-time choice.
    EXPECT_EQ(AF::vectorPath(), scalarAsked ? VectorPath::scalar : AF::widestVectorPath());
}

}  // namespace
