// af_lv2_ttl MODULE BUNDLE_DIR BINARY_NAME
//
// Writes the LV2 bundle's descriptions from the module itself: it loads the
// module as a host does and describes every registered variant the way the
// plug-in binary will present it (the same catalogue code, so the port order,
// ranges and URIs cannot drift apart). Output: BUNDLE_DIR/manifest.ttl and
// BUNDLE_DIR/AudioFilters.ttl.
#include <cmath>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "common/Catalog.h"

namespace {

using AFBridge::Catalog;
using AFBridge::Control;
using AFBridge::Plugin;
using AFBridge::Unit;

constexpr const char* kDescriptionFile = "AudioFilters.ttl";

constexpr const char* kPrefixes =
    "@prefix doap: <http://usefulinc.com/ns/doap#> .\n"
    "@prefix lv2: <http://lv2plug.in/ns/lv2core#> .\n"
    "@prefix pprops: <http://lv2plug.in/ns/ext/port-props#> .\n"
    "@prefix rdfs: <http://www.w3.org/2000/01/rdf-schema#> .\n"
    "@prefix units: <http://lv2plug.in/ns/extensions/units#> .\n\n";

// A Turtle number that reads back as the same float (nine significant digits).
std::string number(float value) {
    char text[64];
    std::snprintf(text, sizeof text, "%.9g", static_cast<double>(value));
    std::string out = text;
    if (out.find_first_of(".eEn") == std::string::npos) out += ".0";
    return out;
}

// Turtle string literal: quotes and backslashes escaped.
std::string quoted(const std::string& text) {
    std::string out = "\"";
    for (char ch : text) {
        if (ch == '"' || ch == '\\') out += '\\';
        out += ch;
    }
    return out + "\"";
}

const char* unitTerm(Unit unit) {
    switch (unit) {
        case Unit::Decibel: return "units:db";
        case Unit::Hertz: return "units:hz";
        case Unit::Second: return "units:s";
        case Unit::Percent: return "units:pc";
        case Unit::None: break;
    }
    return nullptr;
}

void audioPort(std::ostream& out, unsigned index, bool input, int channel) {
    out << "    lv2:port [\n"
        << "        a lv2:" << (input ? "InputPort" : "OutputPort") << " , lv2:AudioPort ;\n"
        << "        lv2:index " << index << " ;\n"
        << "        lv2:symbol \"" << (input ? "in_" : "out_") << channel << "\" ;\n"
        << "        lv2:name \"" << (input ? "Input " : "Output ") << channel << "\"\n"
        << "    ] ;\n";
}

// A frequency's minimum, maximum and default are all fractions of the rate
// (lv2:sampleRate). Hosts that take the default as it stands (FFmpeg, lv2file)
// start such a port at a fraction of a hertz, which the effect clamps to its
// lowest frequency: give frequencies explicitly there.
void controlPort(std::ostream& out, unsigned index, const Control& control, bool last) {
    const char* unit = unitTerm(control.unit);
    // With a unit the host shows the unit itself; otherwise the effect's label stays in the name.
    const std::string name = unit != nullptr ? control.name : control.portName;
    out << "    lv2:port [\n"
        << "        a lv2:InputPort , lv2:ControlPort ;\n"
        << "        lv2:index " << index << " ;\n"
        << "        lv2:symbol " << quoted(control.symbol) << " ;\n"
        << "        lv2:name " << quoted(name) << " ;\n"
        << "        lv2:default " << number(control.defaultValue) << " ;\n"
        << "        lv2:minimum " << number(control.minimum) << " ;\n"
        << "        lv2:maximum " << number(control.maximum);
    if (control.toggled) out << " ;\n        lv2:portProperty lv2:toggled";
    if (control.sampleRateRelative) out << " ;\n        lv2:portProperty lv2:sampleRate";
    if (control.logarithmic) out << " ;\n        lv2:portProperty pprops:logarithmic";
    if (unit != nullptr) out << " ;\n        units:unit " << unit;
    out << "\n    ]" << (last ? " .\n\n" : " ;\n");
}

void describe(std::ostream& out, const Plugin& plugin) {
    out << "<" << plugin.uri << ">\n"
        << "    a lv2:Plugin ;\n"
        << "    doap:name " << quoted(plugin.name) << " ;\n"
        << "    rdfs:comment " << quoted("The module's \"" + plugin.identifier + "\" effect.") << " ;\n"
        << "    lv2:optionalFeature lv2:hardRTCapable ;\n";
    unsigned index = 0;
    const std::size_t total = static_cast<std::size_t>(plugin.inputs + plugin.outputs) + plugin.controls.size();
    for (int c = 0; c < plugin.inputs; ++c) audioPort(out, index++, true, c + 1);
    for (int c = 0; c < plugin.outputs; ++c) {
        const bool last = index + 1 == total;
        std::ostringstream port;
        audioPort(port, index++, false, c + 1);
        std::string text = port.str();
        if (last) text.replace(text.size() - 3, 3, " .\n\n");
        out << text;
    }
    for (std::size_t k = 0; k < plugin.controls.size(); ++k) {
        controlPort(out, index++, plugin.controls[k], k + 1 == plugin.controls.size());
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: %s MODULE BUNDLE_DIR BINARY_NAME\n", argv[0]);
        return 2;
    }
    const std::string bundle = argv[2];
    const Catalog catalog = Catalog::Load(argv[1]);
    if (!catalog.loaded()) {
        std::fprintf(stderr, "af_lv2_ttl: %s\n", catalog.error().c_str());
        return 1;
    }
    if (catalog.plugins().empty()) {
        std::fprintf(stderr, "af_lv2_ttl: the module registered no effect that can be made\n");
        return 1;
    }
    std::ofstream manifest(bundle + "/manifest.ttl");
    std::ofstream descriptions(bundle + "/" + kDescriptionFile);
    manifest << kPrefixes;
    descriptions << kPrefixes;
    for (const Plugin& plugin : catalog.plugins()) {
        manifest << "<" << plugin.uri << ">\n"
                 << "    a lv2:Plugin ;\n"
                 << "    lv2:binary <" << argv[3] << "> ;\n"
                 << "    rdfs:seeAlso <" << kDescriptionFile << "> .\n\n";
        describe(descriptions, plugin);
    }
    manifest.close();
    descriptions.close();
    if (!manifest || !descriptions) {
        std::fprintf(stderr, "af_lv2_ttl: cannot write into %s\n", bundle.c_str());
        return 1;
    }
    return 0;
}
