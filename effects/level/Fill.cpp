#include "Fill.h"

#include <cstring>
#include <new>

#include "effects/family/FamilyShape.h"

namespace AF {

namespace {

constexpr VstInt32 kStereo = 2;
constexpr int kLeft = 0;
constexpr int kRight = 1;

// A block copy of one whole channel (memmove: a host may alias the two).
void copyChannel(float** inputs, int from, float** outputs, int to, VstInt32 sampleFrames) noexcept {
    if (inputs == nullptr || outputs == nullptr || sampleFrames <= 0) return;
    const float* source = inputs[from];
    float* destination = outputs[to];
    if (source == nullptr || destination == nullptr) return;
    std::memmove(destination, source, static_cast<std::size_t>(sampleFrames) * sizeof(float));
}

}  // namespace

AudioFillLeft::AudioFillLeft(audioMasterCallback audioMaster) : AudioEffectX(audioMaster, 0, 0) {
    configureVariant(*this, kStereo, fourCharCode("AFlL"));
}

// Only the right output is written; the left keeps what the host put there.
void AudioFillLeft::processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) {
    copyChannel(inputs, kLeft, outputs, kRight, sampleFrames);
}

void AudioFillLeft::process(float** inputs, float** outputs, VstInt32 sampleFrames) {
    (void)inputs;
    (void)outputs;
    (void)sampleFrames;
}

bool AudioFillLeft::HasHistory() { return false; }

AudioFillRight::AudioFillRight(audioMasterCallback audioMaster) : AudioEffectX(audioMaster, 0, 0) {
    configureVariant(*this, kStereo, fourCharCode("AFlR"));
}

// Only the left output is written; the right keeps what the host put there.
void AudioFillRight::processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) {
    copyChannel(inputs, kRight, outputs, kLeft, sampleFrames);
}

void AudioFillRight::process(float** inputs, float** outputs, VstInt32 sampleFrames) {
    (void)inputs;
    (void)outputs;
    (void)sampleFrames;
}

bool AudioFillRight::HasHistory() { return false; }

}  // namespace AF
