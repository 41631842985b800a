#pragma once
// Volume: one gain, set in decibels by the host, applied to every channel.
// The normalised parameter p maps to the linear gain 2p, so 0.5 is unity and
// 1.0 is +6.02 dB. At unity the buffers are left untouched.
#include <atomic>

#include "AR/AudioBuffer.h"
#include "Export.h"
#include "effects/family/ParameterFamily.h"

namespace AF {

class AF_EXPORT AudioEnvelope : public ParameterFamily {
public:
    AudioEnvelope(unsigned channels, audioMasterCallback audioMaster);
    ~AudioEnvelope() override;

    void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    // The accumulating entry point does nothing for this family.
    void process(float** inputs, float** outputs, VstInt32 sampleFrames) override;

    void setParameter(VstInt32 index, float value) override;
    float getParameter(VstInt32 index) override;
    void getParameterDisplay(VstInt32 index, char* text) override;
    // The output depends on the current buffer alone.
    bool HasHistory() override;

protected:
    std::atomic<float> targetGain;  // linear, twice the parameter; written by the setter
    float currentGain;              // linear, applied to the last buffer
    AR::AudioBufferShell inputShell;
    AR::AudioBufferShell outputShell;
    bool unity;                     // currentGain is exactly 1: processing is skipped
    unsigned channelCount;
};

// Multiplies `frames` samples in place by `gain`; four at a time, then the rest.
// Each sample gets exactly the float product samples[i] * gain.
void scaleInPlace(float* samples, VstInt32 frames, float gain) noexcept;

}  // namespace AF
