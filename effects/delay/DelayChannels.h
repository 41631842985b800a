#pragma once
// A delay family built for a fixed channel count: both process calls run the
// family's one per-frame loop, `render<Channels, Accumulate>`, with the channel
// count and the accumulating choice known at compile time. The family's .cpp,
// where the loop is defined, instantiates it for each count; every other file
// only refers to those instantiations.
#include "AudioEffect.h"
#include "Export.h"

namespace AF {

template <class Family, unsigned Channels>
class AF_EXPORT DelayChannels : public Family {
public:
    DelayChannels(unsigned channels, audioMasterCallback audioMaster) : Family(channels, audioMaster) {}
    void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    // Accumulating call: the wet signal is added to what the outputs hold.
    void process(float** inputs, float** outputs, VstInt32 sampleFrames) override;
};

template <class Family, unsigned Channels>
void DelayChannels<Family, Channels>::processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) {
    this->template render<Channels, false>(inputs, outputs, sampleFrames);
}

template <class Family, unsigned Channels>
void DelayChannels<Family, Channels>::process(float** inputs, float** outputs, VstInt32 sampleFrames) {
    this->template render<Channels, true>(inputs, outputs, sampleFrames);
}

}  // namespace AF
