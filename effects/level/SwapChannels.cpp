#include "SwapChannels.h"

#include <new>

#include "dsp/simd/BufferLoops.h"
#include "dsp/simd/VectorPath.h"
#include "effects/family/FamilyShape.h"

namespace AF {

namespace {

constexpr VstInt32 kStereo = 2;

}  // namespace

AudioSwapChannels::AudioSwapChannels(audioMasterCallback audioMaster) : AudioEffectX(audioMaster, 0, 0) {
    configureVariant(*this, kStereo, fourCharCode("ASwC"));
}

// Both inputs of a frame are read before either output is written, so the
// exchange also holds when the host passes the same buffers in and out.
void AudioSwapChannels::processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) {
    // A host that passes no arrays, or misses a channel, gets nothing written.
    if (inputs == nullptr || outputs == nullptr) return;
    const float* inLeft = inputs[0];
    const float* inRight = inputs[1];
    float* outLeft = outputs[0];
    float* outRight = outputs[1];
    if (inLeft == nullptr || inRight == nullptr || outLeft == nullptr || outRight == nullptr) return;
    if (sampleFrames <= 0) return;
    loops::exchange(vectorPath(), inLeft, inRight, outLeft, outRight, sampleFrames);
}

// The accumulating call is deliberately empty: it adds nothing.
void AudioSwapChannels::process(float** inputs, float** outputs, VstInt32 sampleFrames) {
    (void)inputs;
    (void)outputs;
    (void)sampleFrames;
}

bool AudioSwapChannels::HasHistory() { return false; }

}  // namespace AF
