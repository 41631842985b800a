#pragma once
// The extended (2.3) effect interface: opcodes 25 to 76, capabilities, speaker
// arrangements and the wrappers of the host's extended callback opcodes. Every
// host wrapper answers 0 (false, null) when no callback is set.
#include "AudioEffect.h"

// Capability vocabularies, in the interface's order.
AF_EXPORT extern const char* const hostCanDos[14];
AF_EXPORT extern const char* const plugCanDos[8];

class AF_EXPORT AudioEffectX : public AudioEffect {
public:
    AudioEffectX(audioMasterCallback audioMaster, VstInt32 numPrograms, VstInt32 numParams);
    ~AudioEffectX() override;

    VstIntPtr dispatcher(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt) override;
    void resume() override;

    virtual bool canParameterBeAutomated(VstInt32 index) { (void)index; return true; }                 // 48
    virtual bool string2parameter(VstInt32 index, char* text) { (void)index; (void)text; return false; }  // 49
    virtual bool getParameterProperties(VstInt32 index, VstParameterProperties* p) { (void)index; (void)p; return false; }  // 50
    virtual bool beginEdit(VstInt32 index);                                                           // 51
    virtual bool endEdit(VstInt32 index);                                                             // 52
    virtual bool getProgramNameIndexed(VstInt32 category, VstInt32 index, char* text) { (void)category; (void)index; (void)text; return false; }  // 53
    virtual bool beginSetProgram() { return false; }                                                  // 54
    virtual bool endSetProgram() { return false; }                                                    // 55
    virtual VstInt32 beginLoadBank(VstPatchChunkInfo* ptr) { (void)ptr; return 0; }                  // 56
    virtual VstInt32 beginLoadProgram(VstPatchChunkInfo* ptr) { (void)ptr; return 0; }               // 57
    virtual bool ioChanged();                                                                         // 58
    virtual double updateSampleRate();                                                                // 59
    virtual VstInt32 updateBlockSize();                                                               // 60
    virtual VstInt32 getInputLatency();                                                               // 61
    virtual VstInt32 getOutputLatency();                                                              // 62
    virtual bool getInputProperties(VstInt32 index, VstPinProperties* properties) { (void)index; (void)properties; return false; }   // 63
    virtual bool getOutputProperties(VstInt32 index, VstPinProperties* properties) { (void)index; (void)properties; return false; }  // 64
    virtual bool setSpeakerArrangement(VstSpeakerArrangement* pluginInput, VstSpeakerArrangement* pluginOutput) { (void)pluginInput; (void)pluginOutput; return false; }  // 65
    virtual bool getSpeakerArrangement(VstSpeakerArrangement** pluginInput, VstSpeakerArrangement** pluginOutput);  // 66
    virtual bool setBypass(bool onOff) { (void)onOff; return false; }                                 // 67
    virtual bool setPanLaw(VstInt32 type, float val) { (void)type; (void)val; return false; }         // 68
    virtual VstTimeInfo* getTimeInfo(VstInt32 filter);                                                // 69
    virtual VstInt32 getCurrentProcessLevel();                                                        // 70
    virtual VstInt32 getAutomationState();                                                            // 71
    virtual VstInt32 processEvents(VstEvents* events) { (void)events; return 0; }                     // 72
    virtual VstInt32 startProcess() { return 0; }                                                     // 73
    virtual VstInt32 stopProcess() { return 0; }                                                      // 74
    virtual bool processVariableIo(VstVariableIo* varIo) { (void)varIo; return false; }               // 75
    virtual VstInt32 setTotalSampleToProcess(VstInt32 value) { return value; }                        // 76
    virtual bool getHostVendorString(char* text);                                                     // 77
    virtual bool getHostProductString(char* text);                                                    // 78
    virtual VstInt32 getHostVendorVersion();                                                          // 79
    virtual VstIntPtr hostVendorSpecific(VstInt32 lArg1, VstIntPtr lArg2, void* ptrArg, float floatArg);  // 80
    virtual VstInt32 canHostDo(char* text);                                                           // 81
    virtual VstInt32 getHostLanguage();                                                               // 82
    virtual void isSynth(bool state = true);                                                          // 83
    virtual void noTail(bool state = true);                                                           // 84
    virtual VstInt32 getGetTailSize() { return 0; }                                                   // 85
    virtual void* getDirectory();                                                                     // 86
    virtual bool getEffectName(char* name) { (void)name; return false; }                              // 87
    virtual bool getVendorString(char* text) { (void)text; return false; }                            // 88
    virtual bool getProductString(char* text) { (void)text; return false; }                           // 89
    virtual VstInt32 getVendorVersion() { return 0; }                                                 // 90
    virtual VstIntPtr vendorSpecific(VstInt32 lArg, VstIntPtr lArg2, void* ptrArg, float floatArg) { (void)lArg; (void)lArg2; (void)ptrArg; (void)floatArg; return 0; }  // 91
    virtual VstInt32 canDo(char* text) { (void)text; return 0; }                                      // 92
    virtual VstInt32 getVstVersion() { return 2300; }                                                 // 93
    virtual VstInt32 getPlugCategory();                                                               // 94
    virtual VstInt32 getMidiProgramName(VstInt32 channel, MidiProgramName* midiProgramName) { (void)channel; (void)midiProgramName; return 0; }  // 95
    virtual VstInt32 getCurrentMidiProgram(VstInt32 channel, MidiProgramName* currentProgram) { (void)channel; (void)currentProgram; return -1; }  // 96
    virtual VstInt32 getMidiProgramCategory(VstInt32 channel, MidiProgramCategory* category) { (void)channel; (void)category; return 0; }  // 97
    virtual bool hasMidiProgramsChanged(VstInt32 channel) { (void)channel; return false; }            // 98
    virtual bool getMidiKeyName(VstInt32 channel, MidiKeyName* keyName) { (void)channel; (void)keyName; return false; }  // 99
    virtual bool updateDisplay();                                                                     // 100
    virtual bool sizeWindow(VstInt32 width, VstInt32 height);                                         // 101
    virtual bool openFileSelector(VstFileSelect* fileSelect);                                         // 102
    virtual bool closeFileSelector(VstFileSelect* fileSelect);                                        // 103
    virtual VstInt32 getNextShellPlugin(char* name) { (void)name; return 0; }                         // 104
    virtual bool allocateArrangement(VstSpeakerArrangement** arrangement, VstInt32 numChannels);     // 105
    virtual bool deallocateArrangement(VstSpeakerArrangement** arrangement);                         // 106
    virtual bool copySpeaker(VstSpeakerProperties* to, VstSpeakerProperties* from);                   // 107
    virtual bool matchArrangement(VstSpeakerArrangement** to, VstSpeakerArrangement* from);          // 108
    virtual bool offlineRead(VstOfflineTask* offline, VstInt32 option, bool readSource = true);       // 109
    virtual bool offlineWrite(VstOfflineTask* offline, VstInt32 option);                              // 110
    virtual bool offlineStart(VstAudioFile* ptr, VstInt32 numAudioFiles, VstInt32 numNewAudioFiles);  // 111
    virtual VstInt32 offlineGetCurrentPass();                                                         // 112
    virtual VstInt32 offlineGetCurrentMetaPass();                                                     // 113
    virtual bool offlineNotify(VstAudioFile* ptr, VstInt32 numAudioFiles, bool start) { (void)ptr; (void)numAudioFiles; (void)start; return false; }  // 114
    virtual bool offlinePrepare(VstOfflineTask* offline, VstInt32 count) { (void)offline; (void)count; return false; }  // 115
    virtual bool offlineRun(VstOfflineTask* offline, VstInt32 count) { (void)offline; (void)count; return false; }      // 116
    virtual VstInt32 reserved1() { return 0; }                                                        // 117
    virtual VstInt32 reserved2() { return 0; }                                                        // 118
    virtual void wantEvents(VstInt32 filter = 1);                                                     // 119
    virtual VstInt32 tempoAt(VstInt32 pos);                                                           // 120
    virtual VstInt32 getNumAutomatableParameters();                                                   // 121
    virtual VstInt32 getParameterQuantization();                                                      // 122
    virtual VstInt32 getNumCategories() { return 1; }                                                 // 123
    virtual bool copyProgram(VstInt32 destination) { (void)destination; return false; }               // 124
    virtual bool needIdle();                                                                          // 125
    virtual AEffect* getPreviousPlug(VstInt32 input);                                                 // 126
    virtual AEffect* getNextPlug(VstInt32 output);                                                    // 127
    virtual void inputConnected(VstInt32 index, bool state) { (void)index; (void)state; }             // 128
    virtual void outputConnected(VstInt32 index, bool state) { (void)index; (void)state; }            // 129
    virtual VstInt32 willProcessReplacing();                                                          // 130
    virtual void wantAsyncOperation(bool state = true);                                               // 131
    virtual void hasExternalBuffer(bool state = true);                                                // 132
    virtual VstInt32 reportCurrentPosition() { return 0; }                                            // 133
    virtual float* reportDestinationBuffer() { return nullptr; }                                      // 134
    virtual void setOutputSamplerate(float samplerate);                                               // 135
    virtual VstSpeakerArrangement* getInputSpeakerArrangement();                                     // 136
    virtual VstSpeakerArrangement* getOutputSpeakerArrangement();                                    // 137
    virtual void* openWindow(void* window);                                                           // 138
    virtual bool closeWindow(void* window);                                                           // 139
    virtual void setBlockSizeAndSampleRate(VstInt32 newBlockSize, float newSampleRate) { blockSize = newBlockSize; sampleRate = newSampleRate; }  // 140
    virtual bool getErrorText(char* text) { (void)text; return false; }                               // 141
    virtual void* getIcon() { return nullptr; }                                                       // 142
    virtual bool setViewPosition(VstInt32 x, VstInt32 y) { (void)x; (void)y; return false; }          // 143
    virtual VstInt32 fxIdle() { return 0; }                                                           // 144
    virtual bool keysRequired() { return false; }                                                     // 145
    virtual bool getChunkFile(void* nativePath);                                                      // 146

    bool sendVstEventsToHost(VstEvents* events);

protected:
    // One call of the host callback with this effect's record; 0 without a callback.
    VstIntPtr callHost(VstInt32 opcode, VstInt32 index = 0, VstIntPtr value = 0, void* ptr = nullptr,
                       float opt = 0.0f);
};
