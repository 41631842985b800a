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

// Two floats to and from memory (the pair of channels left over by the groups
// of four), as single 8-byte moves.
[[gnu::always_inline]] inline void storeTwo(float* samples, __m128 lowTwo) noexcept {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(samples), _mm_castps_si128(lowTwo));
}
[[gnu::always_inline]] inline __m128 loadTwoAndTwo(const float* low, const float* high) noexcept {
    const __m128i lowTwo = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(low));
    const __m128i highTwo = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(high));
    return _mm_castsi128_ps(_mm_unpacklo_epi64(lowTwo, highTwo));
}

// Frames [start, start + count) of the host's channel arrays as rows: row j
// holds frame start + j of every channel. Blocks of four frames go through a
// 4 x 4 transpose (groups of four channels) or an interleave (a pair).
template <unsigned Channels>
[[gnu::always_inline]] inline void toRows(float* const* channels, VstInt32 start, VstInt32 count,
                                          float* rows) noexcept {
    static_assert(Channels % 4 == 0 || Channels % 4 == 2, "groups of four and a pair");
    VstInt32 j = 0;
    for (; j + 4 <= count; j += 4) {
        float* block = rows + j * Channels;
        unsigned c = 0;
        for (; c + 4 <= Channels; c += 4) {
            __m128 r0 = _mm_loadu_ps(channels[c] + start + j);
            __m128 r1 = _mm_loadu_ps(channels[c + 1] + start + j);
            __m128 r2 = _mm_loadu_ps(channels[c + 2] + start + j);
            __m128 r3 = _mm_loadu_ps(channels[c + 3] + start + j);
            _MM_TRANSPOSE4_PS(r0, r1, r2, r3);
            _mm_storeu_ps(block + c, r0);
            _mm_storeu_ps(block + Channels + c, r1);
            _mm_storeu_ps(block + 2 * Channels + c, r2);
            _mm_storeu_ps(block + 3 * Channels + c, r3);
        }
        if constexpr (Channels % 4 == 2) {
            const __m128 a = _mm_loadu_ps(channels[c] + start + j);
            const __m128 b = _mm_loadu_ps(channels[c + 1] + start + j);
            const __m128 low = _mm_unpacklo_ps(a, b);   // a0 b0 a1 b1
            const __m128 high = _mm_unpackhi_ps(a, b);  // a2 b2 a3 b3
            storeTwo(block + c, low);
            storeTwo(block + Channels + c, _mm_movehl_ps(low, low));
            storeTwo(block + 2 * Channels + c, high);
            storeTwo(block + 3 * Channels + c, _mm_movehl_ps(high, high));
        }
    }
    for (; j < count; ++j)
        for (unsigned c = 0; c < Channels; ++c) rows[j * Channels + c] = channels[c][start + j];
}

// The way back: rows [0, count) into frames [start, start + count) of the host's arrays.
template <unsigned Channels>
[[gnu::always_inline]] inline void fromRows(const float* rows, float* const* channels, VstInt32 start,
                                            VstInt32 count) noexcept {
    VstInt32 j = 0;
    for (; j + 4 <= count; j += 4) {
        const float* block = rows + j * Channels;
        unsigned c = 0;
        for (; c + 4 <= Channels; c += 4) {
            __m128 r0 = _mm_loadu_ps(block + c);
            __m128 r1 = _mm_loadu_ps(block + Channels + c);
            __m128 r2 = _mm_loadu_ps(block + 2 * Channels + c);
            __m128 r3 = _mm_loadu_ps(block + 3 * Channels + c);
            _MM_TRANSPOSE4_PS(r0, r1, r2, r3);
            _mm_storeu_ps(channels[c] + start + j, r0);
            _mm_storeu_ps(channels[c + 1] + start + j, r1);
            _mm_storeu_ps(channels[c + 2] + start + j, r2);
            _mm_storeu_ps(channels[c + 3] + start + j, r3);
        }
        if constexpr (Channels % 4 == 2) {
            const __m128 low = loadTwoAndTwo(block + c, block + Channels + c);             // a0 b0 a1 b1
            const __m128 high = loadTwoAndTwo(block + 2 * Channels + c, block + 3 * Channels + c);  // a2 b2 a3 b3
            _mm_storeu_ps(channels[c] + start + j, _mm_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0)));
            _mm_storeu_ps(channels[c + 1] + start + j, _mm_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1)));
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
