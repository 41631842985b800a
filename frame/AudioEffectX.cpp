#include "AudioEffectX.h"

#include <cstdlib>
#include <cstring>

#include "Numeric.h"
#include "Opcodes.h"

const char* const hostCanDos[14] = {
    "sendVstEvents",       "sendVstMidiEvent",        "sendVstTimeInfo", "receiveVstEvents",
    "receiveVstMidiEvent", "reportConnectionChanges", "acceptIOChanges", "sizeWindow",
    "offline",             "openFileSelector",        "closeFileSelector", "startStopProcess",
    "shellCategory",       "sendVstMidiEventFlagIsRealtime",
};

const char* const plugCanDos[8] = {
    "sendVstEvents", "sendVstMidiEvent", "receiveVstEvents", "receiveVstMidiEvent",
    "receiveVstTimeInfo", "offline", "midiProgramNames", "bypass",
};

namespace {

constexpr VstInt32 kVstVersion = 2300;
constexpr std::size_t kArrangementHeaderBytes = 8;
constexpr std::size_t kSpeakerBytes = sizeof(VstSpeakerProperties);

VstIntPtr asBool(bool answer) { return answer ? 1 : 0; }

// Speaker i of an arrangement, which is allocated for its own count of speakers.
VstSpeakerProperties* speakerAt(VstSpeakerArrangement* arrangement, VstInt32 i) {
    return reinterpret_cast<VstSpeakerProperties*>(reinterpret_cast<char*>(arrangement) + kArrangementHeaderBytes +
                                                   kSpeakerBytes * static_cast<std::size_t>(i));
}

}  // namespace

AudioEffectX::AudioEffectX(audioMasterCallback audioMaster, VstInt32 numPrograms, VstInt32 numParams)
    : AudioEffect(audioMaster, numPrograms, numParams) {}

AudioEffectX::~AudioEffectX() = default;

VstIntPtr AudioEffectX::callHost(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt) {
    return audioMaster != nullptr ? audioMaster(&cEffect, opcode, index, value, ptr, opt) : 0;
}

// ---- Dispatcher of the extended interface (opcodes 25 to 76) -----------------

VstIntPtr AudioEffectX::dispatcher(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt) {
    auto* text = static_cast<char*>(ptr);
    switch (opcode) {
        case effProcessEvents: return processEvents(static_cast<VstEvents*>(ptr));
        case effCanBeAutomated: return asBool(canParameterBeAutomated(index));
        case effString2Parameter: return asBool(string2parameter(index, text));
        case effGetNumProgramCategories: return getNumCategories();
        case effGetProgramNameIndexed: return asBool(getProgramNameIndexed(static_cast<VstInt32>(value), index, text));
        case effCopyProgram: return asBool(copyProgram(index));
        case effConnectInput: inputConnected(index, value != 0); return 1;
        case effConnectOutput: outputConnected(index, value != 0); return 1;
        case effGetInputProperties: return asBool(getInputProperties(index, static_cast<VstPinProperties*>(ptr)));
        case effGetOutputProperties: return asBool(getOutputProperties(index, static_cast<VstPinProperties*>(ptr)));
        case effGetPlugCategory: return getPlugCategory();
        case effGetCurrentPosition: return reportCurrentPosition();
        case effGetDestinationBuffer: return reinterpret_cast<VstIntPtr>(reportDestinationBuffer());
        case effOfflineNotify:
            return asBool(offlineNotify(static_cast<VstAudioFile*>(ptr), static_cast<VstInt32>(value), index != 0));
        case effOfflinePrepare:
            return asBool(offlinePrepare(static_cast<VstOfflineTask*>(ptr), static_cast<VstInt32>(value)));
        case effOfflineRun: return asBool(offlineRun(static_cast<VstOfflineTask*>(ptr), static_cast<VstInt32>(value)));
        case effProcessVarIo: return asBool(processVariableIo(static_cast<VstVariableIo*>(ptr)));
        case effSetSpeakerArrangement:
            return asBool(setSpeakerArrangement(reinterpret_cast<VstSpeakerArrangement*>(value),
                                                static_cast<VstSpeakerArrangement*>(ptr)));
        case effSetBlockSizeAndSampleRate: setBlockSizeAndSampleRate(static_cast<VstInt32>(value), opt); return 1;
        case effSetBypass: return asBool(setBypass(value != 0));
        case effGetEffectName: return asBool(getEffectName(text));
        case effGetErrorText: return asBool(getErrorText(text));
        case effGetVendorString: return asBool(getVendorString(text));
        case effGetProductString: return asBool(getProductString(text));
        case effGetVendorVersion: return getVendorVersion();
        case effVendorSpecific: return vendorSpecific(index, value, ptr, opt);
        case effCanDo: return canDo(text);
        case effGetTailSize: return getGetTailSize();
        case effIdle: return fxIdle();
        case effGetIcon: return reinterpret_cast<VstIntPtr>(getIcon());
        case effSetViewPosition: return asBool(setViewPosition(index, static_cast<VstInt32>(value)));
        case effGetParameterProperties:
            return asBool(getParameterProperties(index, static_cast<VstParameterProperties*>(ptr)));
        case effKeysRequired: return keysRequired() ? 0 : 1;  // inverted on purpose: 1 means "no keys needed"
        case effGetVstVersion: return getVstVersion();
        case effEditKeyDown:
        case effEditKeyUp: {
            if (editor == nullptr) return 0;
            VstKeyCode key{};
            key.character = index;
            key.virt = static_cast<unsigned char>(value);
            key.modifier = static_cast<unsigned char>(AF::truncateToInt32(opt));
            return asBool(opcode == effEditKeyDown ? editor->onKeyDown(key) : editor->onKeyUp(key));
        }
        case effSetEditKnobMode:
            return editor != nullptr ? asBool(editor->setKnobMode(static_cast<VstInt32>(value))) : 0;
        case effGetMidiProgramName: return getMidiProgramName(index, static_cast<MidiProgramName*>(ptr));
        case effGetCurrentMidiProgram: return getCurrentMidiProgram(index, static_cast<MidiProgramName*>(ptr));
        case effGetMidiProgramCategory: return getMidiProgramCategory(index, static_cast<MidiProgramCategory*>(ptr));
        case effHasMidiProgramsChanged: return asBool(hasMidiProgramsChanged(index));
        case effGetMidiKeyName: return asBool(getMidiKeyName(index, static_cast<MidiKeyName*>(ptr)));
        case effBeginSetProgram: return asBool(beginSetProgram());
        case effEndSetProgram: return asBool(endSetProgram());
        case effGetSpeakerArrangement:
            return asBool(getSpeakerArrangement(reinterpret_cast<VstSpeakerArrangement**>(value),
                                                static_cast<VstSpeakerArrangement**>(ptr)));
        case effShellGetNextPlugin: return getNextShellPlugin(text);
        case effStartProcess: return startProcess();
        case effStopProcess: return stopProcess();
        case effSetTotalSampleToProcess: return setTotalSampleToProcess(static_cast<VstInt32>(value));
        case effSetPanLaw: return asBool(setPanLaw(static_cast<VstInt32>(value), opt));
        case effBeginLoadBank: return beginLoadBank(static_cast<VstPatchChunkInfo*>(ptr));
        case effBeginLoadProgram: return beginLoadProgram(static_cast<VstPatchChunkInfo*>(ptr));
        default: return AudioEffect::dispatcher(opcode, index, value, ptr, opt);
    }
}

// An effect that takes MIDI (or a synth) asks the host for events when it resumes.
void AudioEffectX::resume() {
    if ((cEffect.flags & effFlagsIsSynth) == 0) {
        char capability[] = "receiveVstMidiEvent";
        if (canDo(capability) != 1) return;
    }
    wantEvents(1);
}

// ---- Host wrappers -------------------------------------------------------------

bool AudioEffectX::beginEdit(VstInt32 index) { return callHost(audioMasterBeginEdit, index) != 0; }
bool AudioEffectX::endEdit(VstInt32 index) { return callHost(audioMasterEndEdit, index) != 0; }
bool AudioEffectX::ioChanged() { return callHost(audioMasterIOChanged) != 0; }

double AudioEffectX::updateSampleRate() {
    const VstIntPtr answer = callHost(audioMasterGetSampleRate);
    if (answer > 0) sampleRate = static_cast<float>(answer);
    return sampleRate;
}

VstInt32 AudioEffectX::updateBlockSize() {
    const VstIntPtr answer = callHost(audioMasterGetBlockSize);
    if (answer > 0) blockSize = static_cast<VstInt32>(answer);
    return blockSize;
}

VstInt32 AudioEffectX::getInputLatency() { return static_cast<VstInt32>(callHost(audioMasterGetInputLatency)); }
VstInt32 AudioEffectX::getOutputLatency() { return static_cast<VstInt32>(callHost(audioMasterGetOutputLatency)); }

bool AudioEffectX::getSpeakerArrangement(VstSpeakerArrangement** pluginInput, VstSpeakerArrangement** pluginOutput) {
    if (pluginInput != nullptr) *pluginInput = nullptr;
    if (pluginOutput != nullptr) *pluginOutput = nullptr;
    return false;
}

VstTimeInfo* AudioEffectX::getTimeInfo(VstInt32 filter) {
    return reinterpret_cast<VstTimeInfo*>(callHost(audioMasterGetTime, 0, filter));
}

VstInt32 AudioEffectX::getCurrentProcessLevel() {
    return static_cast<VstInt32>(callHost(audioMasterGetCurrentProcessLevel));
}
VstInt32 AudioEffectX::getAutomationState() { return static_cast<VstInt32>(callHost(audioMasterGetAutomationState)); }
bool AudioEffectX::getHostVendorString(char* text) { return callHost(audioMasterGetVendorString, 0, 0, text) != 0; }
bool AudioEffectX::getHostProductString(char* text) { return callHost(audioMasterGetProductString, 0, 0, text) != 0; }
VstInt32 AudioEffectX::getHostVendorVersion() { return static_cast<VstInt32>(callHost(audioMasterGetVendorVersion)); }

VstIntPtr AudioEffectX::hostVendorSpecific(VstInt32 lArg1, VstIntPtr lArg2, void* ptrArg, float floatArg) {
    return callHost(audioMasterVendorSpecific, lArg1, lArg2, ptrArg, floatArg);
}

VstInt32 AudioEffectX::canHostDo(char* text) { return static_cast<VstInt32>(callHost(audioMasterCanDo, 0, 0, text)); }
VstInt32 AudioEffectX::getHostLanguage() { return static_cast<VstInt32>(callHost(audioMasterGetLanguage)); }
void AudioEffectX::isSynth(bool state) { setFlag(effFlagsIsSynth, state); }
void AudioEffectX::noTail(bool state) { setFlag(effFlagsNoSoundInStop, state); }
void* AudioEffectX::getDirectory() { return reinterpret_cast<void*>(callHost(audioMasterGetDirectory)); }
VstInt32 AudioEffectX::getPlugCategory() { return (cEffect.flags & effFlagsIsSynth) != 0 ? 2 : 0; }
bool AudioEffectX::updateDisplay() { return callHost(audioMasterUpdateDisplay) != 0; }
bool AudioEffectX::sizeWindow(VstInt32 width, VstInt32 height) {
    return callHost(audioMasterSizeWindow, width, height) != 0;
}

bool AudioEffectX::openFileSelector(VstFileSelect* fileSelect) {
    return fileSelect != nullptr && callHost(audioMasterOpenFileSelector, 0, 0, fileSelect) != 0;
}

bool AudioEffectX::closeFileSelector(VstFileSelect* fileSelect) {
    return fileSelect != nullptr && callHost(audioMasterCloseFileSelector, 0, 0, fileSelect) != 0;
}

// The host reads the read-source flag from `index` and the option from `value`.
bool AudioEffectX::offlineRead(VstOfflineTask* offline, VstInt32 option, bool readSource) {
    return callHost(audioMasterOfflineRead, readSource ? 1 : 0, option, offline) != 0;
}

bool AudioEffectX::offlineWrite(VstOfflineTask* offline, VstInt32 option) {
    return callHost(audioMasterOfflineWrite, 0, option, offline) != 0;
}

bool AudioEffectX::offlineStart(VstAudioFile* ptr, VstInt32 numAudioFiles, VstInt32 numNewAudioFiles) {
    return callHost(audioMasterOfflineStart, numNewAudioFiles, numAudioFiles, ptr) != 0;
}

VstInt32 AudioEffectX::offlineGetCurrentPass() {
    return static_cast<VstInt32>(callHost(audioMasterOfflineGetCurrentPass));
}
VstInt32 AudioEffectX::offlineGetCurrentMetaPass() {
    return static_cast<VstInt32>(callHost(audioMasterOfflineGetCurrentMetaPass));
}
void AudioEffectX::wantEvents(VstInt32 filter) { callHost(audioMasterWantMidi, 0, filter); }
VstInt32 AudioEffectX::tempoAt(VstInt32 pos) { return static_cast<VstInt32>(callHost(audioMasterTempoAt, 0, pos)); }
VstInt32 AudioEffectX::getNumAutomatableParameters() {
    return static_cast<VstInt32>(callHost(audioMasterGetNumAutomatableParameters));
}
VstInt32 AudioEffectX::getParameterQuantization() {
    return static_cast<VstInt32>(callHost(audioMasterGetParameterQuantization));
}
bool AudioEffectX::needIdle() { return callHost(audioMasterNeedIdle) != 0; }
AEffect* AudioEffectX::getPreviousPlug(VstInt32 input) {
    return reinterpret_cast<AEffect*>(callHost(audioMasterGetPreviousPlug, input));
}
AEffect* AudioEffectX::getNextPlug(VstInt32 output) {
    return reinterpret_cast<AEffect*>(callHost(audioMasterGetNextPlug, output));
}
VstInt32 AudioEffectX::willProcessReplacing() {
    return static_cast<VstInt32>(callHost(audioMasterWillReplaceOrAccumulate));
}
void AudioEffectX::wantAsyncOperation(bool state) { setFlag(effFlagsExtIsAsync, state); }
void AudioEffectX::hasExternalBuffer(bool state) { setFlag(effFlagsExtHasBuffer, state); }
void AudioEffectX::setOutputSamplerate(float samplerate) {
    callHost(audioMasterSetOutputSampleRate, 0, 0, nullptr, samplerate);
}

VstSpeakerArrangement* AudioEffectX::getInputSpeakerArrangement() {
    return reinterpret_cast<VstSpeakerArrangement*>(callHost(audioMasterGetInputSpeakerArrangement));
}

VstSpeakerArrangement* AudioEffectX::getOutputSpeakerArrangement() {
    return reinterpret_cast<VstSpeakerArrangement*>(callHost(audioMasterGetOutputSpeakerArrangement));
}

void* AudioEffectX::openWindow(void* window) {
    return reinterpret_cast<void*>(callHost(audioMasterOpenWindow, 0, 0, window));
}
bool AudioEffectX::closeWindow(void* window) { return callHost(audioMasterCloseWindow, 0, 0, window) != 0; }

bool AudioEffectX::getChunkFile(void* nativePath) {
    return nativePath != nullptr && callHost(audioMasterGetChunkFile, 0, 0, nativePath) != 0;
}

bool AudioEffectX::sendVstEventsToHost(VstEvents* events) {
    return callHost(audioMasterProcessEvents, 0, 0, events) == 1;
}

// ---- Speaker arrangements --------------------------------------------------------

bool AudioEffectX::allocateArrangement(VstSpeakerArrangement** arrangement, VstInt32 numChannels) {
    if (arrangement == nullptr) return false;
    if (*arrangement != nullptr) {
        std::free(*arrangement);
        *arrangement = nullptr;
    }
    // A count below 1 gets the header alone.
    const std::size_t speakers = numChannels > 0 ? static_cast<std::size_t>(numChannels) : 0;
    void* block = std::calloc(1, kArrangementHeaderBytes + kSpeakerBytes * speakers);
    if (block == nullptr) return false;
    auto* allocated = static_cast<VstSpeakerArrangement*>(block);
    allocated->numChannels = numChannels;
    *arrangement = allocated;
    return true;
}

bool AudioEffectX::deallocateArrangement(VstSpeakerArrangement** arrangement) {
    if (arrangement != nullptr && *arrangement != nullptr) {
        std::free(*arrangement);
        *arrangement = nullptr;
    }
    return true;
}

bool AudioEffectX::copySpeaker(VstSpeakerProperties* to, VstSpeakerProperties* from) {
    if (to == nullptr || from == nullptr) return false;
    to->azimuth = from->azimuth;
    to->elevation = from->elevation;
    to->radius = from->radius;
    to->reserved = from->reserved;
    std::strncpy(to->name, from->name, sizeof(to->name) - 1);
    to->name[sizeof(to->name) - 1] = 0;
    to->type = from->type;
    std::memcpy(to->future, from->future, sizeof(to->future));
    return true;
}

bool AudioEffectX::matchArrangement(VstSpeakerArrangement** to, VstSpeakerArrangement* from) {
    if (from == nullptr || to == nullptr) return false;
    if (!deallocateArrangement(to) || !allocateArrangement(to, from->numChannels)) return false;
    (*to)->type = from->type;
    for (VstInt32 i = 0; i < from->numChannels; ++i)
        if (!copySpeaker(speakerAt(*to, i), speakerAt(from, i))) return false;
    return true;
}
