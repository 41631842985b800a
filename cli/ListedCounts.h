#pragma once
// What 'afx list' shows of the module's own variants without making them.
// Making an effect only to read two numbers costs more than the rest of the
// listing: the delays build and clear a two-second line per channel (25
// channels in all over the four variants of each), which is most of the
// memory the command would touch. The numbers below are those every variant's
// instance reports; a test makes each instance and compares.
#include <optional>
#include <string>

namespace afx {

struct ListedCounts {
    int channels;    // inputs of an instance
    int parameters;  // parameters of an instance
};

// The counts of the variant registered as `identifier` (any case) when it is
// one of the families afx knows; none for any other identifier, whose
// instance has to be asked.
std::optional<ListedCounts> knownCounts(const std::string& identifier);

}  // namespace afx
