#pragma once
// Helpers for the level effects' loops that move or scale groups of samples
// per instruction. A group reads all its samples before it writes any, which
// gives the one-sample-at-a-time result when every written array is the array
// it reads or lies apart from it; the loops check that first.
#include <cstdint>

#include "frame/AEffect.h"

namespace AF {

// True when the two arrays of `frames` floats are the same array or apart.
inline bool sameOrApart(const float* a, const float* b, VstInt32 frames) noexcept {
    const auto first = reinterpret_cast<std::uintptr_t>(a);
    const auto second = reinterpret_cast<std::uintptr_t>(b);
    const auto bytes = static_cast<std::uintptr_t>(frames > 0 ? frames : 0) * sizeof(float);
    return first == second || first + bytes <= second || second + bytes <= first;
}

// Frames to do one by one before `out` sits on a 32-byte boundary, so that no
// group's store straddles two cache lines (at most 7, never more than `frames`).
inline VstInt32 framesToBoundary(const float* out, VstInt32 frames) noexcept {
    const auto address = reinterpret_cast<std::uintptr_t>(out);
    if (address % sizeof(float) != 0) return 0;
    const auto lead = static_cast<VstInt32>((32 - address % 32) % 32 / sizeof(float));
    return lead < frames ? lead : frames;
}

}  // namespace AF
