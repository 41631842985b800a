#pragma once
// Several inputs through one chain into a folder ('afx render IN... -o DIR'):
// the module is loaded once, files are rendered side by side on a few
// workers, each exactly as a single render of it would be, and a failing
// file is reported at the end without stopping the others.
#include <string>
#include <vector>

#include "Render.h"

namespace afx {

struct BatchJob {
    RenderJob render;  // the chain and options every file shares; its input and output are set per file
    std::vector<std::string> inputs;
    std::string folder;
    std::string suffix;  // put between an input's name and its extension
    int workers = 0;     // files rendered at once; 0: as many as the cores
};

// Where `input` is written: `folder`/NAME`suffix`.EXT for an input NAME.EXT
// (NAME`suffix` when it has no extension).
std::string batchOutputName(const std::string& input, const std::string& folder, const std::string& suffix);

// Checks every name first (UsageError, before any file is touched, for a
// folder that is not one, standard input, two inputs written to one name, an
// output that is an input, or an existing output without -y), then renders.
// Returns 0 when every file was rendered, 1 when any failed.
int renderBatch(const BatchJob& job);

}  // namespace afx
