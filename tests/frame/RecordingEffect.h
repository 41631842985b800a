#pragma once
// Test doubles of the frame: an effect whose virtual operations record their
// calls and arguments, an editor that does the same, and a host callback that
// logs every request and answers a value chosen by the test.
#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "frame/AudioEffectX.h"
#include "frame/Opcodes.h"

namespace frame_test {

// One recorded call: the operation's name and its arguments in order. Integers
// (bools as 0/1) go to `ints`, pointers to `ptrs`, floats to `reals`.
struct Call {
    std::string op;
    std::vector<std::int64_t> ints;
    std::vector<const void*> ptrs;
    std::vector<float> reals;

    bool operator==(const Call& other) const {
        if (op != other.op || ints != other.ints || ptrs != other.ptrs || reals.size() != other.reals.size())
            return false;
        // Floats compared by value; tests pass exactly representable numbers.
        for (std::size_t i = 0; i < reals.size(); ++i)
            if (!(reals[i] == other.reals[i])) return false;
        return true;
    }
};

inline std::ostream& operator<<(std::ostream& out, const Call& call) {
    out << call.op << "(ints:";
    for (auto v : call.ints) out << ' ' << v;
    out << "; ptrs:";
    for (auto p : call.ptrs) out << ' ' << p;
    out << "; reals:";
    for (auto r : call.reals) out << ' ' << r;
    return out << ')';
}

inline Call call(std::string op, std::vector<std::int64_t> ints = {}, std::vector<const void*> ptrs = {},
                 std::vector<float> reals = {}) {
    return Call{std::move(op), std::move(ints), std::move(ptrs), std::move(reals)};
}

// Counts destructor runs of RecordingEffect and TestEditor across a test.
inline int& effectsDestroyed() {
    static int count = 0;
    return count;
}
inline int& editorsDestroyed() {
    static int count = 0;
    return count;
}

// An effect whose every operation reachable from the dispatcher and the record
// records itself. Each answers `answers[op]` (0 when the test set none), so a
// test can see the dispatcher pass a value on or turn it into 0/1.
class RecordingEffect : public AudioEffectX {
public:
    explicit RecordingEffect(audioMasterCallback master = nullptr, VstInt32 programs = 3, VstInt32 params = 4)
        : AudioEffectX(master, programs, params) {}
    ~RecordingEffect() override { ++effectsDestroyed(); }

    std::vector<Call> calls;
    std::map<std::string, std::int64_t> answers;
    float vu = 0.0f;

    std::int64_t answer(const std::string& op) const {
        auto found = answers.find(op);
        return found == answers.end() ? 0 : found->second;
    }
    bool yes(const std::string& op) const { return answer(op) != 0; }
    void log(std::string op, std::vector<std::int64_t> ints = {}, std::vector<const void*> ptrs = {},
             std::vector<float> reals = {}) {
        calls.push_back(call(std::move(op), std::move(ints), std::move(ptrs), std::move(reals)));
    }

    // The fields the frame keeps, for checks.
    VstInt32 programCount() const { return numPrograms; }
    VstInt32 parameterCount() const { return numParams; }
    audioMasterCallback master() const { return audioMaster; }

    // --- AudioEffect slots
    void open() override { log("open"); }
    void close() override { log("close"); }
    void suspend() override { log("suspend"); }
    void resume() override { log("resume"); }
    void setSampleRate(float rate) override { log("setSampleRate", {}, {}, {rate}); }
    void setBlockSize(VstInt32 size) override { log("setBlockSize", {size}); }
    void processReplacing(float** in, float** out, VstInt32 frames) override {
        log("processReplacing", {frames}, {in, out});
    }
    void process(float** in, float** out, VstInt32 frames) override { log("process", {frames}, {in, out}); }
    void setParameter(VstInt32 index, float value) override { log("setParameter", {index}, {}, {value}); }
    float getParameter(VstInt32 index) override {
        log("getParameter", {index});
        return static_cast<float>(answer("getParameter")) / 4.0f;
    }
    VstInt32 getProgram() override {
        log("getProgram");
        return static_cast<VstInt32>(answer("getProgram"));
    }
    void setProgram(VstInt32 program) override { log("setProgram", {program}); }
    void setProgramName(char* name) override { log("setProgramName", {}, {name}); }
    void getProgramName(char* name) override { log("getProgramName", {}, {name}); }
    void getParameterLabel(VstInt32 index, char* text) override { log("getParameterLabel", {index}, {text}); }
    void getParameterDisplay(VstInt32 index, char* text) override { log("getParameterDisplay", {index}, {text}); }
    void getParameterName(VstInt32 index, char* text) override { log("getParameterName", {index}, {text}); }
    VstInt32 getChunk(void** data, bool isPreset) override {
        log("getChunk", {isPreset}, {data});
        return static_cast<VstInt32>(answer("getChunk"));
    }
    VstInt32 setChunk(void* data, VstInt32 size, bool isPreset) override {
        log("setChunk", {size, isPreset}, {data});
        return static_cast<VstInt32>(answer("setChunk"));
    }
    float getVu() override {
        log("getVu");
        return vu;
    }

    // --- AudioEffectX slots reached from the dispatcher
    VstInt32 processEvents(VstEvents* events) override {
        log("processEvents", {}, {events});
        return static_cast<VstInt32>(answer("processEvents"));
    }
    bool canParameterBeAutomated(VstInt32 index) override {
        log("canParameterBeAutomated", {index});
        return yes("canParameterBeAutomated");
    }
    bool string2parameter(VstInt32 index, char* text) override {
        log("string2parameter", {index}, {text});
        return yes("string2parameter");
    }
    VstInt32 getNumCategories() override {
        log("getNumCategories");
        return static_cast<VstInt32>(answer("getNumCategories"));
    }
    bool getProgramNameIndexed(VstInt32 category, VstInt32 index, char* text) override {
        log("getProgramNameIndexed", {category, index}, {text});
        return yes("getProgramNameIndexed");
    }
    bool copyProgram(VstInt32 destination) override {
        log("copyProgram", {destination});
        return yes("copyProgram");
    }
    void inputConnected(VstInt32 index, bool state) override { log("inputConnected", {index, state}); }
    void outputConnected(VstInt32 index, bool state) override { log("outputConnected", {index, state}); }
    bool getInputProperties(VstInt32 index, VstPinProperties* p) override {
        log("getInputProperties", {index}, {p});
        return yes("getInputProperties");
    }
    bool getOutputProperties(VstInt32 index, VstPinProperties* p) override {
        log("getOutputProperties", {index}, {p});
        return yes("getOutputProperties");
    }
    VstInt32 getPlugCategory() override {
        log("getPlugCategory");
        return static_cast<VstInt32>(answer("getPlugCategory"));
    }
    VstInt32 reportCurrentPosition() override {
        log("reportCurrentPosition");
        return static_cast<VstInt32>(answer("reportCurrentPosition"));
    }
    float* reportDestinationBuffer() override {
        log("reportDestinationBuffer");
        return reinterpret_cast<float*>(static_cast<std::intptr_t>(answer("reportDestinationBuffer")));
    }
    bool offlineNotify(VstAudioFile* files, VstInt32 count, bool start) override {
        log("offlineNotify", {count, start}, {files});
        return yes("offlineNotify");
    }
    bool offlinePrepare(VstOfflineTask* task, VstInt32 count) override {
        log("offlinePrepare", {count}, {task});
        return yes("offlinePrepare");
    }
    bool offlineRun(VstOfflineTask* task, VstInt32 count) override {
        log("offlineRun", {count}, {task});
        return yes("offlineRun");
    }
    bool processVariableIo(VstVariableIo* io) override {
        log("processVariableIo", {}, {io});
        return yes("processVariableIo");
    }
    bool setSpeakerArrangement(VstSpeakerArrangement* in, VstSpeakerArrangement* out) override {
        log("setSpeakerArrangement", {}, {in, out});
        return yes("setSpeakerArrangement");
    }
    void setBlockSizeAndSampleRate(VstInt32 size, float rate) override {
        log("setBlockSizeAndSampleRate", {size}, {}, {rate});
    }
    bool setBypass(bool onOff) override {
        log("setBypass", {onOff});
        return yes("setBypass");
    }
    bool getEffectName(char* name) override {
        log("getEffectName", {}, {name});
        return yes("getEffectName");
    }
    bool getErrorText(char* text) override {
        log("getErrorText", {}, {text});
        return yes("getErrorText");
    }
    bool getVendorString(char* text) override {
        log("getVendorString", {}, {text});
        return yes("getVendorString");
    }
    bool getProductString(char* text) override {
        log("getProductString", {}, {text});
        return yes("getProductString");
    }
    VstInt32 getVendorVersion() override {
        log("getVendorVersion");
        return static_cast<VstInt32>(answer("getVendorVersion"));
    }
    VstIntPtr vendorSpecific(VstInt32 a, VstIntPtr b, void* p, float f) override {
        log("vendorSpecific", {a, b}, {p}, {f});
        return static_cast<VstIntPtr>(answer("vendorSpecific"));
    }
    VstInt32 canDo(char* text) override {
        log("canDo", {}, {text});
        return static_cast<VstInt32>(answer("canDo"));
    }
    VstInt32 getGetTailSize() override {
        log("getGetTailSize");
        return static_cast<VstInt32>(answer("getGetTailSize"));
    }
    VstInt32 fxIdle() override {
        log("fxIdle");
        return static_cast<VstInt32>(answer("fxIdle"));
    }
    void* getIcon() override {
        log("getIcon");
        return reinterpret_cast<void*>(static_cast<std::intptr_t>(answer("getIcon")));
    }
    bool setViewPosition(VstInt32 x, VstInt32 y) override {
        log("setViewPosition", {x, y});
        return yes("setViewPosition");
    }
    bool getParameterProperties(VstInt32 index, VstParameterProperties* p) override {
        log("getParameterProperties", {index}, {p});
        return yes("getParameterProperties");
    }
    bool keysRequired() override {
        log("keysRequired");
        return yes("keysRequired");
    }
    VstInt32 getVstVersion() override {
        log("getVstVersion");
        return static_cast<VstInt32>(answer("getVstVersion"));
    }
    VstInt32 getMidiProgramName(VstInt32 channel, MidiProgramName* name) override {
        log("getMidiProgramName", {channel}, {name});
        return static_cast<VstInt32>(answer("getMidiProgramName"));
    }
    VstInt32 getCurrentMidiProgram(VstInt32 channel, MidiProgramName* name) override {
        log("getCurrentMidiProgram", {channel}, {name});
        return static_cast<VstInt32>(answer("getCurrentMidiProgram"));
    }
    VstInt32 getMidiProgramCategory(VstInt32 channel, MidiProgramCategory* category) override {
        log("getMidiProgramCategory", {channel}, {category});
        return static_cast<VstInt32>(answer("getMidiProgramCategory"));
    }
    bool hasMidiProgramsChanged(VstInt32 channel) override {
        log("hasMidiProgramsChanged", {channel});
        return yes("hasMidiProgramsChanged");
    }
    bool getMidiKeyName(VstInt32 channel, MidiKeyName* name) override {
        log("getMidiKeyName", {channel}, {name});
        return yes("getMidiKeyName");
    }
    bool beginSetProgram() override {
        log("beginSetProgram");
        return yes("beginSetProgram");
    }
    bool endSetProgram() override {
        log("endSetProgram");
        return yes("endSetProgram");
    }
    bool getSpeakerArrangement(VstSpeakerArrangement** in, VstSpeakerArrangement** out) override {
        log("getSpeakerArrangement", {}, {in, out});
        return yes("getSpeakerArrangement");
    }
    VstInt32 getNextShellPlugin(char* name) override {
        log("getNextShellPlugin", {}, {name});
        return static_cast<VstInt32>(answer("getNextShellPlugin"));
    }
    VstInt32 startProcess() override {
        log("startProcess");
        return static_cast<VstInt32>(answer("startProcess"));
    }
    VstInt32 stopProcess() override {
        log("stopProcess");
        return static_cast<VstInt32>(answer("stopProcess"));
    }
    VstInt32 setTotalSampleToProcess(VstInt32 value) override {
        log("setTotalSampleToProcess", {value});
        return static_cast<VstInt32>(answer("setTotalSampleToProcess"));
    }
    bool setPanLaw(VstInt32 type, float value) override {
        log("setPanLaw", {type}, {}, {value});
        return yes("setPanLaw");
    }
    VstInt32 beginLoadBank(VstPatchChunkInfo* info) override {
        log("beginLoadBank", {}, {info});
        return static_cast<VstInt32>(answer("beginLoadBank"));
    }
    VstInt32 beginLoadProgram(VstPatchChunkInfo* info) override {
        log("beginLoadProgram", {}, {info});
        return static_cast<VstInt32>(answer("beginLoadProgram"));
    }
};

// The smallest concrete effect: every operation keeps the frame's default.
class PlainEffect : public AudioEffectX {
public:
    explicit PlainEffect(audioMasterCallback master = nullptr, VstInt32 programs = 1, VstInt32 params = 1)
        : AudioEffectX(master, programs, params) {}
    void processReplacing(float**, float**, VstInt32) override {}
    // Access to the frame's protected fields for checks.
    AEffEditor* editorField() const { return editor; }
    VstInt32 currentProgram() const { return curProgram; }
};

// An effect that keeps the frame's resume but answers the capability query
// with a value of the test's choosing, recording each question.
class CapableEffect : public PlainEffect {
public:
    explicit CapableEffect(audioMasterCallback master, VstInt32 canDoAnswer)
        : PlainEffect(master), canDoAnswer_(canDoAnswer) {}
    std::vector<std::string> questions;
    VstInt32 canDo(char* text) override {
        questions.emplace_back(text != nullptr ? text : "<null>");
        return canDoAnswer_;
    }

private:
    VstInt32 canDoAnswer_;
};

// An editor recording its calls; the effect owns and deletes it.
class TestEditor : public AEffEditor {
public:
    std::vector<Call> calls;
    bool answer = true;
    ~TestEditor() override { ++editorsDestroyed(); }
    bool getRect(ERect** rect) override {
        calls.push_back(call("getRect", {}, {rect}));
        return answer;
    }
    bool open(void* window) override {
        calls.push_back(call("open", {}, {window}));
        return answer;
    }
    void close() override { calls.push_back(call("close")); }
    void idle() override { calls.push_back(call("idle")); }
    bool onKeyDown(VstKeyCode& key) override {
        calls.push_back(call("onKeyDown", {key.character, key.virt, key.modifier}));
        return answer;
    }
    bool onKeyUp(VstKeyCode& key) override {
        calls.push_back(call("onKeyUp", {key.character, key.virt, key.modifier}));
        return answer;
    }
    bool setKnobMode(VstInt32 mode) override {
        calls.push_back(call("setKnobMode", {mode}));
        return answer;
    }
};

// A host callback that logs every request. The callback is a plain function, so
// its log and answer live in one process-wide place that each test resets.
struct HostCall {
    AEffect* effect;
    VstInt32 opcode;
    VstInt32 index;
    VstIntPtr value;
    void* ptr;
    float opt;
};

struct RecordingHost {
    std::vector<HostCall> calls;
    VstIntPtr answer = 0;
    std::string textSeen;  // the text at ptr when the request carries one (canHostDo)

    static RecordingHost& instance() {
        static RecordingHost host;
        return host;
    }
    static void reset(VstIntPtr answer = 0) {
        instance().calls.clear();
        instance().answer = answer;
        instance().textSeen.clear();
    }
    static VstIntPtr callback(AEffect* effect, VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr,
                              float opt) {
        instance().calls.push_back(HostCall{effect, opcode, index, value, ptr, opt});
        if (opcode == audioMasterCanDo && ptr != nullptr) instance().textSeen = static_cast<const char*>(ptr);
        return instance().answer;
    }
};

}  // namespace frame_test
