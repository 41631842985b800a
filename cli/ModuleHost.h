#pragma once
// afx's view of the effects module: the shared host kit's loader and effect
// handle, with failures turned into afx's run errors. The module is loaded the
// way a host application loads it and unloaded when afx is done with it.
#include <memory>
#include <string>
#include <vector>

#include "AEffect.h"
#include "ML/VSTAudioFilterRegistry.h"
#include "hostkit/Module.h"

namespace afx {

using Effect = hostkit::Effect;

class ModuleHost {
public:
    // Where afx looks by default: libAudioFilters.so beside the afx executable.
    static std::string defaultModulePath();

    // Loads and starts the module. Throws RunError when that fails.
    explicit ModuleHost(const std::string& path);
    ~ModuleHost() { module_.unload(); }
    ModuleHost(const ModuleHost&) = delete;
    ModuleHost& operator=(const ModuleHost&) = delete;

    const std::vector<ML::VSTAudioFilterRegistry::Registration>& registrations() const {
        return module_.registrations();
    }
    // The registration whose identifier matches `identifier` ignoring case; null if none.
    const ML::VSTAudioFilterRegistry::Registration* find(const std::string& identifier) const {
        return module_.find(identifier);
    }

    // Makes an instance through the registration's factory; null when the
    // factory makes none (a family the module does not provide yet).
    std::unique_ptr<Effect> create(const ML::VSTAudioFilterRegistry::Registration& registration) const;

private:
    hostkit::Module module_;
};

std::string displayName(const ML::VSTAudioFilterRegistry::Registration& registration);
std::string fourCharacters(VstInt32 code);

}  // namespace afx
