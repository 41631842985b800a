#pragma once
// Settings that meet an effect's own edge case, kept as the effect has it:
// afx renders what the effect does and warns, naming the nearest value that
// does what the user meant.
#include <string>
#include <vector>

#include "Chain.h"

namespace afx {

// One line per setting of `chain` that meets such a case at `sampleRate`.
std::vector<std::string> keptQuirkWarnings(const Chain& chain, int sampleRate);

}  // namespace afx
