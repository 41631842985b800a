#include "Ordo/Module.h"

#include <new>

namespace Ordo {

namespace {
std::atomic<int> liveModules{0};

class LoadedModule final : public Module {
public:
    explicit LoadedModule(void* instanceHandle) noexcept : Module(instanceHandle) {}
};
}  // namespace

Module::Module(void* instanceHandle) noexcept : instanceHandle_(instanceHandle) {
    liveModules.fetch_add(1, std::memory_order_relaxed);
}

Module::~Module() { liveModules.fetch_sub(1, std::memory_order_relaxed); }

int Module::LiveCount() noexcept { return liveModules.load(std::memory_order_relaxed); }

SharedRef<Module> Module::Create(void* instanceHandle) noexcept {
    void* countBlock = Allocator::Allocate(sizeof(std::atomic<std::int32_t>));
    if (countBlock == nullptr) return {};
    Module* module = new (std::nothrow) LoadedModule(instanceHandle);
    if (module == nullptr) {
        Allocator::Dispose(countBlock);
        return {};
    }
    return SharedRef<Module>(module, new (countBlock) std::atomic<std::int32_t>(1));
}

}  // namespace Ordo
