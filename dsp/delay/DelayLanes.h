#pragma once
// Several frames per instruction for the delays. A channel's line is one array
// (DelayLine.h), and its positions step on together, so between two wraps the
// frames i..i+W-1 of a channel read, write and output W consecutive samples:
// one vector load or store each. The lanes are frames of one channel, so the
// channels are independent passes and no transposing is needed.
//
// A lane holds one frame: the doubles hold exactly the floats the plain loop
// converts, each product and sum is one lane-wise operation in the plain
// loop's order (no contraction, -ffp-contract=off), and each rounding to float
// is one lane-wise conversion, so every lane gives its frame's sample bit for
// bit. The frames of a group load before they store; that reads what the
// frame-by-frame loop reads unless a read position trails the write position
// by 1..W-1 frames, where a later frame would hear an earlier frame's write:
// such calls go frame by frame.
#include <array>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "dsp/delay/DelayLine.h"
#include "dsp/simd/Lanes.h"
#include "dsp/simd/VectorPath.h"

namespace AF::delay {

// `Width` floats of memory to and from doubles: widened exactly, rounded back
// to float lane-wise. The doubles travel by reference, so no function passes
// the four-lane doubles by value outside code compiled for AVX2.
template <unsigned Width>
struct Lanes;

#if AF_SIMD_X86

template <>
struct Lanes<2> {
    using D = LanesD2;
    [[gnu::always_inline]] static void load(D& into, const float* samples) noexcept {
        const __m128 two = _mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(samples)));
        into = reinterpret_cast<D>(_mm_cvtps_pd(two));
    }
    [[gnu::always_inline]] static void store(float* samples, const D& value) noexcept {
        const __m128 two = _mm_cvtpd_ps(reinterpret_cast<__m128d>(value));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(samples), _mm_castps_si128(two));
    }
};

// (Only ever inlined into code compiled for AVX2, where GCC's widening of four
// floats is one instruction when asked for by name; its generic conversion
// splits it in halves.)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpsabi"
template <>
struct Lanes<4> {
    using D = LanesD4;
    [[gnu::always_inline]] static void load(D& into, const float* samples) noexcept {
#if defined(__clang__)
        into = __builtin_convertvector(reinterpret_cast<LanesF4>(_mm_loadu_ps(samples)), D);
#else
        into = reinterpret_cast<D>(__builtin_ia32_cvtps2pd256(_mm_loadu_ps(samples)));
#endif
    }
    [[gnu::always_inline]] static void store(float* samples, const D& value) noexcept {
        _mm_storeu_ps(samples, reinterpret_cast<__m128>(__builtin_convertvector(value, LanesF4)));
    }
};
#pragma GCC diagnostic pop

#else

// Elsewhere the same conversions written for any processor (never chosen by
// the instruction-set choice there, but kept compilable).
template <unsigned Width>
struct Lanes {
    using D = std::conditional_t<Width == 2, LanesD2, LanesD4>;
    using F = std::conditional_t<Width == 2, LanesF2, LanesF4>;
    static void load(D& into, const float* samples) noexcept {
        F floats;
        std::memcpy(&floats, samples, sizeof floats);
        into = __builtin_convertvector(floats, D);
    }
    static void store(float* samples, const D& value) noexcept {
        const F floats = __builtin_convertvector(value, F);
        std::memcpy(samples, &floats, sizeof floats);
    }
};

#endif

// The noise of W consecutive frames, as one load: the entries in the order
// the countdown visits them. The group starting at frame `frame` of a call of
// `frames` frames starts at entry 7 - ((frames - 1 - frame) AND 7).
inline constexpr std::array<float, 16> kNoiseByFrame = [] {
    std::array<float, 16> row{};
    for (unsigned p = 0; p < row.size(); ++p) row[p] = kDenormalNoise[(15u - p) & 7u];
    return row;
}();

inline const float* noiseFrom(std::int32_t frames, std::int32_t frame) noexcept {
    const auto countdown = static_cast<std::uint32_t>(frames - 1 - frame) & 7u;
    return kNoiseByFrame.data() + (7u - countdown);
}

// The noise repeats every eight frames, so the groups of a stretch take
// their noise from the first eight frames' groups, in turn.
inline constexpr std::int32_t kNoisePeriod = 8;

template <unsigned Width>
struct GroupNoise {
    static constexpr unsigned kGroups = kNoisePeriod / Width;
    typename Lanes<Width>::D lanes[kGroups];

    [[gnu::always_inline]] GroupNoise(std::int32_t frames, std::int32_t first) noexcept {
        for (unsigned g = 0; g < kGroups; ++g)
            Lanes<Width>::load(lanes[g], noiseFrom(frames, first + static_cast<std::int32_t>(g * Width)));
    }
};

// How many of the next `left` frames every position steps through without a
// wrap: 0 when a position sits at or past the end of the line (that frame goes
// on its own, through the spare frame).
template <std::size_t N>
inline std::int32_t straightSpan(std::int32_t left, std::uint32_t length,
                             const std::array<std::uint32_t, N>& positions) noexcept {
    auto span = static_cast<std::uint32_t>(left);
    for (const std::uint32_t position : positions) {
        if (position >= length) return 0;
        if (length - position < span) span = length - position;
    }
    return static_cast<std::int32_t>(span);
}

// Groups of `Width` frames read what the frame-by-frame loop reads: no read
// position trails the write position by 1..Width-1 frames. `positions` holds
// the write position first, then the reads. (A read on the write position
// itself hears the new sample: the kernels load it again after the store. A
// read ahead of the write is loaded before the group stores.)
template <unsigned Width, std::size_t N>
inline bool groupsSafe(const std::array<std::uint32_t, N>& positions) noexcept {
    for (std::size_t k = 1; k < N; ++k) {
        const std::uint32_t behind = positions[0] - positions[k];
        if (behind != 0 && behind < Width) return false;
    }
    return true;
}

// `count` frames on, for a position that `straightSpan` let through: at most
// up to the end of the line, which is position 0.
inline void advanceBy(std::uint32_t& position, std::uint32_t count, std::uint32_t length) noexcept {
    position += count;
    if (position >= length) position = 0;
}

// One channel's pass over a call of `frames` frames from `at` (the write
// position first, then the reads): groups of `Width` frames between wraps
// where groupsSafe allows, single frames elsewhere.
//   group(at, offset, frame, noise)  the group `offset` frames on from `at`,
//                                    starting at frame `frame` of the call
//   single(at, frame)                frame `frame` alone, at `at`
// Answers the positions the pass ends on. Both callables must be always
// inlined: the four-lane code is valid only inside the function compiled for
// AVX2, even in an unoptimised build.
template <unsigned Width, std::size_t N, class Group, class Single>
[[gnu::always_inline]] inline std::array<std::uint32_t, N> walkChannel(std::int32_t frames, std::uint32_t length,
                                                                        std::array<std::uint32_t, N> at,
                                                                        Group&& group, Single&& single) {
    constexpr auto kWidth = static_cast<std::int32_t>(Width);
    std::int32_t i = 0;
    while (i < frames) {
        const std::int32_t span = straightSpan(frames - i, length, at);
        if (span >= kWidth && groupsSafe<Width>(at)) {
            const std::int32_t grouped = span - span % kWidth;
            const GroupNoise<Width> noise(frames, i);
            std::int32_t k = 0;
            for (; k + kNoisePeriod <= grouped; k += kNoisePeriod) {
#pragma GCC unroll 4
                for (unsigned g = 0; g < GroupNoise<Width>::kGroups; ++g)
                    group(at, k + static_cast<std::int32_t>(g) * kWidth, i + k + static_cast<std::int32_t>(g) * kWidth,
                          noise.lanes[g]);
            }
            for (unsigned g = 0; k < grouped; k += kWidth, ++g) group(at, k, i + k, noise.lanes[g]);
            for (std::uint32_t& position : at) advanceBy(position, static_cast<std::uint32_t>(grouped), length);
            i += grouped;
            continue;
        }
        single(at, i);
        for (std::uint32_t& position : at) advance(position, length);
        ++i;
    }
    return at;
}

// Every channel of a call through a family's pass, each channel from the same
// positions, which all end on the same ones. `Pass` has
//   positions(run)                             the positions a call starts from
//   channel<Width, Accumulate>(run, c, in, out, frames)   one channel's pass
//   keep(run, end)                             the positions the call ends on
// A group reads its frames' inputs before it writes their outputs, so one
// array in and out per channel reads what the plain loop reads.
template <class Pass, unsigned Width, bool Accumulate, class Run>
[[gnu::always_inline]] inline void runChannels(Run& run, unsigned channels, float** inputs, float** outputs,
                                               std::int32_t frames) noexcept {
    auto end = Pass::positions(run);
    for (unsigned c = 0; c < channels; ++c)
        end = Pass::template channel<Width, Accumulate>(run, c, inputs[c], outputs[c], frames);
    Pass::keep(run, end);
}

// The two entry points of a family's vector path: SSE2, which every x86-64
// processor has, and AVX2, compiled on its own and called only where the
// processor has it.
template <class Pass, bool Accumulate, class Run>
void runChannelsSse2(Run& run, unsigned channels, float** inputs, float** outputs, std::int32_t frames) {
    runChannels<Pass, 2, Accumulate>(run, channels, inputs, outputs, frames);
}

template <class Pass, bool Accumulate, class Run>
AF_TARGET("avx2") void runChannelsAvx2(Run& run, unsigned channels, float** inputs, float** outputs,
                                                     std::int32_t frames) {
    runChannels<Pass, 4, Accumulate>(run, channels, inputs, outputs, frames);
}

}  // namespace AF::delay
