// The host buffer's sample loops at every width the processor runs, held to a
// plain one-sample-at-a-time transcription written here: random signals with
// signed zeros, subnormals, infinities, NaNs and overflowing values, lengths
// around the group sizes, every start offset against a 32-byte boundary, in
// place, apart, and partly overlapping.
//
// Results are compared as bit patterns: the vector loops must give the very
// bits of the plain loop, -0.0 must stay apart from +0.0, and a NaN must equal
// itself. Where a NaN meets a NaN, which payload survives depends on operand
// order chosen by the compiler, not on the arithmetic; so NaNs here all carry
// one payload, except in inputs that meet finite operands only.
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "AR/AudioBuffer.h"
#include "platform/src/SampleLoops.h"
#include "support/Bits.h"

namespace {

using AR::loops::Width;

using aftest::bits;

// The plain rules, one sample at a time; volatile keeps the compiler from
// turning them into group operations.
float plainProduct(float sample, float gain) {
    volatile float factor = gain;  // never folded into a sign flip for -1
    volatile float product = sample * factor;
    return product;
}

float plainSum(float held, float added) {
    volatile float sum = held + added;
    return sum;
}

constexpr float kQuietNaN = std::numeric_limits<float>::quiet_NaN();
// A NaN with another payload, for inputs that only meet finite operands.
const float kOtherNaN = std::bit_cast<float>(0xFFC01234u);

// Random samples in -2..2 with special values mixed in.
std::vector<float> testSignal(std::size_t count, unsigned seed, bool otherNaNs) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> uniform(-2.0f, 2.0f);
    const float specials[] = {0.0f,     -0.0f,      1e-40f,    -3e-39f, std::numeric_limits<float>::denorm_min(),
                              1.17549435e-38f, std::numeric_limits<float>::infinity(),
                              -std::numeric_limits<float>::infinity(), kQuietNaN, 3.0e38f, -3.0e38f, 1.0f};
    std::vector<float> samples(count);
    for (float& sample : samples) {
        const unsigned pick = random() % 16u;
        if (pick < std::size(specials))
            sample = specials[pick];
        else
            sample = uniform(random);
        if (otherNaNs && pick == 15u) sample = kOtherNaN;
    }
    return samples;
}

std::vector<Width> widths() {
    std::vector<Width> available{Width::plain};
#if AR_SAMPLE_LOOPS_X86
    available.push_back(Width::sse2);
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx2")) available.push_back(Width::avx2);
#endif
    return available;
}

std::string describe(Width width, int frames, int from, int to) {
    return "width " + std::to_string(static_cast<int>(width)) + ", frames " + std::to_string(frames) +
           ", source at " + std::to_string(from) + ", destination at " + std::to_string(to);
}

constexpr int kLengths[] = {0, 1, 3, 4, 7, 8, 9, 15, 16, 17, 31, 33, 511, 512, 513, 4097};
const float kGains[] = {0.6f, -1.0f, 2.0f, 0.0f, -0.0f, 1e-30f, 3.0e38f,
                        std::numeric_limits<float>::infinity(), kQuietNaN};

// One memory block holds source and destination at the given float offsets,
// so that the same code covers in place (equal offsets), apart (far offsets)
// and partly overlapping arrays. The block itself starts on a 64-byte
// boundary, so the offsets decide the alignment.
struct Arena {
    explicit Arena(std::size_t floats) : storage(floats + 16) {
        const auto address = reinterpret_cast<std::uintptr_t>(storage.data());
        base = (64 - address % 64) % 64 / sizeof(float);
    }
    float* at(int offset) { return storage.data() + base + static_cast<std::size_t>(offset); }
    std::vector<float> storage;
    std::size_t base = 0;
};

void checkScaleCopy(Width width, int frames, int from, int to, float gain, unsigned seed) {
    const std::size_t span = 2 * static_cast<std::size_t>(frames) + 40;
    const bool finiteGain = gain == gain;
    const std::vector<float> start = testSignal(span, seed, finiteGain);
    Arena actual(span), expected(span);
    std::copy(start.begin(), start.end(), actual.storage.begin() + static_cast<std::ptrdiff_t>(actual.base));
    std::copy(start.begin(), start.end(), expected.storage.begin() + static_cast<std::ptrdiff_t>(expected.base));
    // The plain loop, in its order, on the same layout.
    for (int i = 0; i < frames; ++i) expected.at(to)[i] = plainProduct(expected.at(from)[i], gain);
    AR::loops::scaleCopy(width, actual.at(to), actual.at(from), frames, gain);
    for (std::size_t k = 0; k < span; ++k)
        ASSERT_EQ(bits(actual.at(0)[k]), bits(expected.at(0)[k]))
            << describe(width, frames, from, to) << ", gain " << gain << ", sample " << k;
}

void checkMix(Width width, int frames, int from, int to, unsigned seed) {
    const std::size_t span = 2 * static_cast<std::size_t>(frames) + 40;
    std::vector<float> start = testSignal(span, seed, false);
    // Huge values and infinities only positive: overlapping arrays add sums
    // into sums, and +inf meeting -inf would make a second NaN payload.
    for (float& sample : start)
        if (sample > 1e38f || sample < -1e38f) sample = std::numeric_limits<float>::infinity();
    Arena actual(span), expected(span);
    std::copy(start.begin(), start.end(), actual.storage.begin() + static_cast<std::ptrdiff_t>(actual.base));
    std::copy(start.begin(), start.end(), expected.storage.begin() + static_cast<std::ptrdiff_t>(expected.base));
    for (int i = 0; i < frames; ++i) expected.at(to)[i] = plainSum(expected.at(to)[i], expected.at(from)[i]);
    AR::loops::mix(width, actual.at(to), actual.at(from), frames);
    for (std::size_t k = 0; k < span; ++k)
        ASSERT_EQ(bits(actual.at(0)[k]), bits(expected.at(0)[k])) << describe(width, frames, from, to)
                                                                    << ", sample " << k;
}

// Source and destination offsets: in place at every alignment, apart with
// different alignments (`far` moves one array past the other's end), and
// overlapping by less than a group either way.
enum class Far { none, source, destination };
struct Layout {
    int from;
    int to;
    Far far;
    int fromAt(int frames) const { return from + (far == Far::source ? frames + 8 : 0); }
    int toAt(int frames) const { return to + (far == Far::destination ? frames + 8 : 0); }
};
constexpr Layout kLayouts[] = {
    {0, 0, Far::none},        {1, 1, Far::none},        {3, 3, Far::none},       {5, 5, Far::none},
    {7, 7, Far::none},        {0, 4, Far::destination}, {1, 4, Far::destination}, {7, 2, Far::source},
    {5, 7, Far::source},      {0, 0, Far::source},      {2, 3, Far::destination}, {0, 1, Far::none},
    {1, 0, Far::none},        {5, 8, Far::none},        {8, 5, Far::none},        {0, 7, Far::none},
    {9, 0, Far::none},        {3, 11, Far::none},       {11, 3, Far::none},       {0, 16, Far::none}};

TEST(PlatformSampleLoops, ScaledCopyMatchesThePlainLoopAtEveryWidth) {
    unsigned seed = 1;
    for (Width width : widths())
        for (int frames : kLengths)
            for (const Layout& layout : kLayouts)
                for (float gain : kGains) {
                    checkScaleCopy(width, frames, layout.fromAt(frames), layout.toAt(frames), gain, seed++);
                    if (HasFatalFailure()) return;
                }
}

TEST(PlatformSampleLoops, MixMatchesThePlainLoopAtEveryWidth) {
    unsigned seed = 7;
    for (Width width : widths())
        for (int frames : kLengths)
            for (const Layout& layout : kLayouts) {
                checkMix(width, frames, layout.fromAt(frames), layout.toAt(frames), seed++);
                if (HasFatalFailure()) return;
            }
}

TEST(PlatformSampleLoops, NegativeCountsWriteNothing) {
    for (Width width : widths()) {
        std::vector<float> source{1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f, 7.0f, 8.0f, 9.0f};
        std::vector<float> destination(9, 0.5f);
        AR::loops::scaleCopy(width, destination.data(), source.data(), -5, 3.0f);
        AR::loops::mix(width, destination.data(), source.data(), -1);
        for (float sample : destination) EXPECT_EQ(bits(sample), bits(0.5f));
    }
}

// ---------------------------------------------------------------------------
// The same rules through the buffer classes, at whatever width this machine
// takes: host arrays that start off any boundary, in place and apart.

TEST(PlatformSampleLoops, BufferOperationsOnUnalignedHostArrays) {
    for (int frames : {1, 3, 17, 511, 512, 4097}) {
        for (int offset = 0; offset < 8; ++offset) {
            const std::size_t span = static_cast<std::size_t>(frames) + 16;
            Arena inputs(2 * span), outputs(2 * span);
            const std::vector<float> in = testSignal(2 * span, 100u + static_cast<unsigned>(frames), true);
            const std::vector<float> out = testSignal(2 * span, 200u + static_cast<unsigned>(offset), false);
            float* inputArrays[2] = {inputs.at(offset), inputs.at(offset + static_cast<int>(span))};
            float* outputArrays[2] = {outputs.at(offset + 3), outputs.at(static_cast<int>(span))};
            for (int c = 0; c < 2; ++c)
                for (int i = 0; i < frames; ++i) {
                    inputArrays[c][i] = in[static_cast<std::size_t>(c) * span + static_cast<std::size_t>(i)];
                    outputArrays[c][i] = out[static_cast<std::size_t>(c) * span + static_cast<std::size_t>(i)];
                }
            AR::AudioBufferShell source, target;
            ASSERT_TRUE(source.Init(2));
            ASSERT_TRUE(target.Init(2));
            source.Assign(inputArrays, frames);
            target.Assign(outputArrays, frames);

            // Scaled copy apart, then mixing the inputs in, then scaling the
            // inputs in place (the accumulating calls' order).
            const float gain = -0.7f;
            target.CopyFromScale(source, gain);
            for (int c = 0; c < 2; ++c)
                for (int i = 0; i < frames; ++i)
                    ASSERT_EQ(bits(outputArrays[c][i]), bits(plainProduct(inputArrays[c][i], gain)))
                        << "copy, frames " << frames << ", offset " << offset << ", channel " << c << ", frame " << i;
            std::vector<float> before(outputArrays[0], outputArrays[0] + frames);
            target.Mix(source);
            for (int i = 0; i < frames; ++i)
                ASSERT_EQ(bits(outputArrays[0][i]), bits(plainSum(before[static_cast<std::size_t>(i)], inputArrays[0][i])))
                    << "mix, frames " << frames << ", offset " << offset << ", frame " << i;
            std::vector<float> unscaled(inputArrays[1], inputArrays[1] + frames);
            AR::AudioBufferChannel right;
            right.Assign(source, 1);
            right *= 1.5f;
            for (int i = 0; i < frames; ++i)
                ASSERT_EQ(bits(inputArrays[1][i]), bits(plainProduct(unscaled[static_cast<std::size_t>(i)], 1.5f)))
                    << "scale, frames " << frames << ", offset " << offset << ", frame " << i;

            // A scaled copy of a channel onto itself is the in-place product.
            std::vector<float> held(inputArrays[0], inputArrays[0] + frames);
            AR::AudioBufferChannel left;
            left.Assign(source, 0);
            left.CopyFromScale(left, 0.25f);
            for (int i = 0; i < frames; ++i)
                ASSERT_EQ(bits(inputArrays[0][i]), bits(plainProduct(held[static_cast<std::size_t>(i)], 0.25f)))
                    << "in place, frames " << frames << ", offset " << offset << ", frame " << i;
        }
    }
}

}  // namespace
