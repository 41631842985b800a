#include "Invert.h"

#include <cstdint>
#include <type_traits>

#include <immintrin.h>

#include "SampleGroups.h"
#include "effects/filters/VectorPath.h"


namespace AF {

namespace {

constexpr float kPolarity = -1.0f;  // a multiply, so 0.0 becomes -0.0

// The polarity read at run time, once per call: a multiply by a constant -1
// may be compiled as a sign flip, which gives another sign to a NaN than the
// multiply the group loops do; this keeps every sample a true multiply.
float runtimePolarity() noexcept {
    volatile float polarity = kPolarity;
    return polarity;
}

// out = in x -1
struct Replace {
    static float apply(float input, float output, float polarity) noexcept {
        (void)output;
        return input * polarity;
    }
};

// out = out - in
struct Accumulate {
    static float apply(float input, float output, float polarity) noexcept {
        (void)polarity;
        return output - input;
    }
};

// The one Invert loop: every channel, four frames per pass and then the
// remainder; each output sample reads only its own input sample first, so it
// is safe in place. A missing channel is skipped.
// Eight frames per instruction where the processor has AVX2, each lane the
// same single-precision operation, operands in the same order, as the rule.
// Only for a channel whose output is its input or lies apart from it: a
// partly overlapping pair would read samples the plain loop has rewritten.
template <class Rule>
__attribute__((target("avx2"))) VstInt32 invertEightAtATime(const float* in, float* out, VstInt32 frames,
                                                            float runPolarity) noexcept {
    const __m256 polarity = _mm256_set1_ps(runPolarity);
    VstInt32 frame = 0;
    // Two groups per pass, each read before either is written: fewer loop
    // steps per store, and still every output after its own input only.
    if constexpr (std::is_same_v<Rule, Replace>) {
        for (; frames - frame >= 16; frame += 16) {
            const __m256 first = _mm256_mul_ps(_mm256_loadu_ps(in + frame), polarity);
            const __m256 second = _mm256_mul_ps(_mm256_loadu_ps(in + frame + 8), polarity);
            _mm256_storeu_ps(out + frame, first);
            _mm256_storeu_ps(out + frame + 8, second);
        }
    }
    for (; frames - frame >= 8; frame += 8) {
        const __m256 input = _mm256_loadu_ps(in + frame);
        if constexpr (std::is_same_v<Rule, Replace>)
            _mm256_storeu_ps(out + frame, _mm256_mul_ps(input, polarity));
        else
            _mm256_storeu_ps(out + frame, _mm256_sub_ps(_mm256_loadu_ps(out + frame), input));
    }
    return frame;
}

template <unsigned Channels, class Rule>
void invertChannels(float** inputs, float** outputs, VstInt32 sampleFrames) noexcept {
    if (inputs == nullptr || outputs == nullptr || sampleFrames <= 0) return;
    const float polarity = runtimePolarity();
    for (unsigned channel = 0; channel < Channels; ++channel) {
        const float* in = inputs[channel];
        float* out = outputs[channel];
        if (in == nullptr || out == nullptr) continue;
        VstInt32 frame = 0;
        if (vectorPath() == VectorPath::avx2 && sameOrApart(in, out, sampleFrames)) {
            // Single samples up to the output's 32-byte boundary, then groups.
            for (const VstInt32 lead = framesToBoundary(out, sampleFrames); frame < lead; ++frame)
                out[frame] = Rule::apply(in[frame], out[frame], polarity);
            frame += invertEightAtATime<Rule>(in + frame, out + frame, sampleFrames - frame, polarity);
        }
        for (; frame + 4 <= sampleFrames; frame += 4) {
            out[frame] = Rule::apply(in[frame], out[frame], polarity);
            out[frame + 1] = Rule::apply(in[frame + 1], out[frame + 1], polarity);
            out[frame + 2] = Rule::apply(in[frame + 2], out[frame + 2], polarity);
            out[frame + 3] = Rule::apply(in[frame + 3], out[frame + 3], polarity);
        }
        for (; frame < sampleFrames; ++frame) out[frame] = Rule::apply(in[frame], out[frame], polarity);
    }
}

}  // namespace

template <unsigned Channels>
InvertChannels<Channels>::InvertChannels(unsigned channels, audioMasterCallback audioMaster)
    : AudioEffectX(audioMaster, 0, 0) {
    (void)channels;
}

template <unsigned Channels>
void InvertChannels<Channels>::processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) {
    invertChannels<Channels, Replace>(inputs, outputs, sampleFrames);
}

template <unsigned Channels>
void InvertChannels<Channels>::process(float** inputs, float** outputs, VstInt32 sampleFrames) {
    invertChannels<Channels, Accumulate>(inputs, outputs, sampleFrames);
}

template <unsigned Channels>
bool InvertChannels<Channels>::HasHistory() {
    return false;
}

template class InvertChannels<1>;
template class InvertChannels<2>;
template class InvertChannels<4>;
template class InvertChannels<6>;
template class InvertChannels<16>;

}  // namespace AF
