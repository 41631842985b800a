#include "support/HostFixture.h"

#include <algorithm>
#include <cstring>

#ifndef AF_MODULE_PATH
#error "AF_MODULE_PATH must name the built module"
#endif

namespace aftest {

LoadedModule& LoadedModule::Get() {
    static LoadedModule module;
    return module;
}

LoadedModule::LoadedModule() : module_(hostkit::Module::Load(AF_MODULE_PATH)) {}

ML::VSTAudioFilterRegistry::Factory LoadedModule::factory() const {
    return registrations().empty() ? nullptr : registrations().front().factory;
}

std::vector<Registration> LoadedModule::restartup() const {
    ML::VSTAudioFilterRegistry::Clear();
    if (module_.startupEntry() != nullptr) module_.startupEntry()();
    return ML::VSTAudioFilterRegistry::Registrations();
}

void LoadedModule::callShutdown() const {
    if (module_.shutdownEntry() != nullptr) module_.shutdownEntry()();
}

std::vector<HostCall>& strayHostCalls() {
    static std::vector<HostCall> calls;
    return calls;
}

std::unique_ptr<HostEffect> HostEffect::Create(std::string_view identifier, bool withCallback) {
    const Registration* registration = LoadedModule::Get().find(identifier);
    if (registration == nullptr) return nullptr;
    std::unique_ptr<HostEffect> host(new HostEffect());
    host->effect_ = hostkit::createEffect(*registration, withCallback ? &recordingCallback : nullptr);
    if (!host->effect_) return nullptr;
    // The record's `user` field is the host's: the recording callback finds its HostEffect there.
    host->effect_.record()->user = host.get();
    return host;
}

std::intptr_t HostEffect::dispatch(std::int32_t opcode, std::int32_t index, std::intptr_t value, void* ptr,
                                   float opt) {
    if (opcode == effClose) return close();
    return effect_.dispatch(opcode, index, value, ptr, opt);
}

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
    effect_.processReplacing(channelPointers.data(), frames);
}

void HostEffect::processReplacing(Channels& inputs, Channels& outputs) {
    if (inputs.size() < static_cast<std::size_t>(effect_.inputCount()) ||
        outputs.size() < static_cast<std::size_t>(channels()) || outputs.empty()) {
        ADD_FAILURE() << "too few channels for the effect";
        return;
    }
    std::vector<float*> in = pointers(inputs);
    std::vector<float*> out = pointers(outputs);
    effect_.record()->processReplacing(effect_.record(), in.data(), out.data(),
                                       static_cast<std::int32_t>(outputs.front().size()));
}

void HostEffect::process(Channels& inputs, Channels& outputs) {
    if (inputs.size() < static_cast<std::size_t>(effect_.inputCount()) ||
        outputs.size() < static_cast<std::size_t>(channels()) || outputs.empty()) {
        ADD_FAILURE() << "too few channels for the effect";
        return;
    }
    std::vector<float*> in = pointers(inputs);
    std::vector<float*> out = pointers(outputs);
    effect_.record()->process(effect_.record(), in.data(), out.data(), static_cast<std::int32_t>(outputs.front().size()));
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
