#pragma once
// What the three equaliser families (Parametric EQ, Bass, Treble) share: the
// four floats of memory a second-order section keeps per channel, the block
// loop that visits the channels in the family's order, and the variant shape.
//
//   x ──┬──────────────► [kernel] ──┬──► y
//       └─► x1 ─► x2                └─► y1 ─► y2
#include <array>

#include "AR/AudioBuffer.h"
#include "AudioEffectX.h"
#include "effects/filters/ChannelOrder.h"
#include "host/FamilyShape.h"

namespace AF {

// Added to every output sample so that silence after a signal settles on a
// tiny normal value instead of decaying into subnormal numbers.
inline constexpr float kEqAntiDenormal = 1e-25f;

// One channel's memory, in the order the host buffer keeps it: previous input,
// the input before that, previous output, the output before that.
struct EqHistory {
    float x1 = 0.0f;
    float x2 = 0.0f;
    float y1 = 0.0f;
    float y2 = 0.0f;
};

inline constexpr int kEqHistoryLength = 4;

// Whether a call overwrites the output (processReplacing) or adds to it (process).
enum class EqMode { replace, accumulate };

// The four-character code every filter family shares for a channel count.
constexpr VstInt32 eqUniqueId(unsigned channels) {
    switch (channels) {
        case 1: return fourCharCode("AFl1");
        case 2: return fourCharCode("AFl2");
        case 4: return fourCharCode("AFl4");
        case 6: return fourCharCode("AFl6");
        default: return fourCharCode("AF16");
    }
}

// One call of an equaliser: `refresh()` brings the coefficients up to date (once,
// or before each channel's pass for sixteen channels), `kernel(history, input)`
// returns one output sample and moves that channel's memory on by one frame.
// The memory is copied out of the host buffer for the call and back at its end.
template <unsigned Channels, EqMode Mode, class Refresh, class Kernel>
void runEqBlock(AR::AudioBuffer& memory, float** inputs, float** outputs, VstInt32 frames, Refresh&& refresh,
                Kernel&& kernel) {
    bool usable = inputs != nullptr && outputs != nullptr && memory.GetChannelCount() >= static_cast<int>(Channels);
    for (unsigned channel = 0; usable && channel < Channels; ++channel)
        usable = inputs[channel] != nullptr && outputs[channel] != nullptr;
    if (!usable) frames = 0;  // still refreshes, touches no sample

    std::array<EqHistory, Channels> history{};
    for (unsigned channel = 0; usable && channel < Channels; ++channel) {
        const float* stored = memory.GetChannel(static_cast<int>(channel));
        history[channel] = EqHistory{stored[0], stored[1], stored[2], stored[3]};
    }

    forEachSampleInChannelOrder<Channels>(frames, refresh, [&](unsigned channel, VstInt32 frame) {
        const float y = kernel(history[channel], inputs[channel][frame]);
        float& out = outputs[channel][frame];
        if constexpr (Mode == EqMode::accumulate) out = out + y;
        else out = y;
    });

    for (unsigned channel = 0; usable && channel < Channels; ++channel) {
        float* stored = memory.GetChannel(static_cast<int>(channel));
        stored[0] = history[channel].x1;
        stored[1] = history[channel].x2;
        stored[2] = history[channel].y1;
        stored[3] = history[channel].y2;
    }
}

// A channel variant: the family built for `Channels`, its record set up as the
// host expects, and both processing calls routed to the family's one loop.
// The members are defined out of line and instantiated once, in the family's
// source file, so the module exports them.
template <class Family, unsigned Channels>
class AF_EXPORT EqVariant : public Family {
public:
    explicit EqVariant(audioMasterCallback audioMaster);
    void process(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) override;
};

template <class Family, unsigned Channels>
EqVariant<Family, Channels>::EqVariant(audioMasterCallback audioMaster) : Family(Channels, audioMaster) {
    configureVariant(*this, static_cast<VstInt32>(Channels), eqUniqueId(Channels));
}

template <class Family, unsigned Channels>
void EqVariant<Family, Channels>::process(float** inputs, float** outputs, VstInt32 sampleFrames) {
    this->template run<Channels, EqMode::accumulate>(inputs, outputs, sampleFrames);
}

template <class Family, unsigned Channels>
void EqVariant<Family, Channels>::processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) {
    this->template run<Channels, EqMode::replace>(inputs, outputs, sampleFrames);
}

}  // namespace AF
