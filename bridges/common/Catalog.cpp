#include "Catalog.h"

#include <cctype>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <set>

#include "Ordo/MakeStdString.h"
#include "hostkit/Module.h"

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

Unit unitFor(ML::VSTPropertySupportMixin::ParameterType type, const std::string& label) {
    switch (type) {
        case ML::VSTPropertySupportMixin::kDecibels: return Unit::Decibel;
        case ML::VSTPropertySupportMixin::kHertz: return Unit::Hertz;
        case ML::VSTPropertySupportMixin::kTime: return Unit::Second;
        default: return label == "%" ? Unit::Percent : Unit::None;
    }
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
    float minimum = properties.GetParameterMin(index);
    float maximum = properties.GetParameterMax(index);
    float initial = properties.ConvertParameterValueToDisplay(index, normalised);
    if (control.type == ML::VSTPropertySupportMixin::kHertz) {
        // The range was read at the reference rate; hosts scale it by their own.
        control.sampleRateRelative = true;
        control.logarithmic = minimum > 0.0f;
        minimum = static_cast<float>(minimum / kReferenceRate);
        maximum = static_cast<float>(maximum / kReferenceRate);
        initial = static_cast<float>(initial / kReferenceRate);
    }
    // A plain number that lives on 0..1 is an on/off switch (Mute's toggles).
    control.toggled = control.type == ML::VSTPropertySupportMixin::kNumber && minimum == 0.0f && maximum == 1.0f;
    control.minimum = minimum;
    control.maximum = maximum;
    control.defaultValue = initial;
    return control;
}

// Symbols must be unique within a plug-in: a repeated name gets the index appended.
void assignSymbols(std::vector<Control>& controls) {
    std::set<std::string> used = {"in", "out"};
    for (Control& control : controls) {
        std::string symbol = joinedWords(control.name, '_');
        if (symbol.empty() || std::isdigit(static_cast<unsigned char>(symbol.front()))) symbol.insert(0, "p_");
        if (used.count(symbol) != 0) {
            symbol += '_';
            symbol += std::to_string(control.index + 1);
        }
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
    static const Catalog catalog = Load(hostkit::locateModule(reinterpret_cast<const void*>(&uniqueIdFor)));
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
