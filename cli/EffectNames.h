#pragma once
// Turns what the user types after -e into one registered identifier: either
// the identifier itself ("Internal Highpass Stereo", any case) or a family
// name ("highpass") that picks the variant for the audio's channel count.
#include <string>
#include <vector>

#include "ModuleHost.h"

namespace afx {

struct Family {
    const char* name;     // what the user types, e.g. "parametric-eq"
    const char* stem;     // the identifier's middle, e.g. "Parametric EQ"
    bool stereoOnly;      // one variant, "Internal <stem>", for two channels
};

const std::vector<Family>& families();
const Family* findFamily(const std::string& name);

// The identifier a family registers for `channels`, or "" when it has none.
std::string familyIdentifier(const Family& family, unsigned channels);
// The channel counts for which the module registered a variant of `family`.
std::vector<unsigned> familyChannelCounts(const ModuleHost& host, const Family& family);

// Resolves `text` for audio of `channels` channels (0: any, a family then
// takes its stereo variant or its only one). Throws UsageError naming the
// problem: unknown effect, or no variant for the channel count.
const ML::VSTAudioFilterRegistry::Registration& resolveEffect(const ModuleHost& host, const std::string& text,
                                                              unsigned channels);

}  // namespace afx
