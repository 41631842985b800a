// The plug-in record as a freshly constructed effect fills it, and the five
// entry points that lead from the record back into the object.
#include <gtest/gtest.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "tests/frame/RecordingEffect.h"
#include "Opcodes.h"

using namespace frame_test;

namespace {

TEST(FrameRecord, FreshEffectFillsTheRecord) {
    RecordingEffect effect(&RecordingHost::callback, 3, 4);
    AEffect* e = effect.getAeffect();
    // "VstP" with the first character in the high byte.
    EXPECT_EQ(e->magic, 0x56737450);
    EXPECT_EQ(e->numPrograms, 3);
    EXPECT_EQ(e->numParams, 4);
    EXPECT_EQ(e->numInputs, 1);
    EXPECT_EQ(e->numOutputs, 2);
    EXPECT_EQ(e->flags, 0);
    EXPECT_EQ(e->resvd1, 0);
    EXPECT_EQ(e->resvd2, 0);
    EXPECT_EQ(e->initialDelay, 0);
    EXPECT_EQ(e->realQualities, 0);
    EXPECT_EQ(e->offQualities, 0);
    // 1.0f exactly: compared as a bit pattern.
    EXPECT_EQ(std::bit_cast<std::uint32_t>(e->ioRatio), 0x3F800000u);
    EXPECT_EQ(e->object, static_cast<void*>(static_cast<AudioEffect*>(&effect)));
    EXPECT_EQ(e->user, nullptr);
    EXPECT_EQ(e->uniqueID, 0x4E6F4566);  // "NoEf"
    EXPECT_EQ(e->version, 1);
    EXPECT_EQ(e->processDoubleReplacing, nullptr);
    for (char byte : e->future) EXPECT_EQ(byte, 0);
    EXPECT_NE(e->dispatcher, nullptr);
    EXPECT_NE(e->process, nullptr);
    EXPECT_NE(e->setParameter, nullptr);
    EXPECT_NE(e->getParameter, nullptr);
    EXPECT_NE(e->processReplacing, nullptr);
}

TEST(FrameRecord, FreshEffectFields) {
    RecordingEffect effect(&RecordingHost::callback, 3, 4);
    // 44100 and 1024 are exact; the rate is compared as a bit pattern.
    EXPECT_EQ(std::bit_cast<std::uint32_t>(effect.getSampleRate()), std::bit_cast<std::uint32_t>(44100.0f));
    EXPECT_EQ(effect.getBlockSize(), 1024);
    EXPECT_EQ(effect.programCount(), 3);
    EXPECT_EQ(effect.parameterCount(), 4);
    EXPECT_EQ(effect.getEditor(), nullptr);
    EXPECT_EQ(effect.master(), &RecordingHost::callback);
    // getProgram is overridden by the recorder; the plain effect shows curProgram.
    PlainEffect plain;
    EXPECT_EQ(plain.getProgram(), 0);
    EXPECT_EQ(plain.currentProgram(), 0);
}

TEST(FrameRecord, ConstructorNeverCallsTheHost) {
    RecordingHost::reset(7);
    RecordingEffect effect(&RecordingHost::callback);
    PlainEffect plain(&RecordingHost::callback);
    EXPECT_TRUE(RecordingHost::instance().calls.empty());
}

TEST(FrameRecord, ExtendedEffectAddsNoData) {
    EXPECT_EQ(sizeof(AudioEffectX), sizeof(AudioEffect));
}

TEST(FrameRecord, FourCharacterCodes) {
    EXPECT_EQ(kEffectMagic, 0x56737450);
    EXPECT_EQ(fourCharCode("NoEf"), 0x4E6F4566);
    EXPECT_EQ(fourCharCode("AFl2"), 0x41466C32);
}

#if INTPTR_MAX == INT64_MAX
TEST(FrameRecord, SixtyFourBitLayout) {
    // The natural 64-bit layout of the interface, checked at run time too.
    EXPECT_EQ(sizeof(AEffect), 192u);
    EXPECT_EQ(offsetof(AEffect, dispatcher), 8u);
    EXPECT_EQ(offsetof(AEffect, ioRatio), 92u);
    EXPECT_EQ(offsetof(AEffect, object), 96u);
    EXPECT_EQ(offsetof(AEffect, uniqueID), 112u);
    EXPECT_EQ(offsetof(AEffect, processReplacing), 120u);
    EXPECT_EQ(offsetof(AEffect, processDoubleReplacing), 128u);
    EXPECT_EQ(sizeof(VstSpeakerProperties), 112u);
    EXPECT_EQ(offsetof(VstSpeakerArrangement, speakers), 8u);
}
#endif

TEST(FrameRecord, EachRecordEntryReachesItsObject) {
    RecordingEffect first;
    RecordingEffect second;
    EXPECT_NE(first.getAeffect(), second.getAeffect());
    first.getAeffect()->dispatcher(first.getAeffect(), 0, 0, 0, nullptr, 0.0f);
    ASSERT_EQ(first.calls.size(), 1u);
    EXPECT_EQ(first.calls[0], call("open"));
    EXPECT_TRUE(second.calls.empty());
}

TEST(FrameRecord, DispatcherTrampolineForwardsEverything) {
    RecordingEffect effect;
    AEffect* e = effect.getAeffect();
    effect.answers["vendorSpecific"] = -77;
    char data[4] = {};
    EXPECT_EQ(e->dispatcher(e, effVendorSpecific, 9, -3, data, 0.75f), -77);
    ASSERT_EQ(effect.calls.size(), 1u);
    EXPECT_EQ(effect.calls[0], call("vendorSpecific", {9, -3}, {data}, {0.75f}));
}

TEST(FrameRecord, ProcessTrampolines) {
    RecordingEffect effect;
    AEffect* e = effect.getAeffect();
    float left[4] = {};
    float right[4] = {};
    float* inputs[2] = {left, right};
    float* outputs[2] = {right, left};
    e->processReplacing(e, inputs, outputs, 4);
    e->process(e, outputs, inputs, -2);
    ASSERT_EQ(effect.calls.size(), 2u);
    EXPECT_EQ(effect.calls[0], call("processReplacing", {4}, {inputs, outputs}));
    EXPECT_EQ(effect.calls[1], call("process", {-2}, {outputs, inputs}));
}

TEST(FrameRecord, ParameterTrampolines) {
    RecordingEffect effect;
    AEffect* e = effect.getAeffect();
    e->setParameter(e, 2, 0.25f);
    effect.answers["getParameter"] = 3;  // the recorder answers 3 / 4
    // 0.75f is exact: compared as a bit pattern.
    EXPECT_EQ(std::bit_cast<std::uint32_t>(e->getParameter(e, 1)), std::bit_cast<std::uint32_t>(0.75f));
    ASSERT_EQ(effect.calls.size(), 2u);
    EXPECT_EQ(effect.calls[0], call("setParameter", {2}, {}, {0.25f}));
    EXPECT_EQ(effect.calls[1], call("getParameter", {1}));
}

TEST(FrameRecord, EntryPointsIgnoreARecordWithoutObject) {
    // A record whose object the host cleared: every entry point does nothing.
    RecordingEffect effect;
    AEffect orphan;
    std::memcpy(&orphan, effect.getAeffect(), sizeof orphan);
    orphan.object = nullptr;
    float samples[2] = {1.0f, 2.0f};
    float* channels[1] = {samples};
    EXPECT_EQ(orphan.dispatcher(&orphan, 22, 0, 0, nullptr, 0.0f), 0);
    EXPECT_EQ(orphan.dispatcher(&orphan, 1, 0, 0, nullptr, 0.0f), 0);
    orphan.process(&orphan, channels, channels, 2);
    orphan.processReplacing(&orphan, channels, channels, 2);
    orphan.setParameter(&orphan, 0, 1.0f);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(orphan.getParameter(&orphan, 0)), 0u);
    EXPECT_EQ(orphan.dispatcher(nullptr, effOpen, 0, 0, nullptr, 0.0f), 0);
    EXPECT_TRUE(effect.calls.empty());
}

TEST(FrameRecord, CloseThroughTheRecordClosesAndDeletes) {
    int before = effectsDestroyed();
    auto* effect = new RecordingEffect();
    AEffect* e = effect->getAeffect();
    // The object's own log cannot be read afterwards, so the close call is
    // observed through the editor it owns: deleting the effect deletes it.
    auto* editor = new TestEditor();
    effect->setEditor(editor);
    int editorsBefore = editorsDestroyed();
    EXPECT_EQ(e->dispatcher(e, effClose, 0, 0, nullptr, 0.0f), 1);
    EXPECT_EQ(effectsDestroyed(), before + 1);
    EXPECT_EQ(editorsDestroyed(), editorsBefore + 1);
}

// Sees that close() runs before the object is destroyed.
class CloseOrderEffect : public PlainEffect {
public:
    explicit CloseOrderEffect(std::string* trace) : trace_(trace) {}
    ~CloseOrderEffect() override { *trace_ += "destroyed;"; }
    void close() override { *trace_ += "close;"; }

private:
    std::string* trace_;
};

TEST(FrameRecord, CloseRunsBeforeDestruction) {
    std::string trace;
    auto* effect = new CloseOrderEffect(&trace);
    AEffect* e = effect->getAeffect();
    EXPECT_EQ(e->dispatcher(e, effClose, 0, 0, nullptr, 0.0f), 1);
    EXPECT_EQ(trace, "close;destroyed;");
}

TEST(FrameRecord, CloseThroughTheDispatcherMethodDoesNotDelete) {
    int before = effectsDestroyed();
    {
        RecordingEffect effect;
        EXPECT_EQ(effect.dispatcher(effClose, 0, 0, nullptr, 0.0f), 0);
        ASSERT_EQ(effect.calls.size(), 1u);
        EXPECT_EQ(effect.calls[0], call("close"));
        EXPECT_EQ(effectsDestroyed(), before);
    }
    EXPECT_EQ(effectsDestroyed(), before + 1);
}

TEST(FrameRecord, DestructorDeletesTheEditor) {
    int before = editorsDestroyed();
    {
        PlainEffect effect;
        effect.setEditor(new TestEditor());
    }
    EXPECT_EQ(editorsDestroyed(), before + 1);
}

TEST(FrameRecord, SetEditorTogglesTheEditorFlag) {
    PlainEffect effect;
    auto* editor = new TestEditor();
    effect.setEditor(editor);
    EXPECT_EQ(effect.getEditor(), editor);
    EXPECT_EQ(effect.getAeffect()->flags, 0x1);
    effect.setEditor(nullptr);
    EXPECT_EQ(effect.getEditor(), nullptr);
    EXPECT_EQ(effect.getAeffect()->flags, 0);
    delete editor;  // detached, so the test owns it again
}

TEST(FrameRecord, RecordSettersAndFlags) {
    PlainEffect effect;
    AEffect* e = effect.getAeffect();
    effect.setUniqueID(fourCharCode("AFl2"));
    effect.setNumInputs(6);
    effect.setNumOutputs(16);
    effect.setInitialDelay(-4);
    effect.setRealtimeQualities(5);
    effect.setOfflineQualities(9);
    EXPECT_EQ(e->uniqueID, 0x41466C32);
    EXPECT_EQ(e->numInputs, 6);
    EXPECT_EQ(e->numOutputs, 16);
    EXPECT_EQ(e->initialDelay, -4);
    EXPECT_EQ(e->realQualities, 5);
    EXPECT_EQ(e->offQualities, 9);

    effect.hasClip(true);
    EXPECT_EQ(e->flags, 0x2);
    effect.hasVu(true);
    EXPECT_EQ(e->flags, 0x6);
    effect.canMono(true);
    EXPECT_EQ(e->flags, 0xE);
    effect.canProcessReplacing(true);
    EXPECT_EQ(e->flags, 0x1E);
    effect.programsAreChunks(true);
    EXPECT_EQ(e->flags, 0x3E);
    effect.isSynth(true);
    EXPECT_EQ(e->flags, 0x13E);
    effect.noTail(true);
    EXPECT_EQ(e->flags, 0x33E);
    effect.wantAsyncOperation(true);
    EXPECT_EQ(e->flags, 0x73E);
    effect.hasExternalBuffer(true);
    EXPECT_EQ(e->flags, 0xF3E);
    // Clearing each bit leaves the others alone.
    effect.hasVu(false);
    EXPECT_EQ(e->flags, 0xF3A);
    effect.canProcessReplacing(false);
    EXPECT_EQ(e->flags, 0xF2A);
    effect.isSynth(false);
    EXPECT_EQ(e->flags, 0xE2A);
    effect.noTail(false);
    effect.wantAsyncOperation(false);
    effect.hasExternalBuffer(false);
    EXPECT_EQ(e->flags, 0x2A);
    effect.hasClip(false);
    effect.canMono(false);
    effect.programsAreChunks(false);
    EXPECT_EQ(e->flags, 0);
    // Setting a bit twice keeps it set once.
    effect.canMono(true);
    effect.canMono(true);
    EXPECT_EQ(e->flags, 0x8);
}

TEST(FrameRecord, DefaultParameterSlots) {
    PlainEffect effect;
    effect.setParameter(0, 0.5f);
    // The default getParameter answers 0.0 whatever was set: bit pattern of +0.
    EXPECT_EQ(std::bit_cast<std::uint32_t>(effect.getParameter(0)), 0u);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(effect.getVu()), 0u);
    effect.setSampleRate(48000.0f);
    effect.setBlockSize(512);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(effect.getSampleRate()), std::bit_cast<std::uint32_t>(48000.0f));
    EXPECT_EQ(effect.getBlockSize(), 512);
    effect.setProgram(5);
    EXPECT_EQ(effect.getProgram(), 5);
    void* chunk = &effect;
    EXPECT_EQ(effect.getChunk(&chunk, false), 0);
    EXPECT_EQ(chunk, static_cast<void*>(&effect));
    EXPECT_EQ(effect.setChunk(chunk, 4, true), 0);
    // The accumulating entry point does nothing by default: outputs keep their samples.
    float in[2] = {1.0f, 2.0f};
    float out[2] = {3.0f, 4.0f};
    float* inputs[1] = {in};
    float* outputs[1] = {out};
    effect.getAeffect()->process(effect.getAeffect(), inputs, outputs, 2);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(out[0]), std::bit_cast<std::uint32_t>(3.0f));
    EXPECT_EQ(std::bit_cast<std::uint32_t>(out[1]), std::bit_cast<std::uint32_t>(4.0f));
}

TEST(FrameRecord, DefaultTextSlotsWriteOnlyTheZero) {
    PlainEffect effect;
    char text[8];
    std::memset(text, 'x', sizeof text);
    effect.getProgramName(text);
    EXPECT_EQ(text[0], '\0');
    EXPECT_EQ(text[1], 'x');
    std::memset(text, 'x', sizeof text);
    effect.getParameterLabel(0, text);
    EXPECT_EQ(text[0], '\0');
    EXPECT_EQ(text[1], 'x');
    std::memset(text, 'x', sizeof text);
    effect.getParameterDisplay(0, text);
    EXPECT_EQ(text[0], '\0');
    EXPECT_EQ(text[1], 'x');
    std::memset(text, 'x', sizeof text);
    effect.getParameterName(0, text);
    EXPECT_EQ(text[0], '\0');
    EXPECT_EQ(text[1], 'x');
    // Null buffers: nothing is written, nothing crashes.
    effect.getProgramName(nullptr);
    effect.getParameterLabel(0, nullptr);
    effect.getParameterDisplay(0, nullptr);
    effect.getParameterName(0, nullptr);
    effect.setProgramName(nullptr);
}

}  // namespace
