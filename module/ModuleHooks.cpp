// The module's load and unload notifications. On this platform they are the
// module's own static constructor and destructor functions, and the instance
// handle is the module's load address as the dynamic loader reports it.
#include <dlfcn.h>

#include "Ordo/Module.h"

namespace {

// The module's handle for the host's foundation library, alive from load to
// unload. Constant-initialised, so it exists before the load hook runs. Only
// the unload hook releases it: as an ordinary static it would also be
// destroyed at exit, and the compiler may drop the destructor's clearing of a
// dead object, so the hook's second release would touch the freed count. The
// union's empty destructor keeps the static destructors away from it.
union HandleSlot {
    constexpr HandleSlot() noexcept : handle() {}
    ~HandleSlot() {}
    Ordo::SharedRef<Ordo::Module> handle;
};
constinit HandleSlot moduleHandle;

void* instanceHandle() noexcept {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&instanceHandle), &info) == 0) return nullptr;
    return info.dli_fbase;
}

__attribute__((constructor)) void attachModule() noexcept {
    moduleHandle.handle = Ordo::Module::Create(instanceHandle());
}

// Drops the module's reference; the last one destroys the handle and frees its count.
__attribute__((destructor)) void detachModule() noexcept { moduleHandle.handle.Reset(); }

}  // namespace
