#pragma once
#include <cstddef>

#include "PlatformExport.h"

namespace Ordo {

// The foundation library's raw allocator. Allocate never throws: it answers
// null when memory is short. Dispose accepts null.
class PLATFORM_API Allocator {
public:
    static void* Allocate(std::size_t bytes) noexcept;
    static void Dispose(void* block) noexcept;
};

}  // namespace Ordo
