#include "KeptQuirks.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "CommandLine.h"

namespace afx {
namespace {

// Effects are made at this rate; setting the same rate again changes nothing.
constexpr int kConstructionRate = 44100;
constexpr double kLongestDelaySeconds = 2.0;

bool isSingleDelay(const std::string& identifier) { return toLower(identifier).rfind("internal delay ", 0) == 0; }

}  // namespace

std::vector<std::string> keptQuirkWarnings(const Chain& chain, int sampleRate) {
    std::vector<std::string> warnings;
    for (std::size_t link = 0; link < chain.size(); ++link) {
        if (!isSingleDelay(chain.identifier(link)) || sampleRate != kConstructionRate) continue;
        for (const AppliedParameter& parameter : chain.applied(link)) {
            if (!equalsIgnoringCase(parameter.name, "Delay")) continue;
            const double seconds = std::strtod(parameter.display.c_str(), nullptr);
            if (!(seconds >= kLongestDelaySeconds)) continue;
            // The line holds 2 s at the rate the effect was made with, and
            // the rate did not change: a 2 s delay reads the sample just
            // written. One frame less is the longest echo.
            // The shortest 5-decimal time that still reaches that frame.
            const double longest = std::ceil((kLongestDelaySeconds * sampleRate - 1.0) / sampleRate * 1e5) / 1e5;
            char text[256];
            std::snprintf(text, sizeof text,
                          "%zu. %s: a delay of %s s at %d Hz plays undelayed (the effect's own edge case: its line "
                          "is exactly 2 s long at the rate it was made with); -p delay=%.5f gives the longest echo",
                          link + 1, chain.identifier(link).c_str(), parameter.display.c_str(), sampleRate, longest);
            warnings.push_back(text);
        }
    }
    return warnings;
}

}  // namespace afx
