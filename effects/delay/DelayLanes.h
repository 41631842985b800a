#pragma once
// Several channels per instruction for the multi-channel delays. The line
// keeps the channels of one frame side by side (DelayLine.h), so a group of
// two or four channels is one load or store of the line. The host's arrays
// hold one channel each; a call is therefore turned, a few frames at a time,
// into frame-major rows (the channels of one frame side by side) and the
// outputs turned back.
//
// A lane holds one channel: the doubles hold exactly the floats the plain loop
// converts, each product and sum is one lane-wise operation in the plain
// loop's order (no contraction, -ffp-contract=off), and each rounding to float
// is one lane-wise conversion, so every lane gives its channel's samples bit
// for bit.
#include <immintrin.h>

#include <cstdint>
#include <cstring>

#include "AEffect.h"
#include "effects/filters/VectorPath.h"

namespace AF::delay {

// `Width` floats of memory to and from doubles: widened exactly, rounded back
// to float lane-wise. The doubles travel by reference, so no function passes
// the four-lane doubles by value outside code compiled for AVX2.
template <unsigned Width>
struct Lanes;

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

// Two or six channels leave a pair of lanes over after the groups of four;
// two frames side by side fill whole groups of four instead. The loops take
// two frames at once where neither frame reads what the other writes (see the
// families). A frame's noise goes to that frame's lanes: `first` to the lanes
// of the first frame in group `group`, `second` to those of the second.
template <unsigned Channels>
inline constexpr bool kFramePairs = Channels % 4 == 2;

// The position and the next one are both inside the line (no wrap between).
inline bool nextIsAdjacent(std::uint32_t position, std::uint32_t length) noexcept {
    return position < length && length - position > 1;
}

template <unsigned Channels>
[[gnu::always_inline]] inline void pairNoise(LanesD4& into, unsigned group, double first, double second) noexcept {
    for (unsigned lane = 0; lane < 4; ++lane) into[lane] = group * 4 + lane < Channels ? first : second;
}

// Frames of a call are turned into rows this many at a time.
inline constexpr VstInt32 kRowFrames = 64;

// Frames [start, start + count) of the host's channel arrays as rows: row j
// holds frame start + j of every channel. Blocks of four frames go through a
// 4 x 4 transpose (groups of four channels) and an interleave (a pair left
// over). With a pair left over, two rows hold a whole number of groups of
// four, and the rows are written in exactly those groups: the loops that take
// two frames at once then read each group as it was stored (a load that spans
// two stores would wait for both).
template <unsigned Channels>
[[gnu::always_inline]] inline void toRows(float* const* channels, VstInt32 start, VstInt32 count,
                                          float* rows) noexcept {
    static_assert(Channels % 4 == 0 || Channels % 4 == 2, "groups of four and a pair");
    constexpr unsigned kGroups = Channels / 4;
    VstInt32 j = 0;
    for (; j + 4 <= count; j += 4) {
        float* block = rows + j * Channels;
        __m128 row[4][kGroups > 0 ? kGroups : 1];
        for (unsigned g = 0; g < kGroups; ++g) {
            __m128 r0 = _mm_loadu_ps(channels[4 * g] + start + j);
            __m128 r1 = _mm_loadu_ps(channels[4 * g + 1] + start + j);
            __m128 r2 = _mm_loadu_ps(channels[4 * g + 2] + start + j);
            __m128 r3 = _mm_loadu_ps(channels[4 * g + 3] + start + j);
            _MM_TRANSPOSE4_PS(r0, r1, r2, r3);
            row[0][g] = r0;
            row[1][g] = r1;
            row[2][g] = r2;
            row[3][g] = r3;
        }
        if constexpr (Channels % 4 == 2) {
            const __m128 a = _mm_loadu_ps(channels[Channels - 2] + start + j);
            const __m128 b = _mm_loadu_ps(channels[Channels - 1] + start + j);
            // The pair of frames 0 and 1, then of frames 2 and 3: a0 b0 a1 b1, a2 b2 a3 b3.
            const __m128 pairs[2] = {_mm_unpacklo_ps(a, b), _mm_unpackhi_ps(a, b)};
            for (unsigned half = 0; half < 2; ++half) {
                const __m128 pair = pairs[half];
                const __m128(&first)[kGroups > 0 ? kGroups : 1] = row[2 * half];
                const __m128(&second)[kGroups > 0 ? kGroups : 1] = row[2 * half + 1];
                float* at = block + 2 * half * Channels;
                // The first frame's groups; its pair with the start of the
                // second frame; the second frame shifted by two lanes.
                for (unsigned g = 0; g < kGroups; ++g) _mm_storeu_ps(at + 4 * g, first[g]);
                at += 4 * kGroups;
                if constexpr (kGroups == 0) {
                    _mm_storeu_ps(at, pair);
                } else {
                    _mm_storeu_ps(at, _mm_movelh_ps(pair, second[0]));
                    const __m128 secondPair = _mm_movehl_ps(pair, pair);
                    for (unsigned g = 0; g < kGroups; ++g) {
                        const __m128 next = g + 1 < kGroups ? second[g + 1] : secondPair;
                        _mm_storeu_ps(at + 4 + 4 * g, _mm_shuffle_ps(second[g], next, _MM_SHUFFLE(1, 0, 3, 2)));
                    }
                }
            }
        } else {
            for (unsigned k = 0; k < 4; ++k)
                for (unsigned g = 0; g < kGroups; ++g) _mm_storeu_ps(block + k * Channels + 4 * g, row[k][g]);
        }
    }
    for (; j < count; ++j)
        for (unsigned c = 0; c < Channels; ++c) rows[j * Channels + c] = channels[c][start + j];
}

// The way back: rows [0, count) into frames [start, start + count) of the
// host's arrays, read in the groups in which toRows writes them.
template <unsigned Channels>
[[gnu::always_inline]] inline void fromRows(const float* rows, float* const* channels, VstInt32 start,
                                            VstInt32 count) noexcept {
    constexpr unsigned kGroups = Channels / 4;
    VstInt32 j = 0;
    for (; j + 4 <= count; j += 4) {
        const float* block = rows + j * Channels;
        __m128 row[4][kGroups > 0 ? kGroups : 1];
        __m128 pairs[2];
        if constexpr (Channels % 4 == 2) {
            for (unsigned half = 0; half < 2; ++half) {
                const float* at = block + 2 * half * Channels;
                for (unsigned g = 0; g < kGroups; ++g) row[2 * half][g] = _mm_loadu_ps(at + 4 * g);
                at += 4 * kGroups;
                const __m128 middle = _mm_loadu_ps(at);
                if constexpr (kGroups == 0) {
                    pairs[half] = middle;
                } else {
                    // Undo the two-lane shift of the second frame.
                    __m128 shifted[kGroups + 1];
                    shifted[0] = middle;
                    for (unsigned g = 0; g < kGroups; ++g) shifted[g + 1] = _mm_loadu_ps(at + 4 + 4 * g);
                    for (unsigned g = 0; g < kGroups; ++g)
                        row[2 * half + 1][g] = _mm_shuffle_ps(shifted[g], shifted[g + 1], _MM_SHUFFLE(1, 0, 3, 2));
                    pairs[half] = _mm_shuffle_ps(middle, shifted[kGroups], _MM_SHUFFLE(3, 2, 1, 0));
                }
            }
        } else {
            for (unsigned k = 0; k < 4; ++k)
                for (unsigned g = 0; g < kGroups; ++g) row[k][g] = _mm_loadu_ps(block + k * Channels + 4 * g);
        }
        for (unsigned g = 0; g < kGroups; ++g) {
            __m128 r0 = row[0][g], r1 = row[1][g], r2 = row[2][g], r3 = row[3][g];
            _MM_TRANSPOSE4_PS(r0, r1, r2, r3);
            _mm_storeu_ps(channels[4 * g] + start + j, r0);
            _mm_storeu_ps(channels[4 * g + 1] + start + j, r1);
            _mm_storeu_ps(channels[4 * g + 2] + start + j, r2);
            _mm_storeu_ps(channels[4 * g + 3] + start + j, r3);
        }
        if constexpr (Channels % 4 == 2) {
            // a0 b0 a1 b1 and a2 b2 a3 b3 back to a0 a1 a2 a3 and b0 b1 b2 b3.
            _mm_storeu_ps(channels[Channels - 2] + start + j,
                          _mm_shuffle_ps(pairs[0], pairs[1], _MM_SHUFFLE(2, 0, 2, 0)));
            _mm_storeu_ps(channels[Channels - 1] + start + j,
                          _mm_shuffle_ps(pairs[0], pairs[1], _MM_SHUFFLE(3, 1, 3, 1)));
        }
    }
    for (; j < count; ++j)
        for (unsigned c = 0; c < Channels; ++c) channels[c][start + j] = rows[j * Channels + c];
}

// A stretch of a call as rows: the inputs, and the outputs (for the
// accumulating call, what the outputs held). All inputs and held outputs of a
// stretch are read before any of its outputs is written, which in place (one
// array in and out per channel) reads exactly what the plain loop reads.
template <unsigned Channels>
struct RowStretch {
    alignas(32) float in[kRowFrames * Channels];
    alignas(32) float out[kRowFrames * Channels];

    // Fills the rows for the stretch at `start`; answers its frame count.
    template <bool Accumulate>
    [[gnu::always_inline]] VstInt32 load(float* const* inputs, float* const* outputs, VstInt32 start,
                                         VstInt32 frames) noexcept {
        const VstInt32 count = frames - start < kRowFrames ? frames - start : kRowFrames;
        toRows<Channels>(inputs, start, count, in);
        if constexpr (Accumulate) toRows<Channels>(outputs, start, count, out);
        return count;
    }
    [[gnu::always_inline]] void store(float* const* outputs, VstInt32 start, VstInt32 count) const noexcept {
        fromRows<Channels>(out, outputs, start, count);
    }
};

}  // namespace AF::delay
