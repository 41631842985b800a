#pragma once
// Invert: flips the polarity of every channel (the LFE too). Parameterless.
// The four-channel class is built but no host identifier creates it.
#include "AudioEffectX.h"
#include "Export.h"

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

}  // namespace AF
