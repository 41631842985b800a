#include "Volume.h"

#include <array>

#include <immintrin.h>

#include "effects/family/Decibels.h"
#include "effects/family/Localized.h"
#include "effects/filters/VectorPath.h"
#include "Numeric.h"
#include "SampleGroups.h"

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

namespace {

// Eight samples per instruction where the processor has AVX2. Each lane is the
// same single-precision product, operands in the same order, as the plain loop.
__attribute__((target("avx2"))) VstInt32 scaleEightAtATime(float* samples, VstInt32 frames, float gain) noexcept {
    const __m256 gains = _mm256_set1_ps(gain);
    VstInt32 i = 0;
    // Two groups per pass: fewer loop steps per store.
    for (; frames - i >= 16; i += 16) {
        const __m256 first = _mm256_mul_ps(_mm256_loadu_ps(samples + i), gains);
        const __m256 second = _mm256_mul_ps(_mm256_loadu_ps(samples + i + 8), gains);
        _mm256_storeu_ps(samples + i, first);
        _mm256_storeu_ps(samples + i + 8, second);
    }
    for (; frames - i >= 8; i += 8) _mm256_storeu_ps(samples + i, _mm256_mul_ps(_mm256_loadu_ps(samples + i), gains));
    return i;
}

// Four samples per instruction, the SSE2 baseline.
VstInt32 scaleFourAtATime(float* samples, VstInt32 frames, float gain) noexcept {
    const __m128 gains = _mm_set1_ps(gain);
    VstInt32 i = 0;
    for (; frames - i >= 4; i += 4) _mm_storeu_ps(samples + i, _mm_mul_ps(_mm_loadu_ps(samples + i), gains));
    return i;
}

}  // namespace

void scaleInPlace(float* samples, VstInt32 frames, float gain) noexcept {
    VstInt32 i = 0;
    const VectorPath path = vectorPath();
    // Single samples up to a 32-byte boundary, so that no group's store
    // straddles two cache lines; the order of the samples does not matter.
    if (path != VectorPath::scalar)
        for (const VstInt32 lead = framesToBoundary(samples, frames); i < lead; ++i) samples[i] *= gain;
    switch (path) {
        case VectorPath::avx2: i += scaleEightAtATime(samples + i, frames - i, gain); break;
        case VectorPath::sse2: i += scaleFourAtATime(samples + i, frames - i, gain); break;
        case VectorPath::scalar: break;
    }
    for (; i + 4 <= frames; i += 4) {
        samples[i] *= gain;
        samples[i + 1] *= gain;
        samples[i + 2] *= gain;
        samples[i + 3] *= gain;
    }
    for (; i < frames; ++i) samples[i] *= gain;
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
