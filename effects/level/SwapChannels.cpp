#include "SwapChannels.h"

#include <new>

#include <immintrin.h>

#include "SampleGroups.h"
#include "effects/filters/VectorPath.h"
#include "effects/family/FamilyShape.h"

namespace AF {

namespace {

constexpr VstInt32 kStereo = 2;

// The exchange only moves samples, so a group of frames moved by one
// instruction holds the very bits the plain loop moves. Each pass reads both
// inputs' group before it writes either output's, then writes left before
// right, as the plain loop does within a frame.
__attribute__((target("avx2"))) VstInt32 swapEightAtATime(const float* inLeft, const float* inRight, float* outLeft,
                                                          float* outRight, VstInt32 frames) noexcept {
    VstInt32 frame = 0;
    for (; frames - frame >= 8; frame += 8) {
        const __m256 left = _mm256_loadu_ps(inLeft + frame);
        const __m256 right = _mm256_loadu_ps(inRight + frame);
        _mm256_storeu_ps(outLeft + frame, right);
        _mm256_storeu_ps(outRight + frame, left);
    }
    return frame;
}

VstInt32 swapFourAtATime(const float* inLeft, const float* inRight, float* outLeft, float* outRight,
                         VstInt32 frames) noexcept {
    VstInt32 frame = 0;
    for (; frames - frame >= 4; frame += 4) {
        const __m128 left = _mm_loadu_ps(inLeft + frame);
        const __m128 right = _mm_loadu_ps(inRight + frame);
        _mm_storeu_ps(outLeft + frame, right);
        _mm_storeu_ps(outRight + frame, left);
    }
    return frame;
}

// Groups of frames give the plain loop's result when no written array partly
// overlaps another array: then no write of a frame reaches a sample of another
// frame. In place (outputs the inputs) and separate buffers both qualify.
bool groupsAreSafe(const float* inLeft, const float* inRight, const float* outLeft, const float* outRight,
                   VstInt32 frames) noexcept {
    return sameOrApart(outLeft, outRight, frames) && sameOrApart(outLeft, inLeft, frames) &&
           sameOrApart(outLeft, inRight, frames) && sameOrApart(outRight, inLeft, frames) &&
           sameOrApart(outRight, inRight, frames);
}

// The plain exchange of frames [from, to).
void swapFrames(const float* inLeft, const float* inRight, float* outLeft, float* outRight, VstInt32 from,
                VstInt32 to) noexcept {
    for (VstInt32 frame = from; frame < to; ++frame) {
        const float left = inLeft[frame];
        const float right = inRight[frame];
        outLeft[frame] = right;
        outRight[frame] = left;
    }
}

}  // namespace

AudioSwapChannels::AudioSwapChannels(audioMasterCallback audioMaster) : AudioEffectX(audioMaster, 0, 0) {
    configureVariant(*this, kStereo, fourCharCode("ASwC"));
}

// Both inputs of a frame are read before either output is written, so the
// exchange also holds when the host passes the same buffers in and out.
void AudioSwapChannels::processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) {
    // A host that passes no arrays, or misses a channel, gets nothing written.
    if (inputs == nullptr || outputs == nullptr) return;
    const float* inLeft = inputs[0];
    const float* inRight = inputs[1];
    float* outLeft = outputs[0];
    float* outRight = outputs[1];
    if (inLeft == nullptr || inRight == nullptr || outLeft == nullptr || outRight == nullptr) return;
    if (sampleFrames <= 0) return;
    VstInt32 frame = 0;
    const VectorPath path = vectorPath();
    if (path != VectorPath::scalar && groupsAreSafe(inLeft, inRight, outLeft, outRight, sampleFrames)) {
        // Single frames up to the left output's boundary, then whole groups.
        frame = framesToBoundary(outLeft, sampleFrames);
        swapFrames(inLeft, inRight, outLeft, outRight, 0, frame);
        if (path == VectorPath::avx2)
            frame += swapEightAtATime(inLeft + frame, inRight + frame, outLeft + frame, outRight + frame,
                                      sampleFrames - frame);
        frame += swapFourAtATime(inLeft + frame, inRight + frame, outLeft + frame, outRight + frame,
                                 sampleFrames - frame);
    }
    swapFrames(inLeft, inRight, outLeft, outRight, frame, sampleFrames);
}

// The accumulating call is deliberately empty: it adds nothing.
void AudioSwapChannels::process(float** inputs, float** outputs, VstInt32 sampleFrames) {
    (void)inputs;
    (void)outputs;
    (void)sampleFrames;
}

bool AudioSwapChannels::HasHistory() { return false; }

}  // namespace AF
