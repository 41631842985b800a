#pragma once
// Delay: a single-tap feedback echo with a dry/wet mix, for 1, 2, 6 or 16
// channels. One circular line per channel; all channels share the positions.
//
//            in ----------------------------------------+
//             |                                         | x dryGain
//             v                                         v
//   noise -> (+) --> [ line: write at writePos ]       (+) --> out
//             ^           |                             ^
//             |      read at readPos (after the write)  |
//             |           |                             |
//             +- x feedback <--+-----> x wetGain -------+
//
// The read follows the write, so a read position equal to the write position
// hears the sample just written (delay 0), while the feedback term, read
// before the write, hears the oldest sample of the line.
#include <atomic>
#include <cstdint>

#include "AudioEffectX.h"
#include "ML/VSTPropertySupportMixin.h"
#include "effects/delay/DelayLine.h"

namespace AF {

class AF_EXPORT AudioDelay : public AudioEffectX, public ML::VSTPropertySupportMixin {
public:
    AudioDelay(unsigned channels, audioMasterCallback audioMaster);
    ~AudioDelay() override;

    void setSampleRate(float rate) override;
    void suspend() override;

    void setParameter(VstInt32 index, float value) override;
    float getParameter(VstInt32 index) override;
    void setProgram(VstInt32 program) override;
    void getProgramName(char* name) override;
    void getParameterName(VstInt32 index, char* text) override;
    void getParameterLabel(VstInt32 index, char* text) override;
    void getParameterDisplay(VstInt32 index, char* text) override;

    ParameterType GetParameterType(unsigned index) override;
    float GetParameterMax(unsigned index) const override;
    float GetParameterMin(unsigned index) const override;
    float GetParameterStep(unsigned index) const override;
    bool SupportsDisplayValueToParameter(unsigned index) const override;
    float ConvertDisplayValueToParameter(unsigned index, float displayValue) const override;
    float ConvertParameterValueToDisplay(unsigned index, float parameterValue) const override;

    // False when the line could not be allocated; such an effect only applies
    // its parameters and leaves the host's buffers alone.
    bool hasDelayLine() const noexcept;

protected:
    // The one per-frame recursion of the family, for every variant.
    template <unsigned Channels, bool Accumulate>
    void render(float** inputs, float** outputs, VstInt32 frames) noexcept;

private:
    void resetDelayLine() noexcept;
    void refreshParameters() noexcept;

    unsigned channels_;
    delay::DelayLine delayLine_;
    std::uint32_t writePos_ = 0;
    std::uint32_t readPos_ = 0;
    float appliedDelayTime_ = -1.0f;      // seconds; -1 forces the first application
    std::atomic<float> delayTime_{1.0f};  // seconds: twice the normalised parameter 0
    float appliedFeedback_ = 0.0f;
    std::atomic<float> feedback_{0.0f};
    float wetGain_ = 1.0f;
    float dryGain_ = 0.0f;
    std::atomic<float> mix_{0.5f};  // wet proportion
};

class AF_EXPORT AudioDelay1 final : public AudioDelay {
public:
    explicit AudioDelay1(audioMasterCallback audioMaster);
    void process(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) override;
};

class AF_EXPORT AudioDelay2 final : public AudioDelay {
public:
    explicit AudioDelay2(audioMasterCallback audioMaster);
    void process(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) override;
};

class AF_EXPORT AudioDelay6 final : public AudioDelay {
public:
    explicit AudioDelay6(audioMasterCallback audioMaster);
    void process(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) override;
};

class AF_EXPORT AudioDelay16 final : public AudioDelay {
public:
    explicit AudioDelay16(audioMasterCallback audioMaster);
    void process(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) override;
};

}  // namespace AF
