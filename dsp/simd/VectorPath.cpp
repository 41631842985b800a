#include "dsp/simd/VectorPath.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace AF {

namespace {

VectorPath detectWidest() noexcept {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx2")) return VectorPath::avx2;
    if (__builtin_cpu_supports("sse2")) return VectorPath::sse2;
#endif
    return VectorPath::scalar;
}

bool detectExtendedRegisters() noexcept {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl");
#else
    return false;
#endif
}

bool scalarForced() noexcept {
    const char* value = std::getenv("AF_FORCE_SCALAR");
    return value != nullptr && std::strcmp(value, "1") == 0;
}

const VectorPath kWidest = detectWidest();
// Read by every multi-channel processing call; written at load and by tests.
std::atomic<VectorPath> currentPath{scalarForced() ? VectorPath::scalar : kWidest};
const bool kExtendedRegisters = kWidest == VectorPath::avx2 && detectExtendedRegisters();
std::atomic<bool> extendedInUse{kExtendedRegisters};

}  // namespace

VectorPath vectorPath() noexcept { return currentPath.load(std::memory_order_relaxed); }

VectorPath widestVectorPath() noexcept { return kWidest; }

void setVectorPath(VectorPath path) noexcept {
    if (static_cast<int>(path) > static_cast<int>(kWidest)) path = kWidest;
    currentPath.store(path, std::memory_order_relaxed);
}

bool extendedRegisters() noexcept { return extendedInUse.load(std::memory_order_relaxed); }

bool extendedRegistersAvailable() noexcept { return kExtendedRegisters; }

void setExtendedRegisters(bool on) noexcept { extendedInUse.store(on && kExtendedRegisters, std::memory_order_relaxed); }

}  // namespace AF
