#pragma once
// Balance: a linear stereo balance. Centre leaves both channels alone; moving
// towards one side turns the other channel down until it is silent at the end
// of the range. Works through the host's buffer classes.
#include <atomic>

#include "AR/AudioBuffer.h"
#include "Export.h"
#include "effects/family/ParameterFamily.h"

namespace AF {

class AF_EXPORT AudioBalance final : public ParameterFamily {
public:
    explicit AudioBalance(audioMasterCallback audioMaster);
    ~AudioBalance() override;

    void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    // Accumulating call: the inputs are balanced in place, then added to the
    // outputs (the caller's inputs keep the balanced samples).
    void process(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    void setParameter(VstInt32 index, float value) override;
    float getParameter(VstInt32 index) override;
    void getParameterDisplay(VstInt32 index, char* text) override;
    // HasHistory keeps the interface's answer (true).

private:
    void refreshGains() noexcept;
    void assignShells(float** inputs, float** outputs, VstInt32 sampleFrames) noexcept;

    float lastBalance;
    std::atomic<float> balance;  // written by the host, read per buffer
    float leftGain;
    float rightGain;
    AR::AudioBufferShell inputShell;
    AR::AudioBufferShell outputShell;
    AR::AudioBufferChannel inputChannel;
    AR::AudioBufferChannel outputChannel;
};

}  // namespace AF
