#pragma once
// Invert: flips the polarity of every channel (the LFE too). Parameterless.
// The four-channel class is built but no host identifier creates it.
#include "AudioEffectX.h"
#include "Export.h"
#include "effects/family/ChannelVariant.h"

namespace AF {

// The family: one loop for every channel count.
template <unsigned Channels>
class AF_EXPORT InvertChannels : public AudioEffectX {
public:
    // No programs, no parameters; `channels` is Channels.
    InvertChannels(unsigned channels, audioMasterCallback audioMaster);
    void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    // Accumulating call: subtracts the input from what the output holds.
    void process(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    // The effect has no memory between buffers.
    virtual bool HasHistory();
};

class AF_EXPORT AudioInvert1 final : public ChannelVariant<InvertChannels<1>, 1, "AIn1"> { using ChannelVariant::ChannelVariant; };
class AF_EXPORT AudioInvert2 final : public ChannelVariant<InvertChannels<2>, 2, "AIn2"> { using ChannelVariant::ChannelVariant; };
class AF_EXPORT AudioInvert4 final : public ChannelVariant<InvertChannels<4>, 4, "AIn4"> { using ChannelVariant::ChannelVariant; };
class AF_EXPORT AudioInvert6 final : public ChannelVariant<InvertChannels<6>, 6, "AIn6"> { using ChannelVariant::ChannelVariant; };
class AF_EXPORT AudioInvert16 final : public ChannelVariant<InvertChannels<16>, 16, "AI16"> { using ChannelVariant::ChannelVariant; };

}  // namespace AF
