// The frame's requests to the host: each wrapper's opcode and arguments as the
// host callback receives them, how the answer is turned into the result, and
// the answer when the effect has no callback at all.
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>

#include "tests/frame/RecordingEffect.h"
#include "Opcodes.h"

using namespace frame_test;

namespace {

class FrameHostWrappers : public ::testing::Test {
protected:
    void SetUp() override { RecordingHost::reset(); }
    static RecordingHost& host() { return RecordingHost::instance(); }

    // Checks that exactly one request reached the host, with these arguments.
    static void expectOneRequest(AEffect* effect, VstInt32 opcode, VstInt32 index, VstIntPtr value, const void* ptr,
                                 float opt) {
        ASSERT_EQ(host().calls.size(), 1u) << "opcode " << opcode;
        const HostCall& c = host().calls[0];
        EXPECT_EQ(c.effect, effect) << "opcode " << opcode;
        EXPECT_EQ(c.opcode, opcode);
        EXPECT_EQ(c.index, index) << "opcode " << opcode;
        EXPECT_EQ(c.value, value) << "opcode " << opcode;
        EXPECT_EQ(c.ptr, ptr) << "opcode " << opcode;
        // opt compared as a bit pattern: the value must pass unchanged.
        EXPECT_EQ(std::bit_cast<std::uint32_t>(c.opt), std::bit_cast<std::uint32_t>(opt)) << "opcode " << opcode;
        host().calls.clear();
    }
};

// A wrapper whose result is the host's answer converted: checked for one
// non-zero answer with the callback, and 0 without one.
struct PassThrough {
    const char* name;
    VstInt32 opcode;
    VstInt32 index;
    VstIntPtr value;
    const void* ptr;
    float opt;
    std::function<VstIntPtr(PlainEffect&)> run;
};

char gText[32] = "query";
int gRecord = 0;
void* const kRecord = &gRecord;

std::vector<PassThrough> passThroughs() {
    // Answers are converted: bools to 0/1, counts to int32, pointers kept.
    auto asBool = [](bool b) { return static_cast<VstIntPtr>(b); };
    auto asPtr = [](const void* p) { return reinterpret_cast<VstIntPtr>(p); };
    return {
        {"getCurrentUniqueId", 2, 0, 0, nullptr, 0.0f, [](PlainEffect& e) { return e.getCurrentUniqueId(); }},
        {"beginEdit", 43, 5, 0, nullptr, 0.0f, [=](PlainEffect& e) { return asBool(e.beginEdit(5)); }},
        {"endEdit", 44, 6, 0, nullptr, 0.0f, [=](PlainEffect& e) { return asBool(e.endEdit(6)); }},
        {"ioChanged", 13, 0, 0, nullptr, 0.0f, [=](PlainEffect& e) { return asBool(e.ioChanged()); }},
        {"getInputLatency", 18, 0, 0, nullptr, 0.0f, [](PlainEffect& e) { return e.getInputLatency(); }},
        {"getOutputLatency", 19, 0, 0, nullptr, 0.0f, [](PlainEffect& e) { return e.getOutputLatency(); }},
        {"getTimeInfo", 7, 0, 0x2F, nullptr, 0.0f, [=](PlainEffect& e) { return asPtr(e.getTimeInfo(0x2F)); }},
        {"getCurrentProcessLevel", 23, 0, 0, nullptr, 0.0f,
         [](PlainEffect& e) { return e.getCurrentProcessLevel(); }},
        {"getAutomationState", 24, 0, 0, nullptr, 0.0f, [](PlainEffect& e) { return e.getAutomationState(); }},
        {"getHostVendorString", 32, 0, 0, gText, 0.0f,
         [=](PlainEffect& e) { return asBool(e.getHostVendorString(gText)); }},
        {"getHostProductString", 33, 0, 0, gText, 0.0f,
         [=](PlainEffect& e) { return asBool(e.getHostProductString(gText)); }},
        {"getHostVendorVersion", 34, 0, 0, nullptr, 0.0f, [](PlainEffect& e) { return e.getHostVendorVersion(); }},
        {"hostVendorSpecific", 35, -3, 77, kRecord, 0.125f,
         [](PlainEffect& e) { return e.hostVendorSpecific(-3, 77, kRecord, 0.125f); }},
        {"canHostDo", 37, 0, 0, gText, 0.0f, [](PlainEffect& e) { return e.canHostDo(gText); }},
        {"getHostLanguage", 38, 0, 0, nullptr, 0.0f, [](PlainEffect& e) { return e.getHostLanguage(); }},
        {"getDirectory", 41, 0, 0, nullptr, 0.0f, [=](PlainEffect& e) { return asPtr(e.getDirectory()); }},
        {"updateDisplay", 42, 0, 0, nullptr, 0.0f, [=](PlainEffect& e) { return asBool(e.updateDisplay()); }},
        {"sizeWindow", 15, 640, 480, nullptr, 0.0f, [=](PlainEffect& e) { return asBool(e.sizeWindow(640, 480)); }},
        {"openFileSelector", 45, 0, 0, kRecord, 0.0f,
         [=](PlainEffect& e) { return asBool(e.openFileSelector(static_cast<VstFileSelect*>(kRecord))); }},
        {"closeFileSelector", 46, 0, 0, kRecord, 0.0f,
         [=](PlainEffect& e) { return asBool(e.closeFileSelector(static_cast<VstFileSelect*>(kRecord))); }},
        // offline requests: index = read-source flag / new-file count, value = option / file count
        {"offlineRead", 26, 1, 9, kRecord, 0.0f,
         [=](PlainEffect& e) { return asBool(e.offlineRead(static_cast<VstOfflineTask*>(kRecord), 9, true)); }},
        {"offlineWrite", 27, 0, 9, kRecord, 0.0f,
         [=](PlainEffect& e) { return asBool(e.offlineWrite(static_cast<VstOfflineTask*>(kRecord), 9)); }},
        {"offlineStart", 25, 2, 3, kRecord, 0.0f,
         [=](PlainEffect& e) { return asBool(e.offlineStart(static_cast<VstAudioFile*>(kRecord), 3, 2)); }},
        {"offlineGetCurrentPass", 28, 0, 0, nullptr, 0.0f,
         [](PlainEffect& e) { return e.offlineGetCurrentPass(); }},
        {"offlineGetCurrentMetaPass", 29, 0, 0, nullptr, 0.0f,
         [](PlainEffect& e) { return e.offlineGetCurrentMetaPass(); }},
        {"tempoAt", 10, 0, 4410, nullptr, 0.0f, [](PlainEffect& e) { return e.tempoAt(4410); }},
        {"getNumAutomatableParameters", 11, 0, 0, nullptr, 0.0f,
         [](PlainEffect& e) { return e.getNumAutomatableParameters(); }},
        {"getParameterQuantization", 12, 0, 0, nullptr, 0.0f,
         [](PlainEffect& e) { return e.getParameterQuantization(); }},
        {"needIdle", 14, 0, 0, nullptr, 0.0f, [=](PlainEffect& e) { return asBool(e.needIdle()); }},
        {"getPreviousPlug", 20, 1, 0, nullptr, 0.0f, [=](PlainEffect& e) { return asPtr(e.getPreviousPlug(1)); }},
        {"getNextPlug", 21, 2, 0, nullptr, 0.0f, [=](PlainEffect& e) { return asPtr(e.getNextPlug(2)); }},
        {"willProcessReplacing", 22, 0, 0, nullptr, 0.0f, [](PlainEffect& e) { return e.willProcessReplacing(); }},
        {"getInputSpeakerArrangement", 49, 0, 0, nullptr, 0.0f,
         [=](PlainEffect& e) { return asPtr(e.getInputSpeakerArrangement()); }},
        {"getOutputSpeakerArrangement", 31, 0, 0, nullptr, 0.0f,
         [=](PlainEffect& e) { return asPtr(e.getOutputSpeakerArrangement()); }},
        {"openWindow", 39, 0, 0, kRecord, 0.0f, [=](PlainEffect& e) { return asPtr(e.openWindow(kRecord)); }},
        {"closeWindow", 40, 0, 0, kRecord, 0.0f, [=](PlainEffect& e) { return asBool(e.closeWindow(kRecord)); }},
        {"getChunkFile", 48, 0, 0, kRecord, 0.0f, [=](PlainEffect& e) { return asBool(e.getChunkFile(kRecord)); }},
        {"getTimeInfoFilterZero", 7, 0, 0, nullptr, 0.0f, [=](PlainEffect& e) { return asPtr(e.getTimeInfo(0)); }},
    };
}

// The result each wrapper gives for a host answer: booleans become 1 for any
// non-zero answer, everything else is passed on.
bool isBoolWrapper(const std::string& name) {
    for (const char* b : {"beginEdit", "endEdit", "ioChanged", "getHostVendorString", "getHostProductString",
                          "updateDisplay", "sizeWindow", "openFileSelector", "closeFileSelector", "offlineRead",
                          "offlineWrite", "offlineStart", "needIdle", "closeWindow", "getChunkFile"})
        if (name == b) return true;
    return false;
}

TEST_F(FrameHostWrappers, EachWrapperSendsItsRequest) {
    for (const PassThrough& w : passThroughs()) {
        PlainEffect effect(&RecordingHost::callback);
        RecordingHost::reset(5);
        VstIntPtr result = w.run(effect);
        expectOneRequest(effect.getAeffect(), w.opcode, w.index, w.value, w.ptr, w.opt);
        EXPECT_EQ(result, isBoolWrapper(w.name) ? 1 : 5) << w.name;
    }
}

TEST_F(FrameHostWrappers, ZeroAnswersGiveZero) {
    for (const PassThrough& w : passThroughs()) {
        PlainEffect effect(&RecordingHost::callback);
        RecordingHost::reset(0);
        EXPECT_EQ(w.run(effect), 0) << w.name;
        EXPECT_EQ(host().calls.size(), 1u) << w.name;
    }
}

TEST_F(FrameHostWrappers, NegativeAnswersCountAsTrue) {
    for (const PassThrough& w : passThroughs()) {
        if (!isBoolWrapper(w.name)) continue;
        PlainEffect effect(&RecordingHost::callback);
        RecordingHost::reset(-1);
        EXPECT_EQ(w.run(effect), 1) << w.name;
    }
}

TEST_F(FrameHostWrappers, WithoutACallbackEveryWrapperAnswersZero) {
    for (const PassThrough& w : passThroughs()) {
        PlainEffect effect(nullptr);
        EXPECT_EQ(w.run(effect), 0) << w.name;
    }
    EXPECT_TRUE(host().calls.empty());
}

TEST_F(FrameHostWrappers, PointerAnswersComeBackAsPointers) {
    PlainEffect effect(&RecordingHost::callback);
    RecordingHost::reset(reinterpret_cast<VstIntPtr>(kRecord));
    EXPECT_EQ(static_cast<void*>(effect.getTimeInfo(0)), kRecord);
    EXPECT_EQ(effect.getDirectory(), kRecord);
    EXPECT_EQ(static_cast<void*>(effect.getPreviousPlug(0)), kRecord);
    EXPECT_EQ(static_cast<void*>(effect.getNextPlug(0)), kRecord);
    EXPECT_EQ(static_cast<void*>(effect.getInputSpeakerArrangement()), kRecord);
    EXPECT_EQ(static_cast<void*>(effect.getOutputSpeakerArrangement()), kRecord);
    EXPECT_EQ(effect.openWindow(nullptr), kRecord);
}

TEST_F(FrameHostWrappers, CanHostDoPassesTheText) {
    PlainEffect effect(&RecordingHost::callback);
    RecordingHost::reset(1);
    char question[] = "sendVstTimeInfo";
    EXPECT_EQ(effect.canHostDo(question), 1);
    EXPECT_EQ(host().textSeen, "sendVstTimeInfo");
    RecordingHost::reset(-1);
    EXPECT_EQ(effect.canHostDo(question), -1);
}

TEST_F(FrameHostWrappers, SetParameterAutomatedStoresThenReports) {
    RecordingEffect effect(&RecordingHost::callback);
    RecordingHost::reset(123);
    effect.setParameterAutomated(2, 0.625f);
    ASSERT_EQ(effect.calls.size(), 1u);
    EXPECT_EQ(effect.calls[0], call("setParameter", {2}, {}, {0.625f}));
    expectOneRequest(effect.getAeffect(), 0, 2, 0, nullptr, 0.625f);

    // Without a callback the parameter is still set.
    RecordingEffect lone(nullptr);
    lone.setParameterAutomated(1, 0.5f);
    ASSERT_EQ(lone.calls.size(), 1u);
    EXPECT_EQ(lone.calls[0], call("setParameter", {1}, {}, {0.5f}));
    EXPECT_TRUE(host().calls.empty());
}

TEST_F(FrameHostWrappers, MasterVersionIsAtLeastOne) {
    PlainEffect effect(&RecordingHost::callback);
    RecordingHost::reset(2400);
    EXPECT_EQ(effect.getMasterVersion(), 2400);
    expectOneRequest(effect.getAeffect(), 1, 0, 0, nullptr, 0.0f);
    RecordingHost::reset(0);
    EXPECT_EQ(effect.getMasterVersion(), 1);
    EXPECT_EQ(host().calls.size(), 1u);
    PlainEffect lone(nullptr);
    EXPECT_EQ(lone.getMasterVersion(), 1);
}

TEST_F(FrameHostWrappers, MasterIdleAsksTheHost) {
    PlainEffect effect(&RecordingHost::callback);
    effect.masterIdle();
    expectOneRequest(effect.getAeffect(), 3, 0, 0, nullptr, 0.0f);
    PlainEffect lone(nullptr);
    lone.masterIdle();
    EXPECT_TRUE(host().calls.empty());
}

TEST_F(FrameHostWrappers, ConnectionQueriesNegateTheAnswer) {
    PlainEffect effect(&RecordingHost::callback);
    RecordingHost::reset(0);
    EXPECT_TRUE(effect.isInputConnected(3));
    expectOneRequest(effect.getAeffect(), 4, 3, 0, nullptr, 0.0f);
    EXPECT_TRUE(effect.isOutputConnected(5));
    expectOneRequest(effect.getAeffect(), 4, 5, 1, nullptr, 0.0f);
    RecordingHost::reset(1);
    EXPECT_FALSE(effect.isInputConnected(0));
    EXPECT_FALSE(effect.isOutputConnected(0));
    RecordingHost::reset(-7);
    EXPECT_FALSE(effect.isInputConnected(0));
    EXPECT_FALSE(effect.isOutputConnected(0));

    PlainEffect lone(nullptr);
    EXPECT_TRUE(lone.isInputConnected(0));
    EXPECT_TRUE(lone.isOutputConnected(1));
}

TEST_F(FrameHostWrappers, UpdateSampleRateKeepsTheOldRateForNonPositiveAnswers) {
    PlainEffect effect(&RecordingHost::callback);
    RecordingHost::reset(48000);
    EXPECT_EQ(effect.updateSampleRate(), 48000.0);
    expectOneRequest(effect.getAeffect(), 16, 0, 0, nullptr, 0.0f);
    // 48000 is exact: bit pattern.
    EXPECT_EQ(std::bit_cast<std::uint32_t>(effect.getSampleRate()), std::bit_cast<std::uint32_t>(48000.0f));
    RecordingHost::reset(0);
    EXPECT_EQ(effect.updateSampleRate(), 48000.0);
    RecordingHost::reset(-44100);
    EXPECT_EQ(effect.updateSampleRate(), 48000.0);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(effect.getSampleRate()), std::bit_cast<std::uint32_t>(48000.0f));

    PlainEffect lone(nullptr);
    EXPECT_EQ(lone.updateSampleRate(), 44100.0);
}

TEST_F(FrameHostWrappers, UpdateBlockSizeKeepsTheOldSizeForNonPositiveAnswers) {
    PlainEffect effect(&RecordingHost::callback);
    RecordingHost::reset(256);
    EXPECT_EQ(effect.updateBlockSize(), 256);
    expectOneRequest(effect.getAeffect(), 17, 0, 0, nullptr, 0.0f);
    EXPECT_EQ(effect.getBlockSize(), 256);
    RecordingHost::reset(0);
    EXPECT_EQ(effect.updateBlockSize(), 256);
    RecordingHost::reset(-1);
    EXPECT_EQ(effect.updateBlockSize(), 256);
    EXPECT_EQ(effect.getBlockSize(), 256);

    PlainEffect lone(nullptr);
    EXPECT_EQ(lone.updateBlockSize(), 1024);
}

TEST_F(FrameHostWrappers, SendEventsIsTrueOnlyForExactlyOne) {
    PlainEffect effect(&RecordingHost::callback);
    auto* events = static_cast<VstEvents*>(kRecord);
    RecordingHost::reset(1);
    EXPECT_TRUE(effect.sendVstEventsToHost(events));
    expectOneRequest(effect.getAeffect(), 8, 0, 0, kRecord, 0.0f);
    for (VstIntPtr answer : {0, 2, -1, 257}) {
        RecordingHost::reset(answer);
        EXPECT_FALSE(effect.sendVstEventsToHost(events)) << answer;
    }
    PlainEffect lone(nullptr);
    EXPECT_FALSE(lone.sendVstEventsToHost(events));
}

TEST_F(FrameHostWrappers, FileSelectorsRefuseNullWithoutAsking) {
    PlainEffect effect(&RecordingHost::callback);
    RecordingHost::reset(1);
    EXPECT_FALSE(effect.openFileSelector(nullptr));
    EXPECT_FALSE(effect.closeFileSelector(nullptr));
    EXPECT_FALSE(effect.getChunkFile(nullptr));
    EXPECT_TRUE(host().calls.empty());
}

TEST_F(FrameHostWrappers, WantEventsAndOutputRate) {
    PlainEffect effect(&RecordingHost::callback);
    effect.wantEvents(1);
    expectOneRequest(effect.getAeffect(), 6, 0, 1, nullptr, 0.0f);
    effect.wantEvents(0);
    expectOneRequest(effect.getAeffect(), 6, 0, 0, nullptr, 0.0f);
    effect.setOutputSamplerate(88200.0f);
    expectOneRequest(effect.getAeffect(), 30, 0, 0, nullptr, 88200.0f);
    PlainEffect lone(nullptr);
    lone.wantEvents(1);
    lone.setOutputSamplerate(1.0f);
    EXPECT_TRUE(host().calls.empty());
}

// ---------------------------------------------------------------------------
// resume and the event request.

TEST_F(FrameHostWrappers, ResumeOfAPlainEffectDoesNotAskForEvents) {
    PlainEffect effect(&RecordingHost::callback);
    RecordingHost::reset(1);
    effect.resume();
    effect.dispatcher(effMainsChanged, 0, 1, nullptr, 0.0f);
    EXPECT_TRUE(host().calls.empty());
}

TEST_F(FrameHostWrappers, ResumeAsksForEventsWhenTheEffectReceivesMidi) {
    CapableEffect effect(&RecordingHost::callback, 1);
    effect.resume();
    ASSERT_EQ(effect.questions.size(), 1u);
    EXPECT_EQ(effect.questions[0], "receiveVstMidiEvent");
    expectOneRequest(effect.getAeffect(), 6, 0, 1, nullptr, 0.0f);
    // Through the dispatcher too.
    effect.dispatcher(effMainsChanged, 0, 1, nullptr, 0.0f);
    expectOneRequest(effect.getAeffect(), 6, 0, 1, nullptr, 0.0f);
}

TEST_F(FrameHostWrappers, ResumeNeedsAnAnswerOfExactlyOne) {
    for (VstInt32 answer : {0, -1, 2}) {
        CapableEffect effect(&RecordingHost::callback, answer);
        effect.resume();
        EXPECT_EQ(effect.questions.size(), 1u);
        EXPECT_TRUE(host().calls.empty()) << answer;
    }
}

TEST_F(FrameHostWrappers, ASynthAlwaysAsksForEvents) {
    CapableEffect effect(&RecordingHost::callback, 0);
    effect.isSynth(true);
    effect.resume();
    EXPECT_TRUE(effect.questions.empty());
    expectOneRequest(effect.getAeffect(), 6, 0, 1, nullptr, 0.0f);
}

TEST_F(FrameHostWrappers, SuspendAsksNothing) {
    CapableEffect effect(&RecordingHost::callback, 1);
    effect.suspend();
    effect.dispatcher(effMainsChanged, 0, 0, nullptr, 0.0f);
    EXPECT_TRUE(effect.questions.empty());
    EXPECT_TRUE(host().calls.empty());
}

// ---------------------------------------------------------------------------
// The rest of the extended defaults, called directly.

TEST_F(FrameHostWrappers, ExtendedDefaultsAskNothing) {
    PlainEffect effect(&RecordingHost::callback);
    RecordingHost::reset(1);
    char text[16] = "unchanged";
    EXPECT_TRUE(effect.canParameterBeAutomated(0));
    EXPECT_FALSE(effect.string2parameter(0, text));
    EXPECT_FALSE(effect.getProgramNameIndexed(0, 0, text));
    EXPECT_FALSE(effect.beginSetProgram());
    EXPECT_FALSE(effect.endSetProgram());
    EXPECT_EQ(effect.beginLoadBank(nullptr), 0);
    EXPECT_EQ(effect.beginLoadProgram(nullptr), 0);
    EXPECT_FALSE(effect.setSpeakerArrangement(nullptr, nullptr));
    EXPECT_FALSE(effect.setBypass(true));
    EXPECT_FALSE(effect.setPanLaw(0, 1.0f));
    EXPECT_EQ(effect.processEvents(nullptr), 0);
    EXPECT_EQ(effect.startProcess(), 0);
    EXPECT_EQ(effect.stopProcess(), 0);
    EXPECT_FALSE(effect.processVariableIo(nullptr));
    EXPECT_EQ(effect.setTotalSampleToProcess(-12), -12);
    EXPECT_EQ(effect.getGetTailSize(), 0);
    EXPECT_FALSE(effect.getEffectName(text));
    EXPECT_FALSE(effect.getVendorString(text));
    EXPECT_FALSE(effect.getProductString(text));
    EXPECT_EQ(effect.getVendorVersion(), 0);
    EXPECT_EQ(effect.vendorSpecific(1, 2, text, 3.0f), 0);
    EXPECT_EQ(effect.canDo(text), 0);
    EXPECT_EQ(effect.getVstVersion(), 2300);
    EXPECT_EQ(effect.getPlugCategory(), 0);
    EXPECT_EQ(effect.getMidiProgramName(0, nullptr), 0);
    EXPECT_EQ(effect.getCurrentMidiProgram(0, nullptr), -1);
    EXPECT_EQ(effect.getMidiProgramCategory(0, nullptr), 0);
    EXPECT_FALSE(effect.hasMidiProgramsChanged(0));
    EXPECT_FALSE(effect.getMidiKeyName(0, nullptr));
    EXPECT_EQ(effect.getNextShellPlugin(text), 0);
    EXPECT_FALSE(effect.offlineNotify(nullptr, 0, true));
    EXPECT_FALSE(effect.offlinePrepare(nullptr, 0));
    EXPECT_FALSE(effect.offlineRun(nullptr, 0));
    EXPECT_EQ(effect.reserved1(), 0);
    EXPECT_EQ(effect.reserved2(), 0);
    EXPECT_EQ(effect.getNumCategories(), 1);
    EXPECT_FALSE(effect.copyProgram(0));
    effect.inputConnected(0, true);
    effect.outputConnected(0, false);
    EXPECT_EQ(effect.reportCurrentPosition(), 0);
    EXPECT_EQ(effect.reportDestinationBuffer(), nullptr);
    EXPECT_FALSE(effect.getErrorText(text));
    EXPECT_EQ(effect.getIcon(), nullptr);
    EXPECT_FALSE(effect.setViewPosition(1, 2));
    EXPECT_EQ(effect.fxIdle(), 0);
    EXPECT_FALSE(effect.keysRequired());
    EXPECT_FALSE(effect.getParameterProperties(0, nullptr));
    EXPECT_FALSE(effect.getInputProperties(0, nullptr));
    EXPECT_FALSE(effect.getOutputProperties(0, nullptr));
    EXPECT_STREQ(text, "unchanged");
    EXPECT_TRUE(host().calls.empty());
}

TEST_F(FrameHostWrappers, CapabilityTables) {
    const char* const hostExpected[14] = {"sendVstEvents", "sendVstMidiEvent", "sendVstTimeInfo",
                                          "receiveVstEvents", "receiveVstMidiEvent", "reportConnectionChanges",
                                          "acceptIOChanges", "sizeWindow", "offline", "openFileSelector",
                                          "closeFileSelector", "startStopProcess", "shellCategory",
                                          "sendVstMidiEventFlagIsRealtime"};
    const char* const plugExpected[8] = {"sendVstEvents", "sendVstMidiEvent", "receiveVstEvents",
                                         "receiveVstMidiEvent", "receiveVstTimeInfo", "offline",
                                         "midiProgramNames", "bypass"};
    for (int i = 0; i < 14; ++i) EXPECT_STREQ(hostCanDos[i], hostExpected[i]) << i;
    for (int i = 0; i < 8; ++i) EXPECT_STREQ(plugCanDos[i], plugExpected[i]) << i;
}

}  // namespace
