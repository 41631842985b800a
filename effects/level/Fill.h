#pragma once
// Fill Left and Fill Right: one side of a stereo pair copied over the other.
// The side that is kept is not written at all: the host's output buffers
// already carry it. Parameterless, stereo only.
#include "AudioEffectX.h"
#include "Export.h"

namespace AF {

// Left input copied into the right output.
class AF_EXPORT AudioFillLeft final : public AudioEffectX {
public:
    explicit AudioFillLeft(audioMasterCallback audioMaster);

    void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    // Adds nothing: the accumulating call leaves the outputs as they are.
    void process(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    // The effect has no memory between buffers.
    virtual bool HasHistory();
};

// Right input copied into the left output.
class AF_EXPORT AudioFillRight final : public AudioEffectX {
public:
    explicit AudioFillRight(audioMasterCallback audioMaster);

    void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    void process(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    virtual bool HasHistory();
};

}  // namespace AF
