#pragma once
// Shared helpers of the level and channel effect tests: host-style channel
// buffers with guard samples, channel-tagged signals, a recording host
// callback, and calls through the plug-in record only.
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "AEffect.h"
#include "Opcodes.h"
#include "plinth/config/Localizer.h"
#include "support/Bits.h"

namespace level_test {

// Exact float comparisons go through the bit pattern: a gain of 1 must leave
// every sample bit-identical, -0.0 must stay distinct from +0.0, and NaNs must
// compare equal to themselves.
using aftest::bits;

// The frame counts every processing test runs through: empty, single, short of
// one unrolled pass, one pass, one pass plus a remainder, and a host block.
inline constexpr std::array<int, 6> kFrameCounts{0, 1, 3, 4, 5, 1024};

// Input sample of channel c at frame i: distinct for every (c, i), both signs,
// with a non-trivial mantissa, so a crossed channel or frame shows at once.
inline float inputSample(unsigned channel, int frame) {
    const double magnitude = static_cast<double>(channel + 1) + static_cast<double>(frame) / 1024.0;
    const double sign = (frame % 2 == 0) ? 0.3125 : -0.375;
    return static_cast<float>(magnitude * sign);
}

// What a host's output buffer holds before a call: another channel-tagged
// signal, different from the input.
inline float outputSample(unsigned channel, int frame) {
    return static_cast<float>(-0.0625 * static_cast<double>(channel + 1) + static_cast<double>(frame) * 0.0078125);
}

// Written past the last frame of every channel; it must survive every call.
inline constexpr float kGuardSample = 12345.5f;
inline constexpr int kGuardFrames = 4;

// One host buffer set: `channels` arrays of `frames` samples plus guard
// samples, and the array of channel pointers the record's entry points take.
class ChannelBuffers {
public:
    ChannelBuffers(unsigned channels, int frames) : frames_(frames), samples_(channels), pointers_(channels) {
        for (unsigned c = 0; c < channels; ++c) {
            samples_[c].assign(static_cast<std::size_t>(frames + kGuardFrames), kGuardSample);
            pointers_[c] = samples_[c].data();
        }
    }

    void fill(const std::function<float(unsigned, int)>& signal) {
        for (unsigned c = 0; c < channels(); ++c)
            for (int i = 0; i < frames_; ++i) samples_[c][static_cast<std::size_t>(i)] = signal(c, i);
    }

    unsigned channels() const { return static_cast<unsigned>(samples_.size()); }
    int frames() const { return frames_; }
    float** pointers() { return pointers_.data(); }
    float at(unsigned channel, int frame) const { return samples_[channel][static_cast<std::size_t>(frame)]; }

    // Every sample equals expected(c, i) bit for bit, and no guard was touched.
    void expectSamples(const std::function<float(unsigned, int)>& expected, const std::string& what) const {
        for (unsigned c = 0; c < channels(); ++c) {
            for (int i = 0; i < frames_; ++i) {
                const float want = expected(c, i);
                ASSERT_EQ(bits(at(c, i)), bits(want))
                    << what << ": channel " << c << " frame " << i << " holds " << at(c, i) << ", expected " << want;
            }
            for (int g = 0; g < kGuardFrames; ++g)
                ASSERT_EQ(bits(at(c, frames_ + g)), bits(kGuardSample))
                    << what << ": guard " << g << " after channel " << c << " was written";
        }
    }

private:
    int frames_;
    std::vector<std::vector<float>> samples_;
    std::vector<float*> pointers_;
};

// A recording host: remembers every automate report (opcode 0).
struct AutomateReport {
    VstInt32 index;
    float value;
};

inline std::vector<AutomateReport>& automateReports() {
    static std::vector<AutomateReport> reports;
    return reports;
}

inline VstIntPtr recordingHost(AEffect*, VstInt32 opcode, VstInt32 index, VstIntPtr, void*, float opt) {
    if (opcode == audioMasterAutomate) automateReports().push_back({index, opt});
    return 0;
}

// Owns an effect the way a host does: through its record, closed with effClose.
class HostedEffect {
public:
    explicit HostedEffect(AEffect* record) : record_(record) {}
    ~HostedEffect() {
        if (record_ != nullptr) record_->dispatcher(record_, effClose, 0, 0, nullptr, 0.0f);
    }
    HostedEffect(const HostedEffect&) = delete;
    HostedEffect& operator=(const HostedEffect&) = delete;

    AEffect* operator->() const { return record_; }
    AEffect* record() const { return record_; }

    void processReplacing(ChannelBuffers& in, ChannelBuffers& out) {
        record_->processReplacing(record_, in.pointers(), out.pointers(), out.frames());
    }
    void processInPlace(ChannelBuffers& buffers) {
        record_->processReplacing(record_, buffers.pointers(), buffers.pointers(), buffers.frames());
    }
    void process(ChannelBuffers& in, ChannelBuffers& out) {
        record_->process(record_, in.pointers(), out.pointers(), out.frames());
    }
    void setParameter(VstInt32 index, float value) { record_->setParameter(record_, index, value); }
    float getParameter(VstInt32 index) { return record_->getParameter(record_, index); }
    VstIntPtr dispatch(VstInt32 opcode, VstInt32 index = 0, VstIntPtr value = 0, void* ptr = nullptr,
                       float opt = 0.0f) {
        return record_->dispatcher(record_, opcode, index, value, ptr, opt);
    }

private:
    AEffect* record_;
};

// A text request's answer, from a buffer pre-filled with a marker so that "the
// buffer is left untouched" can be told from "an empty string was written".
class TextAnswer {
public:
    TextAnswer(HostedEffect& effect, VstInt32 opcode, VstInt32 index) {
        buffer_.fill('#');
        buffer_.back() = 0;
        effect.dispatch(opcode, index, 0, buffer_.data());
    }
    bool untouched() const {
        for (std::size_t i = 0; i + 1 < buffer_.size(); ++i)
            if (buffer_[i] != '#') return false;
        return buffer_.back() == 0;
    }
    std::string text() const { return std::string(buffer_.data()); }

private:
    std::array<char, 128> buffer_{};
};

// Installs one translation in the host's localiser for the life of a test.
class ScopedTranslation {
public:
    ScopedTranslation(const char* key, const char16_t* text) {
        plinth::config::Localizer::Get().SetTranslation(key, plinth::WideString(text));
    }
    ~ScopedTranslation() { plinth::config::Localizer::Get().ClearTranslations(); }
    ScopedTranslation(const ScopedTranslation&) = delete;
    ScopedTranslation& operator=(const ScopedTranslation&) = delete;
};

}  // namespace level_test
