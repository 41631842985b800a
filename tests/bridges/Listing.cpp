#include "bridges/Listing.h"

#include <cstdlib>
#include <sstream>

namespace bridgetest {

namespace {

std::string trim(const std::string& text) {
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == std::string::npos) return std::string();
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// "0.25" or "0.000208333*srate"; nullopt for anything else ("...").
std::optional<double> bound(const std::string& text, bool& sampleRate) {
    std::string number = trim(text);
    const std::string suffix = "*srate";
    if (number.size() > suffix.size() && number.compare(number.size() - suffix.size(), suffix.size(), suffix) == 0) {
        sampleRate = true;
        number.resize(number.size() - suffix.size());
    }
    char* end = nullptr;
    const double value = std::strtod(number.c_str(), &end);
    if (end == number.c_str() || *end != '\0') return std::nullopt;
    return value;
}

std::vector<std::string> split(const std::string& text, const std::string& separator) {
    std::vector<std::string> parts;
    std::size_t at = 0;
    while (true) {
        const std::size_t next = text.find(separator, at);
        parts.push_back(text.substr(at, next == std::string::npos ? std::string::npos : next - at));
        if (next == std::string::npos) break;
        at = next + separator.size();
    }
    return parts;
}

std::string after(const std::string& line, const std::string& key) {
    const std::size_t at = line.find(key);
    return at == std::string::npos ? std::string() : trim(line.substr(at + key.size()));
}

}  // namespace

std::optional<ListedPlugin> parseAnalyseplugin(const std::string& output) {
    ListedPlugin plugin;
    bool found = false;
    std::istringstream lines(output);
    std::string line;
    while (std::getline(lines, line)) {
        if (line.rfind("Plugin Name: ", 0) == 0) {
            plugin.name = trim(line.substr(13));
            if (plugin.name.size() >= 2) plugin.name = plugin.name.substr(1, plugin.name.size() - 2);
            found = true;
        } else if (line.rfind("Plugin Label: ", 0) == 0) {
            plugin.label = trim(line.substr(14));
            if (plugin.label.size() >= 2) plugin.label = plugin.label.substr(1, plugin.label.size() - 2);
        } else if (line.rfind("Plugin Unique ID: ", 0) == 0) {
            plugin.uniqueId = std::strtoul(line.c_str() + 18, nullptr, 10);
        } else {
            // Port lines: ["Ports:"]\t"Name" input, control, LOW to HIGH, default D[, logarithmic]
            const std::size_t open = line.find('"');
            if (open == std::string::npos || (line.find("Ports:") == std::string::npos && line[0] != '\t')) continue;
            const std::size_t close = line.find('"', open + 1);
            if (close == std::string::npos) continue;
            ListedPort port;
            port.name = line.substr(open + 1, close - open - 1);
            const std::vector<std::string> fields = split(line.substr(close + 1), ",");
            for (std::size_t i = 0; i < fields.size(); ++i) {
                const std::string field = trim(fields[i]);
                if (i == 0) port.input = field == "input";
                else if (field == "audio") port.audio = true;
                else if (field == "toggled") port.toggled = true;
                else if (field == "logarithmic") port.logarithmic = true;
                else if (field.rfind("default ", 0) == 0) port.defaultValue = bound(field.substr(8), port.sampleRate);
                else if (field.find(" to ") != std::string::npos) {
                    const std::vector<std::string> range = split(field, " to ");
                    port.minimum = bound(range[0], port.sampleRate);
                    port.maximum = bound(range[1], port.sampleRate);
                }
            }
            plugin.ports.push_back(port);
        }
    }
    if (!found) return std::nullopt;
    return plugin;
}

std::optional<ListedPlugin> parseLv2info(const std::string& output) {
    ListedPlugin plugin;
    bool found = false;
    ListedPort* port = nullptr;
    std::istringstream lines(output);
    std::string line;
    while (std::getline(lines, line)) {
        const std::string text = trim(line);
        if (text.rfind("Name:", 0) == 0 && port == nullptr) {
            plugin.name = after(text, "Name:");
            found = true;
        } else if (text.rfind("Port ", 0) == 0 && text.back() == ':') {
            plugin.ports.emplace_back();
            port = &plugin.ports.back();
        } else if (port != nullptr) {
            if (text.find("lv2core#InputPort") != std::string::npos) port->input = true;
            if (text.find("lv2core#AudioPort") != std::string::npos) port->audio = true;
            if (text.rfind("Symbol:", 0) == 0) port->symbol = after(text, "Symbol:");
            if (text.rfind("Name:", 0) == 0) port->name = after(text, "Name:");
            if (text.rfind("Minimum:", 0) == 0) port->minimum = std::strtod(after(text, "Minimum:").c_str(), nullptr);
            if (text.rfind("Maximum:", 0) == 0) port->maximum = std::strtod(after(text, "Maximum:").c_str(), nullptr);
            if (text.rfind("Default:", 0) == 0) port->defaultValue = std::strtod(after(text, "Default:").c_str(), nullptr);
            if (text.find("lv2core#toggled") != std::string::npos) port->toggled = true;
            if (text.find("lv2core#sampleRate") != std::string::npos) port->sampleRate = true;
            if (text.find("port-props#logarithmic") != std::string::npos) port->logarithmic = true;
        }
    }
    if (!found) return std::nullopt;
    return plugin;
}

}  // namespace bridgetest
