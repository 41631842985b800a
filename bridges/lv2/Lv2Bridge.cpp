// The LV2 face of the module: lv2_descriptor(i) is the i-th registered
// variant under its URI. The bundle's descriptions (ports, ranges, units) are
// written at build time by af_lv2_ttl from the same catalogue, so the port
// numbers here and there agree: inputs, outputs, then controls.
#include <lv2/core/lv2.h>

#include <cstdio>
#include <memory>
#include <vector>

#include "common/Catalog.h"
#include "common/Runner.h"

namespace {

using AFBridge::Catalog;
using AFBridge::Plugin;
using AFBridge::Runner;

Runner* runnerOf(LV2_Handle handle) { return static_cast<Runner*>(handle); }

const Plugin* pluginOf(const LV2_Descriptor* descriptor);

LV2_Handle instantiate(const LV2_Descriptor* descriptor, double sampleRate, const char* /*bundlePath*/,
                       const LV2_Feature* const* /*features*/) {
    const Plugin* plugin = pluginOf(descriptor);
    if (plugin == nullptr) return nullptr;
    return Runner::create(*plugin, sampleRate).release();
}

void connectPort(LV2_Handle handle, uint32_t port, void* data) {
    if (handle != nullptr) runnerOf(handle)->connect(port, data);
}

void activate(LV2_Handle handle) {
    if (handle != nullptr) runnerOf(handle)->activate();
}

void run(LV2_Handle handle, uint32_t frames) {
    if (handle != nullptr) runnerOf(handle)->run(frames);
}

void deactivate(LV2_Handle handle) {
    if (handle != nullptr) runnerOf(handle)->deactivate();
}

void cleanup(LV2_Handle handle) { delete runnerOf(handle); }

const void* extensionData(const char* /*uri*/) { return nullptr; }

struct Entry {
    LV2_Descriptor descriptor{};
    const Plugin* plugin = nullptr;
};

const std::vector<Entry>& entries() {
    static const std::vector<Entry> all = [] {
        std::vector<Entry> made;
        const Catalog& catalog = Catalog::Get();
        if (!catalog.loaded()) std::fprintf(stderr, "audiofilters-lv2: %s\n", catalog.error().c_str());
        for (const Plugin& plugin : catalog.plugins()) {
            Entry entry;
            entry.plugin = &plugin;
            entry.descriptor.URI = plugin.uri.c_str();
            entry.descriptor.instantiate = &instantiate;
            entry.descriptor.connect_port = &connectPort;
            entry.descriptor.activate = &activate;
            entry.descriptor.run = &run;
            entry.descriptor.deactivate = &deactivate;
            entry.descriptor.cleanup = &cleanup;
            entry.descriptor.extension_data = &extensionData;
            made.push_back(entry);
        }
        return made;
    }();
    return all;
}

const Plugin* pluginOf(const LV2_Descriptor* descriptor) {
    if (descriptor == nullptr) return nullptr;
    for (const Entry& entry : entries()) {
        if (&entry.descriptor == descriptor) return entry.plugin;
    }
    // A host that copied the descriptor still names the plug-in by its URI.
    return descriptor->URI != nullptr ? Catalog::Get().findByUri(descriptor->URI) : nullptr;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) const LV2_Descriptor* lv2_descriptor(uint32_t index) {
    try {
        const auto& all = entries();
        return index < all.size() ? &all[index].descriptor : nullptr;
    } catch (...) {
        return nullptr;
    }
}
