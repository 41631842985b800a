#pragma once
// Sample buffers for tests: channels as vectors of floats, test signals whose
// values say which channel and frame they came from, and exact comparison.
//
// Exactness: the module promises bit-identical results, so comparisons here are
// of bit patterns (std::bit_cast<uint32_t>), not of values: -0.0 differs from
// +0.0 and two NaNs match only when the policy says so.
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <vector>

#include "support/Bits.h"

namespace aftest {

// One vector of frames per channel.
using Channels = std::vector<std::vector<float>>;

// `channels` channels of `frames` samples, all `value`.
Channels makeChannels(int channels, int frames, float value = 0.0f);

// Channel-tagged ramp: sample (c, i) is c + i * channels, so every sample of
// every channel is distinct and a crossed channel or shifted frame fails loudly.
// Exact in float while channels * frames stays below 2^24.
Channels taggedRamp(int channels, int frames);

// Channel-tagged noise: reproducible values in [-1, 1) from a fixed seed, a
// different sequence per channel (the seed is mixed with the channel index).
Channels taggedNoise(int channels, int frames, std::uint32_t seed = 1);

// The frame range [first, first + count) of every channel.
Channels slice(const Channels& buffers, int first, int count);

enum class NanPolicy {
    kAnyNanMatches,  // a NaN equals any NaN, whatever its payload or sign
    kExactBits,      // every bit must match, NaNs included
};

// Bit-for-bit equality; on failure the message names the first differing
// samples (index, both values, both bit patterns) and how many differ.
testing::AssertionResult sameBits(const std::vector<float>& expected, const std::vector<float>& actual,
                                  NanPolicy nanPolicy = NanPolicy::kAnyNanMatches);
testing::AssertionResult sameBits(const Channels& expected, const Channels& actual,
                                  NanPolicy nanPolicy = NanPolicy::kAnyNanMatches);

}  // namespace aftest
