#pragma once
// Channel Volume: one gain per channel, each shown in decibels. Normalised 0.5
// is unity (0 dB), 1.0 doubles the level (+6.02 dB), 0 silences the channel.
// The sample work goes through the host's buffer classes.
#include <atomic>
#include <vector>

#include "AR/AudioBuffer.h"
#include "AudioEffectX.h"
#include "Export.h"
#include "ML/VSTPropertySupportMixin.h"

namespace AF {

class AF_EXPORT AudioChannelEnvelope : public AudioEffectX, public ML::VSTPropertySupportMixin {
public:
    AudioChannelEnvelope(unsigned channels, audioMasterCallback audioMaster);
    ~AudioChannelEnvelope() override;

    void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    // Accumulating call: scales the caller's inputs in place, then adds them
    // to the outputs (the inputs keep the scaled samples).
    void process(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    void setParameter(VstInt32 index, float value) override;
    float getParameter(VstInt32 index) override;
    void setProgram(VstInt32 program) override;
    void getProgramName(char* name) override;
    void getParameterLabel(VstInt32 index, char* label) override;
    void getParameterDisplay(VstInt32 index, char* text) override;
    void getParameterName(VstInt32 index, char* text) override;

    // Every answer is the same for every index.
    ParameterType GetParameterType(unsigned index) override;
    float GetParameterMax(unsigned index) const override;
    float GetParameterMin(unsigned index) const override;
    float GetParameterStep(unsigned index) const override;
    bool SupportsDisplayValueToParameter(unsigned index) const override;
    float ConvertDisplayValueToParameter(unsigned index, float displayValue) const override;
    float ConvertParameterValueToDisplay(unsigned index, float parameterValue) const override;
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

class AF_EXPORT AudioChannelEnvelope2 final : public AudioChannelEnvelope {
public:
    explicit AudioChannelEnvelope2(audioMasterCallback audioMaster);
};

class AF_EXPORT AudioChannelEnvelope6 final : public AudioChannelEnvelope {
public:
    explicit AudioChannelEnvelope6(audioMasterCallback audioMaster);
};

class AF_EXPORT AudioChannelEnvelope16 final : public AudioChannelEnvelope {
public:
    explicit AudioChannelEnvelope16(audioMasterCallback audioMaster);
};

}  // namespace AF
