#include "LoadedModule.h"

#include <dlfcn.h>

namespace audiofilters {

std::string packageFolder() {
    Dl_info info{};
    if (::dladdr(reinterpret_cast<void*>(&packageFolder), &info) == 0 || info.dli_fname == nullptr) return ".";
    const std::string path = info.dli_fname;
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash);
}

const afx::ModuleHost& loadedModule() {
    // Never unloaded: an effect still held by Python at interpreter exit must
    // find its code in place when its close request runs.
    static const afx::ModuleHost* module = new afx::ModuleHost(packageFolder() + "/libAudioFilters.so");
    return *module;
}

}  // namespace audiofilters
