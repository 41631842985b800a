#pragma once
// Fill Left and Fill Right: one side of a stereo pair copied over the other.
// The side that is kept is not written at all: the host's output buffers
// already carry it. Parameterless, stereo only.
#include "AudioEffectX.h"
#include "Export.h"

namespace AF {

// The family: input `From` copied into output `To`.
template <int From, int To>
class AF_EXPORT FillChannel : public AudioEffectX {
public:
    // No programs, no parameters; `channels` is 2.
    FillChannel(unsigned channels, audioMasterCallback audioMaster);
    void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    // Adds nothing: the accumulating call leaves the outputs as they are.
    void process(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    // The effect has no memory between buffers.
    virtual bool HasHistory();
};

}  // namespace AF
