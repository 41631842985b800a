#include "support/Buffers.h"

#include <cmath>
#include <cstdio>
#include <sstream>

namespace aftest {

Channels makeChannels(int channels, int frames, float value) {
    return Channels(static_cast<std::size_t>(channels), std::vector<float>(static_cast<std::size_t>(frames), value));
}

Channels taggedRamp(int channels, int frames) {
    Channels out = makeChannels(channels, frames);
    for (int c = 0; c < channels; ++c) {
        for (int i = 0; i < frames; ++i) out[c][i] = static_cast<float>(c + i * channels);
    }
    return out;
}

Channels taggedNoise(int channels, int frames, std::uint32_t seed) {
    Channels out = makeChannels(channels, frames);
    for (int c = 0; c < channels; ++c) {
        // A 32-bit linear congruential generator, one stream per channel.
        std::uint32_t state = seed * 2654435761u + static_cast<std::uint32_t>(c) * 40503u + 1u;
        for (int i = 0; i < frames; ++i) {
            state = state * 1664525u + 1013904223u;
            // The top 24 bits give a float in [0, 1) exactly; scaled to [-1, 1).
            const float unit = static_cast<float>(state >> 8) / 16777216.0f;
            out[c][i] = unit * 2.0f - 1.0f;
        }
    }
    return out;
}

Channels slice(const Channels& buffers, int first, int count) {
    Channels out;
    for (const auto& channel : buffers) out.emplace_back(channel.begin() + first, channel.begin() + first + count);
    return out;
}

namespace {

bool sameSample(float expected, float actual, NanPolicy nanPolicy) {
    if (nanPolicy == NanPolicy::kAnyNanMatches && std::isnan(expected) && std::isnan(actual)) return true;
    return bits(expected) == bits(actual);
}

std::string describe(float value) {
    char text[64];
    std::snprintf(text, sizeof text, "%.9g (0x%08x)", static_cast<double>(value), bits(value));
    return text;
}

}  // namespace

testing::AssertionResult sameBits(const std::vector<float>& expected, const std::vector<float>& actual,
                                  NanPolicy nanPolicy) {
    if (expected.size() != actual.size()) {
        return testing::AssertionFailure() << "length differs: expected " << expected.size() << " samples, got "
                                           << actual.size();
    }
    std::size_t mismatches = 0;
    std::ostringstream firstOnes;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        if (sameSample(expected[i], actual[i], nanPolicy)) continue;
        if (mismatches < 5) {
            firstOnes << "\n  [" << i << "] expected " << describe(expected[i]) << ", got " << describe(actual[i]);
        }
        ++mismatches;
    }
    if (mismatches == 0) return testing::AssertionSuccess();
    return testing::AssertionFailure() << mismatches << " of " << expected.size() << " samples differ"
                                       << firstOnes.str();
}

testing::AssertionResult sameBits(const Channels& expected, const Channels& actual, NanPolicy nanPolicy) {
    if (expected.size() != actual.size()) {
        return testing::AssertionFailure() << "channel count differs: expected " << expected.size() << ", got "
                                           << actual.size();
    }
    for (std::size_t c = 0; c < expected.size(); ++c) {
        testing::AssertionResult result = sameBits(expected[c], actual[c], nanPolicy);
        if (!result) return testing::AssertionFailure() << "channel " << c << ": " << result.message();
    }
    return testing::AssertionSuccess();
}

}  // namespace aftest
