#include "AudioEffectX.h"

#include <cstdlib>
#include <cstring>

#include "Numeric.h"

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
        case 25: return processEvents(static_cast<VstEvents*>(ptr));
        case 26: return asBool(canParameterBeAutomated(index));
        case 27: return asBool(string2parameter(index, text));
        case 28: return getNumCategories();
        case 29: return asBool(getProgramNameIndexed(static_cast<VstInt32>(value), index, text));
        case 30: return asBool(copyProgram(index));
        case 31: inputConnected(index, value != 0); return 1;
        case 32: outputConnected(index, value != 0); return 1;
        case 33: return asBool(getInputProperties(index, static_cast<VstPinProperties*>(ptr)));
        case 34: return asBool(getOutputProperties(index, static_cast<VstPinProperties*>(ptr)));
        case 35: return getPlugCategory();
        case 36: return reportCurrentPosition();
        case 37: return reinterpret_cast<VstIntPtr>(reportDestinationBuffer());
        case 38: return asBool(offlineNotify(static_cast<VstAudioFile*>(ptr), static_cast<VstInt32>(value), index != 0));
        case 39: return asBool(offlinePrepare(static_cast<VstOfflineTask*>(ptr), static_cast<VstInt32>(value)));
        case 40: return asBool(offlineRun(static_cast<VstOfflineTask*>(ptr), static_cast<VstInt32>(value)));
        case 41: return asBool(processVariableIo(static_cast<VstVariableIo*>(ptr)));
        case 42:
            return asBool(setSpeakerArrangement(reinterpret_cast<VstSpeakerArrangement*>(value),
                                                static_cast<VstSpeakerArrangement*>(ptr)));
        case 43: setBlockSizeAndSampleRate(static_cast<VstInt32>(value), opt); return 1;
        case 44: return asBool(setBypass(value != 0));
        case 45: return asBool(getEffectName(text));
        case 46: return asBool(getErrorText(text));
        case 47: return asBool(getVendorString(text));
        case 48: return asBool(getProductString(text));
        case 49: return getVendorVersion();
        case 50: return vendorSpecific(index, value, ptr, opt);
        case 51: return canDo(text);
        case 52: return getGetTailSize();
        case 53: return fxIdle();
        case 54: return reinterpret_cast<VstIntPtr>(getIcon());
        case 55: return asBool(setViewPosition(index, static_cast<VstInt32>(value)));
        case 56: return asBool(getParameterProperties(index, static_cast<VstParameterProperties*>(ptr)));
        case 57: return keysRequired() ? 0 : 1;  // inverted on purpose: 1 means "no keys needed"
        case 58: return getVstVersion();
        case 59:
        case 60: {
            if (editor == nullptr) return 0;
            VstKeyCode key{};
            key.character = index;
            key.virt = static_cast<unsigned char>(value);
            key.modifier = static_cast<unsigned char>(AF::truncateToInt32(opt));
            return asBool(opcode == 59 ? editor->onKeyDown(key) : editor->onKeyUp(key));
        }
        case 61: return editor != nullptr ? asBool(editor->setKnobMode(static_cast<VstInt32>(value))) : 0;
        case 62: return getMidiProgramName(index, static_cast<MidiProgramName*>(ptr));
        case 63: return getCurrentMidiProgram(index, static_cast<MidiProgramName*>(ptr));
        case 64: return getMidiProgramCategory(index, static_cast<MidiProgramCategory*>(ptr));
        case 65: return asBool(hasMidiProgramsChanged(index));
        case 66: return asBool(getMidiKeyName(index, static_cast<MidiKeyName*>(ptr)));
        case 67: return asBool(beginSetProgram());
        case 68: return asBool(endSetProgram());
        case 69:
            return asBool(getSpeakerArrangement(reinterpret_cast<VstSpeakerArrangement**>(value),
                                                static_cast<VstSpeakerArrangement**>(ptr)));
        case 70: return getNextShellPlugin(text);
        case 71: return startProcess();
        case 72: return stopProcess();
        case 73: return setTotalSampleToProcess(static_cast<VstInt32>(value));
        case 74: return asBool(setPanLaw(static_cast<VstInt32>(value), opt));
        case 75: return beginLoadBank(static_cast<VstPatchChunkInfo*>(ptr));
        case 76: return beginLoadProgram(static_cast<VstPatchChunkInfo*>(ptr));
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

bool AudioEffectX::beginEdit(VstInt32 index) { return callHost(43, index) != 0; }
bool AudioEffectX::endEdit(VstInt32 index) { return callHost(44, index) != 0; }
bool AudioEffectX::ioChanged() { return callHost(13) != 0; }

double AudioEffectX::updateSampleRate() {
    const VstIntPtr answer = callHost(16);
    if (answer > 0) sampleRate = static_cast<float>(answer);
    return sampleRate;
}

VstInt32 AudioEffectX::updateBlockSize() {
    const VstIntPtr answer = callHost(17);
    if (answer > 0) blockSize = static_cast<VstInt32>(answer);
    return blockSize;
}

VstInt32 AudioEffectX::getInputLatency() { return static_cast<VstInt32>(callHost(18)); }
VstInt32 AudioEffectX::getOutputLatency() { return static_cast<VstInt32>(callHost(19)); }

bool AudioEffectX::getSpeakerArrangement(VstSpeakerArrangement** pluginInput, VstSpeakerArrangement** pluginOutput) {
    if (pluginInput != nullptr) *pluginInput = nullptr;
    if (pluginOutput != nullptr) *pluginOutput = nullptr;
    return false;
}

VstTimeInfo* AudioEffectX::getTimeInfo(VstInt32 filter) {
    return reinterpret_cast<VstTimeInfo*>(callHost(7, 0, filter));
}

VstInt32 AudioEffectX::getCurrentProcessLevel() { return static_cast<VstInt32>(callHost(23)); }
VstInt32 AudioEffectX::getAutomationState() { return static_cast<VstInt32>(callHost(24)); }
bool AudioEffectX::getHostVendorString(char* text) { return callHost(32, 0, 0, text) != 0; }
bool AudioEffectX::getHostProductString(char* text) { return callHost(33, 0, 0, text) != 0; }
VstInt32 AudioEffectX::getHostVendorVersion() { return static_cast<VstInt32>(callHost(34)); }

VstIntPtr AudioEffectX::hostVendorSpecific(VstInt32 lArg1, VstIntPtr lArg2, void* ptrArg, float floatArg) {
    return callHost(35, lArg1, lArg2, ptrArg, floatArg);
}

VstInt32 AudioEffectX::canHostDo(char* text) { return static_cast<VstInt32>(callHost(37, 0, 0, text)); }
VstInt32 AudioEffectX::getHostLanguage() { return static_cast<VstInt32>(callHost(38)); }
void AudioEffectX::isSynth(bool state) { setFlag(effFlagsIsSynth, state); }
void AudioEffectX::noTail(bool state) { setFlag(effFlagsNoSoundInStop, state); }
void* AudioEffectX::getDirectory() { return reinterpret_cast<void*>(callHost(41)); }
VstInt32 AudioEffectX::getPlugCategory() { return (cEffect.flags & effFlagsIsSynth) != 0 ? 2 : 0; }
bool AudioEffectX::updateDisplay() { return callHost(42) != 0; }
bool AudioEffectX::sizeWindow(VstInt32 width, VstInt32 height) { return callHost(15, width, height) != 0; }

bool AudioEffectX::openFileSelector(VstFileSelect* fileSelect) {
    return fileSelect != nullptr && callHost(45, 0, 0, fileSelect) != 0;
}

bool AudioEffectX::closeFileSelector(VstFileSelect* fileSelect) {
    return fileSelect != nullptr && callHost(46, 0, 0, fileSelect) != 0;
}

// The host reads the read-source flag from `index` and the option from `value`.
bool AudioEffectX::offlineRead(VstOfflineTask* offline, VstInt32 option, bool readSource) {
    return callHost(26, readSource ? 1 : 0, option, offline) != 0;
}

bool AudioEffectX::offlineWrite(VstOfflineTask* offline, VstInt32 option) { return callHost(27, 0, option, offline) != 0; }

bool AudioEffectX::offlineStart(VstAudioFile* ptr, VstInt32 numAudioFiles, VstInt32 numNewAudioFiles) {
    return callHost(25, numNewAudioFiles, numAudioFiles, ptr) != 0;
}

VstInt32 AudioEffectX::offlineGetCurrentPass() { return static_cast<VstInt32>(callHost(28)); }
VstInt32 AudioEffectX::offlineGetCurrentMetaPass() { return static_cast<VstInt32>(callHost(29)); }
void AudioEffectX::wantEvents(VstInt32 filter) { callHost(6, 0, filter); }
VstInt32 AudioEffectX::tempoAt(VstInt32 pos) { return static_cast<VstInt32>(callHost(10, 0, pos)); }
VstInt32 AudioEffectX::getNumAutomatableParameters() { return static_cast<VstInt32>(callHost(11)); }
VstInt32 AudioEffectX::getParameterQuantization() { return static_cast<VstInt32>(callHost(12)); }
bool AudioEffectX::needIdle() { return callHost(14) != 0; }
AEffect* AudioEffectX::getPreviousPlug(VstInt32 input) { return reinterpret_cast<AEffect*>(callHost(20, input)); }
AEffect* AudioEffectX::getNextPlug(VstInt32 output) { return reinterpret_cast<AEffect*>(callHost(21, output)); }
VstInt32 AudioEffectX::willProcessReplacing() { return static_cast<VstInt32>(callHost(22)); }
void AudioEffectX::wantAsyncOperation(bool state) { setFlag(effFlagsExtIsAsync, state); }
void AudioEffectX::hasExternalBuffer(bool state) { setFlag(effFlagsExtHasBuffer, state); }
void AudioEffectX::setOutputSamplerate(float samplerate) { callHost(30, 0, 0, nullptr, samplerate); }

VstSpeakerArrangement* AudioEffectX::getInputSpeakerArrangement() {
    return reinterpret_cast<VstSpeakerArrangement*>(callHost(49));
}

VstSpeakerArrangement* AudioEffectX::getOutputSpeakerArrangement() {
    return reinterpret_cast<VstSpeakerArrangement*>(callHost(31));
}

void* AudioEffectX::openWindow(void* window) { return reinterpret_cast<void*>(callHost(39, 0, 0, window)); }
bool AudioEffectX::closeWindow(void* window) { return callHost(40, 0, 0, window) != 0; }

bool AudioEffectX::getChunkFile(void* nativePath) { return nativePath != nullptr && callHost(48, 0, 0, nativePath) != 0; }

bool AudioEffectX::sendVstEventsToHost(VstEvents* events) { return callHost(8, 0, 0, events) == 1; }

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
