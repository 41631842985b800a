#include "Catalog.h"

#include <dlfcn.h>

#include <cctype>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <climits>
#include <unistd.h>

#include "AudioEffect.h"
#include "HostRanges.h"
#include "Ordo/MakeStdString.h"

namespace AFBridge {

namespace {

// void AF::Startup(), by its mangled name.
constexpr const char* kStartupSymbol = "_ZN2AF7StartupEv";
constexpr const char* kModuleFile = "libAudioFilters.so";
constexpr const char* kInstalledModule = "../audiofilters/libAudioFilters.so";
constexpr const char* kIdentifierPrefix = "Internal ";
constexpr const char* kVariantSuffixes[] = {" Mono", " Stereo", " 5.1", " 16 Channel"};
constexpr std::size_t kTextSize = 256;

constexpr VstInt32 kOpen = 0;
constexpr VstInt32 kClose = 1;
constexpr VstInt32 kSetProgram = 2;
constexpr VstInt32 kGetParamLabel = 6;
constexpr VstInt32 kGetParamName = 8;
constexpr VstInt32 kSetSampleRate = 10;
constexpr VstInt32 kSetBlockSize = 11;

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

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string("./") : path.substr(0, slash + 1);
}

// The library this code lives in, as the host named it.
std::string ownPath() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&ownPath), &info) == 0 || info.dli_fname == nullptr) return std::string();
    return info.dli_fname;
}

// The folder holding the library this code lives in, with a trailing slash.
std::string ownFolder() { return folderOf(ownPath()); }

bool readable(const std::string& path) { return !path.empty() && access(path.c_str(), R_OK) == 0; }

std::string locateModule() {
    const char* fromEnvironment = std::getenv("AF_MODULE_PATH");
    if (fromEnvironment != nullptr && *fromEnvironment != '\0') return fromEnvironment;
    const std::string folder = ownFolder();
    if (readable(folder + kModuleFile)) return folder + kModuleFile;
    if (readable(folder + kInstalledModule)) return folder + kInstalledModule;
    // Reached through a link or copied elsewhere (~/.ladspa, /usr/lib/ladspa):
    // where the link leads, then the folder the build installs the module into.
    char resolved[PATH_MAX] = {};
    if (realpath(ownPath().c_str(), resolved) != nullptr) {
        const std::string real = folderOf(resolved);
        if (readable(real + kInstalledModule)) return real + kInstalledModule;
    }
#ifdef AF_INSTALLED_MODULE
    if (readable(AF_INSTALLED_MODULE)) return AF_INSTALLED_MODULE;
#endif
    return folder + kInstalledModule;
}

std::string parameterText(AEffect* effect, VstInt32 opcode, unsigned index) {
    char text[kTextSize] = {};
    effect->dispatcher(effect, opcode, static_cast<VstInt32>(index), 0, text, 0.0f);
    text[kTextSize - 1] = '\0';
    return trimmed(text);
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

Control describeControl(AEffect* effect, ML::VSTPropertySupportMixin& properties, unsigned index) {
    Control control;
    control.index = index;
    control.name = parameterText(effect, kGetParamName, index);
    control.label = parameterText(effect, kGetParamLabel, index);
    if (control.name.empty()) control.name = "Parameter " + std::to_string(index + 1);
    // A label that only repeats the name (Mute's) adds nothing to the port name.
    const bool showLabel = !control.label.empty() && control.name.rfind(control.label, 0) != 0;
    control.portName = showLabel ? control.name + " (" + control.label + ")" : control.name;
    control.type = properties.GetParameterType(index);
    control.unit = unitFor(control.type, control.label);
    const float normalised = effect->getParameter(effect, static_cast<VstInt32>(index));
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

VstIntPtr quietHost(AEffect*, VstInt32, VstInt32, VstIntPtr, void*, float) { return 0; }

LiveEffect makeEffect(const Plugin& plugin, double sampleRate) {
    LiveEffect live;
    if (plugin.registration.factory == nullptr) return live;
    ML::VSTPropertySupportMixin* properties = nullptr;
    AudioEffect* made = plugin.registration.factory(plugin.registration.id, &quietHost, &properties);
    if (made == nullptr) return live;
    live.effect = made->getAeffect();
    live.properties = properties;
    live.effect->dispatcher(live.effect, kOpen, 0, 0, nullptr, 0.0f);
    live.effect->dispatcher(live.effect, kSetSampleRate, 0, 0, nullptr, static_cast<float>(sampleRate));
    live.effect->dispatcher(live.effect, kSetBlockSize, 0, kPlannedBlock, nullptr, 0.0f);
    return live;
}

void closeEffect(LiveEffect& live) {
    // The close request deletes the effect; the record is gone afterwards.
    if (live.effect != nullptr) live.effect->dispatcher(live.effect, kClose, 0, 0, nullptr, 0.0f);
    live.effect = nullptr;
    live.properties = nullptr;
}

const Catalog& Catalog::Get() {
    static const Catalog catalog = Load(locateModule());
    return catalog;
}

Catalog Catalog::Load(const std::string& modulePath) {
    Catalog catalog;
    catalog.modulePath_ = modulePath;
    // The module stays loaded for the life of the process: effects made from
    // it may outlive any one plug-in instance, and its registrations name its code.
    void* handle = dlopen(modulePath.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        const char* why = dlerror();
        catalog.error_ = "cannot load " + modulePath + ": " + (why != nullptr ? why : "unknown error");
        return catalog;
    }
    auto startup = reinterpret_cast<void (*)()>(dlsym(handle, kStartupSymbol));
    if (startup == nullptr) {
        catalog.error_ = modulePath + " does not export AF::Startup";
        return catalog;
    }
    // Other users of the registry in this process (another bridge) may have
    // registered already: only what this start-up call adds is ours.
    const std::size_t before = ML::VSTAudioFilterRegistry::Registrations().size();
    startup();
    std::vector<ML::VSTAudioFilterRegistry::Registration> all = ML::VSTAudioFilterRegistry::Registrations();
    std::set<std::string> seen;
    for (std::size_t i = before < all.size() ? before : all.size(); i < all.size(); ++i) {
        const std::string identifier = all[i].id.c_str();
        if (!seen.insert(identifier).second) continue;
        Plugin plugin;
        plugin.identifier = identifier;
        plugin.name = displayNameFor(Ordo::MakeStdString(all[i].displayName), identifier);
        plugin.label = labelFor(identifier);
        plugin.slug = slugFor(identifier);
        plugin.uri = "urn:audiofilters:" + plugin.slug;
        plugin.uniqueId = uniqueIdFor(identifier);
        plugin.registration = all[i];
        catalog.plugins_.push_back(std::move(plugin));
    }
    catalog.describe();
    addAliases(catalog.plugins_);
    return catalog;
}

void Catalog::describe() {
    std::vector<Plugin> described;
    for (Plugin& plugin : plugins_) {
        LiveEffect live = makeEffect(plugin, kReferenceRate);
        // A registered identifier whose family is not built yet has no effect to offer.
        if (live.effect == nullptr) continue;
        plugin.inputs = live.effect->numInputs;
        plugin.outputs = live.effect->numOutputs;
        plugin.hasProperties = live.properties != nullptr;
        if (live.properties != nullptr) {
            // The defaults hosts are given are the default program's (a fresh
            // effect may hold other values until a program is chosen).
            if (live.effect->numPrograms > 0) live.effect->dispatcher(live.effect, kSetProgram, 0, 0, nullptr, 0.0f);
            for (VstInt32 i = 0; i < live.effect->numParams; ++i) {
                plugin.controls.push_back(describeControl(live.effect, *live.properties, static_cast<unsigned>(i)));
            }
            assignSymbols(plugin.controls);
        }
        closeEffect(live);
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
