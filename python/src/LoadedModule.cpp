#include "LoadedModule.h"

#include "hostkit/ModulePath.h"

namespace audiofilters {

std::string packageFolder() { return hostkit::folderOf(reinterpret_cast<const void*>(&packageFolder)); }

const afx::ModuleHost& loadedModule() {
    // Never unloaded: an effect still held by Python at interpreter exit must
    // find its code in place when its close request runs.
    static const afx::ModuleHost* module = new afx::ModuleHost(packageFolder() + hostkit::kModuleFile);
    return *module;
}

}  // namespace audiofilters
