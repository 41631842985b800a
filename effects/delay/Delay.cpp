// Delay: the single-tap echo (signal flow in Delay.h).
#include "effects/delay/Delay.h"

#include <array>

#include "Numeric.h"
#include "dsp/delay/DelayLanes.h"
#include "dsp/simd/VectorPath.h"
#include "effects/delay/DelayParameters.h"
#include "effects/family/FamilyShape.h"
#include "effects/family/Localized.h"

namespace AF {
namespace {

constexpr const char* kSecondsLabelKey = "$$$/Korvex/AudioFilters/Seconds=seconds";

enum : VstInt32 { kDelayParameter = 0, kFeedbackParameter = 1, kMixParameter = 2 };

// Default program: delay 1.0 s, feedback 0 %, mix 50 %.
constexpr std::array<Parameter, 3> kDelayParameters = {{
    delay::delayTimeRow("$$$/Korvex/AudioFilters/Delay=Delay", kSecondsLabelKey, 0.5f),
    delay::percentRow("$$$/Korvex/AudioFilters/Feedback=Feedback", 0.0f),
    delay::percentRow("$$$/Korvex/AudioFilters/Mix=Mix", 0.5f),
}};

// Steps 1 and 2 of a frame: the delayed sample scaled by the feedback, the
// input and the noise, summed in double in that order, written to the line.
inline void feed(float delayed, float& written, float in, float feedback, float noise) noexcept {
    const double fedBack = static_cast<double>(delayed) * static_cast<double>(feedback);
    const double sum = fedBack + static_cast<double>(in) + static_cast<double>(noise);
    written = toFloat(sum);
}

// The replacing output: wet line sample plus dry input, rounded once.
inline float mixed(float heard, float wetGain, float in, float dryGain) noexcept {
    const double wet = static_cast<double>(heard) * static_cast<double>(wetGain);
    const double dry = static_cast<double>(in) * static_cast<double>(dryGain);
    return toFloat(wet + dry);
}

// The accumulating output adds the wet signal only; the dry one is not added.
inline float accumulated(float heard, float wetGain, float out) noexcept {
    const double wet = static_cast<double>(heard) * static_cast<double>(wetGain);
    return toFloat(wet + static_cast<double>(out));
}

// What a call of the recursion reads and advances, the same for every channel.
struct DelayRun {
    delay::DelayLine& line;
    std::uint32_t writePos;
    std::uint32_t readPos;
    float feedback;
    float wetGain;
    float dryGain;
};

// One frame of one channel, the plain way; the read after the write hears the
// sample just written when both positions share a slot.
template <bool Accumulate>
inline void frameStep(const DelayRun& run, float* line, std::uint32_t writePos, std::uint32_t readPos, float in,
                      float& out, float noise) noexcept {
    const std::uint32_t readSlot = run.line.slot(readPos);
    feed(line[readSlot], line[run.line.slot(writePos)], in, run.feedback, noise);
    if constexpr (Accumulate)
        out = accumulated(line[readSlot], run.wetGain, out);
    else
        out = mixed(line[readSlot], run.wetGain, in, run.dryGain);
}

// The same for `Width` consecutive frames of one channel, one frame per lane,
// every step the plain one above. On a delay of 0 the read hears the write.
template <unsigned Width, bool Accumulate>
[[gnu::always_inline]] inline void groupStep(float* line, std::uint32_t writePos, std::uint32_t readPos,
                                             const float* in, float* out, const typename delay::Lanes<Width>::D& noise,
                                             double feedback, double wetGain, double dryGain) noexcept {
    using L = delay::Lanes<Width>;
    typename L::D input, delayed;
    L::load(input, in);
    L::load(delayed, line + readPos);
    const auto fedBack = delayed * feedback;
    const auto sum = fedBack + input + noise;
    L::store(line + writePos, sum);
    typename L::D heard = delayed;
    if (writePos == readPos) L::load(heard, line + readPos);
    const auto wet = heard * wetGain;
    if constexpr (Accumulate) {
        typename L::D held;
        L::load(held, out);
        L::store(out, wet + held);
    } else {
        L::store(out, wet + input * dryGain);
    }
}

// The vector path's pass over one channel (DelayLanes.h).
struct DelayPass {
    static std::array<std::uint32_t, 2> positions(const DelayRun& run) noexcept { return {run.writePos, run.readPos}; }
    static void keep(DelayRun& run, const std::array<std::uint32_t, 2>& end) noexcept {
        run.writePos = end[0];
        run.readPos = end[1];
    }

    template <unsigned Width, bool Accumulate>
    [[gnu::always_inline]] static std::array<std::uint32_t, 2> channel(const DelayRun& run, unsigned c,
                                                                        const float* in, float* out,
                                                                        VstInt32 frames) noexcept {
        float* const line = run.line.channel(c);
        const double feedback = run.feedback;
        const double wetGain = run.wetGain;
        const double dryGain = run.dryGain;
        auto group = [&](const auto& at, VstInt32 offset, VstInt32 frame, const auto& noise)
                         __attribute__((always_inline)) {
                             const auto step = static_cast<std::uint32_t>(offset);
                             groupStep<Width, Accumulate>(line, at[0] + step, at[1] + step, in + frame, out + frame,
                                                          noise, feedback, wetGain, dryGain);
                         };
        auto single = [&](const auto& at, VstInt32 frame) __attribute__((always_inline)) {
            frameStep<Accumulate>(run, line, at[0], at[1], in[frame], out[frame], delay::denormalNoise(frames, frame));
        };
        return delay::walkChannel<Width>(frames, run.line.length(), positions(run), group, single);
    }
};

}  // namespace

AudioDelay::AudioDelay(unsigned channels, audioMasterCallback audioMaster)
    : ParameterFamily(audioMaster, kDelayParameters), channels_(channels) {
    // The constructor's line is exactly twice the rate, one frame shorter than
    // the one setSampleRate makes; a 2 s delay at this length is undelayed.
    // Kept as designed: hosts rely on the exact echo positions.
    if (delayLine_.resize(static_cast<int>(channels_), delay::twiceRateFrames(getSampleRate()))) resetDelayLine();
}

AudioDelay::~AudioDelay() = default;

bool AudioDelay::hasDelayLine() const noexcept {
    return channels_ > 0 && delayLine_.channelCount() == static_cast<int>(channels_);
}

void AudioDelay::setSampleRate(float rate) {
    if (rate == getSampleRate()) return;
    // When the new line cannot be allocated the old line AND the old rate are
    // kept, so positions computed from the rate keep fitting the line.
    if (!delayLine_.resize(static_cast<int>(channels_), delay::twiceRatePlusOneFrames(rate))) return;
    AudioEffectX::setSampleRate(rate);
    resetDelayLine();
}

void AudioDelay::suspend() { resetDelayLine(); }

// Clears the echo tail and restarts the positions from the target delay time.
// The applied values stay as they are, so no recomputation follows unless a
// parameter changes.
void AudioDelay::resetDelayLine() noexcept {
    readPos_ = 0;
    writePos_ = delay::framePosition(getSampleRate(), delayTime_.load(std::memory_order_relaxed));
    delayLine_.clear();
}

// Compares the targets with the applied values (a NaN counts as a change) and
// recomputes gains and the read position when any differs. Only the read
// position moves: no crossfade, the line's contents are kept.
void AudioDelay::refreshParameters() noexcept {
    const float delayTime = delayTime_.load(std::memory_order_relaxed);
    const float feedback = feedback_.load(std::memory_order_relaxed);
    const float mix = mix_.load(std::memory_order_relaxed);
    if (appliedDelayTime_ == delayTime && appliedFeedback_ == feedback && wetGain_ == mix) return;
    appliedDelayTime_ = delayTime;
    appliedFeedback_ = feedback;
    wetGain_ = mix;
    dryGain_ = toFloat(1.0 - static_cast<double>(mix));
    const std::int32_t delayFrames = delay::delayFrames(getSampleRate(), appliedDelayTime_);
    readPos_ = delay::positionBehind(writePos_, delayFrames, delayLine_.length());
}

template <unsigned Channels, bool Accumulate>
void AudioDelay::render(float** inputs, float** outputs, VstInt32 frames) noexcept {
    const bool runnable = frames > 0 && hasDelayLine() && delay::channelsPresent(inputs, Channels) &&
                          delay::channelsPresent(outputs, Channels);
    const std::uint32_t length = delayLine_.length();
    // The stereo accumulating call's cross-over stays on the plain loop.
    constexpr bool kLanes = !(Channels == 2 && Accumulate);
    const VectorPath path = kLanes ? vectorPath() : VectorPath::scalar;

    if (path != VectorPath::scalar) {
        // Channel by channel, several frames per instruction. On sixteen
        // channels this is the plain loop's result too: its passes check the
        // parameters before each channel and all start from the same saved
        // positions. (The one check here and its sixteen differ only when a
        // host stores a parameter from another thread during the call; either
        // way the change reaches the next call.)
        if constexpr (Channels == 16) {
            const std::uint32_t savedWritePos = writePos_;
            const std::uint32_t savedReadPos = readPos_;
            refreshParameters();
            writePos_ = savedWritePos;
            readPos_ = savedReadPos;
        } else {
            refreshParameters();
        }
        if (!runnable) return;
        DelayRun run{delayLine_, writePos_, readPos_, appliedFeedback_, wetGain_, dryGain_};
        if (path == VectorPath::avx2)
            delay::runChannelsAvx2<DelayPass, Accumulate>(run, Channels, inputs, outputs, frames);
        else
            delay::runChannelsSse2<DelayPass, Accumulate>(run, Channels, inputs, outputs, frames);
        writePos_ = run.writePos;
        readPos_ = run.readPos;
    } else if constexpr (Channels == 16) {
        // Channel by channel, every pass from the same saved positions. The
        // restore follows the parameter check, so a read position recomputed
        // for a new delay time is overwritten: on this variant a delay-time
        // change is heard only after the next reset. Kept as designed.
        const std::uint32_t savedWritePos = writePos_;
        const std::uint32_t savedReadPos = readPos_;
        for (unsigned c = 0; c < Channels; ++c) {
            refreshParameters();
            writePos_ = savedWritePos;
            readPos_ = savedReadPos;
            if (!runnable) continue;
            const DelayRun run{delayLine_, writePos_, readPos_, appliedFeedback_, wetGain_, dryGain_};
            float* line = delayLine_.channel(c);
            std::uint32_t writePos = writePos_;
            std::uint32_t readPos = readPos_;
            for (VstInt32 i = 0; i < frames; ++i) {
                frameStep<Accumulate>(run, line, writePos, readPos, inputs[c][i], outputs[c][i],
                                      delay::denormalNoise(frames, i));
                delay::advance(writePos, length);
                delay::advance(readPos, length);
            }
            writePos_ = writePos;
            readPos_ = readPos;
        }
    } else {
        refreshParameters();
        if (!runnable) return;
        const DelayRun run{delayLine_, writePos_, readPos_, appliedFeedback_, wetGain_, dryGain_};
        std::uint32_t writePos = writePos_;
        std::uint32_t readPos = readPos_;
        for (VstInt32 i = 0; i < frames; ++i) {
            const float noise = delay::denormalNoise(frames, i);
            const std::uint32_t readSlot = delayLine_.slot(readPos);
            const std::uint32_t writeSlot = delayLine_.slot(writePos);
            if constexpr (Channels == 2 && Accumulate) {
                // The stereo accumulating call crosses over: the left output
                // hears the right line (before this frame's write to it), the
                // left line is fed and recirculates but is not heard here.
                // Kept as designed.
                float* left = delayLine_.channel(0);
                float* right = delayLine_.channel(1);
                feed(left[readSlot], left[writeSlot], inputs[0][i], run.feedback, noise);
                outputs[0][i] = accumulated(right[readSlot], run.wetGain, outputs[0][i]);
                feed(right[readSlot], right[writeSlot], inputs[1][i], run.feedback, noise);
                outputs[1][i] = accumulated(right[readSlot], run.wetGain, outputs[1][i]);
            } else {
                for (unsigned c = 0; c < Channels; ++c)
                    frameStep<Accumulate>(run, delayLine_.channel(c), writePos, readPos, inputs[c][i],
                                          outputs[c][i], noise);
            }
            delay::advance(writePos, length);
            delay::advance(readPos, length);
        }
        writePos_ = writePos;
        readPos_ = readPos;
    }
}

void AudioDelay::setParameter(VstInt32 index, float value) {
    switch (index) {
        case kDelayParameter: delayTime_.store(value + value, std::memory_order_relaxed); break;
        case kFeedbackParameter: feedback_.store(value, std::memory_order_relaxed); break;
        case kMixParameter: mix_.store(value, std::memory_order_relaxed); break;
        default: break;
    }
}

float AudioDelay::getParameter(VstInt32 index) {
    switch (index) {
        case kDelayParameter: return delay::parameterOfSeconds(delayTime_.load(std::memory_order_relaxed));
        case kFeedbackParameter: return feedback_.load(std::memory_order_relaxed);
        case kMixParameter: return mix_.load(std::memory_order_relaxed);
        default: return 0.0f;
    }
}

void AudioDelay::getParameterDisplay(VstInt32 index, char* text) {
    switch (index) {
        case kDelayParameter: float2string(delayTime_.load(std::memory_order_relaxed), text, 8); break;
        case kFeedbackParameter:
            float2string(delay::percentOfParameter(feedback_.load(std::memory_order_relaxed)), text, 8);
            break;
        case kMixParameter: float2string(delay::percentOfParameter(mix_.load(std::memory_order_relaxed)), text, 8); break;
        default: break;
    }
}

template class DelayChannels<AudioDelay, 1>;
template class DelayChannels<AudioDelay, 2>;
template class DelayChannels<AudioDelay, 6>;
template class DelayChannels<AudioDelay, 16>;

}  // namespace AF
