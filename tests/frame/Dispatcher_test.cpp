// The dispatcher: every opcode the host can send, the virtual call it makes,
// the arguments it passes and the answer it gives back.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "tests/frame/RecordingEffect.h"

using namespace frame_test;

namespace {

// Distinct pointers the tests pass as `ptr` or `value`, never dereferenced by
// the recorder.
char gText[64];
char gOther[64];
void* const kPtr = gText;
const VstIntPtr kPtrAsValue = reinterpret_cast<VstIntPtr>(static_cast<void*>(gOther));

VstIntPtr dispatch(AudioEffect& effect, VstInt32 opcode, VstInt32 index = 0, VstIntPtr value = 0,
                   void* ptr = nullptr, float opt = 0.0f) {
    return effect.dispatcher(opcode, index, value, ptr, opt);
}

// ---------------------------------------------------------------------------
// Opcodes 0 to 24: the base dispatcher.

TEST(FrameDispatcher, OpenAndClose) {
    RecordingEffect effect;
    EXPECT_EQ(dispatch(effect, 0, 5, 6, kPtr, 1.0f), 0);
    EXPECT_EQ(dispatch(effect, 1, 5, 6, kPtr, 1.0f), 0);
    ASSERT_EQ(effect.calls.size(), 2u);
    EXPECT_EQ(effect.calls[0], call("open"));
    EXPECT_EQ(effect.calls[1], call("close"));
}

TEST(FrameDispatcher, SetProgramChecksOnlyTheUpperBound) {
    RecordingEffect effect(nullptr, 3, 4);
    EXPECT_EQ(dispatch(effect, 2, 0, 2), 0);
    EXPECT_EQ(dispatch(effect, 2, 0, 0), 0);
    ASSERT_EQ(effect.calls.size(), 2u);
    EXPECT_EQ(effect.calls[0], call("setProgram", {2}));
    EXPECT_EQ(effect.calls[1], call("setProgram", {0}));

    // value == numPrograms and above: ignored.
    effect.calls.clear();
    EXPECT_EQ(dispatch(effect, 2, 0, 3), 0);
    EXPECT_EQ(dispatch(effect, 2, 0, 4), 0);
    EXPECT_EQ(dispatch(effect, 2, 0, std::numeric_limits<VstIntPtr>::max()), 0);
    EXPECT_TRUE(effect.calls.empty());

    // Negative values pass the test and reach setProgram as they are.
    EXPECT_EQ(dispatch(effect, 2, 0, -1), 0);
    EXPECT_EQ(dispatch(effect, 2, 0, -5), 0);
    ASSERT_EQ(effect.calls.size(), 2u);
    EXPECT_EQ(effect.calls[0], call("setProgram", {-1}));
    EXPECT_EQ(effect.calls[1], call("setProgram", {-5}));
}

TEST(FrameDispatcher, SetProgramOnThePlainEffect) {
    PlainEffect effect(nullptr, 1, 1);
    dispatch(effect, 2, 0, 1);  // == numPrograms: unchanged
    EXPECT_EQ(effect.currentProgram(), 0);
    dispatch(effect, 2, 0, -2);
    EXPECT_EQ(effect.currentProgram(), -2);
    EXPECT_EQ(dispatch(effect, 3), -2);
}

TEST(FrameDispatcher, GetProgramReturnsItsResult) {
    RecordingEffect effect;
    effect.answers["getProgram"] = 2;
    EXPECT_EQ(dispatch(effect, 3, 9, 9, kPtr, 9.0f), 2);
    ASSERT_EQ(effect.calls.size(), 1u);
    EXPECT_EQ(effect.calls[0], call("getProgram"));
}

TEST(FrameDispatcher, ProgramAndParameterTexts) {
    RecordingEffect effect;
    EXPECT_EQ(dispatch(effect, 4, 1, 2, kPtr, 3.0f), 0);
    EXPECT_EQ(dispatch(effect, 5, 1, 2, kPtr, 3.0f), 0);
    EXPECT_EQ(dispatch(effect, 6, 1, 2, kPtr, 3.0f), 0);
    EXPECT_EQ(dispatch(effect, 7, -4, 2, kPtr, 3.0f), 0);
    EXPECT_EQ(dispatch(effect, 8, 77, 2, kPtr, 3.0f), 0);
    ASSERT_EQ(effect.calls.size(), 5u);
    EXPECT_EQ(effect.calls[0], call("setProgramName", {}, {kPtr}));
    EXPECT_EQ(effect.calls[1], call("getProgramName", {}, {kPtr}));
    EXPECT_EQ(effect.calls[2], call("getParameterLabel", {1}, {kPtr}));
    EXPECT_EQ(effect.calls[3], call("getParameterDisplay", {-4}, {kPtr}));
    EXPECT_EQ(effect.calls[4], call("getParameterName", {77}, {kPtr}));
}

// The VU answer is getVu() * 32767.0 in double, truncated toward zero.
VstIntPtr vuAnswer(float vu) {
    RecordingEffect effect;
    effect.vu = vu;
    VstIntPtr result = dispatch(effect, 9, 3, 4, kPtr, 5.0f);
    EXPECT_EQ(effect.calls.size(), 1u);
    if (!effect.calls.empty()) {
        EXPECT_EQ(effect.calls[0], call("getVu"));
    }
    return result;
}

TEST(FrameDispatcher, VuIsScaledAndTruncated) {
    EXPECT_EQ(vuAnswer(0.0f), 0);
    EXPECT_EQ(vuAnswer(1.0f), 32767);
    EXPECT_EQ(vuAnswer(-1.0f), -32767);
    // 0.5 * 32767 = 16383.5: truncated, not rounded.
    EXPECT_EQ(vuAnswer(0.5f), 16383);
    EXPECT_EQ(vuAnswer(-0.5f), -16383);
    // 0.25 * 32767 = 8191.75 -> 8191.
    EXPECT_EQ(vuAnswer(0.25f), 8191);
    // The float just below 1 (1 - 2^-24): 32767 - 32767 * 2^-24 = 32766.998... -> 32766.
    EXPECT_EQ(vuAnswer(std::nextafter(1.0f, 0.0f)), 32766);
    // 2 * 32767.
    EXPECT_EQ(vuAnswer(2.0f), 65534);
}

// The answer is the dispatcher's pointer-sized integer: a VU past its range
// saturates there, and NaN gives 0.
TEST(FrameDispatcher, VuSaturatesAndNanGivesZero) {
    constexpr VstIntPtr kHighest = std::numeric_limits<VstIntPtr>::max();
    constexpr VstIntPtr kLowest = std::numeric_limits<VstIntPtr>::min();
    EXPECT_EQ(vuAnswer(std::numeric_limits<float>::quiet_NaN()), 0);
    EXPECT_EQ(vuAnswer(-std::numeric_limits<float>::quiet_NaN()), 0);
    EXPECT_EQ(vuAnswer(1e30f), kHighest);
    EXPECT_EQ(vuAnswer(-1e30f), kLowest);
    EXPECT_EQ(vuAnswer(std::numeric_limits<float>::infinity()), kHighest);
    EXPECT_EQ(vuAnswer(-std::numeric_limits<float>::infinity()), kLowest);
#if INTPTR_MAX == INT64_MAX
    // 1e6 * 32767 = 32767000000 fits: beyond 32 bits, not saturated.
    EXPECT_EQ(vuAnswer(1e6f), static_cast<VstIntPtr>(32767000000LL));
#endif
}

TEST(FrameDispatcher, SampleRateAndBlockSize) {
    RecordingEffect effect;
    EXPECT_EQ(dispatch(effect, 10, 1, 2, kPtr, 48000.0f), 0);
    EXPECT_EQ(dispatch(effect, 11, 1, 256, kPtr, 3.0f), 0);
    ASSERT_EQ(effect.calls.size(), 2u);
    EXPECT_EQ(effect.calls[0], call("setSampleRate", {}, {}, {48000.0f}));
    EXPECT_EQ(effect.calls[1], call("setBlockSize", {256}));

    PlainEffect plain;
    dispatch(plain, 10, 0, 0, nullptr, 96000.0f);
    dispatch(plain, 11, 0, 64);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(plain.getSampleRate()), std::bit_cast<std::uint32_t>(96000.0f));
    EXPECT_EQ(plain.getBlockSize(), 64);
}

TEST(FrameDispatcher, MainsChangedSuspendsOnlyForZero) {
    RecordingEffect effect;
    EXPECT_EQ(dispatch(effect, 12, 0, 0), 0);
    EXPECT_EQ(dispatch(effect, 12, 0, 1), 0);
    EXPECT_EQ(dispatch(effect, 12, 0, -1), 0);
    EXPECT_EQ(dispatch(effect, 12, 7, 2), 0);
    EXPECT_EQ(dispatch(effect, 12, 1, 0, kPtr, 1.0f), 0);
    ASSERT_EQ(effect.calls.size(), 5u);
    EXPECT_EQ(effect.calls[0], call("suspend"));
    EXPECT_EQ(effect.calls[1], call("resume"));
    EXPECT_EQ(effect.calls[2], call("resume"));
    EXPECT_EQ(effect.calls[3], call("resume"));
    EXPECT_EQ(effect.calls[4], call("suspend"));
}

TEST(FrameDispatcher, EditorOpcodesWithoutAnEditorAnswerZero) {
    RecordingEffect effect;
    for (VstInt32 opcode : {13, 14, 15, 16, 17, 18, 19, 20, 21, 59, 60, 61}) {
        EXPECT_EQ(dispatch(effect, opcode, 65, 1, kPtr, 2.0f), 0) << "opcode " << opcode;
    }
    EXPECT_TRUE(effect.calls.empty());
}

TEST(FrameDispatcher, EditorOpcodesReachTheEditor) {
    RecordingEffect effect;
    auto* editor = new TestEditor();
    effect.setEditor(editor);

    editor->answer = true;
    EXPECT_EQ(dispatch(effect, 13, 1, 2, kPtr, 3.0f), 1);
    EXPECT_EQ(dispatch(effect, 14, 1, 2, kPtr, 3.0f), 1);
    editor->answer = false;
    EXPECT_EQ(dispatch(effect, 13, 1, 2, kPtr, 3.0f), 0);
    EXPECT_EQ(dispatch(effect, 14, 1, 2, kPtr, 3.0f), 0);
    editor->answer = true;
    EXPECT_EQ(dispatch(effect, 15, 1, 2, kPtr, 3.0f), 0);
    EXPECT_EQ(dispatch(effect, 19, 1, 2, kPtr, 3.0f), 0);
    ASSERT_EQ(editor->calls.size(), 6u);
    EXPECT_EQ(editor->calls[0], call("getRect", {}, {kPtr}));
    EXPECT_EQ(editor->calls[1], call("open", {}, {kPtr}));
    EXPECT_EQ(editor->calls[2], call("getRect", {}, {kPtr}));
    EXPECT_EQ(editor->calls[3], call("open", {}, {kPtr}));
    EXPECT_EQ(editor->calls[4], call("close"));
    EXPECT_EQ(editor->calls[5], call("idle"));

    // Draw, mouse, key, top and sleep do nothing even with an editor.
    editor->calls.clear();
    for (VstInt32 opcode : {16, 17, 18, 20, 21}) {
        EXPECT_EQ(dispatch(effect, opcode, 1, 2, kPtr, 3.0f), 0) << "opcode " << opcode;
    }
    EXPECT_TRUE(editor->calls.empty());
    EXPECT_TRUE(effect.calls.empty());
}

TEST(FrameDispatcher, IdentifyAnswersNvEfWhateverTheEffect) {
    RecordingEffect recording;
    PlainEffect plain(nullptr, 0, 0);
    EXPECT_EQ(dispatch(recording, 22), 0x4E764566);
    EXPECT_EQ(dispatch(recording, 22, -1, -1, kPtr, -1.0f), 0x4E764566);
    EXPECT_EQ(dispatch(plain, 22), 0x4E764566);
    EXPECT_EQ(plain.getAeffect()->dispatcher(plain.getAeffect(), 22, 0, 0, nullptr, 0.0f), 0x4E764566);
    EXPECT_TRUE(recording.calls.empty());
}

TEST(FrameDispatcher, ChunksTakeTheIndexAsPresetFlag) {
    RecordingEffect effect;
    effect.answers["getChunk"] = 128;
    effect.answers["setChunk"] = 64;
    EXPECT_EQ(dispatch(effect, 23, 0, 5, kPtr, 1.0f), 128);
    EXPECT_EQ(dispatch(effect, 23, 1, 5, kPtr, 1.0f), 128);
    EXPECT_EQ(dispatch(effect, 23, -3, 5, kPtr, 1.0f), 128);
    EXPECT_EQ(dispatch(effect, 24, 0, 300, kPtr, 1.0f), 64);
    EXPECT_EQ(dispatch(effect, 24, 2, 300, kPtr, 1.0f), 64);
    ASSERT_EQ(effect.calls.size(), 5u);
    EXPECT_EQ(effect.calls[0], call("getChunk", {false}, {kPtr}));
    EXPECT_EQ(effect.calls[1], call("getChunk", {true}, {kPtr}));
    EXPECT_EQ(effect.calls[2], call("getChunk", {true}, {kPtr}));
    EXPECT_EQ(effect.calls[3], call("setChunk", {300, false}, {kPtr}));
    EXPECT_EQ(effect.calls[4], call("setChunk", {300, true}, {kPtr}));
}

// ---------------------------------------------------------------------------
// Opcodes 25 to 76: the extended dispatcher. One row per opcode: the request,
// what the recorder answers, the call expected and the dispatcher's result.

struct ExtendedCase {
    VstInt32 opcode;
    VstInt32 index;
    VstIntPtr value;
    void* ptr;
    float opt;
    const char* answerKey;  // null: the operation answers nothing
    std::int64_t answer;
    Call expected;
    VstIntPtr result;
};

std::vector<ExtendedCase> extendedCases() {
    const void* p = kPtr;
    const void* v = reinterpret_cast<const void*>(kPtrAsValue);
    return {
        {25, 1, 2, kPtr, 0.5f, "processEvents", 17, call("processEvents", {}, {p}), 17},
        {26, 3, 2, kPtr, 0.5f, "canParameterBeAutomated", 1, call("canParameterBeAutomated", {3}), 1},
        {27, 3, 2, kPtr, 0.5f, "string2parameter", 1, call("string2parameter", {3}, {p}), 1},
        {28, 3, 2, kPtr, 0.5f, "getNumCategories", 9, call("getNumCategories"), 9},
        // category = value, index = index
        {29, 3, 2, kPtr, 0.5f, "getProgramNameIndexed", 1, call("getProgramNameIndexed", {2, 3}, {p}), 1},
        {30, 3, 2, kPtr, 0.5f, "copyProgram", 1, call("copyProgram", {3}), 1},
        {31, 3, 2, kPtr, 0.5f, nullptr, 0, call("inputConnected", {3, true}), 1},
        {32, 4, 0, kPtr, 0.5f, nullptr, 0, call("outputConnected", {4, false}), 1},
        {33, 3, 2, kPtr, 0.5f, "getInputProperties", 1, call("getInputProperties", {3}, {p}), 1},
        {34, 3, 2, kPtr, 0.5f, "getOutputProperties", 1, call("getOutputProperties", {3}, {p}), 1},
        {35, 3, 2, kPtr, 0.5f, "getPlugCategory", 5, call("getPlugCategory"), 5},
        {36, 3, 2, kPtr, 0.5f, "reportCurrentPosition", 41, call("reportCurrentPosition"), 41},
        {37, 3, 2, kPtr, 0.5f, "reportDestinationBuffer", 0x1000, call("reportDestinationBuffer"), 0x1000},
        // offlineNotify(ptr, value, index != 0)
        {38, 3, 2, kPtr, 0.5f, "offlineNotify", 1, call("offlineNotify", {2, true}, {p}), 1},
        {39, 3, 2, kPtr, 0.5f, "offlinePrepare", 1, call("offlinePrepare", {2}, {p}), 1},
        {40, 3, 2, kPtr, 0.5f, "offlineRun", 1, call("offlineRun", {2}, {p}), 1},
        {41, 3, 2, kPtr, 0.5f, "processVariableIo", 1, call("processVariableIo", {}, {p}), 1},
        // value is the input arrangement, ptr the output arrangement
        {42, 3, kPtrAsValue, kPtr, 0.5f, "setSpeakerArrangement", 1, call("setSpeakerArrangement", {}, {v, p}), 1},
        {43, 3, 512, kPtr, 22050.0f, nullptr, 0, call("setBlockSizeAndSampleRate", {512}, {}, {22050.0f}), 1},
        {44, 3, 2, kPtr, 0.5f, "setBypass", 1, call("setBypass", {true}), 1},
        {45, 3, 2, kPtr, 0.5f, "getEffectName", 1, call("getEffectName", {}, {p}), 1},
        {46, 3, 2, kPtr, 0.5f, "getErrorText", 1, call("getErrorText", {}, {p}), 1},
        {47, 3, 2, kPtr, 0.5f, "getVendorString", 1, call("getVendorString", {}, {p}), 1},
        {48, 3, 2, kPtr, 0.5f, "getProductString", 1, call("getProductString", {}, {p}), 1},
        {49, 3, 2, kPtr, 0.5f, "getVendorVersion", 1234, call("getVendorVersion"), 1234},
        {50, 3, -2, kPtr, 0.5f, "vendorSpecific", -99, call("vendorSpecific", {3, -2}, {p}, {0.5f}), -99},
        {51, 3, 2, kPtr, 0.5f, "canDo", -1, call("canDo", {}, {p}), -1},
        {52, 3, 2, kPtr, 0.5f, "getGetTailSize", 4410, call("getGetTailSize"), 4410},
        {53, 3, 2, kPtr, 0.5f, "fxIdle", 6, call("fxIdle"), 6},
        {54, 3, 2, kPtr, 0.5f, "getIcon", 0x2000, call("getIcon"), 0x2000},
        {55, 3, 2, kPtr, 0.5f, "setViewPosition", 1, call("setViewPosition", {3, 2}), 1},
        {56, 3, 2, kPtr, 0.5f, "getParameterProperties", 1, call("getParameterProperties", {3}, {p}), 1},
        // deliberately inverted: keys not required answers 1
        {57, 3, 2, kPtr, 0.5f, "keysRequired", 0, call("keysRequired"), 1},
        {58, 3, 2, kPtr, 0.5f, "getVstVersion", 2400, call("getVstVersion"), 2400},
        {62, 3, 2, kPtr, 0.5f, "getMidiProgramName", 8, call("getMidiProgramName", {3}, {p}), 8},
        {63, 3, 2, kPtr, 0.5f, "getCurrentMidiProgram", -1, call("getCurrentMidiProgram", {3}, {p}), -1},
        {64, 3, 2, kPtr, 0.5f, "getMidiProgramCategory", 2, call("getMidiProgramCategory", {3}, {p}), 2},
        {65, 3, 2, kPtr, 0.5f, "hasMidiProgramsChanged", 1, call("hasMidiProgramsChanged", {3}), 1},
        {66, 3, 2, kPtr, 0.5f, "getMidiKeyName", 1, call("getMidiKeyName", {3}, {p}), 1},
        {67, 3, 2, kPtr, 0.5f, "beginSetProgram", 1, call("beginSetProgram"), 1},
        {68, 3, 2, kPtr, 0.5f, "endSetProgram", 1, call("endSetProgram"), 1},
        // value is the input pointer slot, ptr the output pointer slot
        {69, 3, kPtrAsValue, kPtr, 0.5f, "getSpeakerArrangement", 1, call("getSpeakerArrangement", {}, {v, p}), 1},
        {70, 3, 2, kPtr, 0.5f, "getNextShellPlugin", 0x41424344, call("getNextShellPlugin", {}, {p}), 0x41424344},
        {71, 3, 2, kPtr, 0.5f, "startProcess", 1, call("startProcess"), 1},
        {72, 3, 2, kPtr, 0.5f, "stopProcess", 1, call("stopProcess"), 1},
        {73, 3, 88200, kPtr, 0.5f, "setTotalSampleToProcess", 4410, call("setTotalSampleToProcess", {88200}), 4410},
        {74, 3, 2, kPtr, 0.5f, "setPanLaw", 1, call("setPanLaw", {2}, {}, {0.5f}), 1},
        {75, 3, 2, kPtr, 0.5f, "beginLoadBank", -1, call("beginLoadBank", {}, {p}), -1},
        {76, 3, 2, kPtr, 0.5f, "beginLoadProgram", 1, call("beginLoadProgram", {}, {p}), 1},
    };
}

TEST(FrameDispatcher, ExtendedOpcodesCallTheirOperation) {
    for (const ExtendedCase& c : extendedCases()) {
        RecordingEffect effect;
        if (c.answerKey != nullptr) effect.answers[c.answerKey] = c.answer;
        EXPECT_EQ(dispatch(effect, c.opcode, c.index, c.value, c.ptr, c.opt), c.result) << "opcode " << c.opcode;
        ASSERT_EQ(effect.calls.size(), 1u) << "opcode " << c.opcode;
        EXPECT_EQ(effect.calls[0], c.expected) << "opcode " << c.opcode;
    }
}

// "Bool" results: a false answer gives 0, and a true one exactly 1 whatever
// the operation. Opcode 57 is the one inversion.
TEST(FrameDispatcher, ExtendedBoolResultsFollowTheAnswer) {
    for (const ExtendedCase& c : extendedCases()) {
        if (c.answerKey == nullptr) continue;
        RecordingEffect effect;
        effect.answers[c.answerKey] = 0;
        VstIntPtr result = dispatch(effect, c.opcode, c.index, c.value, c.ptr, c.opt);
        if (c.opcode == 57) {
            EXPECT_EQ(result, 1);
        } else {
            EXPECT_EQ(result, 0) << "opcode " << c.opcode;
        }
    }
    RecordingEffect effect;
    effect.answers["keysRequired"] = 1;
    EXPECT_EQ(dispatch(effect, 57), 0);
}

TEST(FrameDispatcher, FlagArgumentsAreNonZeroTests) {
    RecordingEffect effect;
    dispatch(effect, 31, 2, -7);
    dispatch(effect, 31, 2, 0);
    dispatch(effect, 44, 0, 0);
    dispatch(effect, 44, 0, 12);
    dispatch(effect, 38, 0, 5, kPtr);
    dispatch(effect, 38, -1, 5, kPtr);
    ASSERT_EQ(effect.calls.size(), 6u);
    EXPECT_EQ(effect.calls[0], call("inputConnected", {2, true}));
    EXPECT_EQ(effect.calls[1], call("inputConnected", {2, false}));
    EXPECT_EQ(effect.calls[2], call("setBypass", {false}));
    EXPECT_EQ(effect.calls[3], call("setBypass", {true}));
    EXPECT_EQ(effect.calls[4], call("offlineNotify", {5, false}, {kPtr}));
    EXPECT_EQ(effect.calls[5], call("offlineNotify", {5, true}, {kPtr}));
}

TEST(FrameDispatcher, ConnectionOpcodesAnswerOneAndChangeNothing) {
    PlainEffect effect;
    AEffect before;
    std::memcpy(&before, effect.getAeffect(), sizeof before);
    EXPECT_EQ(dispatch(effect, 31, 0, 0), 1);
    EXPECT_EQ(dispatch(effect, 31, 1, 1), 1);
    EXPECT_EQ(dispatch(effect, 32, 0, 0), 1);
    EXPECT_EQ(dispatch(effect, 32, 5, 1), 1);
    EXPECT_EQ(std::memcmp(&before, effect.getAeffect(), sizeof before), 0);
    EXPECT_EQ(effect.getBlockSize(), 1024);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(effect.getSampleRate()), std::bit_cast<std::uint32_t>(44100.0f));
}

TEST(FrameDispatcher, KeyOpcodesBuildTheKeyRecord) {
    RecordingEffect effect;
    auto* editor = new TestEditor();
    effect.setEditor(editor);
    editor->answer = true;
    // character = index, virtual key = low byte of value, modifier = low byte of opt truncated.
    EXPECT_EQ(dispatch(effect, 59, 65, 0x1234, nullptr, 3.9f), 1);
    EXPECT_EQ(dispatch(effect, 60, 66, 0x07, nullptr, 2.0f), 1);
    editor->answer = false;
    EXPECT_EQ(dispatch(effect, 59, -1, -1, nullptr, -1.0f), 0);
    // 300 = 0x12C: low byte 0x2C = 44.
    EXPECT_EQ(dispatch(effect, 60, 0, 0, nullptr, 300.0f), 0);
    // NaN converts to 0; 1e10 saturates to 0x7FFFFFFF whose low byte is 0xFF.
    dispatch(effect, 59, 1, 1, nullptr, std::numeric_limits<float>::quiet_NaN());
    dispatch(effect, 59, 1, 1, nullptr, 1e10f);
    ASSERT_EQ(editor->calls.size(), 6u);
    EXPECT_EQ(editor->calls[0], call("onKeyDown", {65, 0x34, 3}));
    EXPECT_EQ(editor->calls[1], call("onKeyUp", {66, 0x07, 2}));
    EXPECT_EQ(editor->calls[2], call("onKeyDown", {-1, 0xFF, 0xFF}));
    EXPECT_EQ(editor->calls[3], call("onKeyUp", {0, 0, 44}));
    EXPECT_EQ(editor->calls[4], call("onKeyDown", {1, 1, 0}));
    EXPECT_EQ(editor->calls[5], call("onKeyDown", {1, 1, 0xFF}));
    EXPECT_TRUE(effect.calls.empty());
}

TEST(FrameDispatcher, KnobModeReachesTheEditor) {
    RecordingEffect effect;
    auto* editor = new TestEditor();
    effect.setEditor(editor);
    editor->answer = true;
    EXPECT_EQ(dispatch(effect, 61, 9, 2, kPtr, 1.0f), 1);
    editor->answer = false;
    EXPECT_EQ(dispatch(effect, 61, 9, 1, kPtr, 1.0f), 0);
    ASSERT_EQ(editor->calls.size(), 2u);
    EXPECT_EQ(editor->calls[0], call("setKnobMode", {2}));
    EXPECT_EQ(editor->calls[1], call("setKnobMode", {1}));
}

TEST(FrameDispatcher, OpcodesAboveTheLastAnswerZero) {
    RecordingEffect effect;
    auto* editor = new TestEditor();
    effect.setEditor(editor);
    for (VstInt32 opcode : {77, 78, 100, 1000, -1, -2, std::numeric_limits<VstInt32>::max(),
                            std::numeric_limits<VstInt32>::min()}) {
        EXPECT_EQ(dispatch(effect, opcode, 1, 2, kPtr, 3.0f), 0) << "opcode " << opcode;
    }
    EXPECT_TRUE(effect.calls.empty());
    EXPECT_TRUE(editor->calls.empty());
}

TEST(FrameDispatcher, EveryOpcodeMakesAtMostOneCall) {
    // Opcodes that reach the effect make exactly one call; 16-22 and the
    // editor opcodes (no editor here) make none.
    for (VstInt32 opcode = 0; opcode <= 76; ++opcode) {
        RecordingEffect effect(nullptr, 3, 4);
        char text[64] = {};
        dispatch(effect, opcode, 1, 1, text, 1.0f);
        bool silent = (opcode >= 13 && opcode <= 22) || (opcode >= 59 && opcode <= 61);
        EXPECT_EQ(effect.calls.size(), silent ? 0u : 1u) << "opcode " << opcode;
    }
}

// ---------------------------------------------------------------------------
// The defaults of the frame as the host sees them through the dispatcher.

VstIntPtr plainDefault(VstInt32 opcode) {
    switch (opcode) {
        case 22: return 0x4E764566;
        case 26: return 1;      // parameters can be automated
        case 28: return 1;      // one program category
        case 31: case 32: return 1;
        case 43: return 1;
        case 57: return 1;      // keys not required
        case 58: return 2300;
        case 63: return -1;     // no current MIDI program
        case 73: return 5;      // setTotalSampleToProcess answers its value (5 below)
        default: return 0;
    }
}

TEST(FrameDispatcher, DefaultsThroughTheDispatcher) {
    for (VstInt32 opcode = 0; opcode <= 76; ++opcode) {
        if (opcode == 1) continue;  // close is covered through the record
        PlainEffect effect(nullptr, 1, 1);
        // A pointer-sized zeroed slot, so the opcodes that store into ptr may.
        alignas(16) char slot[128] = {};
        // Opcodes 42 and 69 read `value` as a pointer: 0 there.
        VstIntPtr value = (opcode == 42 || opcode == 69) ? 0 : 5;
        EXPECT_EQ(dispatch(effect, opcode, 0, value, slot, 0.0f), plainDefault(opcode)) << "opcode " << opcode;
    }
}

TEST(FrameDispatcher, DefaultsWithNullPointers) {
    for (VstInt32 opcode = 0; opcode <= 76; ++opcode) {
        PlainEffect effect(nullptr, 1, 1);
        VstIntPtr expected = plainDefault(opcode);
        if (opcode == 73) expected = 0;
        // value 0: no pointer in `value` either (opcodes 42 and 69 read it as one).
        EXPECT_EQ(dispatch(effect, opcode, 0, 0, nullptr, 0.0f), expected) << "opcode " << opcode;
    }
}

TEST(FrameDispatcher, VersionCapabilityAndKeys) {
    PlainEffect effect;
    char question[] = "receiveVstMidiEvent";
    char other[] = "anything";
    EXPECT_EQ(dispatch(effect, 58), 2300);
    EXPECT_EQ(dispatch(effect, 51, 0, 0, question), 0);
    EXPECT_EQ(dispatch(effect, 51, 0, 0, other), 0);
    EXPECT_EQ(dispatch(effect, 51, 0, 0, nullptr), 0);
    EXPECT_EQ(dispatch(effect, 57), 1);
}

TEST(FrameDispatcher, PlugCategoryFollowsTheSynthFlag) {
    PlainEffect effect;
    EXPECT_EQ(dispatch(effect, 35), 0);
    effect.isSynth(true);
    EXPECT_EQ(dispatch(effect, 35), 2);
    effect.isSynth(false);
    EXPECT_EQ(dispatch(effect, 35), 0);
}

TEST(FrameDispatcher, BlockSizeAndSampleRateAreBothStored) {
    PlainEffect effect;
    EXPECT_EQ(dispatch(effect, 43, 0, 256, nullptr, 32000.0f), 1);
    EXPECT_EQ(effect.getBlockSize(), 256);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(effect.getSampleRate()), std::bit_cast<std::uint32_t>(32000.0f));
}

TEST(FrameDispatcher, GetSpeakerArrangementStoresNullInBothSlots) {
    PlainEffect effect;
    VstSpeakerArrangement dummy{};
    VstSpeakerArrangement* input = &dummy;
    VstSpeakerArrangement* output = &dummy;
    EXPECT_EQ(dispatch(effect, 69, 0, reinterpret_cast<VstIntPtr>(&input), &output), 0);
    EXPECT_EQ(input, nullptr);
    EXPECT_EQ(output, nullptr);

    // Null slots: nothing is written; one null slot does not stop the other.
    EXPECT_EQ(dispatch(effect, 69, 0, 0, nullptr), 0);
    output = &dummy;
    EXPECT_EQ(dispatch(effect, 69, 0, 0, &output), 0);
    EXPECT_EQ(output, nullptr);
    input = &dummy;
    EXPECT_EQ(dispatch(effect, 69, 0, reinterpret_cast<VstIntPtr>(&input), nullptr), 0);
    EXPECT_EQ(input, nullptr);
}

TEST(FrameDispatcher, NullTextsAndRecordsWriteNothing) {
    PlainEffect effect;
    for (VstInt32 opcode : {4, 5, 6, 7, 8, 13, 14, 23, 24, 25, 27, 29, 33, 34, 38, 39, 40, 41, 42, 45, 46, 47,
                            48, 51, 56, 62, 64, 65, 66, 69, 70, 75, 76}) {
        EXPECT_EQ(dispatch(effect, opcode, 0, 0, nullptr, 0.0f), 0) << "opcode " << opcode;
        EXPECT_EQ(dispatch(effect, opcode, 7, 0, nullptr, 0.0f), 0) << "opcode " << opcode;
    }
    // Opcode 42 with both arrangements null, 69 with both slots null.
    EXPECT_EQ(dispatch(effect, 42, 0, 0, nullptr), 0);
    EXPECT_EQ(dispatch(effect, 69, 0, 0, nullptr), 0);
}

TEST(FrameDispatcher, DefaultTextsThroughTheDispatcher) {
    PlainEffect effect;
    for (VstInt32 opcode : {5, 6, 7, 8}) {
        char text[8];
        std::memset(text, 'x', sizeof text);
        EXPECT_EQ(dispatch(effect, opcode, 0, 0, text), 0);
        EXPECT_EQ(text[0], '\0') << "opcode " << opcode;
        EXPECT_EQ(text[1], 'x') << "opcode " << opcode;
    }
}

TEST(FrameDispatcher, ArbitraryIndexAndValueAreHarmless) {
    // Every opcode with extreme index, value and opt on the plain effect: no
    // crash and no undefined behaviour (the sanitizer build checks the latter).
    const VstInt32 indices[] = {0, -1, std::numeric_limits<VstInt32>::min(), std::numeric_limits<VstInt32>::max()};
    const VstIntPtr values[] = {0, -1, std::numeric_limits<VstIntPtr>::min(), std::numeric_limits<VstIntPtr>::max()};
    const float opts[] = {0.0f, -1.0f, std::numeric_limits<float>::quiet_NaN(),
                          std::numeric_limits<float>::infinity()};
    for (VstInt32 opcode = -1; opcode <= 80; ++opcode) {
        if (opcode == 42 || opcode == 69) continue;  // value is a pointer there
        for (VstInt32 index : indices)
            for (VstIntPtr value : values)
                for (float opt : opts) {
                    PlainEffect effect(nullptr, 2, 2);
                    alignas(16) char slot[128] = {};
                    VstIntPtr result = dispatch(effect, opcode, index, value, slot, opt);
                    if (opcode == 22) {
                        EXPECT_EQ(result, 0x4E764566);
                    }
                    if (opcode > 76 || opcode < 0) {
                        EXPECT_EQ(result, 0);
                    }
                }
    }
}

}  // namespace
