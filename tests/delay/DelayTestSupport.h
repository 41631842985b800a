#pragma once
// Buffers, test signals and the lock-step harness that drives a delay effect
// and its independent model through the same calls.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "effects/delay/Delay.h"
#include "effects/delay/MultitapDelay.h"
#include "effects/variants/NamedVariants.h"
#include "tests/delay/DelayReference.h"

namespace delay_test {

// Exact floats are compared as bit patterns: the delays promise bit-identical
// output, and a float == would also accept +0 for -0. Any NaN matches any NaN.
inline bool sameBits(float a, float b) {
    if (std::isnan(a) && std::isnan(b)) return true;
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}

// Deterministic, channel-tagged test signal: a hashed value in -0.5..0.5 plus
// an offset of (channel + 1) / 64, so a crossed channel shows at once.
inline float taggedSample(int channel, std::int64_t frame) {
    std::uint64_t h = static_cast<std::uint64_t>(frame) * 6364136223846793005ULL + 1442695040888963407ULL;
    h ^= static_cast<std::uint64_t>(channel + 1) * 0x9E3779B97F4A7C15ULL;
    h ^= h >> 29;
    h *= 0xBF58476D1CE4E5B9ULL;
    h ^= h >> 32;
    const double unit = static_cast<double>(h % 20001) / 20000.0 - 0.5;  // -0.5 .. 0.5
    return static_cast<float>(unit + (channel + 1) / 64.0);
}

// Channel arrays of one block, owned here.
struct Block {
    Block(int channels, int frames) : data(static_cast<std::size_t>(channels)), pointers(static_cast<std::size_t>(channels)) {
        for (int c = 0; c < channels; ++c) {
            data[static_cast<std::size_t>(c)].assign(static_cast<std::size_t>(frames > 0 ? frames : 0), 0.0f);
            pointers[static_cast<std::size_t>(c)] = data[static_cast<std::size_t>(c)].data();
        }
    }
    float** get() { return pointers.data(); }
    float& at(int c, int i) { return data[static_cast<std::size_t>(c)][static_cast<std::size_t>(i)]; }
    std::vector<std::vector<float>> data;
    std::vector<float*> pointers;
};

// Variant traits: the effect class, its model and its channel count.
template <class EffectT, class ModelT, int N>
struct Variant {
    using Effect = EffectT;
    using Model = ModelT;
    static constexpr int channels = N;
};

using Delay1 = Variant<AF::AudioDelay1, delay_reference::DelayModel, 1>;
using Delay2 = Variant<AF::AudioDelay2, delay_reference::DelayModel, 2>;
using Delay6 = Variant<AF::AudioDelay6, delay_reference::DelayModel, 6>;
using Delay16 = Variant<AF::AudioDelay16, delay_reference::DelayModel, 16>;
using Multitap1 = Variant<AF::AudioMultitapDelay1, delay_reference::MultitapModel, 1>;
using Multitap2 = Variant<AF::AudioMultitapDelay2, delay_reference::MultitapModel, 2>;
using Multitap6 = Variant<AF::AudioMultitapDelay6, delay_reference::MultitapModel, 6>;
using Multitap16 = Variant<AF::AudioMultitapDelay16, delay_reference::MultitapModel, 16>;

enum class Call { Replacing, Accumulating };
enum class Buffers { InPlace, Separate };

// Drives an effect and its model in lock step and compares every output sample.
template <class V>
class LockStep {
public:
    static constexpr int kChannels = V::channels;

    LockStep() : effect(std::make_unique<typename V::Effect>(nullptr)), model(kChannels) {}

    void setParameter(int index, float value) {
        effect->setParameter(index, value);
        model.setParameter(index, value);
    }
    void setSampleRate(float rate) {
        effect->setSampleRate(rate);
        model.setSampleRate(rate);
    }
    void suspend() {
        effect->suspend();
        model.suspend();
    }

    // One call of `frames` frames of the tagged signal (from the running frame
    // counter); accumulating calls start from a tagged output. Returns false
    // after reporting the first differing sample.
    bool block(int frames, Call call, Buffers buffers, float inputScale = 1.0f) {
        const int n = frames > 0 ? frames : 0;
        const bool inPlace = buffers == Buffers::InPlace;
        Block effectIn(kChannels, n), effectOut(kChannels, n), modelIn(kChannels, n), modelOut(kChannels, n);
        for (int c = 0; c < kChannels; ++c)
            for (int i = 0; i < n; ++i) {
                const float x = taggedSample(c, position + i) * inputScale;
                // In place the output array holds the input; separate output
                // arrays start from a tagged value that an accumulating call adds to.
                const float before = inPlace ? x : (call == Call::Accumulating ? taggedSample(c + 40, position + i) : -7.0f);
                effectIn.at(c, i) = modelIn.at(c, i) = x;
                effectOut.at(c, i) = modelOut.at(c, i) = before;
            }
        float** effectSrc = inPlace ? effectOut.get() : effectIn.get();
        float** modelSrc = inPlace ? modelOut.get() : modelIn.get();
        float** effectDst = effectOut.get();
        float** modelDst = modelOut.get();
        if (call == Call::Replacing) {
            effect->processReplacing(effectSrc, effectDst, frames);
            model.processReplacing(modelSrc, modelDst, frames);
        } else {
            effect->process(effectSrc, effectDst, frames);
            model.process(modelSrc, modelDst, frames);
        }
        position += n;
        for (int c = 0; c < kChannels; ++c)
            for (int i = 0; i < n; ++i) {
                const float got = effectDst[c][i];
                const float want = modelDst[c][i];
                if (!sameBits(got, want)) {
                    ADD_FAILURE() << "channel " << c << " frame " << i << " of a " << frames << "-frame call (stream frame "
                                  << position - n + i << "): effect " << got << " (0x" << std::hex
                                  << std::bit_cast<std::uint32_t>(got) << "), model " << want << " (0x"
                                  << std::bit_cast<std::uint32_t>(want) << std::dec << ")";
                    return false;
                }
            }
        return true;
    }

    std::unique_ptr<typename V::Effect> effect;
    typename V::Model model;
    std::int64_t position = 0;
};

// Runs one call of an effect on a single impulse of height `amplitude` per
// channel (channel c gets amplitude / (c + 1)) and returns the outputs.
template <class Effect>
std::vector<std::vector<float>> impulseResponse(Effect& effect, int channels, int frames, float amplitude = 1.0f,
                                                int impulseFrame = 0) {
    Block io(channels, frames);
    for (int c = 0; c < channels; ++c) io.at(c, impulseFrame) = amplitude / static_cast<float>(c + 1);
    effect.processReplacing(io.get(), io.get(), frames);
    return io.data;
}

// The largest magnitude in [from, to) of every channel, skipping `except`.
inline double largestMagnitude(const std::vector<std::vector<float>>& out, std::int64_t from, std::int64_t to,
                               std::int64_t except = -1) {
    double largest = 0.0;
    for (const auto& channel : out)
        for (std::int64_t i = from; i < to && i < static_cast<std::int64_t>(channel.size()); ++i)
            if (i != except) largest = std::max(largest, std::fabs(static_cast<double>(channel[static_cast<std::size_t>(i)])));
    return largest;
}

}  // namespace delay_test
