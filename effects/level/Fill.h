#pragma once
// Fill Left and Fill Right: one side of a stereo pair copied over the other.
// The side that is kept is not written at all: the host's output buffers
// already carry it. Parameterless, stereo only.
#include "AudioEffectX.h"
#include "Export.h"
#include "effects/family/ChannelVariant.h"

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

// Left input copied into the right output, and the other way round.
class AF_EXPORT AudioFillLeft final : public ChannelVariant<FillChannel<0, 1>, 2, "AFlL"> { public: explicit AudioFillLeft(audioMasterCallback audioMaster); ~AudioFillLeft() override; };
class AF_EXPORT AudioFillRight final : public ChannelVariant<FillChannel<1, 0>, 2, "AFlR"> { public: explicit AudioFillRight(audioMasterCallback audioMaster); ~AudioFillRight() override; };

}  // namespace AF
