#pragma once
// Channel Volume: one gain per channel, each shown in decibels. Normalised 0.5
// is unity (0 dB), 1.0 doubles the level (+6.02 dB), 0 silences the channel.
// The sample work goes through the host's buffer classes.
#include <atomic>
#include <vector>

#include "AR/AudioBuffer.h"
#include "Export.h"
#include "effects/family/ParameterFamily.h"

namespace AF {

class AF_EXPORT AudioChannelEnvelope : public ParameterFamily {
public:
    AudioChannelEnvelope(unsigned channels, audioMasterCallback audioMaster);
    ~AudioChannelEnvelope() override;

    void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    // Accumulating call: scales the caller's inputs in place, then adds them
    // to the outputs (the inputs keep the scaled samples).
    void process(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    void setParameter(VstInt32 index, float value) override;
    float getParameter(VstInt32 index) override;
    void getParameterDisplay(VstInt32 index, char* text) override;
    // Stereo and 5.1 name their speakers; other layouts number every index.
    void getParameterName(VstInt32 index, char* text) override;
    // Every index, a channel or not, is described by the one level row.
    const Parameter* parameterAt(unsigned index) const noexcept override;
    bool HasHistory() override;

private:
    bool isChannel(VstInt32 index) const noexcept;
    void refreshGains() noexcept;
    void assignShells(float** inputs, float** outputs, VstInt32 sampleFrames) noexcept;

    unsigned channelCount;
    std::vector<float> lastLevels;
    std::vector<std::atomic<float>> levels;  // written by the host, read per buffer
    std::vector<float> gains;
    std::atomic<int> levelsChanged;
    AR::AudioBufferShell inputShell;
    AR::AudioBufferShell outputShell;
    AR::AudioBufferChannel inputChannel;
    AR::AudioBufferChannel outputChannel;
    bool allUnity;
};

}  // namespace AF
