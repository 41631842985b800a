#include "ModuleOnce.h"

#include <cstdio>
#include <mutex>

#include "hostkit/Module.h"

namespace AFVst2 {
namespace {

// The module beside this library, loaded and started the first time any
// plug-in file asks for an effect. It stays loaded for the life of the
// process: effects made from it may outlive any one plug-in file's use of it.
const hostkit::Module& moduleOnce() {
    static std::once_flag once;
    static hostkit::Module module;
    std::call_once(once, [] {
        module = hostkit::Module::Load(hostkit::locateModule(reinterpret_cast<const void*>(&moduleOnce)));
        if (!module.loaded()) std::fprintf(stderr, "AudioFilters VST 2: %s\n", module.error().c_str());
    });
    return module;
}

}  // namespace

AEffect* createRegisteredEffect(const char* identifier, audioMasterCallback host) {
    const hostkit::Module& module = moduleOnce();
    if (!module.loaded()) return nullptr;
    const hostkit::Registration* registration = module.find(identifier);
    if (registration == nullptr) {
        std::fprintf(stderr, "AudioFilters VST 2: the module registers no '%s'\n", identifier);
        return nullptr;
    }
    std::string error;
    hostkit::Effect effect = module.create(*registration, host, &error);
    if (!effect && !error.empty()) std::fprintf(stderr, "AudioFilters VST 2: %s\n", error.c_str());
    return effect.release();
}

}  // namespace AFVst2
