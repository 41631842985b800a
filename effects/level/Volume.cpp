#include "Volume.h"

#include <array>

#include "effects/family/Decibels.h"
#include "effects/family/Localized.h"
#include "dsp/simd/BufferLoops.h"
#include "dsp/simd/VectorPath.h"
#include "Numeric.h"

namespace AF {

namespace {

constexpr VstInt32 kLevelIndex = 0;
constexpr float kMaxDecibels = 6.0f;
constexpr float kStepDecibels = 0.1f;
constexpr float kUnityLevel = 0.5f;
constexpr float kUnityGain = 1.0f;
constexpr float kHalf = 0.5f;

// The one parameter: the level, reset to unity by the program; its decibels
// are rounded to float after each step.
constexpr std::array<Parameter, 1> kVolumeParameters = {{
    {"$$$/Korvex/AudioFilters/VolumeBrio=Level", kDecibelLabelKey, ML::VSTPropertySupportMixin::kDecibels,
     decibels::kSilence, kMaxDecibels, kStepDecibels, kUnityLevel,
     decibels::ofLevel<decibels::Rounding::eachStep>, decibels::toLevel<decibels::Rounding::eachStep>},
}};

}  // namespace

void scaleInPlace(float* samples, VstInt32 frames, float gain) noexcept {
    loops::scaleCopy(vectorPath(), samples, samples, frames, gain);
}

AudioEnvelope::AudioEnvelope(unsigned channels, audioMasterCallback audioMaster)
    : ParameterFamily(audioMaster, kVolumeParameters),
      targetGain(kUnityGain),
      currentGain(kUnityGain),
      unity(true),
      channelCount(channels) {
    inputShell.Init(static_cast<int>(channels));
    outputShell.Init(static_cast<int>(channels));
}

AudioEnvelope::~AudioEnvelope() = default;

void AudioEnvelope::processReplacing(float** /*inputs*/, float** outputs, VstInt32 sampleFrames) {
    // A new gain takes effect at the first sample of the buffer; no ramp.
    // An unordered comparison (NaN) counts as a change.
    const float target = targetGain.load(std::memory_order_relaxed);
    if (!(target == currentGain)) {
        currentGain = target;
        unity = (currentGain == kUnityGain);
    }
    if (unity || outputs == nullptr || sampleFrames <= 0) return;
    // The host passes the input in the output buffers: the gain is applied
    // there in place, straight on the host's arrays (wrapping them in the
    // shell first would cost more than scaling a short block).
    for (unsigned c = 0; c < channelCount; ++c) {
        float* channel = outputs[c];
        if (channel != nullptr) scaleInPlace(channel, sampleFrames, currentGain);
    }
}

void AudioEnvelope::process(float** /*inputs*/, float** /*outputs*/, VstInt32 /*sampleFrames*/) {}

void AudioEnvelope::setParameter(VstInt32 index, float value) {
    if (index == kLevelIndex) targetGain.store(value + value, std::memory_order_relaxed);
}

float AudioEnvelope::getParameter(VstInt32 index) {
    if (index != kLevelIndex) return 0.0f;
    return targetGain.load(std::memory_order_relaxed) * kHalf;
}

void AudioEnvelope::getParameterDisplay(VstInt32 index, char* text) {
    // "-oo" for silence, otherwise the level in dB with eight characters.
    if (index == kLevelIndex && text != nullptr) dB2string(targetGain.load(std::memory_order_relaxed), text, 8);
}

bool AudioEnvelope::HasHistory() { return false; }

}  // namespace AF
