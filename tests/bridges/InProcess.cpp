#include "bridges/InProcess.h"

#include <dlfcn.h>

#include <algorithm>
#include <functional>

#include "bridges/BridgeSupport.h"

namespace bridgetest {

namespace {

struct Port {
    std::function<void(std::uint32_t, void*)> connect;
};

// The shared body of both hosts: buffers laid out as `buffers` says, controls
// after the audio ports, blocks copied in and out of the host's arrays.
Channels drive(int inputs, int outputs, const std::vector<float>& controlValues, const Channels& input,
               const std::vector<int>& blocks, Buffers buffers, const std::function<void(std::uint32_t, void*)>& connect,
               const std::function<void(std::uint32_t)>& run) {
    const int frames = input.empty() ? 0 : static_cast<int>(input.front().size());
    const int largest = blocks.empty() ? 0 : *std::max_element(blocks.begin(), blocks.end());
    const auto size = static_cast<std::size_t>(std::max(largest, 1));
    Channels hostIn(static_cast<std::size_t>(inputs), std::vector<float>(size));
    Channels hostOut(static_cast<std::size_t>(outputs), std::vector<float>(size));
    std::vector<float> controls = controlValues;
    std::vector<float*> inPointers(static_cast<std::size_t>(inputs));
    std::vector<float*> outPointers(static_cast<std::size_t>(outputs));
    for (int c = 0; c < inputs; ++c) inPointers[static_cast<std::size_t>(c)] = hostIn[static_cast<std::size_t>(c)].data();
    for (int c = 0; c < outputs; ++c) {
        float* own = hostOut[static_cast<std::size_t>(c)].data();
        if (buffers == Buffers::kInPlace && c < inputs) own = inPointers[static_cast<std::size_t>(c)];
        if (buffers == Buffers::kCrossed && inputs > 0) own = inPointers[static_cast<std::size_t>((c + 1) % inputs)];
        outPointers[static_cast<std::size_t>(c)] = own;
    }
    std::uint32_t port = 0;
    for (float* p : inPointers) connect(port++, p);
    for (float* p : outPointers) connect(port++, p);
    for (float& value : controls) connect(port++, &value);
    Channels result(static_cast<std::size_t>(outputs), std::vector<float>(static_cast<std::size_t>(frames)));
    int first = 0;
    for (int count : blocks) {
        for (int c = 0; c < inputs; ++c) {
            std::copy_n(input[static_cast<std::size_t>(c)].begin() + first, count, inPointers[static_cast<std::size_t>(c)]);
        }
        run(static_cast<std::uint32_t>(count));
        for (int c = 0; c < outputs; ++c) {
            std::copy_n(outPointers[static_cast<std::size_t>(c)], count, result[static_cast<std::size_t>(c)].begin() + first);
        }
        first += count;
    }
    return result;
}

int countPorts(const LADSPA_Descriptor& d, LADSPA_PortDescriptor kind) {
    int count = 0;
    for (unsigned long i = 0; i < d.PortCount; ++i) {
        if ((d.PortDescriptors[i] & kind) == kind) ++count;
    }
    return count;
}

}  // namespace

const LadspaLibrary& LadspaLibrary::Get() {
    static const LadspaLibrary library = [] {
        LadspaLibrary made;
        void* handle = dlopen(ladspaLibrary().c_str(), RTLD_NOW | RTLD_LOCAL);
        if (handle == nullptr) {
            made.error = std::string("cannot load the LADSPA bridge: ") + dlerror();
            return made;
        }
        auto entry = reinterpret_cast<LADSPA_Descriptor_Function>(dlsym(handle, "ladspa_descriptor"));
        if (entry == nullptr) {
            made.error = "the LADSPA bridge has no ladspa_descriptor";
            return made;
        }
        for (unsigned long i = 0; const LADSPA_Descriptor* d = entry(i); ++i) made.descriptors.push_back(d);
        return made;
    }();
    return library;
}

const LADSPA_Descriptor* LadspaLibrary::find(const std::string& label) const {
    for (const LADSPA_Descriptor* d : descriptors) {
        if (label == d->Label) return d;
    }
    return nullptr;
}

const Lv2Library& Lv2Library::Get() {
    static const Lv2Library library = [] {
        Lv2Library made;
        made.bundle = lv2Folder() + "/AudioFilters.lv2/";
        void* handle = dlopen(lv2Binary().c_str(), RTLD_NOW | RTLD_LOCAL);
        if (handle == nullptr) {
            made.error = std::string("cannot load the LV2 bridge: ") + dlerror();
            return made;
        }
        auto entry = reinterpret_cast<LV2_Descriptor_Function>(dlsym(handle, "lv2_descriptor"));
        if (entry == nullptr) {
            made.error = "the LV2 bridge has no lv2_descriptor";
            return made;
        }
        for (std::uint32_t i = 0; const LV2_Descriptor* d = entry(i); ++i) made.descriptors.push_back(d);
        return made;
    }();
    return library;
}

const LV2_Descriptor* Lv2Library::find(const std::string& uri) const {
    for (const LV2_Descriptor* d : descriptors) {
        if (uri == d->URI) return d;
    }
    return nullptr;
}

Channels runLadspa(const LADSPA_Descriptor& d, unsigned long rate, const std::vector<float>& controls,
                   const Channels& input, const std::vector<int>& blocks, Buffers buffers, bool& ok) {
    LADSPA_Handle handle = d.instantiate(&d, rate);
    ok = handle != nullptr;
    if (!ok) return {};
    const int inputs = countPorts(d, LADSPA_PORT_INPUT | LADSPA_PORT_AUDIO);
    const int outputs = countPorts(d, LADSPA_PORT_OUTPUT | LADSPA_PORT_AUDIO);
    if (d.activate != nullptr) d.activate(handle);
    Channels out = drive(
        inputs, outputs, controls, input, blocks, buffers,
        [&](std::uint32_t port, void* data) { d.connect_port(handle, port, static_cast<LADSPA_Data*>(data)); },
        [&](std::uint32_t frames) { d.run(handle, frames); });
    if (d.deactivate != nullptr) d.deactivate(handle);
    d.cleanup(handle);
    return out;
}

Channels runLv2(const LV2_Descriptor& d, double rate, const std::vector<float>& controls, const Channels& input,
                const std::vector<int>& blocks, Buffers buffers, bool& ok) {
    const LV2_Feature* const features[] = {nullptr};
    LV2_Handle handle = d.instantiate(&d, rate, Lv2Library::Get().bundle.c_str(), features);
    ok = handle != nullptr;
    if (!ok) return {};
    // The bridge's port order: every audio input, every audio output, then the controls.
    const int channels = static_cast<int>(input.size());
    d.activate(handle);
    Channels out = drive(
        channels, channels, controls, input, blocks, buffers,
        [&](std::uint32_t port, void* data) { d.connect_port(handle, port, data); },
        [&](std::uint32_t frames) { d.run(handle, frames); });
    d.deactivate(handle);
    d.cleanup(handle);
    return out;
}

}  // namespace bridgetest
