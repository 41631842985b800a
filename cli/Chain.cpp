#include "Chain.h"

#include <cmath>
#include <cstdio>

#include "CommandLine.h"
#include "EffectNames.h"
#include "Errors.h"

namespace afx {
namespace {

constexpr VstInt32 kOpen = 0;
constexpr VstInt32 kSetSampleRate = 10;
constexpr VstInt32 kSetBlockSize = 11;
constexpr VstInt32 kMainsChanged = 12;

std::string shortNumber(float value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.7g", static_cast<double>(value));
    return text;
}

std::string parameterList(const Effect& effect) {
    if (effect.parameterCount() == 0) return "it has no parameters";
    std::string text = "its parameters are";
    for (int index = 0; index < effect.parameterCount(); ++index)
        text += (index == 0 ? " " : ", ") + std::to_string(index) + " '" + trimBlanks(effect.parameterName(index)) + "'";
    return text;
}

}  // namespace

int findParameter(const Effect& effect, const std::string& identifier, const std::string& text) {
    const std::string wanted = trimBlanks(text);
    const bool numeric = !wanted.empty() && wanted.find_first_not_of("0123456789") == std::string::npos;
    if (numeric) {
        const long index = parseInteger(wanted, "a parameter index");
        if (index >= 0 && index < effect.parameterCount()) return static_cast<int>(index);
    } else {
        // Two parameters may carry one name (the multitap delay's third and
        // fourth tap levels both read "Level 4"): then only the index will do.
        std::vector<int> matches;
        for (int index = 0; index < effect.parameterCount(); ++index)
            if (equalsIgnoringCase(trimBlanks(effect.parameterName(index)), wanted)) matches.push_back(index);
        if (matches.size() == 1) return matches.front();
        if (matches.size() > 1) {
            std::string indices;
            for (std::size_t i = 0; i < matches.size(); ++i)
                indices += (i == 0 ? "" : (i + 1 == matches.size() ? " and " : ", ")) + std::to_string(matches[i]);
            throw UsageError("'" + identifier + "' has several parameters named '" + wanted + "' (indices " +
                             indices + "); give the index instead");
        }
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
        std::string identifier;
        std::unique_ptr<Effect> effect;
        const bool fromPluginFile = namesPluginFile(request.effect);
        if (fromPluginFile) {
            pluginFiles_.push_back(std::make_unique<PluginFile>(request.effect));
            effect = pluginFiles_.back()->create();
            identifier = pluginFiles_.back()->effectName(*effect);
        } else {
            const auto& registration = resolveEffect(host, request.effect, channels);
            identifier = registration.id.c_str();
            effect = host.create(registration);
            if (!effect)
                throw RunError("the module registers '" + identifier + "' but makes no instance of it");
        }
        if (effect->inputCount() != static_cast<int>(channels) || effect->outputCount() != static_cast<int>(channels))
            throw UsageError("'" + identifier + "' takes " + std::to_string(effect->inputCount()) +
                             " channel(s) but the input has " + std::to_string(channels) +
                             (fromPluginFile ? std::string() : "; name the family instead to get the matching variant"));
        links_.push_back({identifier, std::move(effect), {}, fromPluginFile});
    }
    // The host's life cycle: open, sample rate, block size, resume, parameters.
    for (Link& link : links_) {
        const Effect& effect = *link.effect;
        effect.dispatch(kOpen);
        effect.dispatch(kSetSampleRate, 0, 0, nullptr, static_cast<float>(sampleRate));
        effect.dispatch(kSetBlockSize, 0, blockSize);
        effect.dispatch(kMainsChanged, 0, 1);
    }
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
        const Effect& effect = *link.effect;
        for (const ParameterRequest& request : requests[i].parameters) {
            const int index = findParameter(effect, link.identifier, request.parameter);
            float value = 0.0f;
            if (request.normalised)
                value = parseFloatExactly(request.value, "the normalised value of parameter " + std::to_string(index));
            else if (link.fromPluginFile)
                value = displayToNormalisedBySearch(effect, link.identifier, index, request.value);
            else
                value = displayToNormalised(effect, link.identifier, index, request.value);
            effect.setParameter(index, value);
            link.applied.push_back({index, trimBlanks(effect.parameterName(index)), value,
                                    trimBlanks(effect.parameterDisplay(index)),
                                    trimBlanks(effect.parameterLabel(index))});
        }
    }
}

Chain::~Chain() { finish(); }

void Chain::process(float** channels, int frames) const {
    for (const Link& link : links_) {
        AEffect* record = link.effect->record();
        record->processReplacing(record, channels, channels, frames);
    }
}

void Chain::finish() {
    if (!running_) return;
    running_ = false;
    for (const Link& link : links_) link.effect->dispatch(kMainsChanged, 0, 0);
}

}  // namespace afx
