#include "Chain.h"

#include <cmath>
#include <cstdio>

#include "CommandLine.h"
#include "EffectNames.h"
#include "Errors.h"

namespace afx {
namespace {

std::string shortNumber(float value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.7g", static_cast<double>(value));
    return text;
}

// What to use instead of `identifier` for audio of `channels` channels.
std::string fittingVariants(const ModuleHost& host, const std::string& identifier, unsigned channels) {
    for (const Family& family : families()) {
        const std::vector<unsigned> counts = familyChannelCounts(host, family);
        bool ofThisFamily = false;
        for (unsigned count : counts) ofThisFamily |= equalsIgnoringCase(familyIdentifier(family, count), identifier);
        if (!ofThisFamily) continue;
        const std::string fitting = familyIdentifier(family, channels);
        if (!fitting.empty() && host.find(fitting) != nullptr)
            return "use '" + fitting + "' (or the family name '" + family.name + "')";
        const std::string mono = familyIdentifier(family, 1);
        if (family.independentChannels && host.find(mono) != nullptr)
            return "use '" + mono + "' or the family name '" + family.name + "' (one instance per channel)";
        std::string list;
        for (unsigned count : counts)
            list += (list.empty() ? "" : ", ") + familyIdentifier(family, count) + " (" + std::to_string(count) + ")";
        return std::string("no variant of '") + family.name + "' takes " + std::to_string(channels) +
               " channels; it has " + list;
    }
    return "no variant of it is registered for " + std::to_string(channels) + " channels";
}

std::string parameterList(const Effect& effect) {
    if (effect.parameterCount() == 0) return "it has no parameters";
    std::string text = "its parameters are";
    for (int index = 0; index < effect.parameterCount(); ++index)
        text += (index == 0 ? " " : ", ") + std::to_string(index) + " '" + trimBlanks(effect.parameterName(index)) + "'";
    return text;
}

}  // namespace

namespace {

// A parameter name as the user may type it: no blanks, any case ("delay1" is "Delay 1").
std::string nameKey(const std::string& name) {
    std::string key;
    for (char c : toLower(name))
        if (c != ' ' && c != '\t') key += c;
    return key;
}

// The name as -p takes it back: "Level 4#2" for the second of two "Level 4".
std::string spelledName(const Effect& effect, int index) {
    const std::string name = trimBlanks(effect.parameterName(index));
    int before = 0;
    int all = 0;
    for (int other = 0; other < effect.parameterCount(); ++other)
        if (nameKey(effect.parameterName(other)) == nameKey(name)) {
            ++all;
            if (other < index) ++before;
        }
    return all > 1 ? name + "#" + std::to_string(before + 1) : name;
}

}  // namespace

int findParameter(const Effect& effect, const std::string& identifier, const std::string& text) {
    const std::string wanted = trimBlanks(text);
    const bool numeric = !wanted.empty() && wanted.find_first_not_of("0123456789") == std::string::npos;
    if (numeric) {
        const long index = parseInteger(wanted, "a parameter index");
        if (index >= 0 && index < effect.parameterCount()) return static_cast<int>(index);
        throw UsageError("'" + identifier + "' has no parameter '" + text + "'; " + parameterList(effect));
    }
    // Two parameters may carry one name (the multitap delay's third and fourth
    // tap levels both read "Level 4"): "NAME#N" is the N-th of them, from 1.
    std::string name = wanted;
    long occurrence = 0;
    const std::size_t hash = wanted.rfind('#');
    if (hash != std::string::npos) {
        name = wanted.substr(0, hash);
        occurrence = parseInteger(wanted.substr(hash + 1), "the number after '#' in '" + wanted + "'");
    }
    std::vector<int> matches;
    for (int index = 0; index < effect.parameterCount(); ++index)
        if (nameKey(effect.parameterName(index)) == nameKey(name)) matches.push_back(index);
    if (occurrence == 0 && matches.size() == 1) return matches.front();
    if (occurrence >= 1 && occurrence <= static_cast<long>(matches.size()))
        return matches[static_cast<std::size_t>(occurrence - 1)];
    if (occurrence == 0 && matches.size() > 1) {
        std::string spellings;
        for (std::size_t i = 0; i < matches.size(); ++i)
            spellings += (i == 0 ? "" : (i + 1 == matches.size() ? " or " : ", ")) + nameKey(name) + "#" +
                         std::to_string(i + 1) + " (index " + std::to_string(matches[i]) + ")";
        throw UsageError("'" + identifier + "' has " + std::to_string(matches.size()) + " parameters named '" +
                         trimBlanks(effect.parameterName(matches.front())) + "'; write " + spellings);
    }
    throw UsageError("'" + identifier + "' has no parameter '" + text + "'; " + parameterList(effect));
}

float displayToNormalised(const Effect& effect, const std::string& identifier, int index, const std::string& text) {
    ML::VSTPropertySupportMixin* properties = effect.properties();
    const std::string name = trimBlanks(effect.parameterName(index));
    if (properties == nullptr)
        throw UsageError("'" + identifier + "' has no property interface, so '" + name +
                         "' takes no display value; use --set " + std::to_string(index) + "=NORMALISED");
    const auto slot = static_cast<unsigned>(index);
    if (!properties->SupportsDisplayValueToParameter(slot))
        throw UsageError("'" + identifier + "' cannot convert a display value for '" + name + "'; use --set " +
                         std::to_string(index) + "=NORMALISED");
    const double typed = parseDouble(text, "the value of '" + name + "'");
    const float display = static_cast<float>(typed);
    if (!std::isfinite(display)) throw UsageError("the value '" + text + "' of '" + name + "' is not a finite number");
    const float lowest = properties->GetParameterMin(slot);
    const float highest = properties->GetParameterMax(slot);
    if (lowest <= highest && (display < lowest || display > highest)) {
        const std::string label = trimBlanks(effect.parameterLabel(index));
        throw UsageError("the value " + text + " of '" + name + "' lies outside " + shortNumber(lowest) + " .. " +
                         shortNumber(highest) + (label.empty() ? "" : " " + label) + " (use --set " +
                         std::to_string(index) + "=NORMALISED to pass any value)");
    }
    const float normalised = properties->ConvertDisplayValueToParameter(slot, display);
    if (!std::isfinite(normalised))
        throw UsageError("the value " + text + " of '" + name + "' does not convert to a parameter value");
    return normalised;
}

Chain::Chain(const ModuleHost& host, const std::vector<EffectRequest>& requests, unsigned channels, int sampleRate,
             int blockSize) {
    links_.reserve(requests.size());
    for (const EffectRequest& request : requests) {
        Link link;
        if (namesPluginFile(request.effect)) {
            // A VST 2 plug-in file: one instance, as wide as the audio.
            pluginFiles_.push_back(std::make_unique<PluginFile>(request.effect));
            link.instances.push_back(pluginFiles_.back()->create());
            const Effect& effect = *link.instances.front();
            link.identifier = pluginFiles_.back()->effectName(effect);
            link.fromPluginFile = true;
            if (effect.inputCount() != static_cast<int>(channels) || effect.outputCount() != static_cast<int>(channels))
                throw UsageError("'" + link.identifier + "' takes " + std::to_string(effect.inputCount()) +
                                 " channel(s) but the input has " + std::to_string(channels));
            link.width = channels;
            links_.push_back(std::move(link));
            continue;
        }
        const auto& registration = resolveForChain(host, request.effect, channels);
        const std::string identifier = registration.id.c_str();
        link.identifier = identifier;
        link.instances.push_back(host.create(registration));
        if (!link.instances.front())
            throw RunError("the module registers '" + identifier + "' but makes no instance of it");
        const Effect& first = *link.instances.front();
        const int width = first.inputCount();
        const Family* family = familyOfIdentifier(identifier);
        // A variant narrower than the audio runs as several instances when
        // the family processes every channel on its own.
        const bool fits = width > 0 && first.outputCount() == width && channels % static_cast<unsigned>(width) == 0 &&
                          (width == static_cast<int>(channels) || (family != nullptr && family->independentChannels));
        if (!fits)
            throw UsageError("'" + identifier + "' takes " + std::to_string(width) + " channel(s) but the input has " +
                             std::to_string(channels) + "; " + fittingVariants(host, identifier, channels));
        link.width = static_cast<unsigned>(width);
        while (link.instances.size() < channels / link.width) {
            link.instances.push_back(host.create(registration));
            if (!link.instances.back())
                throw RunError("the module registers '" + identifier + "' but makes no instance of it");
        }
        links_.push_back(std::move(link));
    }
    // The host's life cycle: open, sample rate, block size, resume, parameters.
    for (Link& link : links_)
        for (const auto& effect : link.instances) effect->start(static_cast<float>(sampleRate), blockSize);
    running_ = true;
    try {
        applyRequests(requests);
    } catch (...) {
        finish();
        throw;
    }
}

void Chain::applyRequests(const std::vector<EffectRequest>& requests) {
    for (std::size_t i = 0; i < links_.size(); ++i) {
        Link& link = links_[i];
        const Effect& effect = *link.instances.front();
        for (const ParameterRequest& request : requests[i].parameters) {
            const int index = findParameter(effect, link.identifier, request.parameter);
            float value = 0.0f;
            if (request.normalised)
                value = parseFloatExactly(request.value, "the normalised value of parameter " + std::to_string(index));
            else if (link.fromPluginFile)
                value = displayToNormalisedBySearch(effect, link.identifier, index, request.value);
            else
                value = displayToNormalised(effect, link.identifier, index, request.value);
            // Every instance of a link gets the same settings.
            for (const auto& instance : link.instances) instance->setParameter(index, value);
            link.applied.push_back({index, spelledName(effect, index), value,
                                    trimBlanks(effect.parameterDisplay(index)),
                                    trimBlanks(effect.parameterLabel(index))});
        }
    }
}

Chain::~Chain() { finish(); }

void Chain::process(float** channels, int frames, std::size_t firstLink, std::size_t endLink) const {
    for (std::size_t index = firstLink; index < endLink; ++index) {
        const Link& link = links_[index];
        float** group = channels;
        for (const auto& instance : link.instances) {
            AEffect* record = instance->record();
            record->processReplacing(record, group, group, frames);
            group += link.width;
        }
    }
}

void Chain::finish() {
    if (!running_) return;
    running_ = false;
    for (const Link& link : links_)
        for (const auto& instance : link.instances) instance->suspend();
}

}  // namespace afx
