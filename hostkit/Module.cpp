#include "hostkit/Module.h"

#include <dlfcn.h>

#include <set>

namespace hostkit {
namespace {

// void AF::Startup() and void AF::Shutdown(), as the C++ compiler names them.
constexpr const char* kStartupSymbol = "_ZN2AF7StartupEv";
constexpr const char* kShutdownSymbol = "_ZN2AF8ShutdownEv";

std::string lastLoaderError() {
    const char* why = ::dlerror();
    return why != nullptr ? why : "unknown reason";
}

// The start of the mapped file that holds `address`; null if none does.
const void* fileBase(const void* address) {
    Dl_info info{};
    return ::dladdr(address, &info) != 0 ? info.dli_fbase : nullptr;
}

// What the registry holds from the module mapped at `base`, each identifier once.
std::vector<Registration> registrationsFrom(const void* base) {
    std::vector<Registration> mine;
    std::set<std::string> seen;
    // Asking the loader where an address lives walks the file's symbol table,
    // and a module registers every effect with one factory: ask once per factory.
    const void* lastFactory = nullptr;
    bool lastFactoryIsMine = false;
    for (Registration& registration : ML::VSTAudioFilterRegistry::Registrations()) {
        const void* factory = reinterpret_cast<const void*>(registration.factory);
        if (factory == nullptr) continue;
        if (factory != lastFactory) {
            lastFactory = factory;
            lastFactoryIsMine = fileBase(factory) == base;
        }
        if (!lastFactoryIsMine) continue;
        if (seen.insert(registration.id.c_str()).second) mine.push_back(std::move(registration));
    }
    return mine;
}

char lowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

bool sameIdentifier(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (lowerAscii(a[i]) != lowerAscii(b[i])) return false;
    return true;
}

Module Module::Load(const std::string& path) {
    Module module;
    module.path_ = path;
    try {
        // A name without a slash would make the loader search the system folders.
        const std::string opened = path.find('/') == std::string::npos ? "./" + path : path;
        module.handle_ = ::dlopen(opened.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (module.handle_ == nullptr) {
            module.error_ = "cannot load the effects module " + path + ": " + lastLoaderError();
            return module;
        }
        module.startup_ = reinterpret_cast<EntryPoint>(::dlsym(module.handle_, kStartupSymbol));
        module.shutdown_ = reinterpret_cast<EntryPoint>(::dlsym(module.handle_, kShutdownSymbol));
        if (module.startup_ == nullptr) {
            module.error_ = "the module " + path + " has no AF::Startup export; is it the AudioFilters module?";
            return module;
        }
        // Registrations already made by this module in this process are its
        // start-up's: it runs only when there are none.
        const void* base = fileBase(reinterpret_cast<const void*>(module.startup_));
        module.registrations_ = registrationsFrom(base);
        if (module.registrations_.empty()) {
            module.startup_();
            module.registrations_ = registrationsFrom(base);
        }
    } catch (...) {
        module.error_ = "out of memory while loading the effects module " + path;
    }
    return module;
}

const Registration* Module::find(std::string_view identifier) const {
    for (const Registration& registration : registrations_)
        if (sameIdentifier(registration.id.c_str(), identifier)) return &registration;
    return nullptr;
}

void Module::unload() {
    if (handle_ == nullptr) return;
    if (shutdown_ != nullptr) shutdown_();
    registrations_.clear();
    ML::VSTAudioFilterRegistry::Clear();
    ::dlclose(handle_);
    handle_ = nullptr;
    startup_ = nullptr;
    shutdown_ = nullptr;
}

}  // namespace hostkit
