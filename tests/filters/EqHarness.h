#pragma once
// Driving an equaliser the way a host does, through its AEffect record, with
// channel-tagged test signals, and comparing samples as bit patterns.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <vector>

#include "EqReference.h"
#include "Opcodes.h"
#include "effects/filters/ParametricEQ.h"
#include "effects/filters/Shelf.h"
#include "effects/variants/NamedVariants.h"

namespace eqtest {

using Channels = std::vector<std::vector<float>>;

// Exact equality of floats, told by their bit patterns (so -0 and +0 differ
// and a NaN equals any other NaN, as the reference outputs are compared).
inline bool sameSample(float a, float b) {
    if (std::isnan(a) && std::isnan(b)) return true;
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}

inline ::testing::AssertionResult sameChannels(const Channels& actual, const Channels& expected) {
    for (std::size_t c = 0; c < expected.size(); ++c)
        for (std::size_t i = 0; i < expected[c].size(); ++i)
            if (!sameSample(actual[c][i], expected[c][i]))
                return ::testing::AssertionFailure()
                       << "channel " << c << " frame " << i << ": " << actual[c][i] << " (0x" << std::hex
                       << std::bit_cast<std::uint32_t>(actual[c][i]) << ") expected " << expected[c][i] << " (0x"
                       << std::bit_cast<std::uint32_t>(expected[c][i]) << ")" << std::dec;
    return ::testing::AssertionSuccess();
}

// A deterministic signal whose value tells its channel and frame apart: a
// tagged ramp term (c + i * channels) plus a wideband part from a fixed-seed
// generator, so a crossed channel or a shifted frame fails loudly.
inline Channels taggedSignal(unsigned channels, int frames, std::uint32_t seed = 12345u) {
    Channels signal(channels, std::vector<float>(static_cast<std::size_t>(frames)));
    std::uint32_t state = seed;
    for (int i = 0; i < frames; ++i)
        for (unsigned c = 0; c < channels; ++c) {
            state = state * 1664525u + 1013904223u;
            const double noise = static_cast<double>(state >> 8) / 16777216.0 - 0.5;
            const double tag = static_cast<double>(c + static_cast<unsigned>(i) * channels) / 1024.0;
            signal[c][static_cast<std::size_t>(i)] = eqref::single(0.5 * noise + std::fmod(tag, 1.0));
        }
    return signal;
}

// What each variant is: its family for the reference, and its channel count.
template <class Effect>
constexpr eqref::Family familyOf() {
    if constexpr (std::is_base_of_v<AF::AudioParametricEQ, Effect>) return eqref::Family::parametricEq;
    else if constexpr (std::is_base_of_v<AF::AudioBass, Effect>) return eqref::Family::bass;
    else return eqref::Family::treble;
}

template <class Effect>
unsigned channelsOf();
#define EQ_CHANNELS(Suffix, N)                                                 \
    template <> inline unsigned channelsOf<AF::AudioParametricEQ##Suffix>() { return N; } \
    template <> inline unsigned channelsOf<AF::AudioBass##Suffix>() { return N; }         \
    template <> inline unsigned channelsOf<AF::AudioTreble##Suffix>() { return N; }
EQ_CHANNELS(1, 1)
EQ_CHANNELS(2, 2)
EQ_CHANNELS(4, 4)
EQ_CHANNELS(6, 6)
EQ_CHANNELS(16, 16)
#undef EQ_CHANNELS

// Every channel variant of the three families, the unregistered four-channel ones included.
using EqVariants =
    ::testing::Types<AF::AudioParametricEQ1, AF::AudioParametricEQ2, AF::AudioParametricEQ4, AF::AudioParametricEQ6,
                     AF::AudioParametricEQ16, AF::AudioBass1, AF::AudioBass2, AF::AudioBass4, AF::AudioBass6,
                     AF::AudioBass16, AF::AudioTreble1, AF::AudioTreble2, AF::AudioTreble4, AF::AudioTreble6,
                     AF::AudioTreble16>;

// Records what the effect tells the host (opcode 0: automate).
struct HostLog {
    std::vector<std::pair<int, float>> automated;
};
inline HostLog* gHostLog = nullptr;
inline VstIntPtr recordingHost(AEffect*, VstInt32 opcode, VstInt32 index, VstIntPtr, void*, float opt) {
    if (opcode == audioMasterAutomate && gHostLog != nullptr) gHostLog->automated.emplace_back(index, opt);
    return 0;
}

// An effect owned the host's way: destroyed by the close request.
class Rig {
public:
    explicit Rig(AudioEffect* effect) : effect_(effect), record_(effect->getAeffect()) {}
    ~Rig() { record_->dispatcher(record_, effClose, 0, 0, nullptr, 0.0f); }
    Rig(const Rig&) = delete;
    Rig& operator=(const Rig&) = delete;

    AEffect* record() const { return record_; }
    AudioEffect& effect() const { return *effect_; }
    ML::VSTPropertySupportMixin& properties() const {
        return *dynamic_cast<ML::VSTPropertySupportMixin*>(effect_);
    }

    void setSampleRate(float rate) { record_->dispatcher(record_, effSetSampleRate, 0, 0, nullptr, rate); }
    void suspend() { record_->dispatcher(record_, effMainsChanged, 0, 0, nullptr, 0.0f); }
    void resume() { record_->dispatcher(record_, effMainsChanged, 0, 1, nullptr, 0.0f); }
    void setProgram(VstIntPtr program) { record_->dispatcher(record_, effSetProgram, 0, program, nullptr, 0.0f); }
    void setParameter(int index, float value) { record_->setParameter(record_, index, value); }
    float getParameter(int index) { return record_->getParameter(record_, index); }
    std::string display(int index) { return text(7, index); }
    std::string name(int index) { return text(8, index); }
    std::string label(int index) { return text(6, index); }
    std::string text(VstInt32 opcode, int index) {
        char buffer[64] = "untouched";
        record_->dispatcher(record_, opcode, index, 0, buffer, 0.0f);
        return buffer;
    }

    // One call over frames [offset, offset + frames) of the given channels.
    void call(bool accumulate, Channels& in, Channels& out, int offset, int frames) {
        std::vector<float*> inputs, outputs;
        for (auto& channel : in) inputs.push_back(channel.data() + offset);
        for (auto& channel : out) outputs.push_back(channel.data() + offset);
        (accumulate ? record_->process : record_->processReplacing)(record_, inputs.data(), outputs.data(), frames);
    }

private:
    AudioEffect* effect_;
    AEffect* record_;
};

template <class Effect>
std::unique_ptr<Rig> makeRig(audioMasterCallback host = nullptr) {
    return std::make_unique<Rig>(new Effect(host));
}

}  // namespace eqtest
