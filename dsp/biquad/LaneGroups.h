#pragma once
// Several channels of one recursion per instruction, for the cut filters
// (high-pass, low-pass, band-pass, notch). A lane holds one channel: the
// doubles hold exactly the floats the plain loop converts (float to double is
// exact), every rounding to float is one lane-wise conversion like the plain
// one, and -ffp-contract=off keeps each product and sum a separate rounding, so
// each lane reproduces its channel's samples bit for bit.
//
// A family's history starts with the two previous inputs (x1, x2); the lane
// loop keeps those, and the family's lane kernel, a template on one of the two
// lane widths below, keeps the rest:
//   Coefficients(design)            the design spread over the lanes
//   std::array<D, N - 2> state      the history fields after x1 and x2
//   advance(c, x, x1, x2, offset)   one frame; gives the outputs, rounded,
//                                   as floats
// A kernel of two equal sections in series may also offer one section alone
// (see TwoEqualSections); on four lanes, and at one or two channels on two,
// its lanes then hold sections rather than channels (SectionLanes).
#include <array>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "dsp/simd/Lanes.h"
#include "dsp/simd/VectorPath.h"
#include "frame/Numeric.h"

// The lanes are x86 vectors; elsewhere the filters run their plain loops.
#if AF_SIMD_X86
namespace AF {

// Floats travel as four-float registers; two-lane groups use the lower half.
// Doubles go by reference: the four-lane code is compiled into AVX2 functions
// only, and no value of it crosses a call of the plain convention.
//
// Two lanes: SSE2, so every x86-64 processor runs it.
struct TwoLanes {
    static constexpr unsigned kWidth = 2;
    using D = LanesD2;
    [[gnu::always_inline]] static void widen(__m128 f, D& d) noexcept { d = D(_mm_cvtps_pd(f)); }
    [[gnu::always_inline]] static __m128 narrow(const D& d) noexcept { return _mm_cvtpd_ps(__m128d(d)); }
};

// AVX: usable only inside functions compiled for AVX2 (the builtins, unlike
// the intrinsic wrappers, take the target of the function they end up in, so
// the kernels written once for both widths inline into those functions).
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpsabi"  // the builtin's result stays inside the AVX2 function
struct FourLanes {
    static constexpr unsigned kWidth = 4;
    using D = LanesD4;
#if defined(__clang__)
    // clang has no such builtins, and its generic conversion is one instruction
    [[gnu::always_inline]] static void widen(__m128 f, D& d) noexcept {
        d = __builtin_convertvector(reinterpret_cast<LanesF4>(f), D);
    }
    [[gnu::always_inline]] static __m128 narrow(const D& d) noexcept {
        return reinterpret_cast<__m128>(__builtin_convertvector(d, LanesF4));
    }
#else
    // g++ 12 splits the generic conversion in halves through the stack
    [[gnu::always_inline]] static void widen(__m128 f, D& d) noexcept { d = __builtin_ia32_cvtps2pd256(f); }
    [[gnu::always_inline]] static __m128 narrow(const D& d) noexcept { return __builtin_ia32_cvtpd2ps256(d); }
#endif
};
#pragma GCC diagnostic pop

namespace lanes {

// `out + y` as the plain loop accumulates: both widened, summed in double,
// rounded once; four floats at a time.
[[gnu::always_inline]] inline __m128 addInDouble(__m128 held, __m128 y) noexcept {
    const __m128d low = _mm_add_pd(_mm_cvtps_pd(held), _mm_cvtps_pd(y));
    const __m128d high = _mm_add_pd(_mm_cvtps_pd(_mm_movehl_ps(held, held)), _mm_cvtps_pd(_mm_movehl_ps(y, y)));
    return _mm_movelh_ps(_mm_cvtpd_ps(low), _mm_cvtpd_ps(high));
}

// Four frames of a group's channels, turned between rows of one channel (one
// load or store each) and rows of one frame (one vector of lanes each).
template <unsigned Width> struct FrameRows;

template <> struct FrameRows<4> {
    [[gnu::always_inline]] static void load(__m128 (&rows)[4], float* const* channels, std::int32_t frame) noexcept {
        for (unsigned lane = 0; lane < 4; ++lane) rows[lane] = _mm_loadu_ps(channels[lane] + frame);
        transposeFour(rows);
    }
    // Turns the frame rows back into channel rows, in place.
    [[gnu::always_inline]] static void toChannels(__m128 (&rows)[4]) noexcept {
        transposeFour(rows);
    }
};

template <> struct FrameRows<2> {
    // Frame k's two samples land in the lower half of rows[k].
    [[gnu::always_inline]] static void load(__m128 (&rows)[4], float* const* channels, std::int32_t frame) noexcept {
        const __m128 a = _mm_loadu_ps(channels[0] + frame);
        const __m128 b = _mm_loadu_ps(channels[1] + frame);
        rows[0] = _mm_unpacklo_ps(a, b);
        rows[1] = _mm_movehl_ps(rows[0], rows[0]);
        rows[2] = _mm_unpackhi_ps(a, b);
        rows[3] = _mm_movehl_ps(rows[2], rows[2]);
    }
    // rows[0] and rows[1] become the two channels' four frames.
    [[gnu::always_inline]] static void toChannels(__m128 (&rows)[4]) noexcept {
        const __m128 first = _mm_movelh_ps(rows[0], rows[1]);
        const __m128 second = _mm_movelh_ps(rows[2], rows[3]);
        rows[0] = _mm_shuffle_ps(first, second, _MM_SHUFFLE(2, 0, 2, 0));
        rows[1] = _mm_shuffle_ps(first, second, _MM_SHUFFLE(3, 1, 3, 1));
    }
};

template <> struct FrameRows<1> {
    // Frame k's sample lands in lane 0 of rows[k].
    [[gnu::always_inline]] static void load(__m128 (&rows)[4], float* const* channels, std::int32_t frame) noexcept {
        const __m128 a = _mm_loadu_ps(channels[0] + frame);
        rows[0] = a;
        rows[1] = _mm_shuffle_ps(a, a, _MM_SHUFFLE(1, 1, 1, 1));
        rows[2] = _mm_movehl_ps(a, a);
        rows[3] = _mm_shuffle_ps(a, a, _MM_SHUFFLE(3, 3, 3, 3));
    }
};

// One group of `L::kWidth` lanes: the kernel's recursion and the inputs it
// looks back on, x2 and x1 and then the four frames of a block, as doubles.
// Only the recursion needs registers from frame to frame; the inputs are read
// where they are used.
template <class Kernel, class L>
struct LaneGroup {
    using D = typename L::D;
    using History = typename Kernel::History;
    using Recursion = typename Kernel::template Lanes<L>;
    static constexpr unsigned kWidth = L::kWidth;
    static constexpr std::size_t kFields = sizeof(History) / sizeof(float);
    static_assert(std::is_trivially_copyable_v<History> && sizeof(History) == kFields * sizeof(float));
    static_assert(std::tuple_size_v<decltype(Recursion::state)> == kFields - 2, "x1, x2, then the recursion");

    Recursion recursion;
    D x[6];  // x2, x1, frames 0..3 of the block
    __m128 y[4];
    float* const* in;
    float* const* out;
    History* memory;

    // Takes the channels from `first` on and their history into the lanes
    // (exact: the lanes hold floats).
    [[gnu::always_inline]] void load(float** inputs, float** outputs, History* history, unsigned first) noexcept {
        in = inputs + first;
        out = outputs + first;
        memory = history + first;
        for (unsigned lane = 0; lane < kWidth; ++lane) {
            float fields[kFields];
            std::memcpy(fields, &memory[lane], sizeof fields);
            x[1][lane] = fields[0];
            x[0][lane] = fields[1];
            for (std::size_t i = 2; i < kFields; ++i) recursion.state[i - 2][lane] = fields[i];
        }
    }
    [[gnu::always_inline]] void store() const noexcept {
        for (unsigned lane = 0; lane < kWidth; ++lane) {
            float fields[kFields];
            fields[0] = toFloat(x[1][lane]);
            fields[1] = toFloat(x[0][lane]);
            for (std::size_t i = 2; i < kFields; ++i) fields[i] = toFloat(recursion.state[i - 2][lane]);
            std::memcpy(&memory[lane], fields, sizeof fields);
        }
    }

    [[gnu::always_inline]] void readBlock(std::int32_t frame) noexcept {
        __m128 rows[4];
        FrameRows<kWidth>::load(rows, in, frame);
        for (unsigned k = 0; k < 4; ++k) L::widen(rows[k], x[2 + k]);
    }
    using Coefficients = typename Recursion::Coefficients;

    [[gnu::always_inline]] static void offsetLanes(double offset, D& lanes) noexcept { lanes = D{} + offset; }
    [[gnu::always_inline]] void advance(const Coefficients& c, unsigned k, const D& offset) noexcept {
        y[k] = recursion.advance(c, x[2 + k], x[1 + k], x[k], offset);
    }
    template <bool Accumulate>
    [[gnu::always_inline]] void writeBlock(std::int32_t frame) noexcept {
        FrameRows<kWidth>::toChannels(y);
        for (unsigned lane = 0; lane < kWidth; ++lane) {
            float* channel = out[lane] + frame;
            __m128 samples = y[lane];
            if constexpr (Accumulate) samples = addInDouble(_mm_loadu_ps(channel), samples);
            _mm_storeu_ps(channel, samples);
        }
        x[0] = x[4];
        x[1] = x[5];
    }
    // Nothing held back between blocks.
    template <bool Accumulate, class Offsets>
    [[gnu::always_inline]] void endBlocks(const Coefficients&, const Offsets&, std::int32_t) noexcept {}

    // One frame on its own: inputs gathered lane by lane, outputs scattered.
    template <bool Accumulate>
    [[gnu::always_inline]] void step(const Coefficients& c, std::int32_t frame, const D& offset) noexcept {
        alignas(16) float samples[4] = {};
        for (unsigned lane = 0; lane < kWidth; ++lane) samples[lane] = in[lane][frame];
        L::widen(_mm_load_ps(samples), x[2]);
        __m128 result = recursion.advance(c, x[2], x[1], x[0], offset);
        if constexpr (Accumulate) {
            alignas(16) float held[4] = {};
            for (unsigned lane = 0; lane < kWidth; ++lane) held[lane] = out[lane][frame];
            result = addInDouble(_mm_load_ps(held), result);
        }
        _mm_store_ps(samples, result);
        for (unsigned lane = 0; lane < kWidth; ++lane) out[lane][frame] = samples[lane];
        x[0] = x[1];
        x[1] = x[2];
    }
};


// Whether the kernel's recursion is two sections of one shape and one set of
// coefficients in series, offered as `Lanes<L>::section(c, in, in1, in2, out1,
// out2)`: the sum before rounding and before the anti-denormal offset, which
// only the first section adds.
template <class Kernel>
concept TwoEqualSections = requires { requires Kernel::kTwoEqualSections; };

// Channels of such a kernel in lanes that each hold one section of one
// channel. Two layouts:
//   split   as many channels as lanes, two vectors: the first sections, then
//           the second sections (four channels on four lanes, two on two);
//   packed  half as many channels as lanes, one vector: the first sections
//           in the lower lanes, the second in the upper (two channels on four
//           lanes, one channel on two).
// The second sections run one block of four frames behind the first, on the
// first sections' outputs of that block, kept as doubles. So no lane waits on
// another lane's result of the same frame, each waits only on its own
// recursion, and one or two channels fill a whole vector.
//
// The first block of a call has no block before it: the second sections'
// lanes compute nothing of use there and get the channels' memory back after
// it. After the last block they run once more alone to catch up (`endBlocks`),
// so that single frames after it, and the memory kept at the end, see both
// sections at the same frame. Where the first sections add the anti-denormal
// offset the second add -0, which leaves every sum as it is (-0 included), as
// the second section adds nothing.
template <class Kernel, class L, unsigned Channels>
struct SectionLanes {
    static constexpr unsigned kLanes = L::kWidth;
    static constexpr bool kSplit = Channels == kLanes;
    static_assert(kSplit || 2 * Channels == kLanes, "a lane for each section of each channel");
    using D = typename L::D;
    using History = typename Kernel::History;
    using Recursion = typename Kernel::template Lanes<L>;
    using Coefficients = typename Recursion::Coefficients;
    static constexpr unsigned kWidth = Channels;
    static constexpr unsigned kVectors = kSplit ? 2 : 1;
    static constexpr std::size_t kFields = sizeof(History) / sizeof(float);
    static_assert(kFields == 6, "x1, x2, the first section's two outputs, the second's");

    // The channel and the section (0 first, 1 second) of lane j of vector v.
    static constexpr unsigned channelOf(unsigned j) { return j % Channels; }
    static constexpr unsigned sectionOf(unsigned v, unsigned j) { return kSplit ? v : j / Channels; }

    // Per vector: each lane's two previous inputs and outputs.
    struct Memory {
        D in1, in2, out1, out2;
    };
    Memory lanes[kVectors];
    D firsts[4];        // the first sections' outputs of the block before, per frame
    __m128 frames[4];   // the block's inputs, one row of channels per frame
    __m128 results[4];  // per frame, what the vector holding the second sections gave
    bool holding;       // the block before awaits its second sections
    float* const* in;
    float* const* out;
    History* memory;

    // The offset in the first sections' lanes, -0 in the second's (packed);
    // split, the second sections' vector adds kMinusZero instead.
    [[gnu::always_inline]] static void offsetLanes(double offset, D& lanes) noexcept {
        for (unsigned j = 0; j < kLanes; ++j) lanes[j] = kSplit || j < Channels ? offset : -0.0;
    }

    [[gnu::always_inline]] void load(float** inputs, float** outputs, History* history, unsigned first) noexcept {
        in = inputs + first;
        out = outputs + first;
        memory = history + first;
        for (unsigned v = 0; v < kVectors; ++v) loadLanes(v, false);
        for (D& row : firsts) row = D{};
        holding = false;
    }
    [[gnu::always_inline]] void store() const noexcept {
        float fields[Channels][kFields];
        for (unsigned v = 0; v < kVectors; ++v)
            for (unsigned j = 0; j < kLanes; ++j) {
                float* f = fields[channelOf(j)] + 2 * sectionOf(v, j);
                if (sectionOf(v, j) == 0) {
                    f[0] = toFloat(lanes[v].in1[j]);
                    f[1] = toFloat(lanes[v].in2[j]);
                }
                f[2] = toFloat(lanes[v].out1[j]);
                f[3] = toFloat(lanes[v].out2[j]);
            }
        for (unsigned c = 0; c < Channels; ++c) std::memcpy(&memory[c], fields[c], sizeof fields[c]);
    }

    [[gnu::always_inline]] void readBlock(std::int32_t frame) noexcept { FrameRows<Channels>::load(frames, in, frame); }
    [[gnu::always_inline]] void advance(const Coefficients& c, unsigned k, const D& offset) noexcept {
        if constexpr (kSplit) {
            D x;
            L::widen(frames[k], x);
            advanceLanes(c, lanes[0], x, offset);
            results[k] = advanceLanes(c, lanes[1], firsts[k], kMinusZero);
        } else {
            // the frame's inputs beside the first sections' outputs of the block before
            const LanesD2 x = LanesD2(_mm_cvtps_pd(frames[k]));
            D both;
            besideFirsts(x, firsts[k], both);
            results[k] = advanceLanes(c, lanes[0], both, offset);
        }
        firsts[k] = lanes[0].out1;
    }
    template <bool Accumulate>
    [[gnu::always_inline]] void writeBlock(std::int32_t frame) noexcept {
        if (holding) writeSeconds<Accumulate>(frame - 4);
        else for (unsigned v = 0; v < kVectors; ++v) loadLanes(v, true);
        holding = true;
    }
    // The second sections over the last block, the first sections' lanes
    // left as they are.
    template <bool Accumulate>
    [[gnu::always_inline]] void endBlocks(const Coefficients& c, const D (&offsets)[4], std::int32_t frame) noexcept {
        if (!holding) return;
        if constexpr (kSplit) {
            for (unsigned k = 0; k < 4; ++k) results[k] = advanceLanes(c, lanes[1], firsts[k], kMinusZero);
        } else {
            const Memory kept = lanes[0];
            for (unsigned k = 0; k < 4; ++k) {
                D twice;
                firstsTwice(firsts[k], twice);
                results[k] = advanceLanes(c, lanes[0], twice, offsets[k]);
            }
            keepFirsts(kept.in1, lanes[0].in1);
            keepFirsts(kept.in2, lanes[0].in2);
            keepFirsts(kept.out1, lanes[0].out1);
            keepFirsts(kept.out2, lanes[0].out2);
        }
        writeSeconds<Accumulate>(frame - 4);
        holding = false;
    }

    // One frame on its own, both sections at that frame: the second sections
    // take the first sections' output at once.
    template <bool Accumulate>
    [[gnu::always_inline]] void step(const Coefficients& c, std::int32_t frame, const D& offset) noexcept {
        alignas(16) float samples[4] = {};
        for (unsigned lane = 0; lane < Channels; ++lane) samples[lane] = in[lane][frame];
        D x;
        L::widen(_mm_load_ps(samples), x);
        __m128 result;
        if constexpr (kSplit) {
            advanceLanes(c, lanes[0], x, offset);
            result = advanceLanes(c, lanes[1], lanes[0].out1, kMinusZero);
        } else {
            // the first sections' lanes run their section twice, the same sum both times
            D sum;
            Recursion::section(c, x, lanes[0].in1, lanes[0].in2, lanes[0].out1, lanes[0].out2, sum);
            sum += offset;
            D s;
            L::widen(L::narrow(sum), s);
            LanesD2 inputs;
            if constexpr (Channels == 2) inputs = __builtin_shufflevector(x, x, 0, 1);
            else inputs = x;
            D pair;
            besideFirsts(inputs, s, pair);
            const __m128 both = advanceLanes(c, lanes[0], pair, offset);
            result = secondsToFront(both);
        }
        _mm_store_ps(samples, result);
        for (unsigned lane = 0; lane < Channels; ++lane) {
            float y = samples[lane];
            if constexpr (Accumulate) y = toFloat(static_cast<double>(out[lane][frame]) + y);
            out[lane][frame] = y;
        }
    }

private:
    static constexpr D kMinusZero = -D{};  // -0 in every lane
    // Packed: the lower lanes of `x` (the inputs) below the lower lanes of
    // `s` (the first sections' outputs), the inputs of both sections.
    // (Results go by reference: no four-lane value crosses a call.)
    [[gnu::always_inline]] static void besideFirsts(const LanesD2& x, const D& s, D& both) noexcept {
        if constexpr (Channels == 2) {
            const LanesD2 low = __builtin_shufflevector(s, s, 0, 1);
            both = __builtin_shufflevector(x, low, 0, 1, 2, 3);
        } else {
            both = __builtin_shufflevector(x, s, 0, 2);
        }
    }
    // Packed: the first sections' outputs in both halves.
    [[gnu::always_inline]] static void firstsTwice(const D& s, D& twice) noexcept {
        if constexpr (Channels == 2) twice = __builtin_shufflevector(s, s, 0, 1, 0, 1);
        else twice = __builtin_shufflevector(s, s, 0, 0);
    }
    // Packed: the first sections' lanes of `kept` back into `now`.
    [[gnu::always_inline]] static void keepFirsts(const D& kept, D& now) noexcept {
        if constexpr (Channels == 2) now = __builtin_shufflevector(kept, now, 0, 1, 6, 7);
        else now = __builtin_shufflevector(kept, now, 0, 3);
    }
    // Packed: the second sections' outputs, the upper lanes, to the front.
    [[gnu::always_inline]] static __m128 secondsToFront(__m128 both) noexcept {
        if constexpr (Channels == 2) return _mm_movehl_ps(both, both);
        else return _mm_shuffle_ps(both, both, _MM_SHUFFLE(1, 1, 1, 1));
    }

    // One section step of the lanes of one vector, given each lane's input;
    // gives the outputs rounded to float.
    [[gnu::always_inline]] static __m128 advanceLanes(const Coefficients& c, Memory& m, const D& x,
                                                      const D& offset) noexcept {
        D sum;
        Recursion::section(c, x, m.in1, m.in2, m.out1, m.out2, sum);
        sum += offset;
        const __m128 result = L::narrow(sum);
        m.in2 = m.in1;
        m.in1 = x;
        m.out2 = m.out1;
        L::widen(result, m.out1);
        return result;
    }
    // The channels' memory into the lanes of vector v (exact: the lanes hold
    // floats), or into its second sections' lanes only.
    [[gnu::always_inline]] void loadLanes(unsigned v, bool secondsOnly) noexcept {
        float fields[Channels][kFields];
        for (unsigned c = 0; c < Channels; ++c) std::memcpy(fields[c], &memory[c], sizeof fields[c]);
        for (unsigned j = 0; j < kLanes; ++j) {
            if (secondsOnly && sectionOf(v, j) == 0) continue;
            const float* f = fields[channelOf(j)] + 2 * sectionOf(v, j);
            lanes[v].in1[j] = f[0];
            lanes[v].in2[j] = f[1];
            lanes[v].out1[j] = f[2];
            lanes[v].out2[j] = f[3];
        }
    }
    // The second sections' outputs of the four frames from `frame` on.
    template <bool Accumulate>
    [[gnu::always_inline]] void writeSeconds(std::int32_t frame) noexcept {
        __m128 rows[4];
        if constexpr (kSplit) {
            for (unsigned k = 0; k < 4; ++k) rows[k] = results[k];
            FrameRows<Channels>::toChannels(rows);
        } else if constexpr (Channels == 2) {
            // the upper halves of the results, turned into two rows of channels
            const __m128 first = _mm_movehl_ps(results[1], results[0]);
            const __m128 second = _mm_movehl_ps(results[3], results[2]);
            rows[0] = _mm_shuffle_ps(first, second, _MM_SHUFFLE(2, 0, 2, 0));
            rows[1] = _mm_shuffle_ps(first, second, _MM_SHUFFLE(3, 1, 3, 1));
        } else {
            // lane 1 of each result, in frame order
            const __m128 early = _mm_unpacklo_ps(results[0], results[1]);
            const __m128 late = _mm_unpacklo_ps(results[2], results[3]);
            rows[0] = _mm_movehl_ps(late, early);
        }
        for (unsigned lane = 0; lane < Channels; ++lane) {
            float* channel = out[lane] + frame;
            __m128 samples = rows[lane];
            if constexpr (Accumulate) samples = addInDouble(_mm_loadu_ps(channel), samples);
            _mm_storeu_ps(channel, samples);
        }
    }
};

}  // namespace lanes

// All channels of a call: groups of `Wide` lanes and, when two channels are
// left over (six channels on four lanes), one group of two; on four lanes a
// two-section kernel runs its groups as SectionLanes, and one or two channels
// of it make one group of SectionLanes on two lanes. Four frames at a time
// every group advances frame by frame, the groups side by side so that their
// independent recursions overlap; the frames left over go one by one.
//
// The kernel's offset depends on the frame alone (one value for every lane)
// and repeats every `Kernel::kOffsetPeriod` frames, a divisor of four, so the
// four offsets of a block are those of the first block. Inputs of a block are
// all read before its outputs are written (SectionLanes writes a block's
// outputs later still), which in place (the same array in and out for a
// channel) reads exactly what the plain loop reads.
template <class Wide, class Kernel, unsigned Width>
using GroupOf = std::conditional_t<Wide::kWidth == 4 && lanes::TwoEqualSections<Kernel>,
                                   lanes::SectionLanes<Kernel, FourLanes, Width>,
                                   lanes::LaneGroup<Kernel, std::conditional_t<Width == 4, Wide, TwoLanes>>>;

// The groups of a call. From four channels on: groups of `Wide` lanes and,
// when two channels are left over, one group of two. One or two channels of a
// two-section kernel make one group of section lanes on two lanes, on either
// instruction set: one channel packed, two split. (Two channels packed on four
// lanes ran about a quarter slower: the four-lane conversions lengthen each
// recursion step, and two channels have no other work to hide that behind.)
template <class Wide, class Kernel, unsigned Channels>
struct GroupsOf {
    static constexpr bool kSections = Channels < 4;
    static_assert(!kSections || lanes::TwoEqualSections<Kernel>, "below four channels only two sections fill lanes");
    static constexpr unsigned kWide = kSections ? 0 : Channels / Wide::kWidth;
    static constexpr unsigned kRest = Channels - kWide * Wide::kWidth;
    using WideGroup = GroupOf<Wide, Kernel, Wide::kWidth>;
    using RestGroup = std::conditional_t<
        kSections, lanes::SectionLanes<Kernel, TwoLanes, Channels>,
        GroupOf<Wide, Kernel, 2>>;
};

template <class Wide, class Kernel, unsigned Channels, bool Accumulate>
[[gnu::always_inline]] inline void runLaneGroups(std::array<typename Kernel::History, Channels>& history,
                                                 float** inputs, float** outputs, std::int32_t frames,
                                                 const typename Kernel::Design& design) {
    using Groups = GroupsOf<Wide, Kernel, Channels>;
    using WideGroup = typename Groups::WideGroup;
    using RestGroup = typename Groups::RestGroup;
    using DW = typename WideGroup::D;
    using DR = typename RestGroup::D;
    constexpr unsigned kGroups = Groups::kWide;
    constexpr bool kRest = Groups::kRest > 0;
    constexpr unsigned kRestFirst = kGroups * Wide::kWidth;
    static_assert(Groups::kRest == 0 || Groups::kRest == RestGroup::kWidth, "channel count not covered by the lanes");
    static_assert(4 % Kernel::kOffsetPeriod == 0, "offset pattern must repeat within four frames");

    const typename WideGroup::Coefficients wideC(design);
    const typename RestGroup::Coefficients restC(design);
    WideGroup wide[kGroups > 0 ? kGroups : 1];
    RestGroup rest[1];
#pragma GCC unroll 16
    for (unsigned g = 0; g < kGroups; ++g) wide[g].load(inputs, outputs, history.data(), g * Wide::kWidth);
    if constexpr (kRest) rest[0].load(inputs, outputs, history.data(), kRestFirst);

    std::int32_t frame = 0;
    if (frames >= 4) {
        DW wideOffsets[4];
        DR restOffsets[4];
        for (unsigned k = 0; k < 4; ++k) {
            const double offset = static_cast<double>(Kernel::offset(frames, static_cast<std::int32_t>(k)));
            WideGroup::offsetLanes(offset, wideOffsets[k]);
            RestGroup::offsetLanes(offset, restOffsets[k]);
        }
        for (; frames - frame >= 4; frame += 4) {
#pragma GCC unroll 16
            for (unsigned g = 0; g < kGroups; ++g) wide[g].readBlock(frame);
            if constexpr (kRest) rest[0].readBlock(frame);
#pragma GCC unroll 4
            for (unsigned k = 0; k < 4; ++k) {
#pragma GCC unroll 16
                for (unsigned g = 0; g < kGroups; ++g) wide[g].advance(wideC, k, wideOffsets[k]);
                if constexpr (kRest) rest[0].advance(restC, k, restOffsets[k]);
            }
#pragma GCC unroll 16
            for (unsigned g = 0; g < kGroups; ++g) wide[g].template writeBlock<Accumulate>(frame);
            if constexpr (kRest) rest[0].template writeBlock<Accumulate>(frame);
        }
#pragma GCC unroll 16
        for (unsigned g = 0; g < kGroups; ++g) wide[g].template endBlocks<Accumulate>(wideC, wideOffsets, frame);
        if constexpr (kRest) rest[0].template endBlocks<Accumulate>(restC, restOffsets, frame);
    }
    for (; frame < frames; ++frame) {
        const double offset = static_cast<double>(Kernel::offset(frames, frame));
        DW wideOffset;
        DR restOffset;
        WideGroup::offsetLanes(offset, wideOffset);
        RestGroup::offsetLanes(offset, restOffset);
#pragma GCC unroll 16
        for (unsigned g = 0; g < kGroups; ++g) wide[g].template step<Accumulate>(wideC, frame, wideOffset);
        if constexpr (kRest) rest[0].template step<Accumulate>(restC, frame, restOffset);
    }
#pragma GCC unroll 16
    for (unsigned g = 0; g < kGroups; ++g) wide[g].store();
    if constexpr (kRest) rest[0].store();
}

// The entry points a variant calls: SSE2 (every x86-64 processor), AVX2, and
// AVX2 with AVX-512VL's thirty-two registers, each compiled for its own
// instruction set and called only where the processor has it.
template <class Kernel, unsigned Channels, bool Accumulate>
void runLanesSse2(std::array<typename Kernel::History, Channels>& history, float** inputs, float** outputs,
                  std::int32_t frames, const typename Kernel::Design& design) {
    runLaneGroups<TwoLanes, Kernel, Channels, Accumulate>(history, inputs, outputs, frames, design);
}

template <class Kernel, unsigned Channels, bool Accumulate>
__attribute__((target("avx2"))) void runLanesAvx2(std::array<typename Kernel::History, Channels>& history,
                                                  float** inputs, float** outputs, std::int32_t frames,
                                                  const typename Kernel::Design& design) {
    runLaneGroups<FourLanes, Kernel, Channels, Accumulate>(history, inputs, outputs, frames, design);
}

template <class Kernel, unsigned Channels, bool Accumulate>
__attribute__((target("avx2,avx512f,avx512vl"))) void runLanesAvx512vl(
    std::array<typename Kernel::History, Channels>& history, float** inputs, float** outputs, std::int32_t frames,
    const typename Kernel::Design& design) {
    runLaneGroups<FourLanes, Kernel, Channels, Accumulate>(history, inputs, outputs, frames, design);
}

// The AVX2 path: with AVX-512VL's registers where the processor has them.
template <class Kernel, unsigned Channels, bool Accumulate>
[[gnu::noinline]] void runLanesAvx2OrWider(std::array<typename Kernel::History, Channels>& history, float** inputs,
                                           float** outputs, std::int32_t frames, const typename Kernel::Design& design) {
    if (extendedRegisters()) runLanesAvx512vl<Kernel, Channels, Accumulate>(history, inputs, outputs, frames, design);
    else runLanesAvx2<Kernel, Channels, Accumulate>(history, inputs, outputs, frames, design);
}

}  // namespace AF
#endif
