#pragma once
// Mute: a master toggle that silences every channel, and one toggle per
// channel. A toggle is on only when strictly above 0.5. The effect never reads
// its inputs: it clears muted output channels and leaves the others as the
// host passed them.
#include <atomic>
#include <cstdint>

#include "AudioEffectX.h"
#include "Export.h"
#include "effects/family/ChannelVariant.h"
#include "ML/VSTPropertySupportMixin.h"

namespace AF {

class AF_EXPORT AudioMute : public AudioEffectX, public ML::VSTPropertySupportMixin {
public:
    AudioMute(unsigned channels, audioMasterCallback audioMaster);
    ~AudioMute() override;
    AudioMute(const AudioMute&) = delete;
    AudioMute& operator=(const AudioMute&) = delete;

    void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    void process(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    void setParameter(VstInt32 index, float value) override;
    float getParameter(VstInt32 index) override;
    // Switches the master off only; the channel toggles keep their values.
    void setProgram(VstInt32 program) override;
    void getProgramName(char* name) override;
    void getParameterLabel(VstInt32 index, char* label) override;
    void getParameterDisplay(VstInt32 index, char* text) override;
    void getParameterName(VstInt32 index, char* text) override;

    ParameterType GetParameterType(unsigned index) override;
    float GetParameterMax(unsigned index) const override;
    float GetParameterMin(unsigned index) const override;
    float GetParameterStep(unsigned index) const override;
    bool SupportsDisplayValueToParameter(unsigned index) const override;
    float ConvertDisplayValueToParameter(unsigned index, float displayValue) const override;
    float ConvertParameterValueToDisplay(unsigned index, float parameterValue) const override;
    bool HasHistory() override;

private:
    bool isToggle(unsigned index) const noexcept;
    bool isOn(unsigned index) const noexcept;

    // Entry 0 is the master, entry k mutes output channel k - 1. Null when the
    // allocation failed: the effect then has no toggles and mutes nothing.
    std::atomic<float>* muted;
    std::uint32_t parameterCount;
};

class AF_EXPORT AudioMute1 final : public ChannelVariant<AudioMute, 1, "AMn1"> { using ChannelVariant::ChannelVariant; };
class AF_EXPORT AudioMute2 final : public ChannelVariant<AudioMute, 2, "AMn2"> { using ChannelVariant::ChannelVariant; };
class AF_EXPORT AudioMute6 final : public ChannelVariant<AudioMute, 6, "AMn6"> { using ChannelVariant::ChannelVariant; };
class AF_EXPORT AudioMute16 final : public ChannelVariant<AudioMute, 16, "AM16"> { using ChannelVariant::ChannelVariant; };

}  // namespace AF
