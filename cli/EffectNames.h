#pragma once
// Turns what the user types after -e into one registered identifier: either
// the identifier itself ("Internal Highpass Stereo", any case) or a family
// name ("highpass") that picks the variant for the audio's channel count.
#include <string>
#include <vector>

#include "ModuleHost.h"

namespace afx {

struct Family {
    const char* name;          // what the user types, e.g. "parametric-eq"
    const char* stem;          // the identifier's middle, e.g. "Parametric EQ"
    bool stereoOnly;           // one variant, "Internal <stem>", for two channels
    bool independentChannels;  // each channel processed on its own, so instances may stand side by side
};

const std::vector<Family>& families();
const Family* findFamily(const std::string& name);

// The identifier a family registers for `channels`, or "" when it has none.
std::string familyIdentifier(const Family& family, unsigned channels);
// The channel counts for which the module registered a variant of `family`.
std::vector<unsigned> familyChannelCounts(const ModuleHost& host, const Family& family);

// The family whose variant `identifier` is (any case); null when none.
const Family* familyOfIdentifier(const std::string& identifier);

// Resolves `text` for audio of `channels` channels (0: any, a family then
// takes its stereo variant or its only one). Throws UsageError naming the
// problem: unknown effect, or no variant for the channel count.
const ML::VSTAudioFilterRegistry::Registration& resolveEffect(const ModuleHost& host, const std::string& text,
                                                              unsigned channels);

// As resolveEffect, for a render: a family whose channels are independent and
// which has no variant for `channels` gives its mono variant, of which the
// chain then runs one instance per channel.
const ML::VSTAudioFilterRegistry::Registration& resolveForChain(const ModuleHost& host, const std::string& text,
                                                                unsigned channels);

}  // namespace afx
