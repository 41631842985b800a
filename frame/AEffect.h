#pragma once
// The plug-in record shared with the host, and the host-shared records that
// pass through the frame. Laid out as the VST 2 binary interface: the natural
// layout of the target (192 bytes on 64-bit targets, 144 bytes on 32-bit ones).
#include <cstddef>
#include <cstdint>

struct AEffect;

using VstInt32 = std::int32_t;
using VstIntPtr = std::intptr_t;

// The host callback: (effect, opcode, index, value, ptr, opt) -> answer.
typedef VstIntPtr (*audioMasterCallback)(AEffect* effect, VstInt32 opcode, VstInt32 index, VstIntPtr value,
                                         void* ptr, float opt);
typedef VstIntPtr (*AEffectDispatcherProc)(AEffect* effect, VstInt32 opcode, VstInt32 index, VstIntPtr value,
                                           void* ptr, float opt);
typedef void (*AEffectProcessProc)(AEffect* effect, float** inputs, float** outputs, VstInt32 sampleFrames);
typedef void (*AEffectProcessDoubleProc)(AEffect* effect, double** inputs, double** outputs,
                                         VstInt32 sampleFrames);
typedef void (*AEffectSetParameterProc)(AEffect* effect, VstInt32 index, float parameter);
typedef float (*AEffectGetParameterProc)(AEffect* effect, VstInt32 index);

// Four characters packed with the first in the most significant byte.
constexpr VstInt32 fourCharCode(const char (&code)[5]) {
    return static_cast<VstInt32>((static_cast<std::uint32_t>(static_cast<unsigned char>(code[0])) << 24) |
                                 (static_cast<std::uint32_t>(static_cast<unsigned char>(code[1])) << 16) |
                                 (static_cast<std::uint32_t>(static_cast<unsigned char>(code[2])) << 8) |
                                 static_cast<std::uint32_t>(static_cast<unsigned char>(code[3])));
}

inline constexpr VstInt32 kEffectMagic = fourCharCode("VstP");

// Flag bits of AEffect::flags.
enum VstAEffectFlags : VstInt32 {
    effFlagsHasEditor = 1 << 0,
    effFlagsHasClip = 1 << 1,
    effFlagsHasVu = 1 << 2,
    effFlagsCanMono = 1 << 3,
    effFlagsCanReplacing = 1 << 4,
    effFlagsProgramChunks = 1 << 5,
    effFlagsIsSynth = 1 << 8,
    effFlagsNoSoundInStop = 1 << 9,
    effFlagsExtIsAsync = 1 << 10,
    effFlagsExtHasBuffer = 1 << 11,
};

struct AEffect {
    VstInt32 magic;
    AEffectDispatcherProc dispatcher;
    AEffectProcessProc process;
    AEffectSetParameterProc setParameter;
    AEffectGetParameterProc getParameter;
    VstInt32 numPrograms;
    VstInt32 numParams;
    VstInt32 numInputs;
    VstInt32 numOutputs;
    VstInt32 flags;
    VstIntPtr resvd1;
    VstIntPtr resvd2;
    VstInt32 initialDelay;
    VstInt32 realQualities;
    VstInt32 offQualities;
    float ioRatio;
    void* object;
    void* user;
    VstInt32 uniqueID;
    VstInt32 version;
    AEffectProcessProc processReplacing;
    AEffectProcessDoubleProc processDoubleReplacing;  // never set by this module
    char future[56];
};

#if INTPTR_MAX == INT64_MAX
static_assert(offsetof(AEffect, magic) == 0);
static_assert(offsetof(AEffect, dispatcher) == 8);
static_assert(offsetof(AEffect, process) == 16);
static_assert(offsetof(AEffect, setParameter) == 24);
static_assert(offsetof(AEffect, getParameter) == 32);
static_assert(offsetof(AEffect, numPrograms) == 40);
static_assert(offsetof(AEffect, numParams) == 44);
static_assert(offsetof(AEffect, numInputs) == 48);
static_assert(offsetof(AEffect, numOutputs) == 52);
static_assert(offsetof(AEffect, flags) == 56);
static_assert(offsetof(AEffect, resvd1) == 64);
static_assert(offsetof(AEffect, resvd2) == 72);
static_assert(offsetof(AEffect, initialDelay) == 80);
static_assert(offsetof(AEffect, realQualities) == 84);
static_assert(offsetof(AEffect, offQualities) == 88);
static_assert(offsetof(AEffect, ioRatio) == 92);
static_assert(offsetof(AEffect, object) == 96);
static_assert(offsetof(AEffect, user) == 104);
static_assert(offsetof(AEffect, uniqueID) == 112);
static_assert(offsetof(AEffect, version) == 116);
static_assert(offsetof(AEffect, processReplacing) == 120);
static_assert(offsetof(AEffect, processDoubleReplacing) == 128);
static_assert(offsetof(AEffect, future) == 136);
static_assert(sizeof(AEffect) == 192);
#elif INTPTR_MAX == INT32_MAX
static_assert(offsetof(AEffect, magic) == 0);
static_assert(offsetof(AEffect, dispatcher) == 4);
static_assert(offsetof(AEffect, process) == 8);
static_assert(offsetof(AEffect, setParameter) == 12);
static_assert(offsetof(AEffect, getParameter) == 16);
static_assert(offsetof(AEffect, numPrograms) == 20);
static_assert(offsetof(AEffect, numParams) == 24);
static_assert(offsetof(AEffect, numInputs) == 28);
static_assert(offsetof(AEffect, numOutputs) == 32);
static_assert(offsetof(AEffect, flags) == 36);
static_assert(offsetof(AEffect, resvd1) == 40);
static_assert(offsetof(AEffect, resvd2) == 44);
static_assert(offsetof(AEffect, initialDelay) == 48);
static_assert(offsetof(AEffect, realQualities) == 52);
static_assert(offsetof(AEffect, offQualities) == 56);
static_assert(offsetof(AEffect, ioRatio) == 60);
static_assert(offsetof(AEffect, object) == 64);
static_assert(offsetof(AEffect, user) == 68);
static_assert(offsetof(AEffect, uniqueID) == 72);
static_assert(offsetof(AEffect, version) == 76);
static_assert(offsetof(AEffect, processReplacing) == 80);
static_assert(offsetof(AEffect, processDoubleReplacing) == 84);
static_assert(sizeof(AEffect) == 144);
#endif

// Host-shared records that only pass through the frame; the module reads none.
struct ERect;
struct VstEvents;
struct VstTimeInfo;
struct VstPinProperties;
struct VstParameterProperties;
struct MidiProgramName;
struct MidiProgramCategory;
struct MidiKeyName;
struct VstPatchChunkInfo;
struct VstOfflineTask;
struct VstAudioFile;
struct VstVariableIo;
struct VstFileSelect;

struct VstKeyCode {
    VstInt32 character;
    unsigned char virt;
    unsigned char modifier;
};

// A speaker of an arrangement (112 bytes).
struct VstSpeakerProperties {
    float azimuth;
    float elevation;
    float radius;
    float reserved;
    char name[64];
    VstInt32 type;
    char future[28];
};
static_assert(sizeof(VstSpeakerProperties) == 112);

// A speaker arrangement: a header of 8 bytes followed by numChannels speakers.
// The declared array of 8 is the interface's; allocation sizes it to the count.
struct VstSpeakerArrangement {
    VstInt32 type;
    VstInt32 numChannels;
    VstSpeakerProperties speakers[8];
};
static_assert(offsetof(VstSpeakerArrangement, speakers) == 8);
