#pragma once
// What the three equaliser families (Parametric EQ, Bass, Treble) share: the
// block loop that visits the channels in the family's order, the choice
// between the plain loop and the lanes (dsp/biquad/EqSection.h), and the
// processing calls.
#include <array>

#include "AR/AudioBuffer.h"
#include "AudioEffectX.h"
#include "dsp/biquad/EqSection.h"
#include "dsp/simd/VectorPath.h"
#include "effects/filters/ChannelOrder.h"
#include "frame/Numeric.h"

namespace AF {

// One call of an equaliser: `refresh()` brings the coefficients up to date (once,
// or before each channel's pass for sixteen channels), `kernel(history, input)`
// returns one output sample and moves that channel's memory on by one frame.
// The memory is copied out of the host buffer for the call and back at its end.
// From four channels on, the channels run several per instruction where the
// processor allows; `Section` gives the section's sum for lanes of doubles and
// `design()` the coefficients it runs on after the refresh.
template <unsigned Channels, EqMode Mode, class Section, class Refresh, class Kernel, class Design>
void runEqBlock(AR::AudioBuffer& memory, float** inputs, float** outputs, VstInt32 frames, Refresh&& refresh,
                Kernel&& kernel, Design&& design) {
    bool usable = inputs != nullptr && outputs != nullptr && memory.GetChannelCount() >= static_cast<int>(Channels);
    for (unsigned channel = 0; usable && channel < Channels; ++channel)
        usable = inputs[channel] != nullptr && outputs[channel] != nullptr;
    if (!usable) frames = 0;  // still refreshes, touches no sample

    std::array<EqHistory, Channels> history{};
    for (unsigned channel = 0; usable && channel < Channels; ++channel) {
        const float* stored = memory.GetChannel(static_cast<int>(channel));
        history[channel] = EqHistory{stored[0], stored[1], stored[2], stored[3]};
    }

    // Two channels stay on the plain loop: their two chains already overlap
    // there, and a pair of lanes only lengthens the chain by its conversions
    // (measured slower).
    const VectorPath path = Channels >= 4 ? vectorPath() : VectorPath::scalar;
    if (path == VectorPath::scalar) {
        forEachSampleInChannelOrder<Channels>(frames, refresh, [&](unsigned channel, VstInt32 frame) {
            const float y = kernel(history[channel], inputs[channel][frame]);
            float& out = outputs[channel][frame];
            if constexpr (Mode == EqMode::accumulate) out = out + y;
            else out = y;
        });
    } else if constexpr (Channels >= 4) {
        // One refresh for all channels, also for sixteen, whose plain loop
        // refreshes before each channel's pass: the two differ only when a host
        // stores a parameter from another thread during the call, and either
        // way the change reaches the next call.
        refresh();
        const auto coefficients = Section::coefficientArray(design());
        if (path == VectorPath::avx2)
            runEqLanesAvx2<Channels, Mode, Section>(history, inputs, outputs, frames, coefficients.data());
        else
            runEqLanesSse2<Channels, Mode, Section>(history, inputs, outputs, frames, coefficients.data());
    }

    for (unsigned channel = 0; usable && channel < Channels; ++channel) {
        float* stored = memory.GetChannel(static_cast<int>(channel));
        stored[0] = history[channel].x1;
        stored[1] = history[channel].x2;
        stored[2] = history[channel].y1;
        stored[3] = history[channel].y2;
    }
}

// An equaliser family for a fixed channel count: both processing calls run
// the family's one loop (each named variant is this over its family, see
// effects/family/ChannelVariant.h). The family brings its `Section`, its
// one-sample `step` and its lazily refreshed design. The members are
// instantiated once, in the family's source file, so the module exports them.
template <class Family, unsigned Channels>
class AF_EXPORT EqChannels : public Family {
public:
    EqChannels(unsigned channels, audioMasterCallback audioMaster) : Family(channels, audioMaster) {}
    void process(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) override;

private:
    template <EqMode Mode>
    void run(float** inputs, float** outputs, VstInt32 frames);
};

template <class Family, unsigned Channels>
void EqChannels<Family, Channels>::process(float** inputs, float** outputs, VstInt32 sampleFrames) {
    run<EqMode::accumulate>(inputs, outputs, sampleFrames);
}

template <class Family, unsigned Channels>
void EqChannels<Family, Channels>::processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) {
    run<EqMode::replace>(inputs, outputs, sampleFrames);
}

template <class Family, unsigned Channels>
template <EqMode Mode>
void EqChannels<Family, Channels>::run(float** inputs, float** outputs, VstInt32 frames) {
    auto design = this->currentDesign();
    runEqBlock<Channels, Mode, typename Family::Section>(
        this->history, inputs, outputs, frames,
        [&] {
            this->refreshDesign();
            design = this->currentDesign();
        },
        [&](EqHistory& memory, const float& input) { return Family::step(design, memory, input); },
        [&]() -> const decltype(design)& { return design; });
}

}  // namespace AF
