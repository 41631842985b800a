#pragma once
// Counts heap traffic made on the calling thread while an audio call runs.
//
// The validator replaces the global operator new and delete and, outside the
// sanitizer builds, also interposes malloc, calloc, realloc, free and the
// aligned allocators of the C library (forwarding to glibc's own entry
// points). Each of them bumps a counter when the thread-local "in audio call"
// flag is set. Under AddressSanitizer the sanitizer owns malloc, so only
// operator new and delete are counted there.
//
// A request above the size limit is refused (null) and remembered, so that an
// effect asking for gigabytes is reported instead of exhausting the machine.
#include <cstddef>
#include <cstdint>

namespace afv {

struct AllocationTally {
    std::uint64_t allocations = 0;  // new, malloc, calloc, realloc, aligned allocators
    std::uint64_t frees = 0;        // delete, free, realloc
};

// True when malloc and friends are interposed (false under the sanitizers).
bool mallocIsWatched() noexcept;

// Marks the calling thread as inside an audio call for its lifetime and reads
// what happened meanwhile.
class AudioCallScope {
public:
    AudioCallScope() noexcept;
    ~AudioCallScope();
    AudioCallScope(const AudioCallScope&) = delete;
    AudioCallScope& operator=(const AudioCallScope&) = delete;
    AllocationTally tally() const noexcept;

private:
    AllocationTally start_;
    bool outer_;
};

// Heap traffic of the calling thread inside audio calls since the thread started.
AllocationTally audioCallTally() noexcept;

// Requests larger than `bytes` are refused and recorded (0: no limit).
void setAllocationLimit(std::size_t bytes) noexcept;
// The largest refused request since the last reset (0: none).
std::size_t largestRefusedAllocation() noexcept;
void resetRefusedAllocations() noexcept;

}  // namespace afv
