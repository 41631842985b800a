#include "Ordo/Allocator.h"

#include <cstdlib>

namespace Ordo {

void* Allocator::Allocate(std::size_t bytes) noexcept { return std::malloc(bytes == 0 ? 1 : bytes); }

void Allocator::Dispose(void* block) noexcept { std::free(block); }

}  // namespace Ordo
