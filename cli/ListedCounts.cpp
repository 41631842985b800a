#include "ListedCounts.h"

#include <unordered_map>

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

// Every identifier the families can register, in lower case, with its counts.
std::unordered_map<std::string, ListedCounts> countsByIdentifier() {
    std::unordered_map<std::string, ListedCounts> table;
    for (const FamilyParameters& row : kFamilyParameters) {
        const Family* family = findFamily(row.family);
        if (family == nullptr) continue;
        for (unsigned channels : kChannelCounts) {
            const std::string identifier = familyIdentifier(*family, channels);
            if (identifier.empty()) continue;
            const int count = static_cast<int>(channels);
            table.emplace(toLower(identifier), ListedCounts{count, row.fixed + (row.onePerChannel ? count : 0)});
        }
    }
    return table;
}

}  // namespace

std::optional<ListedCounts> knownCounts(const std::string& identifier) {
    static const std::unordered_map<std::string, ListedCounts> table = countsByIdentifier();
    const auto found = table.find(toLower(identifier));
    if (found == table.end()) return std::nullopt;
    return found->second;
}

}  // namespace afx
