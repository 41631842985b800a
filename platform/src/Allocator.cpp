#include "Ordo/Allocator.h"

#include <cstddef>
#include <cstdlib>
#include <limits>

namespace Ordo {

namespace {
// No object may be larger than the largest pointer difference; a request above
// it can never be met, so it is answered with null before the system sees it.
constexpr std::size_t kLargestBlock = static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max());
}  // namespace

void* Allocator::Allocate(std::size_t bytes) noexcept {
    if (bytes > kLargestBlock) return nullptr;
    return std::malloc(bytes == 0 ? 1 : bytes);
}

void Allocator::Dispose(void* block) noexcept { std::free(block); }

}  // namespace Ordo
