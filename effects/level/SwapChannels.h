#pragma once
// Swap Channels: exchanges left and right. Parameterless, stereo only.
#include "AudioEffectX.h"
#include "Export.h"

namespace AF {

class AF_EXPORT AudioSwapChannels final : public AudioEffectX {
public:
    explicit AudioSwapChannels(audioMasterCallback audioMaster);

    void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    // Adds nothing: the accumulating call leaves the outputs as they are.
    void process(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    // The effect has no memory between buffers.
    virtual bool HasHistory();
};

}  // namespace AF
