#pragma once
// Test-only effects for the validator's own tests: one that behaves, and one
// per fault the validator must catch. Each is a complete effect on the frame,
// made through an afv::EffectMaker exactly as a module's factory would be.
#include <atomic>
#include <cstdint>
#include <cstring>
#include <new>
#include <vector>

#include "AudioEffectX.h"
#include "Validator.h"

namespace afvtest {

// A stereo one-pole smoother with a gain parameter; it keeps its state out of
// the subnormal range with a tiny offset, reads each input before writing the
// output and never allocates while processing.
class CleanFake : public AudioEffectX {
public:
    explicit CleanFake(audioMasterCallback master) : AudioEffectX(master, 1, 1) {
        setNumInputs(2);
        setNumOutputs(2);
        canProcessReplacing(true);
    }
    void setParameter(VstInt32 index, float value) override {
        if (index == 0) gain_ = value;
    }
    float getParameter(VstInt32 index) override { return index == 0 ? gain_ : 0.0f; }
    void getParameterName(VstInt32 index, char* text) override {
        if (index == 0) vst_strncpy(text, "Gain", 63);
    }
    void getParameterLabel(VstInt32 index, char* text) override {
        if (index == 0) vst_strncpy(text, "x", 63);
    }
    void getParameterDisplay(VstInt32 index, char* text) override {
        if (index == 0) float2string(gain_, text, 8);
    }
    void suspend() override { state_[0] = state_[1] = 0.0f; }
    void processReplacing(float** inputs, float** outputs, VstInt32 frames) override {
        run(inputs, outputs, frames, false);
    }
    void process(float** inputs, float** outputs, VstInt32 frames) override { run(inputs, outputs, frames, true); }

protected:
    // Kept out of the subnormal range by the offset, as a recursive filter must be.
    virtual float offset() const { return 1e-20f; }
    void run(float** inputs, float** outputs, VstInt32 frames, bool accumulate) {
        const float gain = (gain_ >= 0.0f && gain_ <= 1.0f) ? gain_ : 0.5f;
        for (int c = 0; c < 2; ++c) {
            for (VstInt32 i = 0; i < frames; ++i) {
                const float in = inputs[c][i];
                state_[c] = 0.9f * state_[c] + 0.1f * in + offset();
                const float out = state_[c] * gain + extra();
                outputs[c][i] = accumulate ? outputs[c][i] + out : out;
            }
        }
    }
    virtual float extra() { return 0.0f; }
    float gain_ = 0.5f;
    float state_[2] = {0.0f, 0.0f};
};

// Allocates a scratch vector on every processing call.
class AllocatingFake final : public CleanFake {
public:
    using CleanFake::CleanFake;
    static inline float* volatile escaped = nullptr;
    void processReplacing(float** inputs, float** outputs, VstInt32 frames) override {
        std::vector<float> scratch(static_cast<std::size_t>(frames > 0 ? frames : 1));
        scratch[0] = 1.0f;
        // The address escapes, so no optimiser may drop the allocation as unused.
        escaped = scratch.data();
        run(inputs, outputs, frames, false);
    }
};

// Allocates in setParameter.
class AllocatingSetterFake final : public CleanFake {
public:
    using CleanFake::CleanFake;
    void setParameter(VstInt32 index, float value) override {
        history_.push_back(value);
        CleanFake::setParameter(index, value);
    }

private:
    std::vector<float> history_;
};

// Writes an 80-character name where the host gave 64 bytes.
class OverlongNameFake final : public CleanFake {
public:
    using CleanFake::CleanFake;
    void getParameterName(VstInt32 index, char* text) override {
        if (index != 0) return;
        std::memset(text, 'N', 79);
        text[79] = '\0';
    }
};

// No anti-denormal offset: after silence the state decays to the smallest
// subnormal and stays there (0.9 times it rounds back to it).
class SubnormalFake final : public CleanFake {
public:
    using CleanFake::CleanFake;

protected:
    float offset() const override { return 0.0f; }
};

// Output depends on a count shared by every instance in the process.
class NondeterministicFake final : public CleanFake {
public:
    using CleanFake::CleanFake;

protected:
    float extra() override { return static_cast<float>(counter().fetch_add(1) % 7) * 1e-3f; }
    static std::atomic<std::uint32_t>& counter() {
        static std::atomic<std::uint32_t> calls{0};
        return calls;
    }
};

// Doubles its state every sample: finite input gives infinite output.
class DivergingFake final : public CleanFake {
public:
    using CleanFake::CleanFake;
    void processReplacing(float** inputs, float** outputs, VstInt32 frames) override {
        for (int c = 0; c < 2; ++c) {
            for (VstInt32 i = 0; i < frames; ++i) {
                state_[c] = 2.0f * state_[c] + inputs[c][i];
                outputs[c][i] = state_[c];
            }
        }
    }
};

// Burns about fifty times the work per sample when its input is silent.
class SlowSilenceFake final : public CleanFake {
public:
    using CleanFake::CleanFake;
    void processReplacing(float** inputs, float** outputs, VstInt32 frames) override {
        bool silent = true;
        for (int c = 0; c < 2 && silent; ++c) {
            for (VstInt32 i = 0; i < frames; ++i) silent = silent && inputs[c][i] == 0.0f;
        }
        const int rounds = silent ? 50 : 1;
        for (int round = 0; round < rounds; ++round) burn(inputs, frames);
        run(inputs, outputs, frames, false);
    }

private:
    void burn(float** inputs, VstInt32 frames) {
        for (int c = 0; c < 2; ++c) {
            for (VstInt32 i = 0; i < frames; ++i) sink_ = sink_ * 0.5f + inputs[c][i];
        }
    }
    volatile float sink_ = 0.0f;
};

// Thirteen parameters laid out as the multitap's (feedbacks at 1, 4, 7 and
// 10); diverges when those sum above 1, or always when `kAlways`.
template <bool kAlways>
class MultitapLikeFake final : public CleanFake {
public:
    explicit MultitapLikeFake(audioMasterCallback master) : CleanFake(master) {
        cEffect.numParams = 13;
        numParams = 13;
    }
    void setParameter(VstInt32 index, float value) override {
        if (index >= 0 && index < 13) values_[index] = value;
    }
    float getParameter(VstInt32 index) override { return index >= 0 && index < 13 ? values_[index] : 0.0f; }
    void processReplacing(float** inputs, float** outputs, VstInt32 frames) override {
        const double feedbackSum = static_cast<double>(values_[1]) + values_[4] + values_[7] + values_[10];
        if (!kAlways && !(feedbackSum > 1.0)) {
            run(inputs, outputs, frames, false);
            return;
        }
        for (int c = 0; c < 2; ++c) {
            for (VstInt32 i = 0; i < frames; ++i) {
                state_[c] = 2.0f * state_[c] + inputs[c][i];
                outputs[c][i] = state_[c];
            }
        }
    }

private:
    float values_[13] = {};
};

// Sizes a buffer from the sample rate with an absurd factor: gigabytes.
class GreedyFake final : public CleanFake {
public:
    using CleanFake::CleanFake;
    ~GreedyFake() override { delete[] line_; }
    void setSampleRate(float rate) override {
        CleanFake::setSampleRate(rate);
        delete[] line_;
        line_ = nullptr;
        if (rate > 0.0f && rate < 1e6f) line_ = new (std::nothrow) char[static_cast<std::size_t>(rate) * 100000u];
    }

private:
    char* line_ = nullptr;
};

// Dereferences null when asked for 17 frames.
class CrashingFake final : public CleanFake {
public:
    using CleanFake::CleanFake;
    void processReplacing(float** inputs, float** outputs, VstInt32 frames) override {
        if (frames == 17) {
            volatile int* nowhere = nullptr;
            *nowhere = 1;
        }
        run(inputs, outputs, frames, false);
    }
};

template <class Fake>
afv::EffectMaker makerFor(const char* name) {
    afv::EffectMaker maker;
    maker.identifier = name;
    maker.make = [](audioMasterCallback master, ML::VSTPropertySupportMixin** properties) -> AEffect* {
        *properties = nullptr;
        return (new Fake(master))->getAeffect();
    };
    return maker;
}

}  // namespace afvtest
