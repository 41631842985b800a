// The LADSPA face of the module: ladspa_descriptor(i) is the i-th registered
// variant, with one audio port per channel in each direction and one control
// port per parameter in the effect's display units.
#include <ladspa.h>

#include <cmath>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "common/Catalog.h"
#include "common/Channels.h"
#include "common/Runner.h"

namespace {

using AFBridge::Catalog;
using AFBridge::Control;
using AFBridge::Plugin;
using AFBridge::Runner;

constexpr const char* kMaker = "AudioFilters";
constexpr const char* kCopyright = "None";

// One descriptor with the storage its pointers lead into.
struct Entry {
    LADSPA_Descriptor descriptor{};
    std::vector<LADSPA_PortDescriptor> kinds;
    std::vector<std::string> names;
    std::vector<const char*> namePointers;
    std::vector<LADSPA_PortRangeHint> hints;
    const Plugin* plugin = nullptr;
};

// Where a default hint puts the value, in the bounds' own units.
struct DefaultChoice {
    LADSPA_PortRangeHintDescriptor hint;
    float value;
};

float between(const Control& control, float weightOfLower) {
    const double lower = control.minimum;
    const double upper = control.maximum;
    if (control.logarithmic && lower > 0.0 && upper > 0.0) {
        return static_cast<float>(std::exp(std::log(lower) * weightOfLower + std::log(upper) * (1.0 - weightOfLower)));
    }
    return static_cast<float>(lower * weightOfLower + upper * (1.0 - weightOfLower));
}

// LADSPA can only say "minimum, low, middle, high, maximum, 0, 1, 100 or 440":
// the effect's own default is matched exactly when one of these is it (the
// frequency ranges are chosen so that "high" is), and otherwise by the
// nearest on the port's own scale.
LADSPA_PortRangeHintDescriptor defaultHint(const Control& control) {
    if (control.toggled) return control.defaultValue > 0.5f ? LADSPA_HINT_DEFAULT_1 : LADSPA_HINT_DEFAULT_0;
    std::vector<DefaultChoice> choices;
    for (const DefaultChoice fixed : {DefaultChoice{LADSPA_HINT_DEFAULT_0, 0.0f}, DefaultChoice{LADSPA_HINT_DEFAULT_1, 1.0f},
                                      DefaultChoice{LADSPA_HINT_DEFAULT_100, 100.0f},
                                      DefaultChoice{LADSPA_HINT_DEFAULT_440, 440.0f}}) {
        if (fixed.value >= control.minimum && fixed.value <= control.maximum) choices.push_back(fixed);
    }
    choices.push_back({LADSPA_HINT_DEFAULT_MINIMUM, control.minimum});
    choices.push_back({LADSPA_HINT_DEFAULT_LOW, between(control, 0.75f)});
    choices.push_back({LADSPA_HINT_DEFAULT_MIDDLE, between(control, 0.5f)});
    choices.push_back({LADSPA_HINT_DEFAULT_HIGH, between(control, 0.25f)});
    choices.push_back({LADSPA_HINT_DEFAULT_MAXIMUM, control.maximum});
    const bool logScale = control.logarithmic && control.minimum > 0.0f && control.defaultValue > 0.0f;
    auto distance = [&](float value) {
        if (logScale && value > 0.0f) return std::fabs(std::log(static_cast<double>(value)) - std::log(static_cast<double>(control.defaultValue)));
        return std::fabs(static_cast<double>(value) - static_cast<double>(control.defaultValue));
    };
    DefaultChoice best = choices.front();
    for (const DefaultChoice& choice : choices) {
        if (distance(choice.value) < distance(best.value)) best = choice;
    }
    return best.hint;
}

// Every port is bounded on both sides, in absolute units (no rate hint):
// hosts show, check and default it as declared, and the bridge clamps.
LADSPA_PortRangeHint controlHint(const Control& control) {
    LADSPA_PortRangeHint hint{};
    if (control.toggled) {
        hint.HintDescriptor = LADSPA_HINT_TOGGLED | defaultHint(control);
        return hint;
    }
    hint.LowerBound = control.minimum;
    hint.UpperBound = control.maximum;
    hint.HintDescriptor = LADSPA_HINT_BOUNDED_BELOW | LADSPA_HINT_BOUNDED_ABOVE | defaultHint(control);
    if (control.logarithmic) hint.HintDescriptor |= LADSPA_HINT_LOGARITHMIC;
    return hint;
}

Runner* runnerOf(LADSPA_Handle handle) { return static_cast<Runner*>(handle); }

LADSPA_Handle instantiate(const LADSPA_Descriptor* descriptor, unsigned long sampleRate) {
    if (descriptor == nullptr || descriptor->ImplementationData == nullptr) return nullptr;
    const auto* plugin = static_cast<const Plugin*>(descriptor->ImplementationData);
    return Runner::create(*plugin, static_cast<double>(sampleRate)).release();
}

void connectPort(LADSPA_Handle handle, unsigned long port, LADSPA_Data* data) {
    if (handle != nullptr) runnerOf(handle)->connect(static_cast<std::uint32_t>(port), data);
}

void activate(LADSPA_Handle handle) {
    if (handle != nullptr) runnerOf(handle)->activate();
}

void deactivate(LADSPA_Handle handle) {
    if (handle != nullptr) runnerOf(handle)->deactivate();
}

void run(LADSPA_Handle handle, unsigned long frames) {
    if (handle != nullptr) runnerOf(handle)->run(frames);
}

void cleanup(LADSPA_Handle handle) { delete runnerOf(handle); }

std::unique_ptr<Entry> makeEntry(const Plugin& plugin) {
    auto entry = std::make_unique<Entry>();
    entry->plugin = &plugin;
    for (int c = 0; c < plugin.inputs; ++c) {
        entry->kinds.push_back(LADSPA_PORT_INPUT | LADSPA_PORT_AUDIO);
        entry->names.push_back(AFBridge::channelRole(plugin.inputs, c).name + " In");
        entry->hints.push_back(LADSPA_PortRangeHint{});
    }
    for (int c = 0; c < plugin.outputs; ++c) {
        entry->kinds.push_back(LADSPA_PORT_OUTPUT | LADSPA_PORT_AUDIO);
        entry->names.push_back(AFBridge::channelRole(plugin.outputs, c).name + " Out");
        entry->hints.push_back(LADSPA_PortRangeHint{});
    }
    for (const Control& control : plugin.controls) {
        entry->kinds.push_back(LADSPA_PORT_INPUT | LADSPA_PORT_CONTROL);
        entry->names.push_back(control.portName);
        entry->hints.push_back(controlHint(control));
    }
    for (const std::string& name : entry->names) entry->namePointers.push_back(name.c_str());
    LADSPA_Descriptor& d = entry->descriptor;
    d.UniqueID = plugin.uniqueId;
    d.Label = plugin.label.c_str();
    d.Properties = LADSPA_PROPERTY_HARD_RT_CAPABLE;
    d.Name = plugin.name.c_str();
    d.Maker = kMaker;
    d.Copyright = kCopyright;
    d.PortCount = entry->kinds.size();
    d.PortDescriptors = entry->kinds.data();
    d.PortNames = entry->namePointers.data();
    d.PortRangeHints = entry->hints.data();
    d.ImplementationData = const_cast<Plugin*>(&plugin);
    d.instantiate = &instantiate;
    d.connect_port = &connectPort;
    d.activate = &activate;
    d.run = &run;
    d.run_adding = nullptr;
    d.set_run_adding_gain = nullptr;
    d.deactivate = &deactivate;
    d.cleanup = &cleanup;
    return entry;
}

const std::vector<std::unique_ptr<Entry>>& entries() {
    static const std::vector<std::unique_ptr<Entry>> all = [] {
        std::vector<std::unique_ptr<Entry>> made;
        const Catalog& catalog = Catalog::Get();
        if (!catalog.loaded()) std::fprintf(stderr, "audiofilters-ladspa: %s\n", catalog.error().c_str());
        for (const Plugin& plugin : Catalog::Get().plugins()) made.push_back(makeEntry(plugin));
        return made;
    }();
    return all;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) const LADSPA_Descriptor* ladspa_descriptor(unsigned long index) {
    try {
        const auto& all = entries();
        return index < all.size() ? &all[index]->descriptor : nullptr;
    } catch (...) {
        return nullptr;
    }
}
