#include "ModuleOnce.h"

#include <dlfcn.h>

#include <cstdio>
#include <mutex>
#include <string>

#include "AudioEffect.h"
#include "ML/VSTAudioFilterRegistry.h"
#include "Ordo/ImmutableString.h"

namespace AFVst2 {
namespace {

// void AF::Startup(), by its mangled name.
constexpr const char* kStartupSymbol = "_ZN2AF7StartupEv";
constexpr const char* kModuleFile = "libAudioFilters.so";

// The folder of this library, with a trailing slash: the module lies beside it.
std::string ownFolder() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&ownFolder), &info) == 0 || info.dli_fname == nullptr) return "./";
    const std::string path = info.dli_fname;
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string("./") : path.substr(0, slash + 1);
}

// Loads and starts the module; the empty string on success, else the reason.
// The module stays loaded for the life of the process: effects made from it
// may outlive any one plug-in file's use of it.
std::string loadAndStart() {
    const std::string path = ownFolder() + kModuleFile;
    void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        const char* reason = dlerror();
        return "cannot load " + path + ": " + (reason != nullptr ? reason : "unknown reason");
    }
    auto startup = reinterpret_cast<void (*)()>(dlsym(handle, kStartupSymbol));
    if (startup == nullptr) return path + " has no AF::Startup export";
    startup();
    return {};
}

const std::string& startedOnce() {
    static std::once_flag once;
    static std::string error;
    std::call_once(once, [] {
        error = loadAndStart();
        if (!error.empty()) std::fprintf(stderr, "AudioFilters VST 2: %s\n", error.c_str());
    });
    return error;
}

}  // namespace

AEffect* createRegisteredEffect(const char* identifier, audioMasterCallback host) {
    if (!startedOnce().empty()) return nullptr;
    ML::VSTAudioFilterRegistry::Registration registration;
    if (!ML::VSTAudioFilterRegistry::Find(Ordo::ImmutableString::CreateStatic(identifier), registration) ||
        registration.factory == nullptr) {
        std::fprintf(stderr, "AudioFilters VST 2: the module registers no '%s'\n", identifier);
        return nullptr;
    }
    ML::VSTPropertySupportMixin* properties = nullptr;
    AudioEffect* effect = registration.factory(registration.id, host, &properties);
    if (effect == nullptr) return nullptr;
    AEffect* record = effect->getAeffect();
    return record != nullptr && record->magic == kEffectMagic ? record : nullptr;
}

}  // namespace AFVst2
