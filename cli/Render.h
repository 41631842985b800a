#pragma once
// The render shared by 'afx render' and 'afx demo': INPUT through a chain of
// effects into OUTPUT, written beside it and renamed only when complete.
#include <cstdint>
#include <string>
#include <vector>

#include "Chain.h"

namespace afx {

struct RenderJob {
    std::string input;
    std::string output;
    std::vector<EffectRequest> effects;
    int blockFrames = 1024;
    std::int64_t chunkFrames = 0;  // frames per file read and write; 0: about 256 KB of samples
    bool syncOutput = true;        // flush OUTPUT to the disk before it replaces anything
    bool asFloat = false;
    bool overwrite = false;
    bool quiet = false;
    bool describeChain = false;  // print each effect and its parameters first
    double tailSeconds = -1.0;   // after the input; < 0: until quiet for chains with a delay (see Tail.h)
    std::string modulePath;
};

// Returns the exit status (0); throws UsageError or RunError.
int render(const RenderJob& job);

}  // namespace afx
