#pragma once
// Deterministic test signals for afx's tests, made here and not by afx.
#include <cstdint>
#include <vector>

namespace afxtest {

// Noise of `frames` frames and `channels` channels (interleaved), each channel
// its own, within ±0.5 so that no integer output clips; the same `seed` gives
// the same samples.
inline std::vector<float> noise(int frames, int channels, std::uint32_t seed) {
    std::vector<float> samples(static_cast<std::size_t>(frames) * channels);
    std::uint32_t state = seed;
    for (float& sample : samples) {
        state = state * 1664525u + 1013904223u;  // a linear congruential generator
        sample = static_cast<float>(static_cast<std::int32_t>(state >> 8) - (1 << 23)) / static_cast<float>(1 << 24);
    }
    return samples;
}

}  // namespace afxtest
