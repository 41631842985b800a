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
#include "Opcodes.h"
#include "hostkit/PluginFile.h"
#include "support/Buffers.h"
#include "support/HostFixture.h"

namespace {

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
    explicit Plugin(const std::string& name) : file_(pluginPath(name)), effect_(file_.create(&recordingHost)) {}
    AEffect* record() const { return effect_.record(); }
    std::string text(VstInt32 opcode, VstInt32 index = 0) const { return effect_.text(opcode, index); }
    VstIntPtr dispatch(VstInt32 opcode, VstInt32 index = 0, VstIntPtr value = 0, void* ptr = nullptr,
                       float opt = 0.0f) const {
        return effect_.dispatch(opcode, index, value, ptr, opt);
    }

private:
    hostkit::PluginFile file_;  // unloaded after the effect is closed
    hostkit::Effect effect_;
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
    EXPECT_EQ(plugin.dispatch(effGetPlugCategory), 1);  // an effect
    EXPECT_EQ(plugin.text(effGetEffectName), "Highpass Stereo");
    EXPECT_EQ(plugin.text(effGetVendorString), "AudioFilters");
    EXPECT_EQ(plugin.text(effGetProductString), "AudioFilters Highpass Stereo");
    EXPECT_EQ(plugin.dispatch(effGetVendorVersion), 100);
    // Answers of the effect itself, through the front.
    EXPECT_EQ(plugin.text(effGetParamName, 0), "Cutoff");
    EXPECT_EQ(plugin.dispatch(effGetVstVersion), 2300);
    char query[] = "receiveVstMidiEvent";
    EXPECT_EQ(plugin.dispatch(effCanDo, 0, 0, query), 0);
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
    plugin.dispatch(effSetProgram, 0, 0);
    ASSERT_FALSE(hostCalls.empty());
    for (const HostCall& call : hostCalls) EXPECT_EQ(call.effect, plugin.record());
    EXPECT_EQ(hostCalls.front().opcode, audioMasterAutomate);
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
            plugin->dispatch(effSetSampleRate, 0, 0, nullptr, 48000.0f);
            plugin->dispatch(effMainsChanged, 0, 1);
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

// A host may size its text buffers to the interface's limits and no more: 8
// characters for parameter names, labels and displays, 24 for program names,
// each followed by the terminating zero. Whatever the effect says, the front
// writes no byte past that, and the text is the effect's own cut to the limit.
TEST(Vst2Entry, TextsStayWithinTheHostsBuffer) {
    struct Request {
        VstInt32 opcode;
        std::size_t limit;
    };
    constexpr Request kRequests[] = {{effGetParamName, 8}, {effGetParamLabel, 8}, {effGetParamDisplay, 8},
                                     {effGetProgramName, 24}};
    constexpr char kGuard = '\x5a';
    constexpr std::size_t kGuardBytes = 64;
    int longerThanTheLimit = 0;
    for (const char* name : {"Channel Volume 16 Channel", "Volume Stereo", "Delay 5.1", "Highpass Stereo"}) {
        SCOPED_TRACE(name);
        Plugin plugin(name);
        ASSERT_NE(plugin.record(), nullptr);
        auto own = aftest::HostEffect::Create(std::string("Internal ") + name);
        ASSERT_TRUE(own);
        for (VstInt32 index = 0; index < plugin.record()->numParams; ++index) {
            for (const Request& request : kRequests) {
                const std::string whole = own->text(request.opcode, index);
                if (whole.size() > request.limit) ++longerThanTheLimit;
                std::vector<char> buffer(request.limit + 1 + kGuardBytes, kGuard);
                buffer[0] = '\0';
                plugin.dispatch(request.opcode, index, 0, buffer.data());
                EXPECT_EQ(std::string(buffer.data()), whole.substr(0, request.limit))
                    << "opcode " << request.opcode << " index " << index;
                for (std::size_t at = request.limit + 1; at < buffer.size(); ++at)
                    ASSERT_EQ(buffer[at], kGuard) << "opcode " << request.opcode << " index " << index;
            }
        }
    }
    // The check above cut some text: the limit was really exercised.
    EXPECT_GT(longerThanTheLimit, 0);
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
