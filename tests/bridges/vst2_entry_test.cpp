// The VST 2 plug-in files as a host loads them: dlopen, VSTPluginMain, then
// only the record. Each file presents its own id, names and category in a
// record of its own, forwards everything else to the module's effect, and
// starts the module once per process however many files are opened.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "AEffect.h"
#include "ML/VSTAudioFilterRegistry.h"
#include "support/Buffers.h"
#include "support/HostFixture.h"

namespace {

constexpr VstInt32 kClose = 1;
constexpr VstInt32 kSetProgram = 2;
constexpr VstInt32 kGetParamName = 8;
constexpr VstInt32 kSetSampleRate = 10;
constexpr VstInt32 kMainsChanged = 12;
constexpr VstInt32 kGetPlugCategory = 35;
constexpr VstInt32 kGetEffectName = 45;
constexpr VstInt32 kGetVendorString = 47;
constexpr VstInt32 kGetProductString = 48;
constexpr VstInt32 kGetVendorVersion = 49;
constexpr VstInt32 kCanDo = 51;
constexpr VstInt32 kGetVstVersion = 58;
constexpr VstInt32 kHostAutomate = 0;
constexpr int kFrames = 777;

std::string pluginPath(const std::string& name) {
    return std::string(AF_BINARY_DIR) + "/../vst/AudioFilters/AudioFilters " + name + ".so";
}

// Every call the plug-in makes to the host, with the record it named.
struct HostCall {
    AEffect* effect;
    VstInt32 opcode;
};
std::vector<HostCall> hostCalls;

VstIntPtr recordingHost(AEffect* effect, VstInt32 opcode, VstInt32, VstIntPtr, void*, float) {
    hostCalls.push_back({effect, opcode});
    return 0;
}

// One plug-in file opened as a host opens it; the effect is closed at the end.
class Plugin {
public:
    explicit Plugin(const std::string& name) {
        handle_ = dlopen(pluginPath(name).c_str(), RTLD_NOW | RTLD_LOCAL);
        if (handle_ == nullptr) return;
        auto entry = reinterpret_cast<AEffect* (*)(audioMasterCallback)>(dlsym(handle_, "VSTPluginMain"));
        if (entry != nullptr) record_ = entry(&recordingHost);
    }
    ~Plugin() {
        if (record_ != nullptr) record_->dispatcher(record_, kClose, 0, 0, nullptr, 0.0f);
        if (handle_ != nullptr) dlclose(handle_);
    }
    AEffect* record() const { return record_; }
    std::string text(VstInt32 opcode, VstInt32 index = 0) const {
        char buffer[256] = {};
        record_->dispatcher(record_, opcode, index, 0, buffer, 0.0f);
        return buffer;
    }
    VstIntPtr dispatch(VstInt32 opcode, VstInt32 index = 0, VstIntPtr value = 0, void* ptr = nullptr,
                       float opt = 0.0f) const {
        return record_->dispatcher(record_, opcode, index, value, ptr, opt);
    }

private:
    void* handle_ = nullptr;
    AEffect* record_ = nullptr;
};

VstInt32 code(const char (&text)[5]) {
    return static_cast<VstInt32>((std::uint32_t(std::uint8_t(text[0])) << 24) | (std::uint32_t(std::uint8_t(text[1])) << 16) |
                                 (std::uint32_t(std::uint8_t(text[2])) << 8) | std::uint32_t(std::uint8_t(text[3])));
}

TEST(Vst2Entry, FilesHoldOnlyTheEntryPoints) {
    void* handle = dlopen(pluginPath("Highpass Stereo").c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(handle, nullptr) << dlerror();
    EXPECT_NE(dlsym(handle, "VSTPluginMain"), nullptr);
    EXPECT_NE(dlsym(handle, "main"), nullptr);
    // The entry's work lives once in the shared entry library, not in each file.
    void* open = dlsym(handle, "AudioFiltersVst2Open");
    ASSERT_NE(open, nullptr);
    Dl_info where{};
    ASSERT_NE(dladdr(open, &where), 0);
    EXPECT_NE(std::string(where.dli_fname).find("libAudioFiltersVst2.so"), std::string::npos) << where.dli_fname;
    dlclose(handle);
}

TEST(Vst2Entry, PresentsItsOwnIdentityAndForwardsTheRest) {
    Plugin plugin("Highpass Stereo");
    AEffect* record = plugin.record();
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->magic, code("VstP"));
    EXPECT_EQ(record->uniqueID, code("Hp02"));
    EXPECT_EQ(record->version, 100);  // 0.1.0
    EXPECT_EQ(record->numInputs, 2);
    EXPECT_EQ(record->numOutputs, 2);
    EXPECT_EQ(record->numParams, 1);
    EXPECT_EQ(record->numPrograms, 1);
    EXPECT_EQ(plugin.dispatch(kGetPlugCategory), 1);  // an effect
    EXPECT_EQ(plugin.text(kGetEffectName), "Highpass Stereo");
    EXPECT_EQ(plugin.text(kGetVendorString), "AudioFilters");
    EXPECT_EQ(plugin.text(kGetProductString), "AudioFilters Highpass Stereo");
    EXPECT_EQ(plugin.dispatch(kGetVendorVersion), 100);
    // Answers of the effect itself, through the front.
    EXPECT_EQ(plugin.text(kGetParamName, 0), "Cutoff");
    EXPECT_EQ(plugin.dispatch(kGetVstVersion), 2300);
    char query[] = "receiveVstMidiEvent";
    EXPECT_EQ(plugin.dispatch(kCanDo, 0, 0, query), 0);
    record->setParameter(record, 0, 0.3125f);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(record->getParameter(record, 0)), std::bit_cast<std::uint32_t>(0.3125f));
}

TEST(Vst2Entry, TheModulesOwnRecordKeepsItsId) {
    auto fx = aftest::HostEffect::Create("Internal Highpass Stereo");
    ASSERT_TRUE(fx);
    EXPECT_EQ(fx->effect()->uniqueID, code("AFl2"));
}

TEST(Vst2Entry, EffectCallsReachTheHostWithTheFrontRecord) {
    hostCalls.clear();
    Plugin plugin("Volume Stereo");
    ASSERT_NE(plugin.record(), nullptr);
    // The program resets the level and reports it to the host as an automation.
    plugin.dispatch(kSetProgram, 0, 0);
    ASSERT_FALSE(hostCalls.empty());
    for (const HostCall& call : hostCalls) EXPECT_EQ(call.effect, plugin.record());
    EXPECT_EQ(hostCalls.front().opcode, kHostAutomate);
}

// The effects work in place; given separate arrays, the entry must give the
// same bits as in place (Fill Left writes one channel and keeps the other).
TEST(Vst2Entry, SeparateArraysGiveTheInPlaceResult) {
    for (const char* name : {"Fill Left", "Fill Right", "Mute Stereo", "Delay 5.1"}) {
        SCOPED_TRACE(name);
        Plugin inPlace(name);
        Plugin separate(name);
        ASSERT_NE(inPlace.record(), nullptr);
        ASSERT_NE(separate.record(), nullptr);
        const int channels = inPlace.record()->numInputs;
        for (const Plugin* plugin : {&inPlace, &separate}) {
            plugin->dispatch(kSetSampleRate, 0, 0, nullptr, 48000.0f);
            plugin->dispatch(kMainsChanged, 0, 1);
            for (int index = 0; index < plugin->record()->numParams; ++index)
                plugin->record()->setParameter(plugin->record(), index, 0.6875f);
        }
        aftest::Channels shared = aftest::taggedNoise(channels, kFrames);
        aftest::Channels input = shared;
        aftest::Channels output(channels, std::vector<float>(kFrames, 0.0f));
        std::vector<float*> sharedPointers, inputPointers, outputPointers;
        for (int c = 0; c < channels; ++c) {
            sharedPointers.push_back(shared[c].data());
            inputPointers.push_back(input[c].data());
            outputPointers.push_back(output[c].data());
        }
        inPlace.record()->processReplacing(inPlace.record(), sharedPointers.data(), sharedPointers.data(), kFrames);
        separate.record()->processReplacing(separate.record(), inputPointers.data(), outputPointers.data(), kFrames);
        for (int c = 0; c < channels; ++c)
            EXPECT_EQ(std::memcmp(shared[c].data(), output[c].data(), kFrames * sizeof(float)), 0) << "channel " << c;
    }
}

// Many files in one process start the module once: the registry holds each
// variant once. Run in a fresh process so that nothing else has loaded it.
TEST(Vst2EntryDeathTest, ManyFilesStartTheModuleOnce) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            std::vector<Plugin*> plugins;
            for (const char* name : {"Highpass Stereo", "Volume Mono", "Delay 5.1", "Balance", "Invert 16 Channel"})
                plugins.push_back(new Plugin(name));
            std::set<std::string> identifiers;
            std::size_t count = 0;
            for (const auto& registration : ML::VSTAudioFilterRegistry::Registrations()) {
                identifiers.insert(registration.id.c_str());
                ++count;
            }
            bool allMade = true;
            for (Plugin* plugin : plugins) allMade = allMade && plugin->record() != nullptr;
            for (Plugin* plugin : plugins) delete plugin;
            std::exit(allMade && count == 55 && identifiers.size() == 55 ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

}  // namespace
