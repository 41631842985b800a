// af_lv2_ttl MODULE BUNDLE_DIR BINARY_NAME
//
// Writes the LV2 bundle's descriptions from the module itself: it loads the
// module as a host does and describes every registered variant the way the
// plug-in binary will present it (the same catalogue code, so the port order,
// ranges and URIs cannot drift apart). Output: BUNDLE_DIR/manifest.ttl,
// BUNDLE_DIR/AudioFilters.ttl and BUNDLE_DIR/presets.ttl.
#include <cmath>
#include <cstdio>
#include <fstream>
#include <string>

#include "common/Catalog.h"
#include "common/Channels.h"

namespace {

using AFBridge::Catalog;
using AFBridge::Control;
using AFBridge::Plugin;
using AFBridge::Unit;

constexpr const char* kDescriptionFile = "AudioFilters.ttl";
constexpr const char* kPresetFile = "presets.ttl";
constexpr const char* kMakerName = "AudioFilters";
// No doap:license: the project states no licence, and a made-up URI would
// tell hosts nothing true.
// Bumped whenever the ports or their meaning change (LV2 hosts compare them).
constexpr int kMinorVersion = 1;
constexpr int kMicroVersion = 0;

constexpr const char* kPrefixes =
    "@prefix doap: <http://usefulinc.com/ns/doap#> .\n"
    "@prefix foaf: <http://xmlns.com/foaf/0.1/> .\n"
    "@prefix lv2: <http://lv2plug.in/ns/lv2core#> .\n"
    "@prefix pg: <http://lv2plug.in/ns/ext/port-groups#> .\n"
    "@prefix pprops: <http://lv2plug.in/ns/ext/port-props#> .\n"
    "@prefix pset: <http://lv2plug.in/ns/ext/presets#> .\n"
    "@prefix rdfs: <http://www.w3.org/2000/01/rdf-schema#> .\n"
    "@prefix units: <http://lv2plug.in/ns/extensions/units#> .\n\n";

struct FamilyClass {
    const char* family;
    const char* lv2Class;
};

// The LV2 category each family is listed under.
constexpr FamilyClass kFamilyClasses[] = {
    {"Highpass", "lv2:HighpassPlugin"}, {"Lowpass", "lv2:LowpassPlugin"},   {"Bandpass", "lv2:BandpassPlugin"},
    {"Bandreject", "lv2:FilterPlugin"}, {"Parametric EQ", "lv2:ParaEQPlugin"}, {"Bass", "lv2:EQPlugin"},
    {"Treble", "lv2:EQPlugin"},         {"Delay", "lv2:DelayPlugin"},       {"Multitap Delay", "lv2:DelayPlugin"},
    {"Volume", "lv2:AmplifierPlugin"},  {"Channel Volume", "lv2:AmplifierPlugin"}, {"Mute", "lv2:AmplifierPlugin"},
    {"Balance", "lv2:SpatialPlugin"},
};

const char* classOf(const Plugin& plugin) {
    const std::string family = AFBridge::familyOf(plugin.identifier);
    for (const FamilyClass& entry : kFamilyClasses) {
        if (family == entry.family) return entry.lv2Class;
    }
    return "lv2:UtilityPlugin";  // swap, fill, invert
}

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

// Channel Volume 5.1 names its six levels Left, Right, Left Surround, Right
// Surround, Center, LFE, but level k scales buffer k (L, R, C, LFE, Ls, Rs):
// the port says which channel it really changes.
std::string controlComment(const Plugin& plugin, const Control& control) {
    if (AFBridge::familyOf(plugin.identifier) == "Channel Volume" && plugin.inputs == 6) {
        return "Scales the " + AFBridge::channelRole(plugin.inputs, static_cast<int>(control.index)).name + " channel.";
    }
    if (control.silenceAtFloor) return "At the minimum the channel is silent.";
    return std::string();
}

void audioPort(std::ostream& out, const Plugin& plugin, unsigned index, bool input, int channel) {
    const int channels = input ? plugin.inputs : plugin.outputs;
    const AFBridge::ChannelRole role = AFBridge::channelRole(channels, channel);
    out << "    lv2:port [\n"
        << "        a lv2:" << (input ? "InputPort" : "OutputPort") << " , lv2:AudioPort ;\n"
        << "        lv2:index " << index << " ;\n"
        << "        lv2:symbol \"" << (input ? "in_" : "out_") << channel + 1 << "\" ;\n"
        << "        lv2:name " << quoted(role.name + (input ? " In" : " Out")) << " ;\n"
        << "        pg:group <" << plugin.uri << (input ? "#in" : "#out") << ">";
    if (role.designation != nullptr) out << " ;\n        lv2:designation " << role.designation;
    out << "\n    ] ;\n";
}

void controlPort(std::ostream& out, const Plugin& plugin, unsigned index, const Control& control) {
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
    if (control.logarithmic) out << " ;\n        lv2:portProperty pprops:logarithmic";
    if (unit != nullptr) out << " ;\n        units:unit " << unit;
    const std::string comment = controlComment(plugin, control);
    if (!comment.empty()) out << " ;\n        rdfs:comment " << quoted(comment);
    out << "\n    ] ;\n";
}

// The effects add no delay; hosts that compensate read it from this port.
void latencyPort(std::ostream& out, unsigned index) {
    out << "    lv2:port [\n"
        << "        a lv2:OutputPort , lv2:ControlPort ;\n"
        << "        lv2:index " << index << " ;\n"
        << "        lv2:symbol \"latency\" ;\n"
        << "        lv2:name \"Latency\" ;\n"
        << "        lv2:designation lv2:latency ;\n"
        << "        lv2:minimum 0 ;\n"
        << "        lv2:maximum 0 ;\n"
        << "        lv2:portProperty lv2:reportsLatency , lv2:integer ;\n"
        << "        units:unit units:frame\n"
        << "    ] .\n\n";
}

void group(std::ostream& out, const Plugin& plugin, bool input) {
    const int channels = input ? plugin.inputs : plugin.outputs;
    out << "<" << plugin.uri << (input ? "#in" : "#out") << ">\n"
        << "    a " << AFBridge::channelGroupClass(channels) << " , " << (input ? "pg:InputGroup" : "pg:OutputGroup")
        << " ;\n"
        << "    lv2:symbol \"" << (input ? "in" : "out") << "\" ;\n"
        << "    lv2:name \"" << (input ? "Input" : "Output") << "\" .\n\n";
}

void describe(std::ostream& out, const Plugin& plugin) {
    group(out, plugin, true);
    group(out, plugin, false);
    std::string comment = "The module's \"" + plugin.identifier + "\" effect.";
    if (!plugin.aliasOf.empty()) comment += " The same plug-in as <" + plugin.aliasOf + ">.";
    out << "<" << plugin.uri << ">\n"
        << "    a lv2:Plugin , doap:Project , " << classOf(plugin) << " ;\n"
        << "    doap:name " << quoted(plugin.name) << " ;\n"
        << "    doap:maintainer [ a foaf:Organization ; foaf:name " << quoted(kMakerName) << " ] ;\n"
        << "    lv2:minorVersion " << kMinorVersion << " ;\n"
        << "    lv2:microVersion " << kMicroVersion << " ;\n"
        << "    rdfs:comment " << quoted(comment) << " ;\n"
        << "    lv2:optionalFeature lv2:hardRTCapable ;\n"
        << "    pg:mainInput <" << plugin.uri << "#in> ;\n"
        << "    pg:mainOutput <" << plugin.uri << "#out> ;\n";
    unsigned index = 0;
    for (int c = 0; c < plugin.inputs; ++c) audioPort(out, plugin, index++, true, c);
    for (int c = 0; c < plugin.outputs; ++c) audioPort(out, plugin, index++, false, c);
    for (const Control& control : plugin.controls) controlPort(out, plugin, index++, control);
    latencyPort(out, index);
}

// The default program as a preset: every control at the effect's default.
void preset(std::ostream& out, const Plugin& plugin) {
    out << "<" << plugin.uri << "#default>\n"
        << "    a pset:Preset ;\n"
        << "    lv2:appliesTo <" << plugin.uri << "> ;\n"
        << "    rdfs:label \"Default\"";
    for (const Control& control : plugin.controls) {
        out << " ;\n    lv2:port [ lv2:symbol " << quoted(control.symbol) << " ; pset:value "
            << number(control.defaultValue) << " ]";
    }
    out << " .\n\n";
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
    std::ofstream presets(bundle + "/" + kPresetFile);
    manifest << kPrefixes;
    descriptions << kPrefixes;
    presets << kPrefixes;
    for (const Plugin& plugin : catalog.plugins()) {
        manifest << "<" << plugin.uri << ">\n"
                 << "    a lv2:Plugin , doap:Project , " << classOf(plugin) << " ;\n"
                 << "    lv2:binary <" << argv[3] << "> ;\n"
                 << "    rdfs:seeAlso <" << kDescriptionFile << "> .\n\n"
                 << "<" << plugin.uri << "#default>\n"
                 << "    a pset:Preset ;\n"
                 << "    lv2:appliesTo <" << plugin.uri << "> ;\n"
                 << "    rdfs:seeAlso <" << kPresetFile << "> .\n\n";
        describe(descriptions, plugin);
        preset(presets, plugin);
    }
    manifest.close();
    descriptions.close();
    presets.close();
    if (!manifest || !descriptions || !presets) {
        std::fprintf(stderr, "af_lv2_ttl: cannot write into %s\n", bundle.c_str());
        return 1;
    }
    return 0;
}
