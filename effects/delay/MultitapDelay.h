#pragma once
// Multitap Delay: one circular line per channel read by four taps, each with
// its own delay time, feedback into the line and output level; a common mix
// sets wet against dry. For 1, 2, 6 or 16 channels.
//
//            in ----------------------------------------------------+
//             |                                                     | x dryGain
//             v                                                     v
//   noise -> (+) --> [ line: write at writePos ]                   (+) --> out
//             ^        |      |      |      |                       ^
//             |      tap 1  tap 2  tap 3  tap 4  (read after write) |
//             |        |      |      |      |                       |
//             +--- sum of tap k x feedback k                        |
//                      |      |      |      |                       |
//                      +--- sum of tap k x level k --> x wetGain ---+
//
// All four feedback paths feed the one line, so the taps recirculate into
// each other. A tap whose position equals the write position hears the sample
// just written; its feedback term, read before the write, hears the oldest.
#include <array>
#include <atomic>
#include <cstdint>

#include "Export.h"
#include "effects/delay/DelayChannels.h"
#include "effects/delay/DelayLine.h"
#include "effects/family/ParameterFamily.h"

namespace AF {

class AF_EXPORT AudioMultitapDelay : public ParameterFamily {
public:
    static constexpr unsigned kTaps = 4;

    AudioMultitapDelay(unsigned channels, audioMasterCallback audioMaster);
    ~AudioMultitapDelay() override;

    void setSampleRate(float rate) override;
    void suspend() override;

    void setParameter(VstInt32 index, float value) override;
    float getParameter(VstInt32 index) override;
    // Tells the host of the mix first, then of the taps' parameters in order.
    void setProgram(VstInt32 program) override;
    void getParameterDisplay(VstInt32 index, char* text) override;

    // False when the line could not be allocated; such an effect only applies
    // its parameters and leaves the host's buffers alone.
    bool hasDelayLine() const noexcept;

protected:
    // The one per-frame recursion of the family, for every variant.
    template <unsigned Channels, bool Accumulate>
    void render(float** inputs, float** outputs, VstInt32 frames) noexcept;

private:
    using TapPositions = std::array<std::uint32_t, kTaps>;
    using TapValues = std::array<float, kTaps>;

    void resetDelayLine() noexcept;
    void refreshParameters() noexcept;

    unsigned channels_;
    delay::DelayLine delayLine_;
    std::uint32_t writePos_ = 0;
    TapPositions tapReadPos_{};
    TapValues appliedDelayTime_{-1.0f, -1.0f, -1.0f, -1.0f};  // seconds; -1 forces the first application
    std::array<std::atomic<float>, kTaps> delayTime_;          // seconds: twice the normalised parameter
    TapValues appliedFeedback_{};
    std::array<std::atomic<float>, kTaps> feedback_;
    TapValues appliedTapLevel_{};
    std::array<std::atomic<float>, kTaps> tapLevel_;  // linear amplitude 0..1
    float wetGain_ = 1.0f;
    float dryGain_ = 0.0f;
    std::atomic<float> mix_{0.5f};
};

// The variants the host knows; their process calls are instantiated with the
// loop. They carry the single-tap delay's ids; the duplication is by design.

}  // namespace AF
