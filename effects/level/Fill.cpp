#include "Fill.h"

#include <cstring>

namespace AF {

namespace {

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

template <int From, int To>
FillChannel<From, To>::FillChannel(unsigned channels, audioMasterCallback audioMaster)
    : AudioEffectX(audioMaster, 0, 0) {
    (void)channels;
}

// Only output `To` is written; the other keeps what the host put there.
template <int From, int To>
void FillChannel<From, To>::processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) {
    copyChannel(inputs, From, outputs, To, sampleFrames);
}

template <int From, int To>
void FillChannel<From, To>::process(float** inputs, float** outputs, VstInt32 sampleFrames) {
    (void)inputs;
    (void)outputs;
    (void)sampleFrames;
}

template <int From, int To>
bool FillChannel<From, To>::HasHistory() {
    return false;
}

template class FillChannel<kLeft, kRight>;
template class FillChannel<kRight, kLeft>;

}  // namespace AF
