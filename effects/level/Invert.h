#pragma once
// Invert: flips the polarity of every channel (the LFE too). Parameterless.
// The four-channel class is built but no host identifier creates it.
#include "AudioEffectX.h"
#include "Export.h"

namespace AF {

class AF_EXPORT AudioInvert1 final : public AudioEffectX {
public:
    explicit AudioInvert1(audioMasterCallback audioMaster);
    void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    // Accumulating call: subtracts the input from what the output holds.
    void process(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    // The effect has no memory between buffers.
    virtual bool HasHistory();
};

class AF_EXPORT AudioInvert2 final : public AudioEffectX {
public:
    explicit AudioInvert2(audioMasterCallback audioMaster);
    void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    void process(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    virtual bool HasHistory();
};

class AF_EXPORT AudioInvert4 final : public AudioEffectX {
public:
    explicit AudioInvert4(audioMasterCallback audioMaster);
    void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    void process(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    virtual bool HasHistory();
};

class AF_EXPORT AudioInvert6 final : public AudioEffectX {
public:
    explicit AudioInvert6(audioMasterCallback audioMaster);
    void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    void process(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    virtual bool HasHistory();
};

class AF_EXPORT AudioInvert16 final : public AudioEffectX {
public:
    explicit AudioInvert16(audioMasterCallback audioMaster);
    void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    void process(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    virtual bool HasHistory();
};

}  // namespace AF
