// afx info EFFECT: what a host shows of one effect at a given sample rate.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "Commands.h"
#include "EffectNames.h"
#include "Errors.h"
#include "Json.h"
#include "ModuleHost.h"

namespace afx {
namespace {

constexpr const char* kInfoHelp =
    "usage: afx info EFFECT [--rate HZ] [--channels N] [--json] [--module PATH]\n"
    "\n"
    "Shows one effect as a host sees it: unique id, program name, inputs and\n"
    "outputs, whether it keeps history between buffers, and per parameter its\n"
    "index, name, label, type (decibels, hertz, time, number), minimum, maximum\n"
    "and step in display units at the sample rate, and its default (the\n"
    "normalised value of a fresh instance and the text the effect displays).\n"
    "\n"
    "EFFECT is an identifier from 'afx list' (any case) or a family name\n"
    "(volume, highpass, parametric-eq, delay, ...; see afx render --help).\n"
    "\n"
    "  --rate HZ      sample rate sent to the effect before asking (default 48000)\n"
    "  --channels N   variant of a family name: 1, 2, 6 or 16 (default: stereo,\n"
    "                 or the family's only variant)\n"
    "  --json         one JSON object instead of the text\n"
    "  --module PATH  the effects module (default: libAudioFilters.so beside afx)\n";

struct ParameterInfo {
    int index;
    std::string name;
    std::string label;
    std::string type;
    float minimum = 0.0f;
    float maximum = 0.0f;
    float step = 0.0f;
    bool hasRange = false;
    float normalised;
    std::string display;
};

std::string typeName(ML::VSTPropertySupportMixin::ParameterType type) {
    switch (type) {
        case ML::VSTPropertySupportMixin::kDecibels:
            return "decibels";
        case ML::VSTPropertySupportMixin::kHertz:
            return "hertz";
        case ML::VSTPropertySupportMixin::kTime:
            return "time";
        case ML::VSTPropertySupportMixin::kNumber:
            return "number";
        default:
            return "none";
    }
}

std::string shortNumber(float value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.7g", static_cast<double>(value));
    return text;
}

}  // namespace

int infoCommand(Arguments& arguments, const std::string& defaultModule) {
    std::string modulePath = defaultModule;
    std::string effectName;
    double rate = 48000.0;
    unsigned channels = 0;
    bool json = false;
    while (!arguments.done()) {
        std::string inlineValue;
        const std::string word = optionWord(arguments, inlineValue);
        if (word == "--help" || word == "-h") {
            std::fputs(kInfoHelp, stdout);
            return 0;
        }
        if (takeModuleOption(word, arguments, modulePath)) continue;
        if (word == "--json") {
            json = true;
        } else if (word == "--rate" || word == "-r") {
            rate = parseDouble(arguments.valueFor(word), "--rate");
            if (!(rate > 0.0) || !std::isfinite(rate) || rate > 1e7)
                throw UsageError("--rate must be a positive sample rate in Hz");
        } else if (word == "--channels" || word == "-c") {
            const long count = parseInteger(arguments.valueFor(word), "--channels");
            if (count != 1 && count != 2 && count != 6 && count != 16)
                throw UsageError("--channels must be 1, 2, 6 or 16");
            channels = static_cast<unsigned>(count);
        } else if (looksLikeOption(word)) {
            throw UsageError("unknown option '" + word + "' for info (see afx info --help)");
        } else if (effectName.empty()) {
            effectName = word;
        } else {
            throw UsageError("info takes one EFFECT; unexpected '" + word + "'");
        }
    }
    if (effectName.empty()) throw UsageError("info needs an EFFECT (see afx info --help)");

    ModuleHost host(modulePath);
    const auto& registration = resolveEffect(host, effectName, channels);
    const std::string identifier = registration.id.c_str();
    auto effect = host.create(registration);
    if (!effect) throw RunError("the module registers '" + identifier + "' but makes no instance of it");

    // Defaults are read from the fresh instance, before the sample rate moves anything.
    std::vector<ParameterInfo> parameters;
    for (int index = 0; index < effect->parameterCount(); ++index)
        parameters.push_back({index, {}, {}, {}, 0.0f, 0.0f, 0.0f, false, effect->getParameter(index), {}});
    effect->open();
    effect->setSampleRate(static_cast<float>(rate));

    ML::VSTPropertySupportMixin* properties = effect->properties();
    for (ParameterInfo& parameter : parameters) {
        parameter.name = effect->parameterName(parameter.index);
        parameter.label = effect->parameterLabel(parameter.index);
        parameter.display = effect->parameterDisplay(parameter.index);
        if (properties != nullptr) {
            const auto slot = static_cast<unsigned>(parameter.index);
            parameter.type = typeName(properties->GetParameterType(slot));
            parameter.minimum = properties->GetParameterMin(slot);
            parameter.maximum = properties->GetParameterMax(slot);
            parameter.step = properties->GetParameterStep(slot);
            parameter.hasRange = true;
        } else {
            parameter.type = "unknown";
        }
    }
    const std::string uniqueId = fourCharacters(effect->record()->uniqueID);
    const std::string program = effect->programName();
    const bool history = properties != nullptr && properties->HasHistory();
    const std::string historyText = properties == nullptr ? "no (no property interface)" : history ? "yes" : "no";

    if (json) {
        std::printf("{\n  \"identifier\": %s,\n  \"name\": %s,\n  \"uniqueId\": %s,\n  \"program\": %s,\n"
                    "  \"inputs\": %d,\n  \"outputs\": %d,\n  \"propertyInterface\": %s,\n  \"history\": %s,\n"
                    "  \"sampleRate\": %s,\n  \"parameters\": [",
                    jsonString(identifier).c_str(), jsonString(displayName(registration)).c_str(),
                    jsonString(uniqueId).c_str(), jsonString(program).c_str(), effect->inputCount(),
                    effect->outputCount(), properties ? "true" : "false", history ? "true" : "false",
                    jsonNumber(rate).c_str());
        for (const ParameterInfo& p : parameters) {
            std::printf("%s\n    {\"index\": %d, \"name\": %s, \"label\": %s, \"type\": %s, \"min\": %s, \"max\": %s, "
                        "\"step\": %s, \"default\": %s, \"defaultDisplay\": %s}",
                        p.index == 0 ? "" : ",", p.index, jsonString(p.name).c_str(), jsonString(p.label).c_str(),
                        jsonString(p.type).c_str(), p.hasRange ? jsonNumber(p.minimum).c_str() : "null",
                        p.hasRange ? jsonNumber(p.maximum).c_str() : "null",
                        p.hasRange ? jsonNumber(p.step).c_str() : "null", jsonNumber(p.normalised).c_str(),
                        jsonString(p.display).c_str());
        }
        std::printf("%s]\n}\n", parameters.empty() ? "" : "\n  ");
        return 0;
    }

    std::printf("%s (%s)\n", identifier.c_str(), displayName(registration).c_str());
    std::printf("  unique id    %s\n", uniqueId.c_str());
    std::printf("  program      %s\n", program.empty() ? "(none)" : program.c_str());
    std::printf("  inputs       %d\n  outputs      %d\n", effect->inputCount(), effect->outputCount());
    std::printf("  history      %s\n", historyText.c_str());
    std::printf("  sample rate  %s Hz\n", shortNumber(static_cast<float>(rate)).c_str());
    std::printf("  parameters   %zu\n", parameters.size());
    if (parameters.empty()) return 0;

    const std::vector<std::string> heading = {"#", "name", "label", "type", "min", "max", "step", "default", "display"};
    std::vector<std::vector<std::string>> table = {heading};
    for (const ParameterInfo& p : parameters)
        table.push_back({std::to_string(p.index), "'" + p.name + "'", "'" + p.label + "'", p.type,
                         p.hasRange ? shortNumber(p.minimum) : "-", p.hasRange ? shortNumber(p.maximum) : "-",
                         p.hasRange ? shortNumber(p.step) : "-", shortNumber(p.normalised), p.display});
    std::vector<std::size_t> widths(heading.size(), 0);
    for (const auto& row : table)
        for (std::size_t column = 0; column < row.size(); ++column)
            widths[column] = std::max(widths[column], row[column].size());
    std::printf("\n");
    for (const auto& row : table) {
        std::string line = " ";
        for (std::size_t column = 0; column < row.size(); ++column) {
            line += " " + row[column];
            if (column + 1 < row.size()) line += std::string(widths[column] - row[column].size() + 1, ' ');
        }
        std::printf("%s\n", line.c_str());
    }
    return 0;
}

}  // namespace afx
