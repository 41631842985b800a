#pragma once
// What the single-tap and the four-tap delay share: the anti-denormal noise
// table, the circular line with its spare frame, and the position arithmetic.
//
// Positions are unsigned 32-bit and wrap by compare-and-reset after their
// increment. A position can sit at or past the end of the line for a while (a
// reset from a delay time longer than the line, or a read position computed
// from a delay over 2 s); such a position touches the spare frame at index L,
// so no sample outside the line is ever read or written.
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "AR/AudioBuffer.h"
#include "frame/Numeric.h"

namespace AF::delay {

// 1e-25 as a float, and its negative.
inline constexpr float kNoise = std::bit_cast<float>(std::uint32_t{0x15F79688u});
inline constexpr float kNegativeNoise = std::bit_cast<float>(std::uint32_t{0x95F79688u});

// Added to every sample fed into a line so that a recirculating tail never
// decays into the subnormal range; its sign alternates in this fixed pattern.
inline constexpr std::array<float, 8> kDenormalNoise = {kNoise,          kNegativeNoise, kNoise, kNegativeNoise,
                                                        kNegativeNoise, kNoise,         kNoise, kNegativeNoise};

// The entry for frame `frame` of a call of `frames` frames: the index counts
// down within the call, so the last frame of every call uses entry 0.
inline float denormalNoise(std::int32_t frames, std::int32_t frame) noexcept {
    const auto countdown = static_cast<std::uint32_t>(frames - 1 - frame);
    return kDenormalNoise[countdown & 7u];
}

// Where a position lands in a line of `length` frames: itself inside the
// line, the spare frame at or past its end.
inline std::uint32_t slotOf(std::uint32_t position, std::uint32_t length) noexcept {
    return position < length ? position : length;
}

// One circular line of float samples per channel, plus one spare frame at
// index L that absorbs out-of-range positions (a write there is kept, a read
// returns it, clearing zeroes it). All channels share the positions; each
// channel's line is one host array, so consecutive frames of a channel lie
// side by side and one vector load or store reaches several of them.
class DelayLine {
public:
    DelayLine() noexcept : buffer_(16, true) {}

    // Sizes the line to `length` frames (0 when the length is 0 or less) for
    // `channels` channels, zeroed. When memory is short, or the frames do not
    // fit the host buffer's 32-bit count, it answers false and keeps the
    // previous line, contents and length.
    bool resize(int channels, std::int32_t length) noexcept {
        if (channels <= 0 || channels > kMaxChannels) return false;
        const std::int32_t frames = length > 0 ? length : 0;
        if (frames == INT32_MAX) return false;
        if (!buffer_.Init(channels, frames + 1)) return false;
        for (int c = 0; c < channels; ++c) channels_[static_cast<std::size_t>(c)] = buffer_.GetChannel(c);
        length_ = static_cast<std::uint32_t>(frames);
        channelCount_ = channels;
        return true;
    }

    void clear() noexcept { buffer_.Zero(); }

    // L: the number of frames of the line proper, without the spare frame.
    std::uint32_t length() const noexcept { return length_; }
    int channelCount() const noexcept { return channelCount_; }

    // Channel c's L + 1 samples (c below the channel count).
    float* channel(unsigned c) const noexcept { return channels_[c]; }

    // Where a position lands in the storage: itself inside the line, the
    // spare frame at or past its end.
    std::uint32_t slot(std::uint32_t position) const noexcept { return slotOf(position, length_); }

private:
    static constexpr int kMaxChannels = 16;

    AR::AudioBuffer buffer_;
    // The host buffer's arrays, looked up once per size rather than per sample.
    std::array<float*, kMaxChannels> channels_{};
    std::uint32_t length_ = 0;
    int channelCount_ = 0;
};

// A delay time in frames: trunc(rate x seconds), product in double,
// saturated to signed 32 bits.
inline std::int32_t delayFrames(float sampleRate, float seconds) noexcept {
    return truncateToInt32(static_cast<double>(sampleRate) * static_cast<double>(seconds));
}

// The same product as an unsigned position (a negative product gives 0).
inline std::uint32_t framePosition(float sampleRate, float seconds) noexcept {
    return truncateToUInt32(static_cast<double>(sampleRate) * static_cast<double>(seconds));
}

// Two line lengths: twice the rate, and one frame more than that.
inline std::int32_t twiceRateFrames(float sampleRate) noexcept {
    return truncateToInt32(2.0 * static_cast<double>(sampleRate));
}
inline std::int32_t twiceRatePlusOneFrames(float sampleRate) noexcept {
    return truncateToInt32(2.0 * static_cast<double>(sampleRate) + 1.0);
}

// `frames` behind `position`, modulo 2^32; when the difference is negative as
// a signed value, one line length is added. A delay longer than the line stays
// out of range after that one addition; the slot above keeps it harmless.
inline std::uint32_t positionBehind(std::uint32_t position, std::int32_t frames, std::uint32_t length) noexcept {
    std::uint32_t behind = position - static_cast<std::uint32_t>(frames);
    if (static_cast<std::int32_t>(behind) < 0) behind += length;
    return behind;
}

// One line length before the start of the line: L - D, modulo 2^32, no wrap.
inline std::uint32_t positionFromEnd(std::int32_t frames, std::uint32_t length) noexcept {
    return length - static_cast<std::uint32_t>(frames);
}

// One frame on, back to 0 at the end of the line.
inline void advance(std::uint32_t& position, std::uint32_t length) noexcept {
    ++position;
    if (position >= length) position = 0;
}

// The host's channel arrays are usable for `channels` channels.
inline bool channelsPresent(float* const* arrays, unsigned channels) noexcept {
    if (arrays == nullptr) return false;
    for (unsigned c = 0; c < channels; ++c)
        if (arrays[c] == nullptr) return false;
    return true;
}

}  // namespace AF::delay
