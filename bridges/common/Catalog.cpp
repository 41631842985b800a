#include "Catalog.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cctype>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>

#include "HostRanges.h"
#include "Ordo/MakeStdString.h"
#include "hostkit/Module.h"
#include "hostkit/ModulePath.h"

namespace AFBridge {

namespace {

constexpr const char* kIdentifierPrefix = "Internal ";
constexpr const char* kVariantSuffixes[] = {" Mono", " Stereo", " 5.1", " 16 Channel"};

bool endsWith(const std::string& text, const std::string& tail) {
    return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

std::string withoutPrefix(const std::string& identifier) {
    const std::string prefix = kIdentifierPrefix;
    return identifier.rfind(prefix, 0) == 0 ? identifier.substr(prefix.size()) : identifier;
}

// Lower-case letters and digits joined by `separator`, every other run of characters one separator.
std::string joinedWords(const std::string& text, char separator) {
    std::string out;
    bool pending = false;
    for (unsigned char ch : text) {
        if (std::isalnum(ch)) {
            if (pending && !out.empty()) out += separator;
            pending = false;
            out += static_cast<char>(std::tolower(ch));
        } else {
            pending = true;
        }
    }
    return out;
}

bool readable(const std::string& path) { return !path.empty() && access(path.c_str(), R_OK) == 0; }

// The module as the host kit finds it (AF_MODULE_PATH, beside this library,
// the installed layout); when none is there, a library reached through a link
// or copied elsewhere (/usr/lib/ladspa, ~/.ladspa) looks where the link leads,
// then in the folder the build installs the module into.
std::string locateBridgeModule() {
    const std::string found = hostkit::locateModule(reinterpret_cast<const void*>(&uniqueIdFor));
    if (readable(found) || std::getenv(hostkit::kModulePathVariable) != nullptr) return found;
    Dl_info info{};
    char resolved[PATH_MAX] = {};
    if (dladdr(reinterpret_cast<void*>(&uniqueIdFor), &info) != 0 && info.dli_fname != nullptr &&
        realpath(info.dli_fname, resolved) != nullptr) {
        std::string folder = resolved;
        folder.erase(folder.rfind('/') + 1);
        const std::string installed = folder + "../audiofilters/" + hostkit::kModuleFile;
        if (readable(installed)) return installed;
    }
#ifdef AF_INSTALLED_MODULE
    if (readable(AF_INSTALLED_MODULE)) return AF_INSTALLED_MODULE;
#endif
    return found;
}

Unit unitFor(ML::VSTPropertySupportMixin::ParameterType type, const std::string& label) {
    switch (type) {
        case ML::VSTPropertySupportMixin::kDecibels: return Unit::Decibel;
        case ML::VSTPropertySupportMixin::kHertz: return Unit::Hertz;
        case ML::VSTPropertySupportMixin::kTime: return Unit::Second;
        default: break;
    }
    // Plain numbers that are levels or shares all the same (a shelf's boost).
    if (label == "dB") return Unit::Decibel;
    return label == "%" ? Unit::Percent : Unit::None;
}

Control describeControl(const hostkit::Effect& effect, ML::VSTPropertySupportMixin& properties, unsigned index) {
    Control control;
    control.index = index;
    control.name = trimmed(effect.parameterName(static_cast<VstInt32>(index)));
    control.label = trimmed(effect.parameterLabel(static_cast<VstInt32>(index)));
    if (control.name.empty()) control.name = "Parameter " + std::to_string(index + 1);
    // A label that only repeats the name (Mute's) adds nothing to the port name.
    const bool showLabel = !control.label.empty() && control.name.rfind(control.label, 0) != 0;
    control.portName = showLabel ? control.name + " (" + control.label + ")" : control.name;
    control.type = properties.GetParameterType(index);
    control.unit = unitFor(control.type, control.label);
    const float normalised = effect.getParameter(static_cast<VstInt32>(index));
    control.minimum = properties.GetParameterMin(index);
    control.maximum = properties.GetParameterMax(index);
    control.effectMinimum = control.minimum;
    control.defaultValue = properties.ConvertParameterValueToDisplay(index, normalised);
    control.frequency = control.type == ML::VSTPropertySupportMixin::kHertz;
    // A plain number that lives on 0..1 is an on/off switch (Mute's toggles).
    control.toggled = control.type == ML::VSTPropertySupportMixin::kNumber && control.minimum == 0.0f &&
                      control.maximum == 1.0f;
    declareForHosts(control);
    return control;
}

// Symbols must be unique within a plug-in. A name the effect gives twice
// (Multitap Delay's "Level 4" at indices 8 and 11) tells neither port apart:
// both get the parameter number in the symbol and the port name.
void assignSymbols(std::vector<Control>& controls) {
    std::map<std::string, int> uses;
    for (const Control& control : controls) ++uses[joinedWords(control.name, '_')];
    std::set<std::string> used = {"latency"};
    for (Control& control : controls) {
        std::string symbol = joinedWords(control.name, '_');
        const std::string number = std::to_string(control.index + 1);
        if (uses[symbol] > 1) {
            symbol += "_p" + number;
            control.portName += " [" + number + "]";
        }
        if (symbol.empty() || std::isdigit(static_cast<unsigned char>(symbol.front()))) symbol.insert(0, "p_");
        while (used.count(symbol) != 0) symbol += "_" + number;
        used.insert(symbol);
        control.symbol = symbol;
    }
}

}  // namespace

std::string trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) return std::string();
    const std::size_t last = text.find_last_not_of(" \t\r\n");
    return text.substr(first, last - first + 1);
}

std::string slugFor(const std::string& identifier) { return joinedWords(withoutPrefix(identifier), '-'); }

std::string labelFor(const std::string& identifier) { return "af_" + joinedWords(withoutPrefix(identifier), '_'); }

std::string familyOf(const std::string& identifier) {
    const std::string rest = withoutPrefix(identifier);
    for (const char* suffix : kVariantSuffixes) {
        if (endsWith(rest, suffix)) return rest.substr(0, rest.size() - std::strlen(suffix));
    }
    return rest;
}

std::string displayNameFor(const std::string& familyName, const std::string& identifier) {
    const std::string rest = withoutPrefix(identifier);
    for (const char* suffix : kVariantSuffixes) {
        if (endsWith(rest, suffix)) return familyName + " (" + std::string(suffix + 1) + ")";
    }
    return familyName;
}

unsigned long uniqueIdFor(const std::string& identifier) {
    std::uint32_t hash = 2166136261u;
    for (unsigned char ch : identifier) {
        hash ^= ch;
        hash *= 16777619u;
    }
    return 0xAF0000ul | (hash & 0xFFFFu);
}

hostkit::Effect makeEffect(const Plugin& plugin, double sampleRate) {
    hostkit::Effect effect = hostkit::createEffect(plugin.registration, &hostkit::quietHost);
    if (effect) effect.start(static_cast<float>(sampleRate), kPlannedBlock, false);
    return effect;
}

const Catalog& Catalog::Get() {
    static const Catalog catalog = Load(locateBridgeModule());
    return catalog;
}

Catalog Catalog::Load(const std::string& modulePath) {
    Catalog catalog;
    catalog.modulePath_ = modulePath;
    // The module stays loaded for the life of the process: effects made from
    // it may outlive any one plug-in instance, and its registrations name its code.
    const hostkit::Module module = hostkit::Module::Load(modulePath);
    if (!module.loaded()) {
        catalog.error_ = module.error();
        return catalog;
    }
    for (const hostkit::Registration& registration : module.registrations()) {
        const std::string identifier = registration.id.c_str();
        Plugin plugin;
        plugin.identifier = identifier;
        plugin.name = displayNameFor(Ordo::MakeStdString(registration.displayName), identifier);
        plugin.label = labelFor(identifier);
        plugin.slug = slugFor(identifier);
        plugin.uri = "urn:audiofilters:" + plugin.slug;
        plugin.uniqueId = uniqueIdFor(identifier);
        plugin.registration = registration;
        catalog.plugins_.push_back(std::move(plugin));
    }
    catalog.describe();
    addAliases(catalog.plugins_);
    return catalog;
}

void Catalog::describe() {
    std::vector<Plugin> described;
    for (Plugin& plugin : plugins_) {
        const hostkit::Effect effect = makeEffect(plugin, kReferenceRate);
        // A registered identifier whose family is not built yet has no effect to offer.
        if (!effect) continue;
        plugin.inputs = effect.inputCount();
        plugin.outputs = effect.outputCount();
        plugin.hasProperties = effect.properties() != nullptr;
        if (effect.properties() != nullptr) {
            // The defaults hosts are given are the default program's (a fresh
            // effect may hold other values until a program is chosen).
            if (effect.record()->numPrograms > 0) effect.dispatch(effSetProgram, 0, 0);
            for (VstInt32 i = 0; i < effect.parameterCount(); ++i) {
                plugin.controls.push_back(describeControl(effect, *effect.properties(), static_cast<unsigned>(i)));
            }
            assignSymbols(plugin.controls);
        }
        described.push_back(std::move(plugin));
    }
    plugins_ = std::move(described);
}

const Plugin* Catalog::findByLabel(const char* label) const {
    if (label == nullptr) return nullptr;
    for (const Plugin& plugin : plugins_) {
        if (plugin.label == label) return &plugin;
    }
    return nullptr;
}

const Plugin* Catalog::findByUri(const char* uri) const {
    if (uri == nullptr) return nullptr;
    for (const Plugin& plugin : plugins_) {
        if (plugin.uri == uri) return &plugin;
    }
    return nullptr;
}

}  // namespace AFBridge
