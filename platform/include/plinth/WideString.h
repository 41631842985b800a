#pragma once
#include <cstddef>
#include <new>
#include <string>

#include "Ordo/Allocator.h"

namespace plinth {

// The core library's allocator for small blocks: a standard allocator over
// Ordo::Allocator. It reports exhaustion the standard way (std::bad_alloc), so
// code at a module boundary catches it.
template <class T>
class SmallBlockAllocator {
public:
    using value_type = T;
    SmallBlockAllocator() noexcept = default;
    template <class U>
    SmallBlockAllocator(const SmallBlockAllocator<U>&) noexcept {}

    T* allocate(std::size_t n) {
        if (n > static_cast<std::size_t>(-1) / sizeof(T)) throw std::bad_alloc();
        void* block = Ordo::Allocator::Allocate(n * sizeof(T));
        if (block == nullptr) throw std::bad_alloc();
        return static_cast<T*>(block);
    }
    void deallocate(T* block, std::size_t) noexcept { Ordo::Allocator::Dispose(block); }

    template <class U>
    bool operator==(const SmallBlockAllocator<U>&) const noexcept { return true; }
};

// The host's wide string: UTF-16 code units.
using WideString = std::basic_string<char16_t, std::char_traits<char16_t>, SmallBlockAllocator<char16_t>>;

}  // namespace plinth
