// Start-up and the factory, seen by a host that loaded the module with dlopen.
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "AudioEffect.h"
#include "Opcodes.h"
#include "Ordo/ImmutableString.h"
#include "Ordo/MakeStdString.h"
#include "Ordo/Module.h"
#include "plinth/config/Localizer.h"
#include "support/HostFixture.h"

namespace {

using aftest::LoadedModule;

// The registration table as a host expects it, written out independently:
// identifier, English display name, flags, channel count.
struct ExpectedRow {
    const char* identifier;
    const char* englishName;
    unsigned flags;
    int channels;
};

const ExpectedRow kExpected[] = {
    {"Internal Invert Mono", "Invert", 0x104, 1},
    {"Internal Invert Stereo", "Invert", 0x208, 2},
    {"Internal Invert 5.1", "Invert", 0x820, 6},
    {"Internal Invert 16 Channel", "Invert", 0x18000, 16},
    {"Internal Volume Mono", "Volume", 0x4104, 1},
    {"Internal Volume Stereo", "Volume", 0x4208, 2},
    {"Internal Volume 5.1", "Volume", 0x4820, 6},
    {"Internal Volume 16 Channel", "Volume", 0x1C000, 16},
    {"Internal Mute Mono", "Mute", 0x4104, 1},
    {"Internal Mute Stereo", "Mute", 0x4208, 2},
    {"Internal Mute 5.1", "Mute", 0x4820, 6},
    {"Internal Mute 16 Channel", "Mute", 0x1C000, 16},
    {"Internal Delay Mono", "Delay", 0x104, 1},
    {"Internal Delay Stereo", "Delay", 0x208, 2},
    {"Internal Delay 5.1", "Delay", 0x820, 6},
    {"Internal Delay 16 Channel", "Delay", 0x18000, 16},
    {"Internal Multitap Delay Mono", "Multitap Delay", 0x104, 1},
    {"Internal Multitap Delay Stereo", "Multitap Delay", 0x208, 2},
    {"Internal Multitap Delay 5.1", "Multitap Delay", 0x820, 6},
    {"Internal Multitap Delay 16 Channel", "Multitap Delay", 0x18000, 16},
    {"Internal Lowpass Mono", "Lowpass", 0x104, 1},
    {"Internal Lowpass Stereo", "Lowpass", 0x208, 2},
    {"Internal Lowpass 5.1", "Lowpass", 0x820, 6},
    {"Internal Lowpass 16 Channel", "Lowpass", 0x18000, 16},
    {"Internal Highpass Mono", "Highpass", 0x104, 1},
    {"Internal Highpass Stereo", "Highpass", 0x208, 2},
    {"Internal Highpass 5.1", "Highpass", 0x820, 6},
    {"Internal Highpass 16 Channel", "Highpass", 0x18000, 16},
    {"Internal Bandreject Mono", "Notch", 0x104, 1},
    {"Internal Bandreject Stereo", "Notch", 0x208, 2},
    {"Internal Bandreject 5.1", "Notch", 0x820, 6},
    {"Internal Bandreject 16 Channel", "Notch", 0x18000, 16},
    {"Internal Bandpass Mono", "Bandpass", 0x104, 1},
    {"Internal Bandpass Stereo", "Bandpass", 0x208, 2},
    {"Internal Bandpass 5.1", "Bandpass", 0x820, 6},
    {"Internal Bandpass 16 Channel", "Bandpass", 0x18000, 16},
    {"Internal Bass Mono", "Bass", 0x104, 1},
    {"Internal Bass Stereo", "Bass", 0x208, 2},
    {"Internal Bass 5.1", "Bass", 0x820, 6},
    {"Internal Bass 16 Channel", "Bass", 0x18000, 16},
    {"Internal Treble Mono", "Treble", 0x104, 1},
    {"Internal Treble Stereo", "Treble", 0x208, 2},
    {"Internal Treble 5.1", "Treble", 0x820, 6},
    {"Internal Treble 16 Channel", "Treble", 0x18000, 16},
    {"Internal Parametric EQ Mono", "Parametric EQ", 0x104, 1},
    {"Internal Parametric EQ Stereo", "Parametric EQ", 0x208, 2},
    {"Internal Parametric EQ 5.1", "Parametric EQ", 0x820, 6},
    {"Internal Parametric EQ 16 Channel", "Parametric EQ", 0x18000, 16},
    {"Internal Swap Channels", "Swap Channels", 0x208, 2},
    {"Internal Fill Left", "Fill Left", 0x208, 2},
    {"Internal Fill Right", "Fill Right", 0x208, 2},
    {"Internal Balance", "Balance", 0x4208, 2},
    {"Internal Channel Volume Stereo", "Channel Volume", 0x208, 2},
    {"Internal Channel Volume 5.1", "Channel Volume", 0x820, 6},
    {"Internal Channel Volume 16 Channel", "Channel Volume", 0x18000, 16},
};
static_assert(std::size(kExpected) == 55);

Ordo::ImmutableString intern(const char* text) { return Ordo::ImmutableString::CreateStatic(text); }

// Registrations from a fresh start-up; the registry is left holding them.
std::vector<aftest::Registration> startOnce() { return LoadedModule::Get().restartup(); }

void expectTable(const std::vector<aftest::Registration>& registrations, std::size_t offset) {
    const auto factory = LoadedModule::Get().factory();
    for (std::size_t i = 0; i < std::size(kExpected); ++i) {
        const aftest::Registration& r = registrations[offset + i];
        const ExpectedRow& e = kExpected[i];
        SCOPED_TRACE(::testing::Message() << "row " << (i + 1) << " " << e.identifier);
        EXPECT_STREQ(r.id.c_str(), e.identifier);
        EXPECT_TRUE(r.id == intern(e.identifier));
        EXPECT_EQ(Ordo::MakeStdString(r.displayName), e.englishName);
        EXPECT_EQ(r.flags, e.flags);
        EXPECT_EQ(r.factory, factory);
    }
}

TEST(Startup, ModuleLoadsAndExportsStartup) {
    const LoadedModule& module = LoadedModule::Get();
    ASSERT_TRUE(module.loaded()) << module.error();
    EXPECT_NE(module.module().shutdownEntry(), nullptr);
    ASSERT_NE(module.factory(), nullptr);
}

TEST(Startup, RegistersTheFiftyFiveVariantsInTableOrder) {
    ASSERT_TRUE(LoadedModule::Get().loaded());
    const auto registrations = startOnce();
    ASSERT_EQ(registrations.size(), 55u);
    expectTable(registrations, 0);
    // The snapshot taken when the module was loaded is the same table.
    ASSERT_EQ(LoadedModule::Get().registrations().size(), 55u);
    expectTable(LoadedModule::Get().registrations(), 0);
}

TEST(Startup, EachCallRegistersAgainAndShutdownUnregistersNothing) {
    ASSERT_TRUE(LoadedModule::Get().loaded());
    startOnce();
    LoadedModule::Get().callShutdown();
    EXPECT_EQ(ML::VSTAudioFilterRegistry::Registrations().size(), 55u);
    // A second start-up without clearing appends the same 55 again.
    LoadedModule::Get().module().startupEntry()();
    const auto registrations = ML::VSTAudioFilterRegistry::Registrations();
    ASSERT_EQ(registrations.size(), 110u);
    expectTable(registrations, 55);
    startOnce();
}

TEST(Startup, DisplayNamesComeFromTheLocaliser) {
    ASSERT_TRUE(LoadedModule::Get().loaded());
    plinth::config::Localizer& localizer = plinth::config::Localizer::Get();
    localizer.SetTranslation("$$$/Korvex/AudioFilters/Volume=Volume", Ordo::MakeWideString("Lautst\xC3\xA4rke"));
    const auto registrations = startOnce();
    localizer.ClearTranslations();
    ASSERT_EQ(registrations.size(), 55u);
    for (std::size_t i = 4; i < 8; ++i) {
        EXPECT_EQ(Ordo::MakeStdString(registrations[i].displayName), "Lautst\xC3\xA4rke") << i;
    }
    EXPECT_EQ(Ordo::MakeStdString(registrations[8].displayName), "Mute");
    startOnce();
}

TEST(Factory, IdentifierMadeElsewhereFindsItsEffect) {
    const auto factory = LoadedModule::Get().factory();
    ASSERT_NE(factory, nullptr);
    // Interned here, by the test program, from the same text: the same handle.
    const Ordo::ImmutableString id = intern("Internal Volume 5.1");
    ML::VSTPropertySupportMixin* properties = nullptr;
    AudioEffect* effect = factory(id, nullptr, &properties);
    ASSERT_NE(effect, nullptr);
    AEffect* record = effect->getAeffect();
    EXPECT_EQ(record->uniqueID, 0x41456E36);  // AEn6
    EXPECT_EQ(record->numOutputs, 6);
    EXPECT_NE(properties, nullptr);
    EXPECT_EQ(record->dispatcher(record, effClose, 0, 0, nullptr, 0.0f), 1);
}

TEST(Factory, UnknownIdentifierGivesNullAndNull) {
    const auto factory = LoadedModule::Get().factory();
    ASSERT_NE(factory, nullptr);
    for (const char* text : {"Internal Volume Quad", "Internal Volume 4 Channel", "internal volume stereo",
                             "Internal Volume Stereo ", "", "Volume", "Internal Invert Quad",
                             "Internal Parametric EQ Quad", "Internal Channel Volume Mono"}) {
        // A sentinel shows that the factory wrote the null.
        auto* sentinel = reinterpret_cast<ML::VSTPropertySupportMixin*>(std::uintptr_t{0x10});
        ML::VSTPropertySupportMixin* properties = sentinel;
        EXPECT_EQ(factory(intern(text), nullptr, &properties), nullptr) << '"' << text << '"';
        EXPECT_EQ(properties, nullptr) << '"' << text << '"';
    }
    // A default-made (empty) identifier is not registered either.
    ML::VSTPropertySupportMixin* properties = nullptr;
    EXPECT_EQ(factory(Ordo::ImmutableString(), nullptr, &properties), nullptr);
    EXPECT_EQ(factory(intern("nothing"), nullptr, nullptr), nullptr);
}

TEST(Factory, NullPropertiesPointerIsTolerated) {
    const auto factory = LoadedModule::Get().factory();
    ASSERT_NE(factory, nullptr);
    AudioEffect* effect = factory(intern("Internal Volume Stereo"), nullptr, nullptr);
    ASSERT_NE(effect, nullptr);
    AEffect* record = effect->getAeffect();
    EXPECT_EQ(record->uniqueID, 0x41456E32);  // AEn2
    record->dispatcher(record, effClose, 0, 0, nullptr, 0.0f);
}

TEST(Factory, NoIdentifierCreatesAFourChannelVariant) {
    const auto& module = LoadedModule::Get();
    ASSERT_EQ(module.registrations().size(), 55u);
    int built = 0;
    for (std::size_t i = 0; i < std::size(kExpected); ++i) {
        const aftest::Registration& r = module.registrations()[i];
        ML::VSTPropertySupportMixin* properties = nullptr;
        AudioEffect* effect = r.factory(r.id, nullptr, &properties);
        if (effect == nullptr) continue;
        ++built;
        AEffect* record = effect->getAeffect();
        EXPECT_NE(record->numInputs, 4) << r.id.c_str();
        EXPECT_NE(record->numOutputs, 4) << r.id.c_str();
        EXPECT_EQ(record->numOutputs, kExpected[i].channels) << r.id.c_str();
        record->dispatcher(record, effClose, 0, 0, nullptr, 0.0f);
    }
    EXPECT_EQ(built, 55);  // every registered identifier makes its effect
}

TEST(Factory, InvertStereoHasNoPropertyInterface) {
    const auto factory = LoadedModule::Get().factory();
    ASSERT_NE(factory, nullptr);
    auto* sentinel = reinterpret_cast<ML::VSTPropertySupportMixin*>(std::uintptr_t{0x10});
    ML::VSTPropertySupportMixin* properties = sentinel;
    AudioEffect* effect = factory(intern("Internal Invert Stereo"), nullptr, &properties);
    EXPECT_EQ(properties, nullptr);
    ASSERT_NE(effect, nullptr);
    AEffect* record = effect->getAeffect();
    EXPECT_EQ(record->uniqueID, 0x41496E32);  // AIn2
    EXPECT_EQ(record->numOutputs, 2);
    record->dispatcher(record, effClose, 0, 0, nullptr, 0.0f);
}

// The load hooks: a second copy of the module, loaded under another path, is
// a separate module to the loader. Loading it creates one more module handle;
// unloading it releases that handle again.
TEST(ModuleHooks, LoadCreatesAndUnloadReleasesTheModuleHandle) {
    namespace fs = std::filesystem;
    const fs::path copy = fs::temp_directory_path() / ("af_module_copy_" + std::to_string(::getpid()) + ".so");
    std::error_code error;
    fs::copy_file(AF_MODULE_PATH, copy, fs::copy_options::overwrite_existing, error);
    ASSERT_FALSE(error) << error.message();

    const int before = Ordo::Module::LiveCount();
    void* handle = dlopen(copy.c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(handle, nullptr) << dlerror();
    EXPECT_EQ(Ordo::Module::LiveCount(), before + 1);
    EXPECT_EQ(dlclose(handle), 0);
    const bool unloaded = dlopen(copy.c_str(), RTLD_NOW | RTLD_NOLOAD) == nullptr;
    fs::remove(copy, error);
    ASSERT_TRUE(unloaded) << "the loader kept the module copy mapped";
    EXPECT_EQ(Ordo::Module::LiveCount(), before);
}

}  // namespace
