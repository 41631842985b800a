// Every variant of both delay families against the independent per-frame
// model: many block sizes (the noise index depends on the frame count of a
// call), the feedback and mix grid, delay-time changes between calls, suspend
// and sample-rate changes, both entry points, in place and separate buffers.
#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <type_traits>

#include "tests/delay/DelayTestSupport.h"

namespace {

using namespace delay_test;

template <class V>
class DelayModelAgreement : public ::testing::Test {};

using AllVariants = ::testing::Types<Delay1, Delay2, Delay6, Delay16, Multitap1, Multitap2, Multitap6, Multitap16>;
TYPED_TEST_SUITE(DelayModelAgreement, AllVariants);

constexpr std::array<int, 10> kBlockSizes = {1, 3, 4, 5, 7, 8, 9, 64, 1024, 13};

template <class V>
constexpr bool isSingleTap = std::is_same_v<typename V::Model, delay_reference::DelayModel>;

// One setting of the whole effect: a normalised delay, a feedback and a mix.
// The four-tap delay spreads the delay over its taps and gives the first tap
// the feedback; the other taps recirculate a little as well.
template <class V>
void applySetting(LockStep<V>& run, float delay, float feedback, float mix) {
    if constexpr (isSingleTap<V>) {
        run.setParameter(0, delay);
        run.setParameter(1, feedback);
        run.setParameter(2, mix);
    } else {
        const std::array<float, 4> delays = {delay, delay * 0.5f, delay * 0.25f + 0.1f, 0.9f};
        const std::array<float, 4> feedbacks = {feedback, feedback * 0.25f, 0.0f, 0.125f};
        const std::array<float, 4> levels = {1.0f, 0.5f, 0.25f, 0.75f};
        for (int k = 0; k < 4; ++k) {
            run.setParameter(3 * k, delays[static_cast<std::size_t>(k)]);
            run.setParameter(3 * k + 1, feedbacks[static_cast<std::size_t>(k)]);
            run.setParameter(3 * k + 2, levels[static_cast<std::size_t>(k)]);
        }
        run.setParameter(12, mix);
    }
}

Call callFor(int step) { return step % 2 == 0 ? Call::Replacing : Call::Accumulating; }
Buffers buffersFor(int step) { return (step / 2) % 2 == 0 ? Buffers::InPlace : Buffers::Separate; }
// Loud, silent and very quiet stretches: in the silent and quiet ones the
// 1e-25 noise is not rounded away, so its index is seen in the output.
float scaleFor(int step) {
    constexpr std::array<float, 3> kScales = {1.0f, 0.0f, 1e-23f};
    return kScales[static_cast<std::size_t>(step % 3)];
}

TYPED_TEST(DelayModelAgreement, FeedbackAndMixGridOverManyBlockSizes) {
    LockStep<TypeParam> run;
    run.setSampleRate(500.0f);
    int step = 0;
    for (const float feedback : {0.0f, 0.5f, 1.0f})
        for (const float mix : {0.0f, 0.5f, 1.0f}) {
            applySetting(run, 0.37f, feedback, mix);
            for (const int frames : kBlockSizes) {
                ASSERT_TRUE(run.block(frames, callFor(step), buffersFor(step), scaleFor(step)))
                    << "feedback " << feedback << " mix " << mix << " step " << step;
                ++step;
            }
        }
    EXPECT_GT(run.position, 9 * 1100);
}

TYPED_TEST(DelayModelAgreement, DelayTimeChangesBetweenCalls) {
    LockStep<TypeParam> run;
    run.setSampleRate(300.0f);
    const std::array<float, 7> delays = {0.0f, 0.05f, 0.5f, 1.0f, 0.999f, 0.31f, 0.001f};
    int step = 0;
    for (int round = 0; round < 3; ++round)
        for (const int frames : kBlockSizes) {
            applySetting(run, delays[static_cast<std::size_t>(step % 7)], 0.5f, 0.5f);
            ASSERT_TRUE(run.block(frames, callFor(step), buffersFor(step), scaleFor(step))) << "step " << step;
            ++step;
        }
}

TYPED_TEST(DelayModelAgreement, SuspendAndSampleRateChanges) {
    LockStep<TypeParam> run;
    applySetting(run, 0.25f, 0.5f, 0.5f);
    ASSERT_TRUE(run.block(700, Call::Replacing, Buffers::InPlace));
    run.setSampleRate(250.0f);
    ASSERT_TRUE(run.block(333, Call::Replacing, Buffers::Separate));
    applySetting(run, 0.75f, 1.0f, 1.0f);
    ASSERT_TRUE(run.block(64, Call::Accumulating, Buffers::Separate));
    run.suspend();
    ASSERT_TRUE(run.block(9, Call::Replacing, Buffers::InPlace));
    ASSERT_TRUE(run.block(600, Call::Accumulating, Buffers::InPlace, 0.0f));
    run.setSampleRate(250.0f);  // the rate already held: nothing happens
    ASSERT_TRUE(run.block(7, Call::Replacing, Buffers::InPlace));
    run.setSampleRate(1000.0f);
    ASSERT_TRUE(run.block(1024, Call::Replacing, Buffers::Separate));
    applySetting(run, 1.0f, 0.5f, 0.5f);  // 2 s: the full line
    ASSERT_TRUE(run.block(1024, Call::Replacing, Buffers::InPlace));
    ASSERT_TRUE(run.block(1024, Call::Replacing, Buffers::InPlace));
    run.suspend();
    ASSERT_TRUE(run.block(5, Call::Accumulating, Buffers::Separate));
    ASSERT_TRUE(run.block(2100, Call::Replacing, Buffers::InPlace, 1e-23f));
    run.setSampleRate(44100.0f);
    ASSERT_TRUE(run.block(1000, Call::Replacing, Buffers::InPlace));
}

TYPED_TEST(DelayModelAgreement, DefaultSettingsAtTheHostRate) {
    LockStep<TypeParam> run;
    run.setSampleRate(44100.0f);  // the rate already held
    for (const int frames : kBlockSizes) ASSERT_TRUE(run.block(frames, Call::Replacing, Buffers::InPlace));
    for (const int frames : kBlockSizes) ASSERT_TRUE(run.block(frames, Call::Replacing, Buffers::InPlace, 0.0f));
}

TYPED_TEST(DelayModelAgreement, ZeroAndNegativeFrameCountsInBetween) {
    LockStep<TypeParam> run;
    run.setSampleRate(200.0f);
    applySetting(run, 0.1f, 0.5f, 0.5f);
    ASSERT_TRUE(run.block(0, Call::Replacing, Buffers::InPlace));
    ASSERT_TRUE(run.block(50, Call::Replacing, Buffers::InPlace));
    applySetting(run, 0.2f, 0.25f, 1.0f);
    ASSERT_TRUE(run.block(-4, Call::Accumulating, Buffers::Separate));
    run.suspend();
    ASSERT_TRUE(run.block(500, Call::Replacing, Buffers::InPlace));
}

// Out-of-range settings: normalised values above 1 and below 0, NaN and the
// infinities, through suspend and calls, where positions leave the line.
TYPED_TEST(DelayModelAgreement, ValuesOutsideTheNormalisedRange) {
    LockStep<TypeParam> run;
    run.setSampleRate(100.0f);
    constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
    constexpr float kInf = std::numeric_limits<float>::infinity();
    const std::array<float, 9> values = {5.0f, -0.3f, kNaN, kInf, -kInf, 1e30f, 1.0000001f, 2.5f, 1.0f};
    int step = 0;
    for (const float value : values) {
        applySetting(run, value, 0.5f, 0.5f);
        ASSERT_TRUE(run.block(37, callFor(step), buffersFor(step))) << "delay " << value;
        run.suspend();
        ASSERT_TRUE(run.block(250, callFor(step + 1), buffersFor(step + 1), 0.0f)) << "delay " << value << " after suspend";
        applySetting(run, 0.2f, value, value);
        ASSERT_TRUE(run.block(64, callFor(step), buffersFor(step))) << "feedback and mix " << value;
        step += 3;
    }
}

// Degenerate sample rates: 0, negative, 1 Hz, NaN; the line shrinks to its
// spare frame or to a frame or two.
TYPED_TEST(DelayModelAgreement, DegenerateSampleRates) {
    LockStep<TypeParam> run;
    applySetting(run, 0.5f, 0.5f, 0.5f);
    for (const float rate : {0.0f, -48000.0f, 1.0f, 0.5f, std::numeric_limits<float>::quiet_NaN(), 2.0f}) {
        run.setSampleRate(rate);
        ASSERT_TRUE(run.block(17, Call::Replacing, Buffers::InPlace)) << "rate " << rate;
        applySetting(run, 0.9f, 1.0f, 0.5f);
        ASSERT_TRUE(run.block(8, Call::Accumulating, Buffers::Separate)) << "rate " << rate;
        run.suspend();
        ASSERT_TRUE(run.block(9, Call::Replacing, Buffers::Separate)) << "rate " << rate;
        applySetting(run, 0.5f, 0.5f, 0.5f);
    }
}

}  // namespace
