#pragma once
// What the standard tools say about the bridges, parsed: analyseplugin for a
// LADSPA plug-in, lv2info for an LV2 plug-in.
#include <optional>
#include <string>
#include <vector>

namespace bridgetest {

struct ListedPort {
    std::string name;
    std::string symbol;          // LV2 only
    bool input = false;
    bool audio = false;
    bool toggled = false;
    bool sampleRate = false;     // bounds are multiples of the rate
    bool logarithmic = false;
    std::optional<double> minimum;
    std::optional<double> maximum;
    std::optional<double> defaultValue;
    std::string unit;            // LV2 only: the unit URI
};

struct ListedPlugin {
    std::string name;
    std::string label;           // LADSPA only
    unsigned long uniqueId = 0;  // LADSPA only
    std::vector<ListedPort> ports;
};

// Parses `analyseplugin FILE LABEL` output; nullopt when it names no plug-in.
std::optional<ListedPlugin> parseAnalyseplugin(const std::string& output);
// Parses `lv2info URI` output; nullopt when it names no plug-in.
std::optional<ListedPlugin> parseLv2info(const std::string& output);

}  // namespace bridgetest
