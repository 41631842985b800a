#pragma once
// The processing calls of the cut filters (high-pass, low-pass, band-pass,
// notch) for a fixed channel count; each named variant is this over its family
// (see effects/family/ChannelVariant.h). A family brings its kernel as
// `Family::Kernel`:
//   Design, History            coefficients and one channel's memory (floats,
//                              in the order the history buffer keeps them)
//   step(design, history, x, offset) -> y    one sample of one channel
//   offset(frames, n), kOffsetPeriod         the anti-denormal pattern
//   Lanes<Width>                              the same step for several channels
// and its design as `refreshDesign()` and `design`.
#include <array>
#include <bit>
#include <type_traits>

#include "AEffect.h"
#include "ChannelOrder.h"
#include "CutoffMapping.h"
#include "effects/family/FamilyShape.h"
#include "dsp/biquad/LaneGroups.h"
#include "Numeric.h"
#include "dsp/simd/VectorPath.h"

namespace AF {

// One processing loop for every channel count: frame by frame up to six
// channels, channel by channel for sixteen (see ChannelOrder.h). From four
// channels on, the channels run several per instruction where the processor
// allows (see LaneGroups.h), with the same samples as the plain loop; so do one
// and two channels of two sections in series, a lane for each section.
template <class Family, unsigned Channels>
class AF_EXPORT CutFilterChannels : public Family {
    using Kernel = typename Family::Kernel;

public:
    // Whether the vector paths run the channels in lanes (else they run the
    // plain loop too).
#if AF_SIMD_X86
    static constexpr bool kRunsInLanes = Channels >= 4 || (Channels <= 2 && lanes::TwoEqualSections<Kernel>);
#else
    static constexpr bool kRunsInLanes = false;  // the lane loops are written for x86 vectors
#endif

    CutFilterChannels(unsigned channels, audioMasterCallback audioMaster) : Family(channels, audioMaster) {}
    void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) override {
        run<false>(inputs, outputs, sampleFrames);
    }
    // Adds the filtered signal into what the outputs hold.
    void process(float** inputs, float** outputs, VstInt32 sampleFrames) override {
        run<true>(inputs, outputs, sampleFrames);
    }

private:
    using Design = typename Kernel::Design;
    using History = typename Kernel::History;
    static constexpr std::size_t kFields = sizeof(History) / sizeof(float);
    static_assert(std::is_trivially_copyable_v<History> && sizeof(History) == kFields * sizeof(float));

    // One channel's memory as the history buffer keeps it, field by field.
    static History loadHistory(const float* m) noexcept {
        std::array<float, kFields> fields;
        for (std::size_t i = 0; i < kFields; ++i) fields[i] = m[i];
        return std::bit_cast<History>(fields);
    }
    static void storeHistory(const History& h, float* m) noexcept {
        const auto fields = std::bit_cast<std::array<float, kFields>>(h);
        for (std::size_t i = 0; i < kFields; ++i) m[i] = fields[i];
    }

    template <bool Accumulate>
    void run(float** inputs, float** outputs, VstInt32 frames) noexcept;
    bool loadMemory(std::array<float*, Channels>& memory, float** inputs, float** outputs) noexcept;
};

template <class Family, unsigned Channels>
template <bool Accumulate>
void CutFilterChannels<Family, Channels>::run(float** inputs, float** outputs, VstInt32 frames) noexcept {
    std::array<float*, Channels> memory{};
    const bool usable = loadMemory(memory, inputs, outputs);
    if (!usable) frames = 0;  // still refreshes, as a call of no frames does
    std::array<History, Channels> h{};
    for (unsigned c = 0; c < Channels && usable; ++c) h[c] = loadHistory(memory[c]);
    Design d;
    const VectorPath path = kRunsInLanes ? vectorPath() : VectorPath::scalar;
    if (path == VectorPath::scalar) {
        // Where the memory the loop works on at once fits in registers (one or
        // two channels frame by frame, sixteen one channel at a time), a copy
        // whose address never leaves this loop lets it stay there: h itself is
        // handed to the lane loops. Six channels frame by frame would spill.
        constexpr bool kOwnCopy = Channels <= 2 || Channels == 16;
        std::array<History, Channels> copy;
        if constexpr (kOwnCopy) copy = h;
        std::array<History, Channels>& plain = kOwnCopy ? copy : h;
        forEachSampleInChannelOrder<Channels>(
            frames,
            [&] {
                this->refreshDesign();
                d = this->design;
            },
            [&](unsigned c, VstInt32 n) {
                const float x = inputs[c][n];  // read before the write: in place is safe
                const float y = Kernel::step(d, plain[c], x, Kernel::offset(frames, n));
                if constexpr (Accumulate)
                    outputs[c][n] = toFloat(static_cast<double>(outputs[c][n]) + y);
                else
                    outputs[c][n] = y;
            });
        if constexpr (kOwnCopy) h = copy;
    }
#if AF_SIMD_X86
    else if constexpr (kRunsInLanes) {
        // One refresh for all channels, also for sixteen, whose plain loop
        // refreshes before each channel's pass: the two differ only when a host
        // stores a parameter from another thread during the call, and either
        // way the change reaches the next call.
        this->refreshDesign();
        d = this->design;
        if (path == VectorPath::avx2) runLanesAvx2OrWider<Kernel, Channels, Accumulate>(h, inputs, outputs, frames, d);
        else runLanesSse2<Kernel, Channels, Accumulate>(h, inputs, outputs, frames, d);
    }
#endif
    for (unsigned c = 0; c < Channels && usable; ++c) storeHistory(h[c], memory[c]);
}

template <class Family, unsigned Channels>
bool CutFilterChannels<Family, Channels>::loadMemory(std::array<float*, Channels>& memory, float** inputs,
                                                    float** outputs) noexcept {
    if (inputs == nullptr || outputs == nullptr) return false;
    for (unsigned c = 0; c < Channels; ++c) {
        memory[c] = this->history.GetChannel(static_cast<int>(c));
        if (memory[c] == nullptr || inputs[c] == nullptr || outputs[c] == nullptr) return false;
    }
    return true;
}

}  // namespace AF
