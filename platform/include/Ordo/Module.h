#pragma once
#include <atomic>
#include <cstdint>
#include <utility>

#include "Ordo/Allocator.h"
#include "PlatformExport.h"

namespace Ordo {

// A reference-counted pointer whose count lives in a separate 4-byte block made
// with Ordo::Allocator. When the last reference goes, the object is destroyed
// through its virtual destructor and the count block is freed with Dispose.
template <class T>
class SharedRef {
public:
    SharedRef() noexcept = default;
    SharedRef(T* object, std::atomic<std::int32_t>* count) noexcept : object_(object), count_(count) {}
    SharedRef(const SharedRef& other) noexcept : object_(other.object_), count_(other.count_) { retain(); }
    SharedRef(SharedRef&& other) noexcept
        : object_(std::exchange(other.object_, nullptr)), count_(std::exchange(other.count_, nullptr)) {}
    SharedRef& operator=(SharedRef other) noexcept {
        std::swap(object_, other.object_);
        std::swap(count_, other.count_);
        return *this;
    }
    ~SharedRef() { Reset(); }

    void Reset() noexcept {
        if (count_ != nullptr && count_->fetch_sub(1, std::memory_order_acq_rel) == 1) {
            delete object_;
            count_->~atomic();
            Allocator::Dispose(count_);
        }
        object_ = nullptr;
        count_ = nullptr;
    }
    T* get() const noexcept { return object_; }
    T* operator->() const noexcept { return object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }
    std::int32_t UseCount() const noexcept { return count_ ? count_->load(std::memory_order_acquire) : 0; }

private:
    void retain() noexcept {
        if (count_ != nullptr) count_->fetch_add(1, std::memory_order_relaxed);
    }
    T* object_ = nullptr;
    std::atomic<std::int32_t>* count_ = nullptr;
};

// The foundation library's handle for a loaded module. The module creates it
// from its instance handle when it is loaded and releases it when unloaded.
class PLATFORM_API Module {
public:
    virtual ~Module();
    // Never throws; an empty reference if memory is short.
    static SharedRef<Module> Create(void* instanceHandle) noexcept;
    void* InstanceHandle() const noexcept { return instanceHandle_; }
    // Number of Module objects alive in the process (for hosts' diagnostics).
    static int LiveCount() noexcept;

protected:
    explicit Module(void* instanceHandle) noexcept;

private:
    void* instanceHandle_;
};

}  // namespace Ordo
