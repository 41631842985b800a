#include "support/HostFixture.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstring>

#include "AudioEffect.h"
#include "Ordo/ImmutableString.h"

#ifndef AF_MODULE_PATH
#error "AF_MODULE_PATH must name the built module"
#endif

namespace aftest {

namespace {

// The exported start-up functions, by their mangled names: void AF::Startup(), void AF::Shutdown().
constexpr const char* kStartupSymbol = "_ZN2AF7StartupEv";
constexpr const char* kShutdownSymbol = "_ZN2AF8ShutdownEv";

}  // namespace

LoadedModule& LoadedModule::Get() {
    static LoadedModule module;
    return module;
}

LoadedModule::LoadedModule() {
    handle_ = dlopen(AF_MODULE_PATH, RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) {
        const char* why = dlerror();
        error_ = std::string("dlopen failed: ") + (why ? why : "unknown");
        return;
    }
    startup_ = reinterpret_cast<void (*)()>(dlsym(handle_, kStartupSymbol));
    shutdown_ = reinterpret_cast<void (*)()>(dlsym(handle_, kShutdownSymbol));
    if (startup_ == nullptr) {
        error_ = "the module does not export AF::Startup";
        return;
    }
    // Registrations of anything else in the process (the test program's own
    // copy of the start-up code) are dropped first: only the module's count.
    ML::VSTAudioFilterRegistry::Clear();
    startup_();
    registrations_ = ML::VSTAudioFilterRegistry::Registrations();
}

const Registration* LoadedModule::find(std::string_view identifier) const {
    const Ordo::ImmutableString id = Ordo::ImmutableString::CreateStatic(std::string(identifier).c_str());
    for (const Registration& registration : registrations_) {
        if (registration.id == id) return &registration;
    }
    return nullptr;
}

ML::VSTAudioFilterRegistry::Factory LoadedModule::factory() const {
    return registrations_.empty() ? nullptr : registrations_.front().factory;
}

std::vector<Registration> LoadedModule::restartup() const {
    ML::VSTAudioFilterRegistry::Clear();
    if (startup_ != nullptr) startup_();
    return ML::VSTAudioFilterRegistry::Registrations();
}

void LoadedModule::callShutdown() const {
    if (shutdown_ != nullptr) shutdown_();
}

std::vector<HostCall>& strayHostCalls() {
    static std::vector<HostCall> calls;
    return calls;
}

std::unique_ptr<HostEffect> HostEffect::Create(std::string_view identifier, bool withCallback) {
    const LoadedModule& module = LoadedModule::Get();
    const Registration* registration = module.find(identifier);
    if (registration == nullptr || registration->factory == nullptr) return nullptr;
    std::unique_ptr<HostEffect> host(new HostEffect());
    ML::VSTPropertySupportMixin* properties = nullptr;
    AudioEffect* made =
        registration->factory(registration->id, withCallback ? &recordingCallback : nullptr, &properties);
    if (made == nullptr) return nullptr;
    // From here on the host knows its effect by the record alone, as the
    // factory's AudioEffect pointer leads to it; the record's `user` field is the host's.
    AEffect* record = made->getAeffect();
    record->user = host.get();
    host->effect_ = record;
    host->properties_ = properties;
    return host;
}

HostEffect::~HostEffect() {
    if (effect_ != nullptr) close();
}

std::intptr_t HostEffect::dispatch(std::int32_t opcode, std::int32_t index, std::intptr_t value, void* ptr,
                                   float opt) {
    if (opcode == kClose) return close();
    return effect_->dispatcher(effect_, opcode, index, value, ptr, opt);
}

std::intptr_t HostEffect::close() {
    if (effect_ == nullptr) return 0;
    AEffect* record = effect_;
    effect_ = nullptr;
    properties_ = nullptr;
    return record->dispatcher(record, kClose, 0, 0, nullptr, 0.0f);
}

AEffect* HostEffect::release() {
    AEffect* record = effect_;
    effect_ = nullptr;
    properties_ = nullptr;
    return record;
}

void HostEffect::start(float sampleRate, std::int32_t blockSize) {
    open();
    setSampleRate(sampleRate);
    setBlockSize(blockSize);
    resume();
}

std::string HostEffect::text(std::int32_t opcode, std::int32_t index, const std::string& initial) {
    char buffer[kTextBufferSize] = {};
    std::memcpy(buffer, initial.data(), std::min(initial.size(), kTextBufferSize - 1));
    dispatch(opcode, index, 0, buffer, 0.0f);
    buffer[kTextBufferSize - 1] = '\0';
    return std::string(buffer);
}

void HostEffect::setParameter(std::int32_t index, float value) { effect_->setParameter(effect_, index, value); }

float HostEffect::getParameter(std::int32_t index) { return effect_->getParameter(effect_, index); }

std::vector<float*> HostEffect::pointers(Channels& buffers) const {
    std::vector<float*> out;
    for (auto& channel : buffers) out.push_back(channel.data());
    return out;
}

void HostEffect::processReplacing(Channels& buffers) {
    processReplacing(buffers, buffers.empty() ? 0 : static_cast<std::int32_t>(buffers.front().size()));
}

void HostEffect::processReplacing(Channels& buffers, std::int32_t frames) {
    if (buffers.size() < static_cast<std::size_t>(channels())) {
        ADD_FAILURE() << "the effect has " << channels() << " channels, the test passed " << buffers.size();
        return;
    }
    std::vector<float*> channelPointers = pointers(buffers);
    effect_->processReplacing(effect_, channelPointers.data(), channelPointers.data(), frames);
}

void HostEffect::processReplacing(Channels& inputs, Channels& outputs) {
    if (inputs.size() < static_cast<std::size_t>(effect_->numInputs) ||
        outputs.size() < static_cast<std::size_t>(channels()) || outputs.empty()) {
        ADD_FAILURE() << "too few channels for the effect";
        return;
    }
    std::vector<float*> in = pointers(inputs);
    std::vector<float*> out = pointers(outputs);
    effect_->processReplacing(effect_, in.data(), out.data(), static_cast<std::int32_t>(outputs.front().size()));
}

void HostEffect::process(Channels& inputs, Channels& outputs) {
    if (inputs.size() < static_cast<std::size_t>(effect_->numInputs) ||
        outputs.size() < static_cast<std::size_t>(channels()) || outputs.empty()) {
        ADD_FAILURE() << "too few channels for the effect";
        return;
    }
    std::vector<float*> in = pointers(inputs);
    std::vector<float*> out = pointers(outputs);
    effect_->process(effect_, in.data(), out.data(), static_cast<std::int32_t>(outputs.front().size()));
}

void HostEffect::processReplacingInBlocks(Channels& buffers, const std::vector<int>& blocks) {
    int first = 0;
    for (int frames : blocks) {
        Channels block = slice(buffers, first, frames);
        processReplacing(block, frames);
        for (std::size_t c = 0; c < buffers.size(); ++c) {
            std::copy(block[c].begin(), block[c].end(), buffers[c].begin() + first);
        }
        first += frames;
    }
}

std::vector<HostCall> HostEffect::callsWithOpcode(std::int32_t opcode) const {
    std::vector<HostCall> out;
    for (const HostCall& call : calls_) {
        if (call.opcode == opcode) out.push_back(call);
    }
    return out;
}

std::intptr_t HostEffect::recordingCallback(AEffect* effect, std::int32_t opcode, std::int32_t index,
                                            std::intptr_t value, void* ptr, float opt) {
    const HostCall call{effect, opcode, index, value, ptr, opt};
    HostEffect* host = effect != nullptr ? static_cast<HostEffect*>(effect->user) : nullptr;
    if (host == nullptr) {
        strayHostCalls().push_back(call);
        return 0;
    }
    host->calls_.push_back(call);
    return host->answer_ ? host->answer_(call) : 0;
}

}  // namespace aftest
