#include "ListedCounts.h"

#include <cstring>

#include "CommandLine.h"
#include "EffectNames.h"

namespace afx {
namespace {

// Parameters of a family's variants: a fixed number, plus one per channel for
// the families with a control per channel (Mute's switches, Channel Volume's levels).
struct FamilyParameters {
    const char* family;  // afx's family name
    int fixed;
    bool onePerChannel;
};

constexpr FamilyParameters kFamilyParameters[] = {
    {"volume", 1, false},        {"channel-volume", 0, true}, {"mute", 1, true},
    {"balance", 1, false},       {"swap-channels", 0, false}, {"fill-left", 0, false},
    {"fill-right", 0, false},    {"invert", 0, false},        {"highpass", 1, false},
    {"lowpass", 1, false},       {"bandpass", 2, false},      {"notch", 2, false},
    {"parametric-eq", 3, false}, {"bass", 1, false},          {"treble", 1, false},
    {"delay", 3, false},         {"multitap-delay", 13, false},
};

// The channel counts a family's identifiers can name.
constexpr unsigned kChannelCounts[] = {1, 2, 6, 16};

}  // namespace

std::optional<ListedCounts> knownCounts(const std::string& identifier) {
    const Family* family = familyOfIdentifier(identifier);
    if (family == nullptr) return std::nullopt;
    for (const FamilyParameters& row : kFamilyParameters) {
        if (std::strcmp(row.family, family->name) != 0) continue;
        for (unsigned channels : kChannelCounts) {
            if (!equalsIgnoringCase(familyIdentifier(*family, channels), identifier)) continue;
            const int count = static_cast<int>(channels);
            return ListedCounts{count, row.fixed + (row.onePerChannel ? count : 0)};
        }
    }
    return std::nullopt;
}

}  // namespace afx
