// The module's load and unload notifications. On this platform they are the
// module's own static constructor and destructor functions, and the instance
// handle is the module's load address as the dynamic loader reports it.
#include <dlfcn.h>

#include "Ordo/Module.h"

namespace {

// The module's handle for the host's foundation library, alive from load to
// unload. Constant-initialised, so it exists before the load hook runs.
constinit Ordo::SharedRef<Ordo::Module> moduleHandle;

void* instanceHandle() noexcept {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&instanceHandle), &info) == 0) return nullptr;
    return info.dli_fbase;
}

__attribute__((constructor)) void attachModule() noexcept { moduleHandle = Ordo::Module::Create(instanceHandle()); }

// Drops the module's reference; the last one destroys the handle and frees its count.
__attribute__((destructor)) void detachModule() noexcept { moduleHandle.Reset(); }

}  // namespace
