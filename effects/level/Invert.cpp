#include "Invert.h"

#include "dsp/simd/BufferLoops.h"
#include "dsp/simd/VectorPath.h"

namespace AF {

namespace {

constexpr float kPolarity = -1.0f;  // a multiply, so 0.0 becomes -0.0

// The polarity read at run time, once per call: a multiply by a constant -1
// may be compiled as a sign flip, which gives another sign to a NaN than the
// multiply the group loops do; this keeps every sample a true multiply.
float runtimePolarity() noexcept {
    volatile float polarity = kPolarity;
    return polarity;
}

// The one Invert loop: every channel, out = in x -1 (replacing) or
// out = out - in (accumulating), each output sample after its own input
// sample only, so it is safe in place. A missing channel is skipped.
template <unsigned Channels, bool Accumulate>
void invertChannels(float** inputs, float** outputs, VstInt32 sampleFrames) noexcept {
    if (inputs == nullptr || outputs == nullptr || sampleFrames <= 0) return;
    const float polarity = runtimePolarity();
    const VectorPath path = vectorPath();
    for (unsigned channel = 0; channel < Channels; ++channel) {
        const float* in = inputs[channel];
        float* out = outputs[channel];
        if (in == nullptr || out == nullptr) continue;
        if constexpr (Accumulate) loops::subtract(path, out, in, sampleFrames);
        else loops::scaleCopy(path, out, in, sampleFrames, polarity);
    }
}

}  // namespace

template <unsigned Channels>
InvertChannels<Channels>::InvertChannels(unsigned channels, audioMasterCallback audioMaster)
    : AudioEffectX(audioMaster, 0, 0) {
    (void)channels;
}

template <unsigned Channels>
void InvertChannels<Channels>::processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) {
    invertChannels<Channels, false>(inputs, outputs, sampleFrames);
}

template <unsigned Channels>
void InvertChannels<Channels>::process(float** inputs, float** outputs, VstInt32 sampleFrames) {
    invertChannels<Channels, true>(inputs, outputs, sampleFrames);
}

template <unsigned Channels>
bool InvertChannels<Channels>::HasHistory() {
    return false;
}

template class InvertChannels<1>;
template class InvertChannels<2>;
template class InvertChannels<4>;
template class InvertChannels<6>;
template class InvertChannels<16>;

}  // namespace AF
