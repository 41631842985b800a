// The level effects' group loops (several samples per instruction) against a
// plain one-sample-at-a-time transcription written here, on every instruction
// path the processor runs: random signals with signed zeros, subnormals,
// infinities and NaNs, lengths around the group sizes, arrays that start off
// any 32-byte boundary, in place, apart, crossed and partly overlapping.
//
// Samples are compared as bit patterns: the groups must give the very bits of
// the plain rule, -0.0 included, and a NaN must equal itself. NaNs here carry
// one payload only: which of two NaN payloads survives an operation is a
// matter of operand order, not of the rule.
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "dsp/simd/VectorPath.h"
#include "effects/level/Balance.h"
#include "effects/level/ChannelVolume.h"
#include "effects/level/Invert.h"
#include "effects/level/SwapChannels.h"
#include "effects/level/Volume.h"
#include "effects/variants/NamedVariants.h"
#include "support/Bits.h"
#include "support/VectorPaths.h"

namespace {

using AF::VectorPath;

using aftest::bits;

// The plain rules; volatile keeps each one a single scalar operation.
float plainProduct(float sample, float gain) {
    volatile float factor = gain;  // never folded into a sign flip for -1
    volatile float product = sample * factor;
    return product;
}

float plainDifference(float held, float input) {
    volatile float difference = held - input;
    return difference;
}

using PathGuard = aftest::VectorPathGuard;

// The plain loop and every vector path this processor runs.
std::vector<VectorPath> paths() {
    std::vector<VectorPath> available{VectorPath::scalar};
    for (VectorPath path : aftest::availableVectorPaths()) available.push_back(path);
    return available;
}

// Random samples in -2..2 with special values mixed in (one NaN payload, and
// infinities of one sign, so that no operation meets two NaNs of its own making).
std::vector<float> testSignal(std::size_t count, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> uniform(-2.0f, 2.0f);
    const float specials[] = {0.0f,  -0.0f, 1e-40f, -3e-39f, std::numeric_limits<float>::denorm_min(),
                              std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN(),
                              3.0e38f};
    std::vector<float> samples(count);
    for (float& sample : samples) {
        const unsigned pick = random() % 14u;
        sample = pick < std::size(specials) ? specials[pick] : uniform(random);
    }
    return samples;
}

constexpr int kLengths[] = {0, 1, 3, 7, 8, 9, 16, 17, 511, 512, 4097};

// One memory block for all arrays of a case, starting on a 64-byte boundary,
// so that the offsets decide alignment and overlap.
struct Arena {
    Arena(std::size_t floats, unsigned seed) : storage(floats + 16) {
        const auto address = reinterpret_cast<std::uintptr_t>(storage.data());
        base = (64 - address % 64) % 64 / sizeof(float);
        const std::vector<float> signal = testSignal(floats, seed);
        std::copy(signal.begin(), signal.end(), storage.begin() + static_cast<std::ptrdiff_t>(base));
    }
    float* at(int offset) { return storage.data() + base + static_cast<std::size_t>(offset); }
    std::vector<float> storage;
    std::size_t base = 0;
};

void expectSameArena(Arena& actual, Arena& expected, std::size_t span, const std::string& what) {
    for (std::size_t k = 0; k < span; ++k)
        ASSERT_EQ(bits(actual.at(0)[k]), bits(expected.at(0)[k])) << what << ", sample " << k;
}

std::string describe(VectorPath path, int frames, const std::string& layout) {
    return "path " + std::to_string(static_cast<int>(path)) + ", frames " + std::to_string(frames) + ", " + layout;
}

// ---------------------------------------------------------------------------
// Swap Channels: offsets of left in, right in, left out, right out.

struct SwapLayout {
    int inLeft, inRight, outLeft, outRight;
    const char* name;
};

TEST(LevelSampleGroups, SwapChannelsMatchesThePlainExchange) {
    PathGuard guard;
    unsigned seed = 11;
    for (VectorPath path : paths()) {
        AF::setVectorPath(path);
        for (int frames : kLengths) {
            const int c = frames + 8;  // one channel's room
            const SwapLayout layouts[] = {
                {0, c, 2 * c, 3 * c, "separate, aligned"},
                {1, c + 2, 2 * c + 3, 3 * c + 5, "separate, unaligned"},
                {3, c + 3, 3, c + 3, "in place, unaligned"},
                {0, c, 0, c, "in place, aligned"},
                {0, c, c, 0, "outputs crossed onto the inputs"},
                {0, c, 2 * c + 1, 2 * c + 1, "both outputs one array"},
                {0, c, 1, c + 1, "outputs one frame after the inputs"},
                {1, c + 1, 0, c, "outputs one frame before the inputs"},
                {0, 3, 2 * c, 3 * c, "inputs overlapping each other"},
            };
            for (const SwapLayout& layout : layouts) {
                const std::size_t span = 4 * static_cast<std::size_t>(c) + 16;
                Arena actual(span, seed), expected(span, seed);
                ++seed;
                for (int i = 0; i < frames; ++i) {
                    const float left = expected.at(layout.inLeft)[i];
                    const float right = expected.at(layout.inRight)[i];
                    expected.at(layout.outLeft)[i] = right;
                    expected.at(layout.outRight)[i] = left;
                }
                AF::AudioSwapChannels effect(nullptr);
                float* inputs[2] = {actual.at(layout.inLeft), actual.at(layout.inRight)};
                float* outputs[2] = {actual.at(layout.outLeft), actual.at(layout.outRight)};
                effect.processReplacing(inputs, outputs, frames);
                expectSameArena(actual, expected, span, describe(path, frames, layout.name));
                if (HasFatalFailure()) return;
            }
        }
    }
}

// ---------------------------------------------------------------------------
// Invert and Volume: one channel per case at an offset of its own.

struct PairLayout {
    int from, to;
    const char* name;
};

std::vector<PairLayout> pairLayouts(int frames) {
    const int c = frames + 8;
    return {{0, 0, "in place, aligned"},      {1, 1, "in place, one off"},  {5, 5, "in place, five off"},
            {0, c + 3, "apart"},              {7, c, "apart, other side"},   {0, 1, "output one after"},
            {3, 0, "output three before"},    {0, 9, "output nine after"}};
}

template <class Effect, bool Accumulate>
void checkInvert(unsigned channels) {
    PathGuard guard;
    unsigned seed = 300;
    for (VectorPath path : paths()) {
        AF::setVectorPath(path);
        for (int frames : kLengths) {
            for (const PairLayout& layout : pairLayouts(frames)) {
                // Channel k's arrays sit k whole blocks further on.
                const int block = 2 * (frames + 8) + 16;
                const std::size_t span = static_cast<std::size_t>(block) * channels + 16;
                Arena actual(span, seed), expected(span, seed);
                ++seed;
                std::vector<float*> inputs, outputs;
                for (unsigned k = 0; k < channels; ++k) {
                    const int shift = static_cast<int>(k) * block;
                    float* in = expected.at(layout.from + shift);
                    float* out = expected.at(layout.to + shift);
                    for (int i = 0; i < frames; ++i)
                        out[i] = Accumulate ? plainDifference(out[i], in[i]) : plainProduct(in[i], -1.0f);
                    inputs.push_back(actual.at(layout.from + shift));
                    outputs.push_back(actual.at(layout.to + shift));
                }
                Effect effect(nullptr);
                if (Accumulate)
                    effect.process(inputs.data(), outputs.data(), frames);
                else
                    effect.processReplacing(inputs.data(), outputs.data(), frames);
                expectSameArena(actual, expected, span,
                                describe(path, frames, layout.name) + (Accumulate ? ", accumulating" : ""));
                if (::testing::Test::HasFatalFailure()) return;
            }
        }
    }
}

TEST(LevelSampleGroups, InvertMatchesThePlainRule) {
    checkInvert<AF::AudioInvert1, false>(1);
    checkInvert<AF::AudioInvert2, false>(2);
    checkInvert<AF::AudioInvert6, false>(6);
    checkInvert<AF::AudioInvert16, false>(16);
}

TEST(LevelSampleGroups, InvertAccumulatingMatchesThePlainRule) {
    checkInvert<AF::AudioInvert1, true>(1);
    checkInvert<AF::AudioInvert4, true>(4);
}

TEST(LevelSampleGroups, VolumeScaleMatchesThePlainProductAtEveryOffset) {
    PathGuard guard;
    unsigned seed = 500;
    for (VectorPath path : paths()) {
        AF::setVectorPath(path);
        for (int frames : kLengths)
            for (int offset = 0; offset < 8; ++offset)
                for (float gain : {0.6f, -2.0f, 0.0f, 1e-30f, std::numeric_limits<float>::infinity()}) {
                    const std::size_t span = static_cast<std::size_t>(frames) + 16;
                    Arena actual(span, seed), expected(span, seed);
                    ++seed;
                    for (int i = 0; i < frames; ++i) expected.at(offset)[i] = plainProduct(expected.at(offset)[i], gain);
                    AF::scaleInPlace(actual.at(offset), frames, gain);
                    expectSameArena(actual, expected, span,
                                    describe(path, frames, "offset " + std::to_string(offset)));
                    if (HasFatalFailure()) return;
                }
    }
}

// ---------------------------------------------------------------------------
// Channel Volume and Balance scale through the host buffers: the whole
// processing call, in place and apart, on arrays off any boundary.

template <class Effect>
void checkGains(unsigned channels, const std::vector<float>& parameters, const std::vector<float>& gains) {
    unsigned seed = 700;
    for (int frames : kLengths) {
        for (int offset = 0; offset < 8; offset += 3) {
            for (bool inPlace : {true, false}) {
                const int block = 2 * (frames + 8) + 16;
                const std::size_t span = static_cast<std::size_t>(block) * channels + 16;
                Arena actual(span, seed), expected(span, seed);
                ++seed;
                std::vector<float*> inputs, outputs;
                for (unsigned k = 0; k < channels; ++k) {
                    const int from = offset + static_cast<int>(k) * block;
                    const int to = inPlace ? from : from + frames + 9;
                    for (int i = 0; i < frames; ++i)
                        expected.at(to)[i] = plainProduct(expected.at(from)[i], gains[k]);
                    inputs.push_back(actual.at(from));
                    outputs.push_back(actual.at(to));
                }
                Effect effect(nullptr);
                for (std::size_t p = 0; p < parameters.size(); ++p)
                    effect.setParameter(static_cast<VstInt32>(p), parameters[p]);
                effect.processReplacing(inputs.data(), outputs.data(), frames);
                expectSameArena(actual, expected, span,
                                "frames " + std::to_string(frames) + ", offset " + std::to_string(offset) +
                                    (inPlace ? ", in place" : ", apart"));
                if (::testing::Test::HasFatalFailure()) return;
            }
        }
    }
}

TEST(LevelSampleGroups, ChannelVolumeMatchesThePlainProduct) {
    // Gains are twice the levels: 0.3 -> 0.6, 0.75 -> 1.5, 0 -> 0, 0.5 -> 1.
    const float levels[] = {0.3f, 0.75f, 0.0f, 0.5f, 0.1f, 1.0f};
    std::vector<float> parameters, gains;
    for (unsigned k = 0; k < 16; ++k) {
        parameters.push_back(levels[k % 6]);
        gains.push_back(2.0f * levels[k % 6]);
    }
    checkGains<AF::AudioChannelEnvelope2>(2, {parameters.begin(), parameters.begin() + 2},
                                          {gains.begin(), gains.begin() + 2});
    checkGains<AF::AudioChannelEnvelope6>(6, {parameters.begin(), parameters.begin() + 6},
                                          {gains.begin(), gains.begin() + 6});
    checkGains<AF::AudioChannelEnvelope16>(16, parameters, gains);
}

TEST(LevelSampleGroups, BalanceMatchesThePlainProduct) {
    // p = 0.25: left 1, right 2 x 0.25; p = 0.875: left 2 x (1 - 0.875), right 1.
    checkGains<AF::AudioBalance>(2, {0.25f}, {1.0f, 0.5f});
    checkGains<AF::AudioBalance>(2, {0.875f}, {0.25f, 1.0f});
}

}  // namespace
