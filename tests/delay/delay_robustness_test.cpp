// Long recirculation on silence, and hostile input: null arrays, sample rates
// from 0 to far beyond memory, infinite rates. Run under the sanitizer build
// too: no access outside a line, no undefined behaviour.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <type_traits>
#include <vector>

#include "tests/delay/DelayTestSupport.h"

namespace {

using namespace delay_test;

template <class V>
class DelaySilence : public ::testing::Test {};
using AllVariants = ::testing::Types<Delay1, Delay2, Delay6, Delay16, Multitap1, Multitap2, Multitap6, Multitap16>;
TYPED_TEST_SUITE(DelaySilence, AllVariants);

template <class V>
constexpr bool isSingleTap = std::is_same_v<typename V::Model, delay_reference::DelayModel>;

// One recirculating echo of `seconds` with feedback 1, fully wet.
template <class V>
void recirculate(AudioEffect& effect, float seconds) {
    if constexpr (isSingleTap<V>) {
        effect.setParameter(0, seconds * 0.5f);
        effect.setParameter(1, 1.0f);
        effect.setParameter(2, 1.0f);
    } else {
        for (int k = 0; k < 4; ++k) {
            effect.setParameter(3 * k, k == 0 ? seconds * 0.5f : 0.3f);
            effect.setParameter(3 * k + 1, k == 0 ? 1.0f : 0.0f);
            effect.setParameter(3 * k + 2, k == 0 ? 1.0f : 0.0f);
        }
        effect.setParameter(12, 1.0f);
    }
    effect.suspend();  // positions from the new time on every variant
}

struct SilenceLevels {
    double firstTenSeconds = 0;
    double lastTenSeconds = 0;
    long subnormals = 0;
};

// 60 s of silence in 1024-frame calls with an echo of `echoFrames` frames;
// every output sample is classified, and the largest magnitude of the first
// and last 10 s kept. One and two channels run at 44.1 kHz; the wider
// variants at 8 kHz to keep the test short (the noise pattern depends on
// frame counts, not on the rate).
template <class V>
SilenceLevels sixtySecondsOfSilence(long echoFrames) {
    const long kRate = V::channels > 2 ? 8000 : 44100;
    const long kFrames = 60 * kRate;
    typename V::Effect effect(nullptr);
    if (effect.getSampleRate() != static_cast<float>(kRate)) effect.setSampleRate(static_cast<float>(kRate));
    // Half a frame above the wanted count, so the truncation lands on it.
    recirculate<V>(effect, static_cast<float>((static_cast<double>(echoFrames) + 0.5) / static_cast<double>(kRate)));
    constexpr int kBlock = 1024;
    Block io(V::channels, kBlock);
    SilenceLevels levels;
    for (long start = 0; start < kFrames; start += kBlock) {
        const int n = static_cast<int>(std::min<long>(kBlock, kFrames - start));
        for (auto& channel : io.data) std::fill(channel.begin(), channel.end(), 0.0f);
        effect.processReplacing(io.get(), io.get(), n);
        for (int c = 0; c < V::channels; ++c)
            for (int i = 0; i < n; ++i) {
                const float y = io.at(c, i);
                if (std::fpclassify(y) == FP_SUBNORMAL) ++levels.subnormals;
                const double magnitude = std::fabs(static_cast<double>(y));
                if (start + i < 10 * kRate) levels.firstTenSeconds = std::max(levels.firstTenSeconds, magnitude);
                if (start + i >= kFrames - 10 * kRate) levels.lastTenSeconds = std::max(levels.lastTenSeconds, magnitude);
            }
    }
    return levels;
}

constexpr double kNoise = 1e-25;

// With an odd echo length (4411 or 801 frames) the noise entries met by a
// recirculating sample cancel over every eight passes: the level stays a few
// noise steps.
TYPED_TEST(DelaySilence, FeedbackOneOnSilenceStaysAtTheNoiseLevel) {
    const SilenceLevels levels = sixtySecondsOfSilence<TypeParam>(TypeParam::channels > 2 ? 801 : 4411);
    EXPECT_EQ(levels.subnormals, 0);
    EXPECT_GT(levels.firstTenSeconds, 0.0);
    EXPECT_LE(levels.firstTenSeconds, 4 * kNoise * 1.0001);
    EXPECT_LE(levels.lastTenSeconds, levels.firstTenSeconds);  // no growth
}

// With an even echo length (1 s) some samples meet entries of one sign more
// often than the other: the level may creep up by at most one noise step per
// pass (60 passes in 60 s), still some 450 dB below full scale and never
// subnormal.
TYPED_TEST(DelaySilence, FeedbackOneOnSilenceNeverGoesSubnormalAndCreepsAtMostLinearly) {
    const SilenceLevels levels = sixtySecondsOfSilence<TypeParam>(TypeParam::channels > 2 ? 8000 : 44100);
    EXPECT_EQ(levels.subnormals, 0);
    EXPECT_LE(levels.lastTenSeconds, 61 * kNoise * 1.0001);
    EXPECT_LT(levels.lastTenSeconds, 1e-20);
}

// ---------------------------------------------------------------- bad input

template <class V>
class DelayBadInput : public ::testing::Test {};
TYPED_TEST_SUITE(DelayBadInput, AllVariants);

TYPED_TEST(DelayBadInput, NullArraysAreIgnored) {
    typename TypeParam::Effect effect(nullptr);
    effect.setSampleRate(100.0f);
    Block io(TypeParam::channels, 16);
    for (int c = 0; c < TypeParam::channels; ++c)
        for (int i = 0; i < 16; ++i) io.at(c, i) = 3.0f;
    effect.processReplacing(nullptr, nullptr, 16);
    effect.process(nullptr, io.get(), 16);
    effect.processReplacing(io.get(), nullptr, 16);
    std::vector<float*> holed(io.pointers);
    holed.back() = nullptr;  // the last channel missing
    effect.processReplacing(holed.data(), holed.data(), 16);
    effect.process(io.get(), holed.data(), 16);
    for (int c = 0; c < TypeParam::channels; ++c)
        for (int i = 0; i < 16; ++i) EXPECT_EQ(io.at(c, i), 3.0f);
    // Still a working effect afterwards.
    effect.processReplacing(io.get(), io.get(), 16);
    EXPECT_NE(io.at(0, 0), 3.0f);
}

// 1e7 Hz: a line of 2 x 10^7 frames per channel (80 MB) is allocated and
// used; the wider variants take 1e6 Hz to stay within the test machine's memory.
TYPED_TEST(DelayBadInput, HugeButAllocatableSampleRate) {
    const float rate = TypeParam::channels > 2 ? 1e6f : 1e7f;
    LockStep<TypeParam> run;
    run.setSampleRate(rate);
    EXPECT_EQ(run.effect->getSampleRate(), rate);
    ASSERT_TRUE(run.block(4096, Call::Replacing, Buffers::InPlace));
    run.suspend();
    ASSERT_TRUE(run.block(1000, Call::Accumulating, Buffers::Separate, 0.0f));
}

// Rates whose line cannot be allocated at all (longer than a 32-bit frame
// count, or infinite): the old line and the old rate are kept together.
TYPED_TEST(DelayBadInput, UnallocatableSampleRateKeepsTheOldLineAndRate) {
    LockStep<TypeParam> run;
    run.setSampleRate(200.0f);
    ASSERT_TRUE(run.block(100, Call::Replacing, Buffers::InPlace));
    for (const float rate : {1e30f, 3e9f, std::numeric_limits<float>::infinity(), std::numeric_limits<float>::max()}) {
        run.effect->setSampleRate(rate);  // the model is not told: nothing is to change
        EXPECT_EQ(run.effect->getSampleRate(), 200.0f) << rate;
        EXPECT_TRUE(run.effect->hasDelayLine());
        ASSERT_TRUE(run.block(150, Call::Replacing, Buffers::InPlace)) << rate;
    }
}

TYPED_TEST(DelayBadInput, MinusInfiniteRateLeavesOnlyTheSpareFrame) {
    LockStep<TypeParam> run;
    run.setSampleRate(-std::numeric_limits<float>::infinity());
    EXPECT_EQ(run.model.lineLength(), 0);
    ASSERT_TRUE(run.block(100, Call::Replacing, Buffers::InPlace));
    run.suspend();
    ASSERT_TRUE(run.block(33, Call::Accumulating, Buffers::Separate));
}

TYPED_TEST(DelayBadInput, ExtremeFrameCountsOfNothing) {
    typename TypeParam::Effect effect(nullptr);
    Block io(TypeParam::channels, 1);
    io.at(0, 0) = 2.0f;
    effect.processReplacing(io.get(), io.get(), std::numeric_limits<VstInt32>::min());
    effect.process(io.get(), io.get(), -1);
    effect.processReplacing(io.get(), io.get(), 0);
    EXPECT_EQ(io.at(0, 0), 2.0f);
}

}  // namespace
