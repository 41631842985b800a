#include "AudioEffect.h"

#include <cmath>
#include <cstring>

#include "Numeric.h"
#include "Opcodes.h"

namespace {

constexpr VstInt32 kNoEffectId = fourCharCode("NoEf");
constexpr VstIntPtr kIdentifyAnswer = fourCharCode("NvEf");
constexpr double kVuScale = 32767.0;

}  // namespace

AudioEffect::AudioEffect(audioMasterCallback audioMaster, VstInt32 numPrograms, VstInt32 numParams)
    : audioMaster(audioMaster),
      editor(nullptr),
      sampleRate(44100.0f),
      blockSize(1024),
      numPrograms(numPrograms),
      numParams(numParams),
      curProgram(0),
      cEffect() {
    std::memset(&cEffect, 0, sizeof(cEffect));
    cEffect.magic = kEffectMagic;
    cEffect.dispatcher = dispatchEffectClass;
    cEffect.process = processClass;
    cEffect.setParameter = setParameterClass;
    cEffect.getParameter = getParameterClass;
    cEffect.numPrograms = numPrograms;
    cEffect.numParams = numParams;
    cEffect.numInputs = 1;
    cEffect.numOutputs = 2;
    cEffect.flags = 0;
    cEffect.ioRatio = 1.0f;
    cEffect.object = this;
    cEffect.uniqueID = kNoEffectId;
    cEffect.version = 1;
    cEffect.processReplacing = processClassReplacing;
}

AudioEffect::~AudioEffect() { delete editor; }

// ---- The record's entry points ----------------------------------------------

VstIntPtr AudioEffect::dispatchEffectClass(AEffect* e, VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr,
                                           float opt) {
    if (e == nullptr || e->object == nullptr) return 0;
    auto* effect = static_cast<AudioEffect*>(e->object);
    if (opcode == effClose) {  // close: the effect ends its own life
        effect->dispatcher(opcode, index, value, ptr, opt);
        delete effect;
        return 1;
    }
    return effect->dispatcher(opcode, index, value, ptr, opt);
}

void AudioEffect::processClass(AEffect* e, float** inputs, float** outputs, VstInt32 sampleFrames) {
    if (e != nullptr && e->object != nullptr) static_cast<AudioEffect*>(e->object)->process(inputs, outputs, sampleFrames);
}

void AudioEffect::setParameterClass(AEffect* e, VstInt32 index, float value) {
    if (e != nullptr && e->object != nullptr) static_cast<AudioEffect*>(e->object)->setParameter(index, value);
}

float AudioEffect::getParameterClass(AEffect* e, VstInt32 index) {
    if (e == nullptr || e->object == nullptr) return 0.0f;
    return static_cast<AudioEffect*>(e->object)->getParameter(index);
}

void AudioEffect::processClassReplacing(AEffect* e, float** inputs, float** outputs, VstInt32 sampleFrames) {
    if (e != nullptr && e->object != nullptr)
        static_cast<AudioEffect*>(e->object)->processReplacing(inputs, outputs, sampleFrames);
}

// ---- Dispatcher of the base interface (opcodes 0 to 24) ----------------------

VstIntPtr AudioEffect::dispatcher(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt) {
    auto* text = static_cast<char*>(ptr);
    switch (opcode) {
        case effOpen: open(); return 0;
        case effClose: close(); return 0;
        case effSetProgram:
            // Only the upper bound is checked: a negative program passes through.
            if (value < numPrograms) setProgram(static_cast<VstInt32>(value));
            return 0;
        case effGetProgram: return getProgram();
        case effSetProgramName:
            if (text != nullptr) setProgramName(text);
            return 0;
        case effGetProgramName:
            if (text != nullptr) getProgramName(text);
            return 0;
        case effGetParamLabel:
            if (text != nullptr) getParameterLabel(index, text);
            return 0;
        case effGetParamDisplay:
            if (text != nullptr) getParameterDisplay(index, text);
            return 0;
        case effGetParamName:
            if (text != nullptr) getParameterName(index, text);
            return 0;
        case effGetVu: return AF::truncateTo<VstIntPtr>(static_cast<double>(getVu()) * kVuScale);
        case effSetSampleRate: setSampleRate(opt); return 0;
        case effSetBlockSize: setBlockSize(static_cast<VstInt32>(value)); return 0;
        case effMainsChanged:
            if (value == 0) suspend();
            else resume();
            return 0;
        case effEditGetRect: return editor != nullptr && editor->getRect(static_cast<ERect**>(ptr)) ? 1 : 0;
        case effEditOpen: return editor != nullptr && editor->open(ptr) ? 1 : 0;
        case effEditClose:
            if (editor != nullptr) editor->close();
            return 0;
        case effEditIdle:
            if (editor != nullptr) editor->idle();
            return 0;
        case effIdentify: return kIdentifyAnswer;
        case effGetChunk: return ptr != nullptr ? getChunk(static_cast<void**>(ptr), index != 0) : 0;
        case effSetChunk: return setChunk(ptr, static_cast<VstInt32>(value), index != 0);
        default: return 0;  // 16-18, 20, 21 and anything unknown
    }
}

// ---- Defaults ----------------------------------------------------------------

void AudioEffect::setParameterAutomated(VstInt32 index, float value) {
    setParameter(index, value);
    if (audioMaster != nullptr) audioMaster(&cEffect, audioMasterAutomate, index, 0, nullptr, value);
}

void AudioEffect::getProgramName(char* name) {
    if (name != nullptr) name[0] = 0;
}

void AudioEffect::getParameterLabel(VstInt32, char* label) {
    if (label != nullptr) label[0] = 0;
}

void AudioEffect::getParameterDisplay(VstInt32, char* text) {
    if (text != nullptr) text[0] = 0;
}

void AudioEffect::getParameterName(VstInt32, char* text) {
    if (text != nullptr) text[0] = 0;
}

VstInt32 AudioEffect::getChunk(void**, bool) { return 0; }

VstInt32 AudioEffect::setChunk(void*, VstInt32, bool) { return 0; }

void AudioEffect::setFlag(VstInt32 flag, bool state) {
    if (state) cEffect.flags |= flag;
    else cEffect.flags &= ~flag;
}

void AudioEffect::canProcessReplacing(bool state) { setFlag(effFlagsCanReplacing, state); }
void AudioEffect::programsAreChunks(bool state) { setFlag(effFlagsProgramChunks, state); }
void AudioEffect::hasVu(bool state) { setFlag(effFlagsHasVu, state); }
void AudioEffect::hasClip(bool state) { setFlag(effFlagsHasClip, state); }
void AudioEffect::canMono(bool state) { setFlag(effFlagsCanMono, state); }

void AudioEffect::setEditor(AEffEditor* newEditor) {
    editor = newEditor;
    setFlag(effFlagsHasEditor, newEditor != nullptr);
}

void AudioEffect::process(float**, float**, VstInt32) {}

// ---- Host callbacks of the base interface ------------------------------------

VstInt32 AudioEffect::getMasterVersion() {
    VstInt32 version = 1;
    if (audioMaster != nullptr) {
        version = static_cast<VstInt32>(audioMaster(&cEffect, audioMasterVersion, 0, 0, nullptr, 0.0f));
        if (version == 0) version = 1;  // an old host that does not answer
    }
    return version;
}

VstInt32 AudioEffect::getCurrentUniqueId() {
    return audioMaster != nullptr
               ? static_cast<VstInt32>(audioMaster(&cEffect, audioMasterCurrentId, 0, 0, nullptr, 0.0f))
               : 0;
}

void AudioEffect::masterIdle() {
    if (audioMaster != nullptr) audioMaster(&cEffect, audioMasterIdle, 0, 0, nullptr, 0.0f);
}

// The host answers "pin disconnected", so the answer is negated.
bool AudioEffect::isInputConnected(VstInt32 input) {
    return audioMaster != nullptr ? audioMaster(&cEffect, audioMasterPinConnected, input, 0, nullptr, 0.0f) == 0 : true;
}

bool AudioEffect::isOutputConnected(VstInt32 output) {
    return audioMaster != nullptr ? audioMaster(&cEffect, audioMasterPinConnected, output, 1, nullptr, 0.0f) == 0
                                  : true;
}
