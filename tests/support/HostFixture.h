#pragma once
// A test host: loads the built module the way a host application does and
// drives its effects only through their AEffect record and property interface.
//
//   LoadedModule  the module loaded once per process with dlopen (AF_MODULE_PATH):
//                 its load hooks run, AF::Startup (found with dlsym) registers
//                 into the platform registry, and the registrations are kept.
//   HostEffect    one effect made by the registered factory with a recording
//                 host callback; methods for the dispatcher requests, the
//                 parameter entry points and both processing entry points.
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
// The effect is closed (opcode 1, which deletes it) by close() or by the
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
#include "support/Buffers.h"

namespace aftest {

using Registration = ML::VSTAudioFilterRegistry::Registration;

// The module as a host sees it. Get() loads it on first use; if loading fails,
// loaded() is false and error() says why (Create then gives null).
class LoadedModule {
public:
    static LoadedModule& Get();

    bool loaded() const { return handle_ != nullptr && startup_ != nullptr; }
    const std::string& error() const { return error_; }
    void* handle() const { return handle_; }

    // The registrations made by the first AF::Startup call, in order.
    const std::vector<Registration>& registrations() const { return registrations_; }
    // The registration whose identifier is the interned `identifier`; null if none.
    const Registration* find(std::string_view identifier) const;
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
    void* handle_ = nullptr;
    void (*startup_)() = nullptr;
    void (*shutdown_)() = nullptr;
    std::string error_;
    std::vector<Registration> registrations_;
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

// Host callback opcodes the tests look for.
inline constexpr std::int32_t kHostAutomate = 0;
inline constexpr std::int32_t kHostVersion = 1;

// Dispatcher opcodes a host sends.
enum Opcode : std::int32_t {
    kOpen = 0,
    kClose = 1,
    kSetProgram = 2,
    kGetProgram = 3,
    kGetProgramName = 5,
    kGetParamLabel = 6,
    kGetParamDisplay = 7,
    kGetParamName = 8,
    kSetSampleRate = 10,
    kSetBlockSize = 11,
    kMainsChanged = 12,
};

class HostEffect {
public:
    // Makes the effect registered under `identifier` through the registration's
    // factory. Null when the module is not loaded, the identifier is not
    // registered, or the factory answers null (a family not built yet).
    // `withCallback` false passes a null host callback.
    static std::unique_ptr<HostEffect> Create(std::string_view identifier, bool withCallback = true);
    ~HostEffect();  // closes the effect if it is still open

    HostEffect(const HostEffect&) = delete;
    HostEffect& operator=(const HostEffect&) = delete;

    AEffect* effect() const { return effect_; }
    ML::VSTPropertySupportMixin* properties() const { return properties_; }
    int channels() const { return effect_->numOutputs; }
    bool closed() const { return effect_ == nullptr; }

    // Dispatcher requests.
    std::intptr_t dispatch(std::int32_t opcode, std::int32_t index = 0, std::intptr_t value = 0, void* ptr = nullptr,
                           float opt = 0.0f);
    void open() { dispatch(kOpen); }
    void setSampleRate(float sampleRate) { dispatch(kSetSampleRate, 0, 0, nullptr, sampleRate); }
    void setBlockSize(std::int32_t frames) { dispatch(kSetBlockSize, 0, frames); }
    void resume() { dispatch(kMainsChanged, 0, 1); }
    void suspend() { dispatch(kMainsChanged, 0, 0); }
    void setProgram(std::intptr_t program) { dispatch(kSetProgram, 0, program); }
    std::intptr_t getProgram() { return dispatch(kGetProgram); }
    // Opcode 1: the effect deletes itself; returns the dispatcher's answer (1).
    // Afterwards effect() and properties() are null.
    std::intptr_t close();
    // Forgets the effect without closing it, for a test that destroys it
    // another way (through its property interface); returns the record.
    AEffect* release();
    // A host's start: open, sample rate, block size, resume.
    void start(float sampleRate = 44100.0f, std::int32_t blockSize = 1024);

    // Texts through opcodes 5 to 8. The buffer (kTextBufferSize bytes) starts
    // with `initial` and zeros, so a request that writes nothing returns `initial`.
    static constexpr std::size_t kTextBufferSize = 256;
    std::string text(std::int32_t opcode, std::int32_t index, const std::string& initial = std::string());
    std::string parameterName(std::int32_t index) { return text(kGetParamName, index); }
    std::string parameterLabel(std::int32_t index) { return text(kGetParamLabel, index); }
    std::string parameterDisplay(std::int32_t index) { return text(kGetParamDisplay, index); }
    std::string programName() { return text(kGetProgramName, 0); }

    // The parameter entry points of the record.
    void setParameter(std::int32_t index, float value);
    float getParameter(std::int32_t index);

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

    AEffect* effect_ = nullptr;
    ML::VSTPropertySupportMixin* properties_ = nullptr;
    std::vector<HostCall> calls_;
    std::function<std::intptr_t(const HostCall&)> answer_;
};

// Host calls that arrived for no known HostEffect (a null record, or before the
// record's `user` field pointed at its HostEffect).
std::vector<HostCall>& strayHostCalls();

}  // namespace aftest
