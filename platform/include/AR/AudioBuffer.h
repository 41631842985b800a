#pragma once
#include "PlatformExport.h"

namespace AR {

// The host's multi-channel float buffer: one array of frames per channel.
// An owning buffer allocates its channels with Init; the views below
// (AudioBufferShell, AudioBufferChannel) wrap memory that belongs to others.
// Every sample operation works over the frames and channels both buffers have
// and changes nothing when the frame count is 0 or less.
class PLATFORM_API AudioBuffer {
public:
    // `alignment`: byte alignment of every channel array (rounded up to a power
    // of two, at least that of a float). `zeroOnInit`: Init leaves the samples 0.
    AudioBuffer(int alignment, bool zeroOnInit) noexcept;
    virtual ~AudioBuffer();
    AudioBuffer(const AudioBuffer&) = delete;
    AudioBuffer& operator=(const AudioBuffer&) = delete;

    // Allocates `channels` arrays of `frames` floats (negative counts count as 0).
    // On failure answers false and keeps the previous channels and contents.
    bool Init(int channels, int frames) noexcept;
    void Zero() noexcept;
    // this[c][i] += source[c][i]
    void Mix(const AudioBuffer& source) noexcept;
    // this[c][i] *= gain
    AudioBuffer& operator*=(float gain) noexcept;
    // this[c][i] = source[c][i] * gain
    void CopyFromScale(const AudioBuffer& source, float gain) noexcept;

    float* GetChannel(int channel) noexcept;  // null for a channel it does not have
    const float* GetChannel(int channel) const noexcept;
    int GetChannelCount() const noexcept { return channelCount_; }
    int GetFrameCount() const noexcept { return frameCount_; }

protected:
    struct View {};
    explicit AudioBuffer(View) noexcept;  // for the non-owning views
    float** channels_ = nullptr;
    int channelCount_ = 0;
    int frameCount_ = 0;

private:
    void release() noexcept;
    int alignment_ = 16;
    bool zeroOnInit_ = true;
    bool owning_ = true;
    void* storage_ = nullptr;
};

// Wraps a host's array of channel pointers for one call; never copies samples
// and keeps nothing after the caller's arrays go away.
class PLATFORM_API AudioBufferShell : public AudioBuffer {
public:
    AudioBufferShell() noexcept;
    ~AudioBufferShell() override;
    // Makes room for `channels` channel pointers (all null until Assign).
    bool Init(int channels) noexcept;
    // Points the shell's channels at `channels[0..count-1]` with `frames` frames.
    // A null array leaves the shell empty.
    void Assign(float** channels, int frames) noexcept;
};

// A single-channel view of one channel of another buffer.
class PLATFORM_API AudioBufferChannel : public AudioBuffer {
public:
    AudioBufferChannel() noexcept;
    ~AudioBufferChannel() override;
    // Views channel `channel` of `buffer`; an absent channel gives an empty view.
    void Assign(AudioBuffer& buffer, int channel) noexcept;

private:
    float* channel_ = nullptr;
};

}  // namespace AR
