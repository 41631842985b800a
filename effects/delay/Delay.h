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

#include "Export.h"
#include "effects/delay/DelayChannels.h"
#include "effects/delay/DelayLine.h"
#include "effects/family/ParameterFamily.h"

namespace AF {

class AF_EXPORT AudioDelay : public ParameterFamily {
public:
    AudioDelay(unsigned channels, audioMasterCallback audioMaster);
    ~AudioDelay() override;

    void setSampleRate(float rate) override;
    void suspend() override;

    void setParameter(VstInt32 index, float value) override;
    float getParameter(VstInt32 index) override;
    void getParameterDisplay(VstInt32 index, char* text) override;

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

}  // namespace AF
