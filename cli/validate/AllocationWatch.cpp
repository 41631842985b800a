#include "AllocationWatch.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <new>

// A sanitizer runtime owns malloc; then only operator new and delete are ours.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define AFV_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(memory_sanitizer) || __has_feature(thread_sanitizer)
#define AFV_SANITIZED 1
#endif
#endif
#ifndef AFV_SANITIZED
#define AFV_SANITIZED 0
#endif

namespace afv {
namespace {

// Initial-exec TLS: reading it never allocates, even from inside malloc.
struct ThreadWatch {
    bool inAudioCall;
    AllocationTally tally;
};
__attribute__((tls_model("initial-exec"))) thread_local ThreadWatch tWatch{};

std::atomic<std::size_t> gLimit{0};
std::atomic<std::size_t> gLargestRefused{0};

inline void noteAllocation() noexcept {
    if (tWatch.inAudioCall) ++tWatch.tally.allocations;
}
inline void noteFree(const void* pointer) noexcept {
    if (pointer != nullptr && tWatch.inAudioCall) ++tWatch.tally.frees;
}

// True when the request must be refused: over the limit. Remembers the largest.
inline bool refuse(std::size_t bytes) noexcept {
    const std::size_t limit = gLimit.load(std::memory_order_relaxed);
    if (limit == 0 || bytes <= limit) return false;
    std::size_t seen = gLargestRefused.load(std::memory_order_relaxed);
    while (bytes > seen && !gLargestRefused.compare_exchange_weak(seen, bytes)) {
    }
    return true;
}

}  // namespace

bool mallocIsWatched() noexcept { return !AFV_SANITIZED; }

AudioCallScope::AudioCallScope() noexcept : start_(tWatch.tally), outer_(!tWatch.inAudioCall) {
    tWatch.inAudioCall = true;
}

AudioCallScope::~AudioCallScope() {
    if (outer_) tWatch.inAudioCall = false;
}

AllocationTally AudioCallScope::tally() const noexcept {
    return {tWatch.tally.allocations - start_.allocations, tWatch.tally.frees - start_.frees};
}

AllocationTally audioCallTally() noexcept { return tWatch.tally; }

void setAllocationLimit(std::size_t bytes) noexcept { gLimit.store(bytes); }
std::size_t largestRefusedAllocation() noexcept { return gLargestRefused.load(); }
void resetRefusedAllocations() noexcept { gLargestRefused.store(0); }

namespace detail {

// When the C allocator is interposed it counts and limits by itself; the
// operators only count when the sanitizer owns malloc.
void* allocate(std::size_t bytes) noexcept {
    if (AFV_SANITIZED) {
        noteAllocation();
        if (refuse(bytes)) return nullptr;
    }
    return std::malloc(bytes == 0 ? 1 : bytes);
}

void* allocateAligned(std::size_t bytes, std::size_t alignment) noexcept {
    if (AFV_SANITIZED) {
        noteAllocation();
        if (refuse(bytes)) return nullptr;
    }
    if (alignment < sizeof(void*)) alignment = sizeof(void*);
    void* pointer = nullptr;
    if (posix_memalign(&pointer, alignment, bytes == 0 ? 1 : bytes) != 0) return nullptr;
    return pointer;
}

void release(void* pointer) noexcept {
    if (AFV_SANITIZED) noteFree(pointer);
    std::free(pointer);
}

}  // namespace detail
}  // namespace afv

// ---- operator new and delete, every form -------------------------------------

void* operator new(std::size_t bytes) {
    if (void* pointer = afv::detail::allocate(bytes)) return pointer;
    throw std::bad_alloc();
}
void* operator new[](std::size_t bytes) {
    if (void* pointer = afv::detail::allocate(bytes)) return pointer;
    throw std::bad_alloc();
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept { return afv::detail::allocate(bytes); }
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept { return afv::detail::allocate(bytes); }
void* operator new(std::size_t bytes, std::align_val_t alignment) {
    if (void* pointer = afv::detail::allocateAligned(bytes, static_cast<std::size_t>(alignment))) return pointer;
    throw std::bad_alloc();
}
void* operator new[](std::size_t bytes, std::align_val_t alignment) {
    if (void* pointer = afv::detail::allocateAligned(bytes, static_cast<std::size_t>(alignment))) return pointer;
    throw std::bad_alloc();
}
void* operator new(std::size_t bytes, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return afv::detail::allocateAligned(bytes, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t bytes, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return afv::detail::allocateAligned(bytes, static_cast<std::size_t>(alignment));
}
void operator delete(void* pointer) noexcept { afv::detail::release(pointer); }
void operator delete[](void* pointer) noexcept { afv::detail::release(pointer); }
void operator delete(void* pointer, std::size_t) noexcept { afv::detail::release(pointer); }
void operator delete[](void* pointer, std::size_t) noexcept { afv::detail::release(pointer); }
void operator delete(void* pointer, const std::nothrow_t&) noexcept { afv::detail::release(pointer); }
void operator delete[](void* pointer, const std::nothrow_t&) noexcept { afv::detail::release(pointer); }
void operator delete(void* pointer, std::align_val_t) noexcept { afv::detail::release(pointer); }
void operator delete[](void* pointer, std::align_val_t) noexcept { afv::detail::release(pointer); }
void operator delete(void* pointer, std::size_t, std::align_val_t) noexcept { afv::detail::release(pointer); }
void operator delete[](void* pointer, std::size_t, std::align_val_t) noexcept { afv::detail::release(pointer); }
void operator delete(void* pointer, std::align_val_t, const std::nothrow_t&) noexcept {
    afv::detail::release(pointer);
}
void operator delete[](void* pointer, std::align_val_t, const std::nothrow_t&) noexcept {
    afv::detail::release(pointer);
}

// ---- the C allocator, outside the sanitizer builds ----------------------------
//
// These definitions in the program take precedence over the C library's for
// every shared object of the process (the module included) and forward to
// glibc's internal entry points, so no dlsym bootstrap is needed.
#if !AFV_SANITIZED
extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void __libc_free(void*);
void* __libc_memalign(std::size_t, std::size_t);

void* malloc(std::size_t bytes) {
    afv::noteAllocation();
    if (afv::refuse(bytes)) {
        errno = ENOMEM;
        return nullptr;
    }
    return __libc_malloc(bytes);
}

void* calloc(std::size_t count, std::size_t size) {
    afv::noteAllocation();
    std::size_t bytes = 0;
    if (__builtin_mul_overflow(count, size, &bytes) || afv::refuse(bytes)) {
        errno = ENOMEM;
        return nullptr;
    }
    return __libc_calloc(count, size);
}

void* realloc(void* pointer, std::size_t bytes) {
    if (pointer != nullptr) afv::noteFree(pointer);
    if (bytes != 0 || pointer == nullptr) afv::noteAllocation();
    if (afv::refuse(bytes)) {
        errno = ENOMEM;
        return nullptr;
    }
    return __libc_realloc(pointer, bytes);
}

void free(void* pointer) {
    afv::noteFree(pointer);
    __libc_free(pointer);
}

void* memalign(std::size_t alignment, std::size_t bytes) {
    afv::noteAllocation();
    if (afv::refuse(bytes)) {
        errno = ENOMEM;
        return nullptr;
    }
    return __libc_memalign(alignment, bytes);
}

void* aligned_alloc(std::size_t alignment, std::size_t bytes) { return memalign(alignment, bytes); }

int posix_memalign(void** result, std::size_t alignment, std::size_t bytes) {
    if (alignment % sizeof(void*) != 0 || (alignment & (alignment - 1)) != 0) return EINVAL;
    void* pointer = memalign(alignment, bytes);
    if (pointer == nullptr) return ENOMEM;
    *result = pointer;
    return 0;
}

void* valloc(std::size_t bytes) { return memalign(4096, bytes); }
}
#endif
