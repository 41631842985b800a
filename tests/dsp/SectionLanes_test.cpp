// The high- and low-pass at one and two channels run a lane for each of their
// two sections, the second sections a block of four frames behind the first
// (dsp/biquad/LaneGroups.h). Each section still sees the same inputs in the
// same order, so every output must carry the plain per-sample loop's bits.
// Two instances of a variant get the same script of calls, one on a vector
// path and one on the plain loop, and every sample is compared as a bit
// pattern: odd call sizes (1, 2, 3, 7, 4097 frames and more), in place and
// into separate output arrays, both processing calls, cutoff moves between
// calls, and a long silence after a loud stretch, so that the recursions ring
// down onto their anti-denormal offsets.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "dsp/simd/VectorPath.h"
#include "effects/variants/NamedVariants.h"
#include "support/VectorPaths.h"

namespace {

using AF::VectorPath;

enum class Signal { noise, loud, tiny, subnormal, negativeZero, silence };

// One call of the script: its size, what the inputs carry, whether the
// cutoff moves before it and whether it accumulates into the outputs.
struct Call {
    VstInt32 frames;
    Signal signal;
    bool moveCutoff;
    bool accumulate;
};

constexpr VstInt32 kSizes[] = {1, 2, 3, 7, 4097, 4, 8, 5, 0, 512, 6, 9, 12, 1, 1, 3, 4096, 11, 2, 7};
// The calls before the loud stretch that starts the long silence.
constexpr std::size_t kMixedCalls = 3 * std::size(kSizes);

// Sizes around the block of four frames and far beyond it, each kind of
// signal, then a loud stretch and a long silence (about 160,000 frames).
std::vector<Call> script() {
    constexpr Signal kSignals[] = {Signal::noise, Signal::loud, Signal::tiny, Signal::subnormal,
                                   Signal::negativeZero, Signal::silence};
    std::vector<Call> calls;
    for (std::size_t i = 0; i < kMixedCalls; ++i)
        calls.push_back({kSizes[i % std::size(kSizes)], kSignals[i % std::size(kSignals)], i % 4 == 1, i % 5 == 3});
    calls.push_back({4097, Signal::loud, true, false});
    for (int i = 0; i < 39; ++i) calls.push_back({i % 3 == 0 ? 4097 : 4093, Signal::silence, false, i % 7 == 6});
    for (VstInt32 frames : kSizes) calls.push_back({frames, Signal::silence, false, false});
    return calls;
}

float sample(Signal signal, std::mt19937& random) {
    std::uniform_real_distribution<float> unit(-1.0f, 1.0f);
    switch (signal) {
        case Signal::noise: return unit(random);
        case Signal::loud: return unit(random) * 1000.0f;
        case Signal::tiny: return unit(random) * 1e-36f;
        case Signal::subnormal: return unit(random) * 1e-41f;
        case Signal::negativeZero: return -0.0f;
        case Signal::silence: return 0.0f;
    }
    return 0.0f;
}

// Frames past the end of every call that must keep what they held.
constexpr VstInt32 kGuard = 5;

struct Side {
    std::vector<std::vector<float>> in, out;
    std::vector<float*> inPointers, outPointers;
};

enum class Buffering { inPlace, separate };

// Runs the script on `path` and on the plain loop; fails at the first
// differing sample. Gives the smallest magnitude the plain loop gave during
// the long silence, so the caller can see the silence reached the offsets.
template <class Effect>
void expectPlainLoopsBits(VectorPath path, Buffering buffering, unsigned seed, float& quietest) {
    aftest::VectorPathGuard guard;
    Effect lanesEffect(nullptr), plainEffect(nullptr);
    AEffect* records[2] = {lanesEffect.getAeffect(), plainEffect.getAeffect()};
    const auto channels = static_cast<std::size_t>(records[0]->numInputs);
    for (AudioEffect* effect : {static_cast<AudioEffect*>(&lanesEffect), static_cast<AudioEffect*>(&plainEffect)}) {
        effect->setSampleRate(44100.0f);
        effect->resume();
        effect->setParameter(0, 0.6f);
    }
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> cutoff(0.0f, 1.0f);
    const bool inPlace = buffering == Buffering::inPlace;
    quietest = INFINITY;
    const std::vector<Call> calls = script();
    for (std::size_t n = 0; n < calls.size(); ++n) {
        const Call& call = calls[n];
        const auto length = static_cast<std::size_t>(call.frames + kGuard);
        Side sides[2];
        for (Side& side : sides) {
            side.in.assign(channels, std::vector<float>(length));
            side.out.assign(channels, std::vector<float>(length));
        }
        for (std::size_t c = 0; c < channels; ++c)
            for (std::size_t i = 0; i < length; ++i) {
                const float x = sample(call.signal, random);
                const float held = sample(Signal::noise, random);
                for (Side& side : sides) {
                    side.in[c][i] = x;
                    side.out[c][i] = held;
                }
            }
        const Side before = sides[0];
        // a cutoff stays within reach of the silence's ring-down
        const float value = n + 1 < calls.size() && calls[n + 1].signal == Signal::silence ? 0.6f : cutoff(random);
        for (int s = 0; s < 2; ++s) {
            Side& side = sides[s];
            for (std::size_t c = 0; c < channels; ++c) {
                side.inPointers.push_back(side.in[c].data());
                side.outPointers.push_back(inPlace ? side.in[c].data() : side.out[c].data());
            }
            AEffect* record = records[s];
            if (call.moveCutoff) record->setParameter(record, 0, value);
            AF::setVectorPath(s == 0 ? path : VectorPath::scalar);
            if (call.accumulate) record->process(record, side.inPointers.data(), side.outPointers.data(), call.frames);
            else record->processReplacing(record, side.inPointers.data(), side.outPointers.data(), call.frames);
        }
        for (std::size_t c = 0; c < channels; ++c)
            for (std::size_t i = 0; i < length; ++i) {
                const float got = sides[0].outPointers[c][i];
                const float want = sides[1].outPointers[c][i];
                ASSERT_EQ(std::bit_cast<std::uint32_t>(got), std::bit_cast<std::uint32_t>(want))
                    << aftest::vectorPathName(path) << (inPlace ? " in place" : " separate") << ", call " << n << " ("
                    << call.frames << " frames), channel " << c << ", frame " << i << ": " << got << " vs plain "
                    << want;
                if (!inPlace) {
                    ASSERT_EQ(std::bit_cast<std::uint32_t>(sides[0].in[c][i]), std::bit_cast<std::uint32_t>(before.in[c][i]))
                        << "the input was written: call " << n << ", channel " << c << ", frame " << i;
                }
                if (call.signal == Signal::silence && n > kMixedCalls && i < static_cast<std::size_t>(call.frames))
                    quietest = std::fmin(quietest, std::fabs(want));
            }
    }
}

template <class Effect>
void checkEveryPath(Buffering buffering, unsigned seed) {
    aftest::forEveryVectorPath([&](VectorPath path) {
        float quietest = INFINITY;
        expectPlainLoopsBits<Effect>(path, buffering, seed, quietest);
        if (::testing::Test::HasFatalFailure()) return;
        // The silence outlasted the loud stretch's ring-down: the recursions
        // ended near the size of the offsets (1e-25), far below any signal.
        EXPECT_LT(quietest, 1e-20f);
    });
}

template <class Effect>
class SectionLanesIdentity : public ::testing::Test {};

using Variants = ::testing::Types<AF::AudioHighpass1, AF::AudioHighpass2, AF::AudioLowpass1, AF::AudioLowpass2>;
TYPED_TEST_SUITE(SectionLanesIdentity, Variants);

TYPED_TEST(SectionLanesIdentity, InPlaceGivesThePlainLoopsBits) { checkEveryPath<TypeParam>(Buffering::inPlace, 2026u); }

TYPED_TEST(SectionLanesIdentity, SeparateOutputsGiveThePlainLoopsBits) {
    checkEveryPath<TypeParam>(Buffering::separate, 1124u);
}

// The lane loops exist for the two-section filters at every channel count on
// x86, and not for the one-section band-pass below four channels, whose plain
// loop already keeps one recursion per channel busy.
TEST(SectionLanesChoice, TwoSectionFiltersRunInLanesAtOneAndTwoChannels) {
#if defined(__x86_64__)
    EXPECT_TRUE((AF::CutFilterChannels<AF::AudioHighpass, 1>::kRunsInLanes));
    EXPECT_TRUE((AF::CutFilterChannels<AF::AudioHighpass, 2>::kRunsInLanes));
    EXPECT_TRUE((AF::CutFilterChannels<AF::AudioLowpass, 1>::kRunsInLanes));
    EXPECT_TRUE((AF::CutFilterChannels<AF::AudioLowpass, 2>::kRunsInLanes));
    EXPECT_TRUE((AF::CutFilterChannels<AF::AudioHighpass, 6>::kRunsInLanes));
    EXPECT_FALSE((AF::CutFilterChannels<AF::AudioBandpass, 2>::kRunsInLanes));
#else
    EXPECT_FALSE((AF::CutFilterChannels<AF::AudioHighpass, 2>::kRunsInLanes));
#endif
}

}  // namespace
