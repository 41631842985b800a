#include "Interleave.h"

namespace afx {
namespace {

// The arrays never overlap the chunk: `__restrict` lets the compiler keep
// the channel pointers in registers and move several frames at once.
template <unsigned Channels>
void deinterleaveFixed(const float* __restrict interleaved, std::int64_t frames, float* const* planes) {
    float* __restrict out[Channels];
    for (unsigned c = 0; c < Channels; ++c) out[c] = planes[c];
    for (std::int64_t i = 0; i < frames; ++i)
        for (unsigned c = 0; c < Channels; ++c) out[c][i] = interleaved[i * Channels + c];
}

template <unsigned Channels>
void interleaveFixed(const float* const* planes, std::int64_t frames, float* __restrict interleaved) {
    const float* __restrict in[Channels];
    for (unsigned c = 0; c < Channels; ++c) in[c] = planes[c];
    for (std::int64_t i = 0; i < frames; ++i)
        for (unsigned c = 0; c < Channels; ++c) interleaved[i * Channels + c] = in[c][i];
}

void deinterleaveStereo(const float* __restrict interleaved, std::int64_t frames, float* __restrict left,
                        float* __restrict right) {
    for (std::int64_t i = 0; i < frames; ++i) {
        left[i] = interleaved[2 * i];
        right[i] = interleaved[2 * i + 1];
    }
}

void interleaveStereo(const float* __restrict left, const float* __restrict right, std::int64_t frames,
                      float* __restrict interleaved) {
    for (std::int64_t i = 0; i < frames; ++i) {
        interleaved[2 * i] = left[i];
        interleaved[2 * i + 1] = right[i];
    }
}

}  // namespace

void deinterleave(const float* interleaved, unsigned channels, std::int64_t frames, float* const* planes) {
    switch (channels) {
        case 1:
            return deinterleaveFixed<1>(interleaved, frames, planes);
        case 2:
            return deinterleaveStereo(interleaved, frames, planes[0], planes[1]);
        case 6:
            return deinterleaveFixed<6>(interleaved, frames, planes);
        case 16:
            return deinterleaveFixed<16>(interleaved, frames, planes);
        default:
            for (std::int64_t i = 0; i < frames; ++i)
                for (unsigned c = 0; c < channels; ++c) planes[c][i] = interleaved[i * channels + c];
    }
}

void interleave(const float* const* planes, unsigned channels, std::int64_t frames, float* interleaved) {
    switch (channels) {
        case 1:
            return interleaveFixed<1>(planes, frames, interleaved);
        case 2:
            return interleaveStereo(planes[0], planes[1], frames, interleaved);
        case 6:
            return interleaveFixed<6>(planes, frames, interleaved);
        case 16:
            return interleaveFixed<16>(planes, frames, interleaved);
        default:
            for (std::int64_t i = 0; i < frames; ++i)
                for (unsigned c = 0; c < channels; ++c) interleaved[i * channels + c] = planes[c][i];
    }
}

}  // namespace afx
