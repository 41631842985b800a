#include "EffectNames.h"

#include "CommandLine.h"
#include "Errors.h"

namespace afx {
namespace {

struct Layout {
    unsigned channels;
    const char* suffix;
};

// The layouts a multi-channel family registers, with the identifier's ending.
constexpr Layout kLayouts[] = {{1, "Mono"}, {2, "Stereo"}, {6, "5.1"}, {16, "16 Channel"}};

std::string joinCounts(const std::vector<unsigned>& counts) {
    std::string text;
    for (std::size_t i = 0; i < counts.size(); ++i) {
        if (i > 0) text += (i + 1 == counts.size()) ? " and " : ", ";
        text += std::to_string(counts[i]);
    }
    return text;
}

std::string familyNames() {
    std::string text;
    for (const Family& family : families()) {
        if (!text.empty()) text += ", ";
        text += family.name;
    }
    return text;
}

}  // namespace

const std::vector<Family>& families() {
    static const std::vector<Family> table = {
        {"volume", "Volume", false, true},
        {"channel-volume", "Channel Volume", false, false},
        {"mute", "Mute", false, true},
        {"balance", "Balance", true, false},
        {"swap-channels", "Swap Channels", true, false},
        {"fill-left", "Fill Left", true, false},
        {"fill-right", "Fill Right", true, false},
        {"invert", "Invert", false, true},
        {"highpass", "Highpass", false, true},
        {"lowpass", "Lowpass", false, true},
        {"bandpass", "Bandpass", false, true},
        {"notch", "Bandreject", false, true},
        {"parametric-eq", "Parametric EQ", false, true},
        {"bass", "Bass", false, true},
        {"treble", "Treble", false, true},
        {"delay", "Delay", false, true},
        {"multitap-delay", "Multitap Delay", false, true},
    };
    return table;
}

const Family* findFamily(const std::string& name) {
    const std::string wanted = toLower(trimBlanks(name));
    for (const Family& family : families())
        if (wanted == family.name) return &family;
    // The registry's own word for the notch filter.
    if (wanted == "bandreject") return findFamily("notch");
    return nullptr;
}

std::string familyIdentifier(const Family& family, unsigned channels) {
    if (family.stereoOnly) return channels == 2 ? std::string("Internal ") + family.stem : std::string();
    for (const Layout& layout : kLayouts)
        if (layout.channels == channels) return std::string("Internal ") + family.stem + " " + layout.suffix;
    return {};
}

std::vector<unsigned> familyChannelCounts(const ModuleHost& host, const Family& family) {
    std::vector<unsigned> counts;
    for (const Layout& layout : kLayouts) {
        const std::string identifier = familyIdentifier(family, layout.channels);
        if (!identifier.empty() && host.find(identifier) != nullptr) counts.push_back(layout.channels);
    }
    return counts;
}

const Family* familyOfIdentifier(const std::string& identifier) {
    for (const Family& family : families()) {
        if (family.stereoOnly && equalsIgnoringCase(familyIdentifier(family, 2), identifier)) return &family;
        for (const Layout& layout : kLayouts)
            if (!family.stereoOnly && equalsIgnoringCase(familyIdentifier(family, layout.channels), identifier))
                return &family;
    }
    return nullptr;
}

const ML::VSTAudioFilterRegistry::Registration& resolveForChain(const ModuleHost& host, const std::string& text,
                                                                unsigned channels) {
    const Family* family = host.find(trimBlanks(text)) == nullptr ? findFamily(text) : nullptr;
    if (family != nullptr && family->independentChannels && host.find(familyIdentifier(*family, channels)) == nullptr)
        if (const auto* mono = host.find(familyIdentifier(*family, 1))) return *mono;
    return resolveEffect(host, text, channels);
}

const ML::VSTAudioFilterRegistry::Registration& resolveEffect(const ModuleHost& host, const std::string& text,
                                                              unsigned channels) {
    if (const auto* registration = host.find(trimBlanks(text))) return *registration;
    const Family* family = findFamily(text);
    if (family == nullptr)
        throw UsageError("unknown effect '" + text + "'; use a family name (" + familyNames() +
                         ") or an identifier from 'afx list'");
    const std::vector<unsigned> counts = familyChannelCounts(host, *family);
    if (counts.empty())
        throw UsageError(std::string("the module registers no variant of '") + family->name + "'");
    unsigned wanted = channels;
    if (wanted == 0) {
        wanted = counts.front();
        for (unsigned count : counts)
            if (count == 2) wanted = 2;
    }
    const std::string identifier = familyIdentifier(*family, wanted);
    const auto* registration = identifier.empty() ? nullptr : host.find(identifier);
    if (registration == nullptr)
        throw UsageError(std::string("'") + family->name + "' has no variant for " + std::to_string(wanted) +
                         " channel" + (wanted == 1 ? "" : "s") + "; it exists for " + joinCounts(counts) +
                         " channel" + (counts.size() == 1 && counts.front() == 1 ? "" : "s") +
                         (family->independentChannels ? "" : " (its channels work together, so afx cannot split them)"));
    return *registration;
}

}  // namespace afx
