#pragma once
// A test host: loads the built module through the host kit, the way a host
// application does, and drives its effects only through their AEffect record
// and property interface.
//
//   LoadedModule  the module (AF_MODULE_PATH) loaded once per process: its load
//                 hooks run, its start-up registers into the platform registry,
//                 and the registrations are kept.
//   HostEffect    one effect made by the registered factory with a recording
//                 host callback, held by a hostkit::Effect; methods for the
//                 dispatcher requests, the parameter entry points and both
//                 processing entry points.
//
// Typical use:
//
//   auto fx = aftest::HostEffect::Create("Internal Volume Stereo");
//   ASSERT_TRUE(fx);
//   fx->start(44100.0f, 1024);                      // open, rate, block size, resume
//   fx->setParameter(0, 0.25f);
//   aftest::Channels audio = aftest::taggedNoise(2, 512);
//   fx->processReplacing(audio);                    // in place, as a host does
//   EXPECT_EQ(fx->calls().size(), 0u);              // what the effect told the host
//
// The effect is closed (effClose, which deletes it) by close() or by the
// HostEffect's destructor. The module is never unloaded: effect code stays
// mapped for the whole test program.
//
// The registry is a process-wide singleton shared with the test program. The
// snapshot taken at load time is what Create uses, so a test may Clear() the
// registry or call Startup again (restartup()) without disturbing others.
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "AEffect.h"
#include "ML/VSTAudioFilterRegistry.h"
#include "ML/VSTPropertySupportMixin.h"
#include "Opcodes.h"
#include "hostkit/Module.h"
#include "support/Buffers.h"

namespace aftest {

using Registration = ML::VSTAudioFilterRegistry::Registration;

// The module as a host sees it. Get() loads it on first use; if loading fails,
// loaded() is false and error() says why (Create then gives null).
class LoadedModule {
public:
    static LoadedModule& Get();

    bool loaded() const { return module_.loaded(); }
    const std::string& error() const { return module_.error(); }
    void* handle() const { return module_.handle(); }
    const hostkit::Module& module() const { return module_; }

    // The registrations made by the module's start-up, in order.
    const std::vector<Registration>& registrations() const { return module_.registrations(); }
    // The registration whose identifier matches `identifier` (case ignored); null if none.
    const Registration* find(std::string_view identifier) const { return module_.find(identifier); }
    // The module's factory (the one every registration carries); null if not loaded.
    ML::VSTAudioFilterRegistry::Factory factory() const;

    // Clears the registry, calls the module's AF::Startup again and returns what
    // the registry holds afterwards.
    std::vector<Registration> restartup() const;
    void callShutdown() const;

    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;

private:
    LoadedModule();
    hostkit::Module module_;
};

// One call the effect made to the host callback.
struct HostCall {
    AEffect* effect;
    std::int32_t opcode;
    std::int32_t index;
    std::intptr_t value;
    void* ptr;
    float opt;
};

class HostEffect {
public:
    // Makes the effect registered under `identifier` through the registration's
    // factory. Null when the module is not loaded, the identifier is not
    // registered, or the factory answers null (a family not built yet).
    // `withCallback` false passes a null host callback.
    static std::unique_ptr<HostEffect> Create(std::string_view identifier, bool withCallback = true);
    // The handle closes the effect, if it is still open, when the HostEffect goes.

    HostEffect(const HostEffect&) = delete;
    HostEffect& operator=(const HostEffect&) = delete;

    AEffect* effect() const { return effect_.record(); }
    ML::VSTPropertySupportMixin* properties() const { return effect_.properties(); }
    int channels() const { return effect_.outputCount(); }
    bool closed() const { return !effect_; }

    // Dispatcher requests (effClose goes through close()).
    std::intptr_t dispatch(std::int32_t opcode, std::int32_t index = 0, std::intptr_t value = 0, void* ptr = nullptr,
                           float opt = 0.0f);
    void open() { effect_.open(); }
    void setSampleRate(float sampleRate) { effect_.setSampleRate(sampleRate); }
    void setBlockSize(std::int32_t frames) { effect_.setBlockSize(frames); }
    void resume() { effect_.resume(); }
    void suspend() { effect_.suspend(); }
    void setProgram(std::intptr_t program) { dispatch(effSetProgram, 0, program); }
    std::intptr_t getProgram() { return dispatch(effGetProgram); }
    // effClose: the effect deletes itself; returns the dispatcher's answer (1).
    // Afterwards effect() and properties() are null.
    std::intptr_t close() { return effect_.close(); }
    // Forgets the effect without closing it, for a test that destroys it
    // another way (through its property interface); returns the record.
    AEffect* release() { return effect_.release(); }
    // A host's start: open, sample rate, block size, resume.
    void start(float sampleRate = 44100.0f, std::int32_t blockSize = 1024) { effect_.start(sampleRate, blockSize); }

    // Texts through effGetProgramName to effGetParamName. The buffer starts with
    // `initial` and zeros, so a request that writes nothing returns `initial`.
    std::string text(std::int32_t opcode, std::int32_t index, const std::string& initial = std::string()) {
        return effect_.text(opcode, index, initial);
    }
    std::string parameterName(std::int32_t index) { return effect_.parameterName(index); }
    std::string parameterLabel(std::int32_t index) { return effect_.parameterLabel(index); }
    std::string parameterDisplay(std::int32_t index) { return effect_.parameterDisplay(index); }
    std::string programName() { return effect_.programName(); }

    // The parameter entry points of the record.
    void setParameter(std::int32_t index, float value) { effect_.setParameter(index, value); }
    float getParameter(std::int32_t index) { return effect_.getParameter(index); }

    // processReplacing with the same channel pointers as inputs and outputs
    // (frames: the first channel's length, or `frames` as given, even <= 0).
    // `buffers` must hold at least channels() channels.
    void processReplacing(Channels& buffers);
    void processReplacing(Channels& buffers, std::int32_t frames);
    // processReplacing with separate input and output buffers (passing the
    // same Channels twice processes in place). Frames: the first output's length.
    void processReplacing(Channels& inputs, Channels& outputs);
    // The accumulating entry point, likewise.
    void process(Channels& inputs, Channels& outputs);
    // Calls processReplacing in place once per entry of `blocks` over successive
    // frame ranges of `buffers` (each block copied out, processed, copied back).
    void processReplacingInBlocks(Channels& buffers, const std::vector<int>& blocks);

    // Every call the effect made to the host callback, in order.
    const std::vector<HostCall>& calls() const { return calls_; }
    std::vector<HostCall> callsWithOpcode(std::int32_t opcode) const;
    void clearCalls() { calls_.clear(); }
    // What the recording callback answers (0 for every request by default).
    void setAnswer(std::function<std::intptr_t(const HostCall&)> answer) { answer_ = std::move(answer); }

private:
    HostEffect() = default;
    static std::intptr_t recordingCallback(AEffect* effect, std::int32_t opcode, std::int32_t index,
                                           std::intptr_t value, void* ptr, float opt);
    std::vector<float*> pointers(Channels& buffers) const;

    hostkit::Effect effect_;
    std::vector<HostCall> calls_;
    std::function<std::intptr_t(const HostCall&)> answer_;
};

// Host calls that arrived for no known HostEffect (a null record, or before the
// record's `user` field pointed at its HostEffect).
std::vector<HostCall>& strayHostCalls();

}  // namespace aftest
