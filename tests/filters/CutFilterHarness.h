#pragma once
// Test helpers for the high-pass, low-pass, band-pass and notch: the sixteen
// channel variants as a type list, a counting host callback, channel buffers
// and a channel-tagged test signal.
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "CutFilterReference.h"
#include "Opcodes.h"
#include "effects/filters/CutFilters.h"
#include "effects/variants/NamedVariants.h"
#include "support/Bits.h"

namespace cuttest {

using cutref::Kind;

template <class Effect, Kind K, unsigned C>
struct Variant {
    using Type = Effect;
    static constexpr Kind kind = K;
    static constexpr unsigned channels = C;
};

using AllVariants = ::testing::Types<
    Variant<AF::AudioHighpass1, Kind::Highpass, 1>, Variant<AF::AudioHighpass2, Kind::Highpass, 2>,
    Variant<AF::AudioHighpass6, Kind::Highpass, 6>, Variant<AF::AudioHighpass16, Kind::Highpass, 16>,
    Variant<AF::AudioLowpass1, Kind::Lowpass, 1>, Variant<AF::AudioLowpass2, Kind::Lowpass, 2>,
    Variant<AF::AudioLowpass6, Kind::Lowpass, 6>, Variant<AF::AudioLowpass16, Kind::Lowpass, 16>,
    Variant<AF::AudioBandpass1, Kind::Bandpass, 1>, Variant<AF::AudioBandpass2, Kind::Bandpass, 2>,
    Variant<AF::AudioBandpass6, Kind::Bandpass, 6>, Variant<AF::AudioBandpass16, Kind::Bandpass, 16>,
    Variant<AF::AudioBandreject1, Kind::Notch, 1>, Variant<AF::AudioBandreject2, Kind::Notch, 2>,
    Variant<AF::AudioBandreject6, Kind::Notch, 6>, Variant<AF::AudioBandreject16, Kind::Notch, 16>>;

class VariantNames {
public:
    template <class T>
    static std::string GetName(int) {
        const char* family = T::kind == Kind::Highpass  ? "Highpass"
                             : T::kind == Kind::Lowpass ? "Lowpass"
                             : T::kind == Kind::Bandpass ? "Bandpass"
                                                         : "Bandreject";
        return std::string(family) + std::to_string(T::channels);
    }
};

// Counts what the effect asks of its host, by opcode.
struct HostLog {
    std::array<int, 64> calls{};
};
inline HostLog gHostLog;
inline VstIntPtr countingHost(AEffect*, VstInt32 opcode, VstInt32, VstIntPtr, void*, float) {
    if (opcode >= 0 && opcode < 64) ++gHostLog.calls[static_cast<std::size_t>(opcode)];
    return 0;
}

// The host's view: every call goes through the plug-in record.
struct Record {
    AEffect* e;
    void processReplacing(float** in, float** out, VstInt32 n) { e->processReplacing(e, in, out, n); }
    void process(float** in, float** out, VstInt32 n) { e->process(e, in, out, n); }
    void setParameter(VstInt32 i, float v) { e->setParameter(e, i, v); }
    float getParameter(VstInt32 i) { return e->getParameter(e, i); }
    void setSampleRate(float rate) { e->dispatcher(e, effSetSampleRate, 0, 0, nullptr, rate); }
    void suspend() { e->dispatcher(e, effMainsChanged, 0, 0, nullptr, 0.0f); }
    void resume() { e->dispatcher(e, effMainsChanged, 0, 1, nullptr, 0.0f); }
    void setProgram(VstIntPtr p) { e->dispatcher(e, effSetProgram, 0, p, nullptr, 0.0f); }
    VstIntPtr getProgram() { return e->dispatcher(e, effGetProgram, 0, 0, nullptr, 0.0f); }
    // Name (8), label (6), display (7) or program name (5) into a buffer of
    // 'x' characters, so a call that writes nothing is visible.
    std::string text(VstInt32 opcode, VstInt32 index) {
        char buffer[64];
        std::memset(buffer, 'x', sizeof buffer);
        buffer[63] = 0;
        e->dispatcher(e, opcode, index, 0, buffer, 0.0f);
        return buffer;
    }
    std::string name(VstInt32 i) { return text(8, i); }
    std::string label(VstInt32 i) { return text(6, i); }
    std::string display(VstInt32 i) { return text(7, i); }
    void close() { e->dispatcher(e, effClose, 0, 0, nullptr, 0.0f); }
};

struct Buffers {
    std::vector<std::vector<float>> data;
    std::vector<float*> pointers;
    Buffers(unsigned channels, std::size_t frames, float fill = 0.0f)
        : data(channels, std::vector<float>(frames, fill)) {
        for (auto& channel : data) pointers.push_back(channel.data());
    }
    float** at(std::size_t offset) {
        shifted.clear();
        for (auto& channel : data) shifted.push_back(channel.data() + offset);
        return shifted.data();
    }
    float** get() { return pointers.data(); }

private:
    std::vector<float*> shifted;
};

// A deterministic signal, different in every channel: a channel-tagged sine,
// a little noise from a fixed-seed generator and a DC step per channel, so a
// crossed channel gives a different result.
inline Buffers taggedSignal(unsigned channels, std::size_t frames, std::uint32_t seed = 12345u) {
    Buffers b(channels, frames);
    std::uint32_t state = seed;
    for (unsigned c = 0; c < channels; ++c)
        for (std::size_t i = 0; i < frames; ++i) {
            state = state * 1664525u + 1013904223u;
            const double noise = (static_cast<double>(state >> 8) / 16777216.0 - 0.5) * 0.2;
            const double sine = 0.6 * std::sin(0.021 * static_cast<double>(i + 1) * (c + 1) + c);
            b.data[c][i] = static_cast<float>(sine + noise + 0.01 * (c + 1));
        }
    return b;
}

using aftest::bits;
// Exact comparison by bit pattern (so -0 and +0 differ, as the offset rule
// makes them); any NaN matches any NaN.
inline bool sameFloat(float a, float b) { return (std::isnan(a) && std::isnan(b)) || bits(a) == bits(b); }

}  // namespace cuttest
