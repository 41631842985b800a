#include "AR/AudioBuffer.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

#include "dsp/simd/BufferLoops.h"
#include "dsp/simd/VectorPath.h"

namespace AR {

namespace {

int roundUpToPowerOfTwo(int alignment) {
    int rounded = static_cast<int>(alignof(float));
    while (rounded < alignment && rounded < (1 << 16)) rounded <<= 1;
    return rounded;
}

// Frames of a channel's array rounded up so that every channel starts aligned.
std::size_t paddedFrames(std::size_t frames, std::size_t alignment) {
    const std::size_t perAlignment = alignment / sizeof(float);
    return perAlignment <= 1 ? frames : (frames + perAlignment - 1) / perAlignment * perAlignment;
}

}  // namespace

AudioBuffer::AudioBuffer(int alignment, bool zeroOnInit) noexcept
    : alignment_(roundUpToPowerOfTwo(alignment)), zeroOnInit_(zeroOnInit), owning_(true) {}

AudioBuffer::AudioBuffer(View) noexcept : owning_(false) {}

AudioBuffer::~AudioBuffer() { release(); }

void AudioBuffer::release() noexcept {
    if (owning_) {
        std::free(storage_);
        delete[] channels_;
    }
    storage_ = nullptr;
    channels_ = nullptr;
    channelCount_ = 0;
    frameCount_ = 0;
}

bool AudioBuffer::Init(int channels, int frames) noexcept {
    if (!owning_) return false;
    const std::size_t channelCount = channels > 0 ? static_cast<std::size_t>(channels) : 0;
    const std::size_t frameCount = frames > 0 ? static_cast<std::size_t>(frames) : 0;
    const std::size_t alignment = static_cast<std::size_t>(alignment_);
    const std::size_t stride = paddedFrames(frameCount, alignment);
    const std::size_t maxFloats = std::numeric_limits<std::size_t>::max() / sizeof(float) / 2;
    if (channelCount != 0 && stride > maxFloats / channelCount) return false;
    const std::size_t bytes = std::max<std::size_t>(channelCount * stride * sizeof(float), alignment);

    void* storage = std::aligned_alloc(alignment, (bytes + alignment - 1) / alignment * alignment);
    float** pointers = new (std::nothrow) float*[std::max<std::size_t>(channelCount, 1)];
    if (storage == nullptr || pointers == nullptr) {
        std::free(storage);
        delete[] pointers;
        return false;
    }
    if (zeroOnInit_) std::memset(storage, 0, bytes);
    for (std::size_t c = 0; c < channelCount; ++c) pointers[c] = static_cast<float*>(storage) + c * stride;

    release();
    storage_ = storage;
    channels_ = pointers;
    channelCount_ = static_cast<int>(channelCount);
    frameCount_ = static_cast<int>(frameCount);
    return true;
}

void AudioBuffer::Zero() noexcept {
    if (frameCount_ <= 0) return;
    for (int c = 0; c < channelCount_; ++c)
        if (channels_[c] != nullptr) std::memset(channels_[c], 0, static_cast<std::size_t>(frameCount_) * sizeof(float));
}

void AudioBuffer::Mix(const AudioBuffer& source) noexcept {
    const int channels = std::min(channelCount_, source.channelCount_);
    const int frames = std::min(frameCount_, source.frameCount_);
    if (frames <= 0) return;
    for (int c = 0; c < channels; ++c) {
        float* out = channels_[c];
        const float* in = source.channels_[c];
        if (out == nullptr || in == nullptr) continue;
        AF::loops::mix(AF::vectorPath(), out, in, frames);
    }
}

AudioBuffer& AudioBuffer::operator*=(float gain) noexcept {
    if (frameCount_ <= 0) return *this;
    for (int c = 0; c < channelCount_; ++c) {
        float* samples = channels_[c];
        if (samples == nullptr) continue;
        AF::loops::scaleCopy(AF::vectorPath(), samples, samples, frameCount_, gain);
    }
    return *this;
}

void AudioBuffer::CopyFromScale(const AudioBuffer& source, float gain) noexcept {
    const int channels = std::min(channelCount_, source.channelCount_);
    const int frames = std::min(frameCount_, source.frameCount_);
    if (frames <= 0) return;
    for (int c = 0; c < channels; ++c) {
        float* out = channels_[c];
        const float* in = source.channels_[c];
        if (out == nullptr || in == nullptr) continue;
        AF::loops::scaleCopy(AF::vectorPath(), out, in, frames, gain);
    }
}

float* AudioBuffer::GetChannel(int channel) noexcept {
    return channel >= 0 && channel < channelCount_ ? channels_[channel] : nullptr;
}

const float* AudioBuffer::GetChannel(int channel) const noexcept {
    return channel >= 0 && channel < channelCount_ ? channels_[channel] : nullptr;
}

AudioBufferShell::AudioBufferShell() noexcept : AudioBuffer(View{}) {}

AudioBufferShell::~AudioBufferShell() {
    delete[] channels_;
    channels_ = nullptr;
}

bool AudioBufferShell::Init(int channels) noexcept {
    const int count = channels > 0 ? channels : 0;
    float** pointers = new (std::nothrow) float*[static_cast<std::size_t>(std::max(count, 1))]();
    if (pointers == nullptr) return false;
    delete[] channels_;
    channels_ = pointers;
    channelCount_ = count;
    frameCount_ = 0;
    return true;
}

void AudioBufferShell::Assign(float** channels, int frames) noexcept {
    if (channels_ == nullptr) return;
    if (channels == nullptr) {
        for (int c = 0; c < channelCount_; ++c) channels_[c] = nullptr;
        frameCount_ = 0;
        return;
    }
    for (int c = 0; c < channelCount_; ++c) channels_[c] = channels[c];
    frameCount_ = frames;
}

AudioBufferChannel::AudioBufferChannel() noexcept : AudioBuffer(View{}) {
    channels_ = &channel_;
    channelCount_ = 1;
}

AudioBufferChannel::~AudioBufferChannel() { channels_ = nullptr; }

void AudioBufferChannel::Assign(AudioBuffer& buffer, int channel) noexcept {
    channel_ = buffer.GetChannel(channel);
    frameCount_ = channel_ != nullptr ? buffer.GetFrameCount() : 0;
}

}  // namespace AR
