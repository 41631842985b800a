#include <mutex>

#include "ML/VSTAudioFilterRegistry.h"

namespace ML {

namespace {

struct RegistryState {
    std::mutex mutex;
    std::vector<VSTAudioFilterRegistry::Registration> registrations;
};

RegistryState& state() {
    static RegistryState* instance = new RegistryState();  // outlives every module that registers
    return *instance;
}

}  // namespace

void VSTAudioFilterRegistry::RegisterVSTPlugin(const Ordo::ImmutableString& id, const plinth::WideString& displayName,
                                               unsigned flags, Factory factory) {
    try {
        Registration registration{id, displayName, flags, factory};
        std::lock_guard<std::mutex> lock(state().mutex);
        state().registrations.push_back(std::move(registration));
    } catch (...) {
        // Out of memory: the registration is dropped; nothing crosses the boundary.
    }
}

std::vector<VSTAudioFilterRegistry::Registration> VSTAudioFilterRegistry::Registrations() {
    std::lock_guard<std::mutex> lock(state().mutex);
    return state().registrations;
}

bool VSTAudioFilterRegistry::Find(const Ordo::ImmutableString& id, Registration& found) {
    std::lock_guard<std::mutex> lock(state().mutex);
    for (auto it = state().registrations.rbegin(); it != state().registrations.rend(); ++it) {
        if (it->id == id) {
            found = *it;
            return true;
        }
    }
    return false;
}

void VSTAudioFilterRegistry::Clear() noexcept {
    std::lock_guard<std::mutex> lock(state().mutex);
    state().registrations.clear();
}

}  // namespace ML
