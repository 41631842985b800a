#pragma once
// The base effect: owns the plug-in record, fills it in its constructor and
// turns every call through the record into a virtual call on itself.
//
// Text buffers: every operation that writes text into a caller's buffer trusts
// the caller to pass one large enough (the host's contract: names, labels and
// displays fit in 64 bytes; the string tools write at most maxLen + 1 bytes).
// A null text pointer makes such an operation write nothing.
#include "AEffEditor.h"
#include "AEffect.h"
#include "Export.h"

class AF_EXPORT AudioEffect {
public:
    AudioEffect(audioMasterCallback audioMaster, VstInt32 numPrograms, VstInt32 numParams);
    virtual ~AudioEffect();                                                                      // slot 0

    virtual VstIntPtr dispatcher(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt);  // 1
    virtual void open() {}                                                                       // 2
    virtual void close() {}                                                                      // 3
    virtual void suspend() {}                                                                    // 4
    virtual void resume() {}                                                                     // 5
    virtual void setSampleRate(float newSampleRate) { sampleRate = newSampleRate; }              // 6
    virtual void setBlockSize(VstInt32 newBlockSize) { blockSize = newBlockSize; }               // 7
    virtual void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) = 0;   // 8
    virtual void setParameter(VstInt32 index, float value) { (void)index; (void)value; }         // 9
    virtual float getParameter(VstInt32 index) { (void)index; return 0.0f; }                     // 10
    virtual void setParameterAutomated(VstInt32 index, float value);                             // 11
    virtual VstInt32 getProgram() { return curProgram; }                                         // 12
    virtual void setProgram(VstInt32 program) { curProgram = program; }                          // 13
    virtual void setProgramName(char* name) { (void)name; }                                      // 14
    virtual void getProgramName(char* name);                                                     // 15
    virtual void getParameterLabel(VstInt32 index, char* label);                                 // 16
    virtual void getParameterDisplay(VstInt32 index, char* text);                                // 17
    virtual void getParameterName(VstInt32 index, char* text);                                   // 18
    virtual VstInt32 getChunk(void** data, bool isPreset = false);                               // 19
    virtual VstInt32 setChunk(void* data, VstInt32 byteSize, bool isPreset = false);             // 20
    virtual void setUniqueID(VstInt32 iD) { cEffect.uniqueID = iD; }                             // 21
    virtual void setNumInputs(VstInt32 inputs) { cEffect.numInputs = inputs; }                   // 22
    virtual void setNumOutputs(VstInt32 outputs) { cEffect.numOutputs = outputs; }               // 23
    virtual void canProcessReplacing(bool state = true);                                         // 24
    virtual void programsAreChunks(bool state = true);                                           // 25
    virtual void setInitialDelay(VstInt32 delay) { cEffect.initialDelay = delay; }               // 26
    virtual AEffEditor* getEditor() { return editor; }                                           // 27
    virtual AEffect* getAeffect() { return &cEffect; }                                           // 28
    virtual float getSampleRate() { return sampleRate; }                                         // 29
    virtual VstInt32 getBlockSize() { return blockSize; }                                        // 30
    virtual VstInt32 getMasterVersion();                                                         // 31
    virtual VstInt32 getCurrentUniqueId();                                                       // 32
    virtual void masterIdle();                                                                   // 33
    virtual bool isInputConnected(VstInt32 input);                                               // 34
    virtual bool isOutputConnected(VstInt32 output);                                             // 35
    virtual void dB2string(float value, char* text, VstInt32 maxLen);                            // 36
    virtual void Hz2string(float samples, char* text, VstInt32 maxLen);                          // 37
    virtual void ms2string(float samples, char* text, VstInt32 maxLen);                          // 38
    virtual void float2string(float value, char* text, VstInt32 maxLen);                         // 39
    virtual void int2string(VstInt32 value, char* text, VstInt32 maxLen);                        // 40
    virtual void process(float** inputs, float** outputs, VstInt32 sampleFrames);                // 41
    virtual float getVu() { return 0.0f; }                                                       // 42
    virtual void hasVu(bool state = true);                                                       // 43
    virtual void hasClip(bool state = true);                                                     // 44
    virtual void canMono(bool state = true);                                                     // 45
    virtual void setRealtimeQualities(VstInt32 qualities) { cEffect.realQualities = qualities; } // 46
    virtual void setOfflineQualities(VstInt32 qualities) { cEffect.offQualities = qualities; }   // 47

    void setEditor(AEffEditor* newEditor);

    AudioEffect(const AudioEffect&) = delete;
    AudioEffect& operator=(const AudioEffect&) = delete;

protected:
    // The record's entry points: each reads `object` from the record and forwards.
    static VstIntPtr dispatchEffectClass(AEffect* e, VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr,
                                         float opt);
    static void processClass(AEffect* e, float** inputs, float** outputs, VstInt32 sampleFrames);
    static void setParameterClass(AEffect* e, VstInt32 index, float value);
    static float getParameterClass(AEffect* e, VstInt32 index);
    static void processClassReplacing(AEffect* e, float** inputs, float** outputs, VstInt32 sampleFrames);

    void setFlag(VstInt32 flag, bool state);

    audioMasterCallback audioMaster;
    AEffEditor* editor;
    float sampleRate;
    VstInt32 blockSize;
    VstInt32 numPrograms;
    VstInt32 numParams;
    VstInt32 curProgram;
    AEffect cEffect;
};

// Bounded copy and append: at most maxLen characters, then a zero always
// written at dst[maxLen] (so dst must hold maxLen + 1 bytes). A null dst or src
// writes nothing.
AF_EXPORT char* vst_strncpy(char* dst, const char* src, VstInt32 maxLen);
AF_EXPORT char* vst_strncat(char* dst, const char* src, VstInt32 maxLen);
