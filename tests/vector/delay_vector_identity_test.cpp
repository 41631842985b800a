// The multi-channel delays run several channels per instruction (SSE2, AVX2)
// where the processor allows; the plain per-channel loop stays in the module
// as the reference. Each case drives two instances of the same variant through
// the same long history, one on a vector path and one on the plain path:
// random signals with negative zeros, subnormals, huge values, infinities and
// NaNs; moves of every parameter between calls (delay times that move the
// read positions, also to 0, to the full line and beyond it; feedback; levels;
// mix); program resets, suspends and resumes; sample-rate changes down to lines
// of a few frames; odd block sizes; in place and separate buffers; the
// replacing and the accumulating call. Every output sample is compared as a
// bit pattern (a NaN as any NaN, see bitsOf): the paths must not be told apart.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "dsp/simd/VectorPath.h"
#include "effects/delay/Delay.h"
#include "effects/delay/MultitapDelay.h"
#include "effects/variants/NamedVariants.h"
#include "support/VectorPaths.h"

namespace {

using AF::VectorPath;

// Every remainder by four and by the vector loops' stretch of 64 frames, one
// frame, and calls of no frames (which still apply parameters).
constexpr VstInt32 kBlockSizes[] = {1, 3, 511, 512, 4097, 0, 2, 5, 64, 65, 130, 7};
constexpr int kCalls = 240;

// Sample rates to move between: ordinary ones, and tiny ones whose lines of a
// few frames put the read and write positions on the same or neighbouring
// slots and wrap them within a call; 0 leaves only the spare frame.
constexpr float kRates[] = {44100.0f, 1000.0f, 8.0f, 2.0f, 0.0f, 3.5f, 96000.0f, 250.0f};

using PathGuard = aftest::VectorPathGuard;
using aftest::vectorPathName;

// One instance's channel arrays: inputs, and outputs that are either the
// inputs themselves (in place) or arrays of their own.
struct Buffers {
    std::vector<std::vector<float>> in, out;
    std::vector<float*> inPointers, outPointers;
    Buffers(int channels, VstInt32 frames)
        : in(static_cast<std::size_t>(channels), std::vector<float>(static_cast<std::size_t>(frames))),
          out(in) {
        for (int c = 0; c < channels; ++c) {
            inPointers.push_back(in[static_cast<std::size_t>(c)].data());
            outPointers.push_back(out[static_cast<std::size_t>(c)].data());
        }
    }
};

// A value for one sample of the stretch kind `kind`.
float sampleOf(int kind, std::mt19937& random) {
    std::uniform_real_distribution<float> unit(-1.0f, 1.0f);
    switch (kind) {
        case 0: return 0.0f;                                                      // silence: rings on the noise
        case 1: return -0.0f;                                                     // negative zeros
        case 2: return unit(random) * 1e-39f;                                     // subnormal input
        case 3: return unit(random) * 3e38f;                                      // overflows on feedback
        case 4: return random() % 64 == 0 ? std::numeric_limits<float>::infinity() : unit(random);
        case 5: return random() % 64 == 0 ? std::numeric_limits<float>::quiet_NaN() : unit(random);
        case 6: return random() % 64 == 0 ? -std::numeric_limits<float>::quiet_NaN() : unit(random) * 1e-30f;
        case 8: return unit(random) * 3e-25f;                                     // level of the noise
        default: return unit(random);
    }
}

// A normalised parameter value: mostly 0..1, with the landmarks 0 and 1, some
// values above 1 (delays past the line) and below 0, and now and then a NaN.
float parameterValue(std::mt19937& random) {
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    switch (random() % 16) {
        case 0: return 0.0f;
        case 1: return 1.0f;
        case 2: return 1.0f + unit(random) * 2.0f;
        case 3: return -unit(random);
        case 4: return random() % 8 == 0 ? std::numeric_limits<float>::quiet_NaN() : 0.001f * unit(random);
        default: return unit(random);
    }
}

// A sample's bit pattern, with every NaN as one pattern. Where two NaNs meet
// in a sum or a product, the processor keeps the one in the instruction's
// first operand, and which operand comes first is the compiler's choice of
// registers, in the plain loop as much as in the vector one (it may differ
// between two builds of the plain loop alone). So a NaN's sign and payload
// carry no information; everything else must match bit for bit.
std::uint32_t bitsOf(float sample) {
    constexpr std::uint32_t kAnyNaN = 0x7FC00000u;
    return sample != sample ? kAnyNaN : std::bit_cast<std::uint32_t>(sample);
}

// `alternate`: the vector instance takes the vector path only on every other
// call and the plain loop on the rest, both working on the one line.
template <class Effect>
void expectIdenticalToPlainLoop(VectorPath path, unsigned seed, bool alternate = false) {
    PathGuard guard;
    Effect vectorEffect(nullptr);
    Effect plainEffect(nullptr);
    AEffect* vectorRecord = vectorEffect.getAeffect();
    AEffect* plainRecord = plainEffect.getAeffect();
    const int channels = vectorRecord->numInputs;
    const VstInt32 parameters = vectorRecord->numParams;
    std::mt19937 random(seed);
    constexpr VstInt32 kLargest = 4097;
    Buffers vectorBuffers(channels, kLargest), plainBuffers(channels, kLargest);
    AudioEffect* both[] = {&vectorEffect, &plainEffect};

    for (AudioEffect* effect : both) {
        effect->setSampleRate(1000.0f);
        effect->resume();
    }
    int kind = 7;
    long compared = 0;
    long finite = 0;
    for (int call = 0; call < kCalls; ++call) {
        const VstInt32 frames = kBlockSizes[static_cast<std::size_t>(call) % std::size(kBlockSizes)];
        // Between calls: a few parameter moves, sometimes a program reset, a
        // suspend and resume, or a new sample rate. Both instances get the same.
        const unsigned what = random() % 16;
        const int moves = static_cast<int>(random() % 4);
        for (int m = 0; m < moves; ++m) {
            const auto index = static_cast<VstInt32>(random() % static_cast<unsigned>(parameters));
            float value = parameterValue(random);
            // The four taps' feedbacks add up: kept mostly below a total of 1,
            // so that the line does not grow into infinities most of the time.
            if (parameters > 3 && index % 3 == 1 && index < 12 && random() % 8 != 0) value *= 0.25f;
            for (AudioEffect* effect : both) effect->setParameter(index, value);
        }
        // An infinity in a line turns into NaN through any feedback of 0 and
        // stays until a reset: after a poisoning stretch, reset soon.
        const bool poisoning = kind >= 3 && kind <= 6;
        if (poisoning && random() % 3 == 0) {
            for (AudioEffect* effect : both) effect->suspend();
            kind = 7;
        } else if (what == 0) {
            for (AudioEffect* effect : both) effect->setProgram(0);
        } else if (what == 1) {
            for (AudioEffect* effect : both) {
                effect->suspend();
                effect->resume();
            }
        } else if (what == 2) {
            const float rate = kRates[random() % std::size(kRates)];
            for (AudioEffect* effect : both) effect->setSampleRate(rate);
        }
        // Mostly ordinary audio; the kinds that poison a line with infinities
        // or NaNs (until the next reset) come now and then.
        constexpr int kKinds[] = {7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 0, 1, 2, 8, 8, 6, 3, 4, 5};
        if (random() % 6 == 0) kind = kKinds[random() % std::size(kKinds)];
        const bool inPlace = random() % 2 == 0;
        const bool accumulate = random() % 4 == 0;
        for (int c = 0; c < channels; ++c)
            for (VstInt32 i = 0; i < frames; ++i) {
                const auto cs = static_cast<std::size_t>(c);
                const auto is = static_cast<std::size_t>(i);
                const float x = sampleOf(kind, random);
                const float held = sampleOf(7, random);
                vectorBuffers.in[cs][is] = plainBuffers.in[cs][is] = x;
                vectorBuffers.out[cs][is] = plainBuffers.out[cs][is] = inPlace ? x : held;
            }
        auto run = [&](AEffect* record, Buffers& buffers) {
            float** in = inPlace ? buffers.outPointers.data() : buffers.inPointers.data();
            float** out = buffers.outPointers.data();
            if (accumulate)
                record->process(record, in, out, frames);
            else
                record->processReplacing(record, in, out, frames);
        };
        AF::setVectorPath(alternate && call % 2 == 1 ? VectorPath::scalar : path);
        run(vectorRecord, vectorBuffers);
        AF::setVectorPath(VectorPath::scalar);
        run(plainRecord, plainBuffers);

        for (int c = 0; c < channels; ++c)
            for (VstInt32 i = 0; i < frames; ++i) {
                const float got = vectorBuffers.out[static_cast<std::size_t>(c)][static_cast<std::size_t>(i)];
                const float want = plainBuffers.out[static_cast<std::size_t>(c)][static_cast<std::size_t>(i)];
                ++compared;
                if (std::isfinite(want)) ++finite;
                ASSERT_EQ(bitsOf(got), bitsOf(want))
                    << vectorPathName(path) << " call " << call << " (" << frames << " frames, "
                    << (accumulate ? "process" : "processReplacing") << (inPlace ? ", in place" : ", separate")
                    << ") channel " << c << " frame " << i << ": " << got << " vs plain " << want;
            }
    }
    // Most of the history is ordinary audio, so the NaN rule above does not
    // carry the comparison.
    EXPECT_GT(finite, compared * 2 / 3) << finite << " finite samples of " << compared;
}

template <class Effect>
void checkEveryPath(unsigned seed, bool alternate = false) {
    aftest::forEveryVectorPath([&](VectorPath path) { expectIdenticalToPlainLoop<Effect>(path, seed, alternate); });
}

// The vector paths take several consecutive frames of a channel at once. A
// read that trails the write by fewer frames than that would hear a write of
// the same group, and a read on the write itself hears the new sample; reads
// just ahead of the write must still hear the old one. Every delay from 0 to
// 11 frames, and the same distances short of a whole line, on all taps at
// once (spread over neighbouring distances on the four-tap delay).
template <class Effect>
void expectShortDelaysIdentical(VectorPath path) {
    PathGuard guard;
    constexpr float kRate = 1000.0f;  // a line of 2001 frames after the rate change
    constexpr std::uint32_t kLine = 2001;
    std::vector<std::uint32_t> distances;
    for (std::uint32_t d = 0; d < 12; ++d) {
        distances.push_back(d);
        distances.push_back(kLine - 1 - d);
    }
    for (const std::uint32_t distance : distances) {
        Effect vectorEffect(nullptr);
        Effect plainEffect(nullptr);
        AEffect* records[] = {vectorEffect.getAeffect(), plainEffect.getAeffect()};
        const int channels = records[0]->numInputs;
        const VstInt32 parameters = records[0]->numParams;
        for (AudioEffect* effect : {static_cast<AudioEffect*>(&vectorEffect), static_cast<AudioEffect*>(&plainEffect)}) {
            effect->setSampleRate(kRate);
            effect->resume();
            // Seconds halfway between two frame counts, so that truncation
            // lands on the intended one; feedback that keeps the line busy.
            for (VstInt32 index = 0; index < parameters - 1; index += 3) {
                const auto tapDistance = static_cast<float>(distance + static_cast<std::uint32_t>(index / 3) % 2);
                effect->setParameter(index, (tapDistance + 0.5f) / (2.0f * kRate));
                effect->setParameter(index + 1, parameters > 3 ? 0.2f : 0.7f);
            }
            // The sixteen-channel variants move their positions only here.
            effect->suspend();
            effect->resume();
        }
        std::mt19937 random(distance);
        Buffers vectorBuffers(channels, 700), plainBuffers(channels, 700);
        for (int call = 0; call < 8; ++call) {
            const VstInt32 frames = call % 2 == 0 ? 700 : 333;
            for (int c = 0; c < channels; ++c)
                for (VstInt32 i = 0; i < frames; ++i) {
                    const float x = sampleOf(7, random);
                    vectorBuffers.in[static_cast<std::size_t>(c)][static_cast<std::size_t>(i)] = x;
                    plainBuffers.in[static_cast<std::size_t>(c)][static_cast<std::size_t>(i)] = x;
                }
            AF::setVectorPath(path);
            records[0]->processReplacing(records[0], vectorBuffers.inPointers.data(), vectorBuffers.outPointers.data(),
                                         frames);
            AF::setVectorPath(VectorPath::scalar);
            records[1]->processReplacing(records[1], plainBuffers.inPointers.data(), plainBuffers.outPointers.data(),
                                         frames);
            for (int c = 0; c < channels; ++c)
                for (VstInt32 i = 0; i < frames; ++i) {
                    const float got = vectorBuffers.out[static_cast<std::size_t>(c)][static_cast<std::size_t>(i)];
                    const float want = plainBuffers.out[static_cast<std::size_t>(c)][static_cast<std::size_t>(i)];
                    // All finite here: bits compared as they are.
                    ASSERT_EQ(std::bit_cast<std::uint32_t>(got), std::bit_cast<std::uint32_t>(want))
                        << vectorPathName(path) << " distance " << distance << " call " << call << " channel " << c
                        << " frame " << i;
                }
        }
    }
}

template <class Effect>
class DelayVectorIdentity : public ::testing::Test {};

using Variants = ::testing::Types<AF::AudioDelay1, AF::AudioDelay2, AF::AudioDelay6, AF::AudioDelay16,
                                  AF::AudioMultitapDelay1, AF::AudioMultitapDelay2, AF::AudioMultitapDelay6,
                                  AF::AudioMultitapDelay16>;
TYPED_TEST_SUITE(DelayVectorIdentity, Variants);

TYPED_TEST(DelayVectorIdentity, EveryPathGivesThePlainLoopsBits) { checkEveryPath<TypeParam>(20261122u); }

TYPED_TEST(DelayVectorIdentity, ShortDelaysAndReadsJustAheadOfTheWriteAgree) {
    aftest::forEveryVectorPath([](VectorPath path) { expectShortDelaysIdentical<TypeParam>(path); });
}

TYPED_TEST(DelayVectorIdentity, AnotherSeedAgrees) { checkEveryPath<TypeParam>(5u); }

TYPED_TEST(DelayVectorIdentity, AThirdSeedAgrees) { checkEveryPath<TypeParam>(977u); }

// The paths share the line's layout, so switching between calls changes nothing.
TYPED_TEST(DelayVectorIdentity, SwitchingPathsBetweenCallsAgrees) { checkEveryPath<TypeParam>(31u, true); }

}  // namespace
