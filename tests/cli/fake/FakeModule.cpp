// A stand-in module for afx's tests: it registers three small effects with the
// platform registry from its own AF::Startup, so afx can be exercised whatever
// the real module provides. Built as libafx_fake_module.so beside afx.
//
//   "Test Gain Stereo"  one parameter "Gain": output = input x 2p, with the
//                       property interface (display value = 2p, 0..2)
//   "Test Slow Mono"    passes audio through and sleeps 20 ms per call, so a
//                       render of a few seconds takes long enough to interrupt;
//                       one parameter "Pause" and no property interface
//   "Test Broken Mono"  registered, but its factory makes nothing
//   "Test Calls Stereo" writes the calls it gets into its output: on the left
//                       the call's number (from 0), on the right its frame
//                       count, so the host's block sequence can be read back
#include <chrono>
#include <new>
#include <thread>

#include "AudioEffectX.h"
#include "Export.h"
#include "ML/VSTAudioFilterRegistry.h"
#include "ML/VSTPropertySupportMixin.h"
#include "Ordo/MakeStdString.h"

namespace {

class TestGain final : public AudioEffectX, public ML::VSTPropertySupportMixin {
public:
    explicit TestGain(audioMasterCallback master) : AudioEffectX(master, 1, 1) {
        cEffect.numInputs = 2;
        cEffect.numOutputs = 2;
        cEffect.uniqueID = fourCharCode("TGn2");
        canProcessReplacing(true);
    }
    void processReplacing(float** inputs, float** outputs, VstInt32 frames) override {
        const float gain = gain_ + gain_;
        for (int c = 0; c < 2; ++c)
            for (VstInt32 i = 0; i < frames; ++i) outputs[c][i] = inputs[c][i] * gain;
    }
    void setParameter(VstInt32 index, float value) override {
        if (index == 0) gain_ = value;
    }
    float getParameter(VstInt32 index) override { return index == 0 ? gain_ : 0.0f; }
    void getParameterName(VstInt32 index, char* text) override {
        if (index == 0) vst_strncpy(text, "Gain", 16);
    }
    void getParameterLabel(VstInt32 index, char* text) override {
        if (index == 0) vst_strncpy(text, "x", 16);
    }
    void getParameterDisplay(VstInt32 index, char* text) override {
        if (index == 0) float2string(gain_ + gain_, text, 8);
    }
    void getProgramName(char* name) override { vst_strncpy(name, "Default", 16); }

    ParameterType GetParameterType(unsigned index) override { return index == 0 ? kNumber : kNotAParameter; }
    float GetParameterMax(unsigned index) const override { return index == 0 ? 2.0f : 0.0f; }
    float GetParameterMin(unsigned) const override { return 0.0f; }
    float GetParameterStep(unsigned index) const override { return index == 0 ? 0.01f : 0.0f; }
    bool SupportsDisplayValueToParameter(unsigned index) const override { return index == 0; }
    float ConvertDisplayValueToParameter(unsigned index, float value) const override {
        return index == 0 ? value * 0.5f : 0.0f;
    }
    float ConvertParameterValueToDisplay(unsigned index, float value) const override {
        return index == 0 ? value + value : 0.0f;
    }
    bool HasHistory() override { return false; }

private:
    float gain_ = 0.5f;
};

class TestSlow final : public AudioEffectX {
public:
    explicit TestSlow(audioMasterCallback master) : AudioEffectX(master, 0, 1) {
        cEffect.numInputs = 1;
        cEffect.numOutputs = 1;
        canProcessReplacing(true);
    }
    void processReplacing(float** inputs, float** outputs, VstInt32 frames) override {
        for (VstInt32 i = 0; i < frames; ++i) outputs[0][i] = inputs[0][i];
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    void getParameterName(VstInt32 index, char* text) override {
        if (index == 0) vst_strncpy(text, "Pause", 16);
    }
};

class TestCalls final : public AudioEffectX {
public:
    explicit TestCalls(audioMasterCallback master) : AudioEffectX(master, 0, 0) {
        cEffect.numInputs = 2;
        cEffect.numOutputs = 2;
        canProcessReplacing(true);
    }
    void processReplacing(float**, float** outputs, VstInt32 frames) override {
        const auto call = static_cast<float>(calls_++);
        const auto count = static_cast<float>(frames);
        for (VstInt32 i = 0; i < frames; ++i) {
            outputs[0][i] = call;
            outputs[1][i] = count;
        }
    }

private:
    int calls_ = 0;
};

AudioEffect* createTestEffect(const Ordo::ImmutableString& id, audioMasterCallback master,
                              ML::VSTPropertySupportMixin** properties) {
    AudioEffect* effect = nullptr;
    if (id == Ordo::ImmutableString::CreateStatic("Test Gain Stereo")) effect = new (std::nothrow) TestGain(master);
    if (id == Ordo::ImmutableString::CreateStatic("Test Slow Mono")) effect = new (std::nothrow) TestSlow(master);
    if (id == Ordo::ImmutableString::CreateStatic("Test Calls Stereo")) effect = new (std::nothrow) TestCalls(master);
    if (properties != nullptr) *properties = dynamic_cast<ML::VSTPropertySupportMixin*>(effect);
    return effect;
}

}  // namespace

namespace AF {

AF_EXPORT void Startup() {
    using Registry = ML::VSTAudioFilterRegistry;
    Registry::RegisterVSTPlugin(Ordo::ImmutableString::CreateStatic("Test Gain Stereo"),
                                Ordo::MakeWideString("Test Gain"), 0x208, createTestEffect);
    Registry::RegisterVSTPlugin(Ordo::ImmutableString::CreateStatic("Test Slow Mono"),
                                Ordo::MakeWideString("Test Slow"), 0x104, createTestEffect);
    Registry::RegisterVSTPlugin(Ordo::ImmutableString::CreateStatic("Test Broken Mono"),
                                Ordo::MakeWideString("Test Broken"), 0x104, createTestEffect);
    Registry::RegisterVSTPlugin(Ordo::ImmutableString::CreateStatic("Test Calls Stereo"),
                                Ordo::MakeWideString("Test Calls"), 0x208, createTestEffect);
}

AF_EXPORT void Shutdown() {}

}  // namespace AF
