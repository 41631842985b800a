#pragma once
// The render shared by 'afx render' and 'afx demo': INPUT through a chain of
// effects into OUTPUT, written beside it and renamed only when complete.
#include <cstdint>
#include <string>
#include <vector>

#include "Chain.h"
#include "ModuleHost.h"
#include "OutputFormat.h"

namespace afx {

struct RenderJob {
    std::string input;
    std::string output;
    std::vector<EffectRequest> effects;
    int blockFrames = 1024;
    std::int64_t chunkFrames = 0;  // frames per file read and write; 0: about 256 KB of samples
    bool syncOutput = true;        // flush OUTPUT to the disk before it replaces anything
    SampleRequest samples = SampleRequest::AsInput;
    bool strict = false;  // non-finite output and a cut-off input are errors, not warnings
    bool overwrite = false;
    bool quiet = false;
    bool describeChain = false;  // print each effect and its parameters first
    double tailSeconds = -1.0;   // after the input; < 0: until quiet for chains with a delay (see Tail.h)
    int chainThreads = 0;        // the threads a chain is split across; 0: as its first chunk's costs say
    bool fileThreads = true;     // read and write on threads of their own, beside the effects (off: all on one)
    std::string modulePath;
};

// What one render of a batch tells the batch: the seconds of audio it wrote,
// and its warnings, kept here instead of printed when `keepWarnings` is set.
struct RenderReport {
    bool keepWarnings = false;
    double audioSeconds = 0.0;
    std::vector<std::string> warnings;
};

// The largest block and chunk afx accepts, and the most its buffers may take
// together: checked before anything is allocated.
inline constexpr long kMostBlockFrames = 1L << 20;
inline constexpr long kMostChunkFrames = 1L << 24;
inline constexpr std::int64_t kMostBufferBytes = std::int64_t{1} << 30;

// Returns the exit status (0); throws UsageError or RunError.
int render(const RenderJob& job);

// The same through a module already loaded (a batch loads it once).
void render(const RenderJob& job, const ModuleHost& host, RenderReport& report);

// The threads a split asked for (--threads `wanted`; 0: none asked) takes:
// at most one per link, and one when the render fits in a single chunk
// (`renderFrames`, 0 when unknown), where parts would have nothing to overlap.
// Unasked, the render chooses the split from its first chunk's costs.
std::size_t chainThreadsFor(int wanted, std::size_t links, std::int64_t renderFrames, std::int64_t chunkFrames);

}  // namespace afx
