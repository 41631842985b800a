#pragma once
// Samples between an interleaved chunk (frame after frame, the channels of a
// frame side by side, as files store them) and one array per channel (as the
// effects take them). Stereo, 5.1 and 16 channels have loops of their own, fixed
// in the channel count so the compiler can unroll and vectorise them.
#include <cstdint>

namespace afx {

// planes[c][i] = interleaved[i * channels + c] for i < frames.
void deinterleave(const float* interleaved, unsigned channels, std::int64_t frames, float* const* planes);

// interleaved[i * channels + c] = planes[c][i] for i < frames.
void interleave(const float* const* planes, unsigned channels, std::int64_t frames, float* interleaved);

}  // namespace afx
