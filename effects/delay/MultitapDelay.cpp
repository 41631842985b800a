// Multitap Delay: four taps on one recirculating line (signal flow in MultitapDelay.h).
#include "effects/delay/MultitapDelay.h"

#include "Numeric.h"
#include "dsp/delay/DelayLanes.h"
#include "dsp/simd/VectorPath.h"
#include "effects/delay/DelayParameters.h"
#include "effects/family/Decibels.h"
#include "effects/family/FamilyShape.h"
#include "effects/family/Localized.h"

namespace AF {
namespace {

constexpr const char* kSecondsLabelKey = "$$$/Korvex/AudioFilters/DelayTimeLabel=seconds";
constexpr const char* kLevelLabelKey = "$$$/Korvex/AudioFilters/VolumeLabel=  db  ";
// There is no key for a third level: the third tap's level is named with the
// fourth tap's key and reads "Level 4", like index 11. Kept as designed.
constexpr const char* kLevel4Key = "$$$/Korvex/AudioFilters/Volume4=Level 4";

constexpr unsigned kTaps = AudioMultitapDelay::kTaps;
constexpr unsigned kTapParameters = 3 * kTaps;  // delay, feedback, level per tap
constexpr unsigned kMixParameter = kTapParameters;
constexpr unsigned kParameterCount = kTapParameters + 1;

enum class Kind { Delay, Feedback, Level, Mix, None };

// Tap k (0-based) owns indices 3k, 3k + 1, 3k + 2; index 12 is the mix.
constexpr Kind kindOf(unsigned index) {
    if (index < kTapParameters) return static_cast<Kind>(index % 3);
    return index == kMixParameter ? Kind::Mix : Kind::None;
}
constexpr unsigned tapOf(unsigned index) { return index / 3; }

constexpr float kMaxLevelDb = 0.0f;
constexpr float kLevelStepDb = 0.1f;

// A tap's level: a linear amplitude shown from -999 (silence) to 0 dB in steps of 0.1.
constexpr Parameter levelRow(const char* nameKey, float defaultValue) noexcept {
    return {nameKey,      kLevelLabelKey, ML::VSTPropertySupportMixin::kDecibels, decibels::kSilence, kMaxLevelDb,
            kLevelStepDb, defaultValue,   decibels::ofAmplitude,                  decibels::toAmplitude};
}

// Default program: mix 50 %, taps at 0.5, 0.8, 1.2 and 1.5 s, no feedback,
// every level 0.5 (about -6.02 dB).
constexpr std::array<Parameter, kParameterCount> kMultitapParameters = {{
    delay::delayTimeRow("$$$/Korvex/AudioFilters/DelayTime1=Delay 1", kSecondsLabelKey, 0.25f),
    delay::percentRow("$$$/Korvex/AudioFilters/Feedback1=Feedback 1", 0.0f),
    levelRow("$$$/Korvex/AudioFilters/Volume1=Level 1", 0.5f),
    delay::delayTimeRow("$$$/Korvex/AudioFilters/DelayTime2=Delay 2", kSecondsLabelKey, 0.4f),
    delay::percentRow("$$$/Korvex/AudioFilters/Feedback2=Feedback 2", 0.0f),
    levelRow("$$$/Korvex/AudioFilters/Volume2=Level 2", 0.5f),
    delay::delayTimeRow("$$$/Korvex/AudioFilters/DelayTime3=Delay 3", kSecondsLabelKey, 0.6f),
    delay::percentRow("$$$/Korvex/AudioFilters/Feedback3=Feedback 3", 0.0f),
    levelRow(kLevel4Key, 0.5f),
    delay::delayTimeRow("$$$/Korvex/AudioFilters/DelayTime4=Delay 4", kSecondsLabelKey, 0.75f),
    delay::percentRow("$$$/Korvex/AudioFilters/Feedback4=Feedback 4", 0.0f),
    levelRow(kLevel4Key, 0.5f),
    delay::percentRow("$$$/Korvex/AudioFilters/MixLabel=  Mix  ", 0.5f),
}};

// The program reset tells the host of the mix first, then of the taps in order.
constexpr std::array<unsigned, kParameterCount> kProgramOrder = {12, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};

// Target delay times of a new effect: the floats nearest 0.5, 0.8, 1.2, 1.5 s.
constexpr std::array<float, kTaps> kInitialDelaySeconds = {0.5f, 0.8f, 1.2f, 1.5f};
constexpr float kInitialTapLevel = 0.5f;

inline float load(const std::atomic<float>& value) noexcept { return value.load(std::memory_order_relaxed); }

using TapPositions = std::array<std::uint32_t, kTaps>;
using TapValues = std::array<float, kTaps>;

// What a call of the recursion reads and advances, the same for every channel.
struct TapRun {
    delay::DelayLine& line;
    std::uint32_t writePos;
    TapPositions tapPos;
    TapValues feedback;
    TapValues level;
    float wetGain;
    float dryGain;

    // One frame on: the write position, then every tap, back to 0 at the end.
    void advance() noexcept {
        delay::advance(writePos, line.length());
        for (unsigned k = 0; k < kTaps; ++k) delay::advance(tapPos[k], line.length());
    }
};

// Where the taps and the write land in the line for the current frame.
struct TapFrame {
    std::array<std::uint32_t, kTaps> tap;
    std::uint32_t write;

    static TapFrame at(const TapRun& run) noexcept {
        TapFrame frame;
        frame.write = run.line.slot(run.writePos);
        for (unsigned k = 0; k < kTaps; ++k) frame.tap[k] = run.line.slot(run.tapPos[k]);
        return frame;
    }
};

// One frame of a channel's line: the line fed, and the taps heard scaled by
// the wet gain (in double; the caller forms the output).
inline double tapStep(const TapRun& run, const TapFrame& at, float* line, float input, double noise) noexcept {
    // Fed back: tap 1, the input, taps 2 to 4, the noise, summed in double
    // from left to right and rounded once.
    double fed = static_cast<double>(line[at.tap[0]]) * static_cast<double>(run.feedback[0]);
    fed += static_cast<double>(input);
    for (unsigned k = 1; k < kTaps; ++k)
        fed += static_cast<double>(line[at.tap[k]]) * static_cast<double>(run.feedback[k]);
    fed += noise;
    line[at.write] = toFloat(fed);
    // Heard: the taps read after the write, kept in double until the output.
    double heard = static_cast<double>(line[at.tap[0]]) * static_cast<double>(run.level[0]);
    for (unsigned k = 1; k < kTaps; ++k)
        heard += static_cast<double>(line[at.tap[k]]) * static_cast<double>(run.level[k]);
    return heard * static_cast<double>(run.wetGain);
}

// The output of a frame from its wet signal: the dry input added by the
// replacing call, what the output holds by the accumulating one.
template <bool Accumulate>
inline void tapOutput(double wet, float input, float& out, float dryGain) noexcept {
    if constexpr (Accumulate)
        out = toFloat(wet + static_cast<double>(out));
    else
        out = toFloat(wet + static_cast<double>(input) * static_cast<double>(dryGain));
}

// A call's gains in double, for the groups of frames.
struct TapGains {
    std::array<double, kTaps> feedback;
    std::array<double, kTaps> level;
    double wetGain;
    double dryGain;

    explicit TapGains(const TapRun& run) noexcept : wetGain(run.wetGain), dryGain(run.dryGain) {
        for (unsigned k = 0; k < kTaps; ++k) {
            feedback[k] = run.feedback[k];
            level[k] = run.level[k];
        }
    }
};

// `Width` consecutive frames of one channel, one frame per lane, every step
// the plain one above. `at` holds the write position, then the taps'.
template <unsigned Width, bool Accumulate>
[[gnu::always_inline]] inline void tapGroup(const TapGains& gains, float* line,
                                            const std::array<std::uint32_t, 1 + kTaps>& at, std::uint32_t offset,
                                            const float* in, float* out,
                                            const typename delay::Lanes<Width>::D& noise) noexcept {
    using L = delay::Lanes<Width>;
    typename L::D input, tap[kTaps];
    L::load(input, in);
    for (unsigned k = 0; k < kTaps; ++k) L::load(tap[k], line + at[1 + k] + offset);
    auto fed = tap[0] * gains.feedback[0];
    fed += input;
    for (unsigned k = 1; k < kTaps; ++k) fed += tap[k] * gains.feedback[k];
    fed += noise;
    L::store(line + at[0] + offset, fed);
    // A tap on the write position hears the new samples: read it again.
    for (unsigned k = 0; k < kTaps; ++k)
        if (at[1 + k] == at[0]) L::load(tap[k], line + at[0] + offset);
    auto heard = tap[0] * gains.level[0];
    for (unsigned k = 1; k < kTaps; ++k) heard += tap[k] * gains.level[k];
    const auto wet = heard * gains.wetGain;
    if constexpr (Accumulate) {
        typename L::D held;
        L::load(held, out);
        L::store(out, wet + held);
    } else {
        L::store(out, wet + input * gains.dryGain);
    }
}

// The vector path's pass over one channel (DelayLanes.h).
struct TapPass {
    using Positions = std::array<std::uint32_t, 1 + kTaps>;  // the write position, then the taps'
    static Positions positions(const TapRun& run) noexcept {
        return {run.writePos, run.tapPos[0], run.tapPos[1], run.tapPos[2], run.tapPos[3]};
    }
    static void keep(TapRun& run, const Positions& end) noexcept {
        run.writePos = end[0];
        for (unsigned k = 0; k < kTaps; ++k) run.tapPos[k] = end[1 + k];
    }

    template <unsigned Width, bool Accumulate>
    [[gnu::always_inline]] static Positions channel(const TapRun& run, unsigned c, const float* in, float* out,
                                                    VstInt32 frames) noexcept {
        float* const line = run.line.channel(c);
        const TapGains gains(run);
        auto group = [&](const Positions& at, VstInt32 offset, VstInt32 frame, const auto& noise)
                         __attribute__((always_inline)) {
                             tapGroup<Width, Accumulate>(gains, line, at, static_cast<std::uint32_t>(offset),
                                                         in + frame, out + frame, noise);
                         };
        auto single = [&](const Positions& at, VstInt32 frame) __attribute__((always_inline)) {
            TapFrame slots;
            slots.write = run.line.slot(at[0]);
            for (unsigned k = 0; k < kTaps; ++k) slots.tap[k] = run.line.slot(at[1 + k]);
            const double wet = tapStep(run, slots, line, in[frame], delay::denormalNoise(frames, frame));
            tapOutput<Accumulate>(wet, in[frame], out[frame], run.dryGain);
        };
        return delay::walkChannel<Width>(frames, run.line.length(), positions(run), group, single);
    }
};

}  // namespace

AudioMultitapDelay::AudioMultitapDelay(unsigned channels, audioMasterCallback audioMaster)
    : ParameterFamily(audioMaster, kMultitapParameters), channels_(channels) {
    for (unsigned k = 0; k < kTaps; ++k) {
        delayTime_[k].store(kInitialDelaySeconds[k], std::memory_order_relaxed);
        feedback_[k].store(0.0f, std::memory_order_relaxed);
        tapLevel_[k].store(kInitialTapLevel, std::memory_order_relaxed);
    }
    // Here the constructor's line has the extra frame and setSampleRate's has
    // not, the reverse of the single-tap delay. Kept as designed.
    if (delayLine_.resize(static_cast<int>(channels_), delay::twiceRatePlusOneFrames(getSampleRate())))
        resetDelayLine();
}

AudioMultitapDelay::~AudioMultitapDelay() = default;

bool AudioMultitapDelay::hasDelayLine() const noexcept {
    return channels_ > 0 && delayLine_.channelCount() == static_cast<int>(channels_);
}

void AudioMultitapDelay::setSampleRate(float rate) {
    if (rate == getSampleRate()) return;
    // When the new line cannot be allocated the old line AND the old rate are
    // kept, so positions computed from the rate keep fitting the line.
    if (!delayLine_.resize(static_cast<int>(channels_), delay::twiceRateFrames(rate))) return;
    AudioEffectX::setSampleRate(rate);
    resetDelayLine();
}

void AudioMultitapDelay::suspend() { resetDelayLine(); }

// Clears the lines and sets each tap one delay before the line's end, from the
// target times and with no wrap: a tap at delay 0 starts at L, one past the
// end, until the first frame wraps it. The applied values stay as they are.
void AudioMultitapDelay::resetDelayLine() noexcept {
    const std::uint32_t length = delayLine_.length();
    for (unsigned k = 0; k < kTaps; ++k) {
        const std::int32_t delayFrames = delay::delayFrames(getSampleRate(), load(delayTime_[k]));
        tapReadPos_[k] = delay::positionFromEnd(delayFrames, length);
    }
    writePos_ = 0;
    delayLine_.clear();
}

// Compares the thirteen targets with the applied values (a NaN counts as a
// change) and, when any differs, applies them all and moves every tap.
void AudioMultitapDelay::refreshParameters() noexcept {
    TapValues delayTime{};
    TapValues feedback{};
    TapValues tapLevel{};
    bool changed = false;
    for (unsigned k = 0; k < kTaps; ++k) {
        delayTime[k] = load(delayTime_[k]);
        feedback[k] = load(feedback_[k]);
        tapLevel[k] = load(tapLevel_[k]);
        changed = changed || appliedDelayTime_[k] != delayTime[k] || appliedFeedback_[k] != feedback[k] ||
                  appliedTapLevel_[k] != tapLevel[k];
    }
    const float mix = load(mix_);
    changed = changed || wetGain_ != mix;
    if (!changed) return;

    wetGain_ = mix;
    dryGain_ = toFloat(1.0 - static_cast<double>(mix));
    const std::uint32_t length = delayLine_.length();
    for (unsigned k = 0; k < kTaps; ++k) {
        appliedDelayTime_[k] = delayTime[k];
        appliedFeedback_[k] = feedback[k];
        appliedTapLevel_[k] = tapLevel[k];
        const std::int32_t delayFrames = delay::delayFrames(getSampleRate(), appliedDelayTime_[k]);
        tapReadPos_[k] = delay::positionBehind(writePos_, delayFrames, length);
    }
}

template <unsigned Channels, bool Accumulate>
void AudioMultitapDelay::render(float** inputs, float** outputs, VstInt32 frames) noexcept {
    const bool runnable = frames > 0 && hasDelayLine() && delay::channelsPresent(inputs, Channels) &&
                          delay::channelsPresent(outputs, Channels);
    const VectorPath path = vectorPath();

    if (path != VectorPath::scalar) {
        // Channel by channel, several frames per instruction. On sixteen
        // channels this is the plain loop's result too: its passes check the
        // parameters before each channel and all start from the same saved
        // positions. (The one check here and its
        // sixteen differ only when a host stores a parameter from another
        // thread during the call; either way the change reaches the next call.)
        if constexpr (Channels == 16) {
            const std::uint32_t savedWritePos = writePos_;
            const TapPositions savedTapPos = tapReadPos_;
            refreshParameters();
            writePos_ = savedWritePos;
            tapReadPos_ = savedTapPos;
        } else {
            refreshParameters();
        }
        if (!runnable) return;
        TapRun run{delayLine_, writePos_, tapReadPos_, appliedFeedback_, appliedTapLevel_, wetGain_, dryGain_};
        if (path == VectorPath::avx2)
            delay::runChannelsAvx2<TapPass, Accumulate>(run, Channels, inputs, outputs, frames);
        else
            delay::runChannelsSse2<TapPass, Accumulate>(run, Channels, inputs, outputs, frames);
        writePos_ = run.writePos;
        tapReadPos_ = run.tapPos;
        return;
    }

    // Channels [first, last) for every frame of the call, from the current positions.
    auto runPlain = [&](unsigned first, unsigned last) {
        TapRun run{delayLine_, writePos_, tapReadPos_, appliedFeedback_, appliedTapLevel_, wetGain_, dryGain_};
        for (VstInt32 i = 0; i < frames; ++i) {
            const TapFrame at = TapFrame::at(run);
            const double noise = delay::denormalNoise(frames, i);
            for (unsigned c = first; c < last; ++c) {
                const float input = inputs[c][i];
                const double wet = tapStep(run, at, delayLine_.channel(c), input, noise);
                tapOutput<Accumulate>(wet, input, outputs[c][i], run.dryGain);
            }
            run.advance();
        }
        writePos_ = run.writePos;
        tapReadPos_ = run.tapPos;
    };

    if constexpr (Channels == 16) {
        // Channel by channel, every pass from the same saved positions. The
        // restore follows the parameter check, so taps moved for new delay
        // times are put back: on this variant a delay-time change is heard
        // only after the next reset. Kept as designed.
        const std::uint32_t savedWritePos = writePos_;
        const TapPositions savedTapPos = tapReadPos_;
        for (unsigned c = 0; c < Channels; ++c) {
            refreshParameters();
            writePos_ = savedWritePos;
            tapReadPos_ = savedTapPos;
            if (runnable) runPlain(c, c + 1);
        }
    } else {
        refreshParameters();
        if (runnable) runPlain(0, Channels);
    }
}

void AudioMultitapDelay::setParameter(VstInt32 index, float value) {
    if (index < 0) return;
    const auto parameter = static_cast<unsigned>(index);
    switch (kindOf(parameter)) {
        case Kind::Delay: delayTime_[tapOf(parameter)].store(value + value, std::memory_order_relaxed); break;
        case Kind::Feedback: feedback_[tapOf(parameter)].store(value, std::memory_order_relaxed); break;
        case Kind::Level: tapLevel_[tapOf(parameter)].store(value, std::memory_order_relaxed); break;
        case Kind::Mix: mix_.store(value, std::memory_order_relaxed); break;
        case Kind::None: break;
    }
}

float AudioMultitapDelay::getParameter(VstInt32 index) {
    if (index < 0) return 0.0f;
    const auto parameter = static_cast<unsigned>(index);
    switch (kindOf(parameter)) {
        case Kind::Delay: return delay::parameterOfSeconds(load(delayTime_[tapOf(parameter)]));
        case Kind::Feedback: return load(feedback_[tapOf(parameter)]);
        case Kind::Level: return load(tapLevel_[tapOf(parameter)]);
        case Kind::Mix: return load(mix_);
        case Kind::None: break;
    }
    return 0.0f;
}

void AudioMultitapDelay::setProgram(VstInt32 program) {
    curProgram = program;
    for (const unsigned index : kProgramOrder)
        setParameterAutomated(static_cast<VstInt32>(index), kMultitapParameters[index].defaultValue);
}

void AudioMultitapDelay::getParameterDisplay(VstInt32 index, char* text) {
    if (index < 0) return;
    const auto parameter = static_cast<unsigned>(index);
    switch (kindOf(parameter)) {
        case Kind::Delay: float2string(load(delayTime_[tapOf(parameter)]), text, 8); break;
        case Kind::Feedback: float2string(delay::percentOfParameter(load(feedback_[tapOf(parameter)])), text, 8); break;
        case Kind::Level: dB2string(load(tapLevel_[tapOf(parameter)]), text, 8); break;
        case Kind::Mix: float2string(delay::percentOfParameter(load(mix_)), text, 8); break;
        case Kind::None: break;
    }
}

template class DelayChannels<AudioMultitapDelay, 1>;
template class DelayChannels<AudioMultitapDelay, 2>;
template class DelayChannels<AudioMultitapDelay, 6>;
template class DelayChannels<AudioMultitapDelay, 16>;

}  // namespace AF
