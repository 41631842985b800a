#pragma once
// Mute: a master toggle that silences every channel, and one toggle per
// channel. A toggle is on only when strictly above 0.5. The effect never reads
// its inputs: it clears muted output channels and leaves the others as the
// host passed them.
#include <atomic>
#include <cstdint>

#include "Export.h"
#include "effects/family/ParameterFamily.h"

namespace AF {

class AF_EXPORT AudioMute : public ParameterFamily {
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
    void getParameterDisplay(VstInt32 index, char* text) override;
    // "Mute " for the master, then numbered: any index gets a name.
    void getParameterName(VstInt32 index, char* text) override;
    // Every index, a toggle or not, is described by the one toggle row...
    const Parameter* parameterAt(unsigned index) const noexcept override;
    // ...but only a toggle's index converts; any other answers 0.
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

}  // namespace AF
