#pragma once
// How a render shares its chain's links out among threads: runs of links in
// order, each run a part that one thread passes every chunk through.
#include <cstddef>
#include <vector>

namespace afx {

// Links [firstLink, endLink) of a chain, run by one thread of the render; the
// last part also follows the tail and meters the output.
struct ChainPart {
    std::size_t firstLink = 0;
    std::size_t endLink = 0;
    bool last = true;
};

// `links` links in `parts` (1 to links) parts of as even a count as they divide into.
std::vector<ChainPart> splitChain(std::size_t links, std::size_t parts);

// What one chunk cost, in seconds of the thread that did it: each link of
// the chain, and the reading and the writing of the chunk.
struct ChunkCosts {
    std::vector<double> links;
    double read = 0.0;
    double write = 0.0;
};

// The split that should pass chunks fastest on `cores` cores, the reading
// and writing threads included: the fewest parts (at most `most`) within a
// tenth of the best estimate, each part a run of links of as even a cost as
// they divide into. A chunk's estimated period is the longest of the
// threads' costs and of all the costs shared out over the cores.
std::vector<ChainPart> splitByCost(const ChunkCosts& costs, std::size_t cores, std::size_t most);

}  // namespace afx
