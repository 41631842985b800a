#pragma once
// The reference vectors of tests/data/vectors: per registered identifier, an
// input, the frame counts of successive processing calls and the expected
// output at the default parameters (see the README beside the files).
#include <optional>
#include <string>
#include <vector>

#include "support/Buffers.h"

namespace aftest {

struct ReferenceVector {
    std::string identifier;
    int channels = 0;
    float sampleRate = 0.0f;
    int blockSize = 0;
    Channels input;
    std::vector<int> blocks;
    Channels expected;
};

// The folder of the vector files (AF_TEST_DATA_DIR/vectors).
std::string referenceVectorDirectory();
// The file names (not paths) of every *.json there, sorted.
std::vector<std::string> referenceVectorFiles();
// Reads and checks one file: channel counts and lengths agree with `channels`
// and the sum of `blocks`. On failure returns nothing and says why in `error`.
std::optional<ReferenceVector> loadReferenceVector(const std::string& path, std::string* error);

}  // namespace aftest
