// The shared loader and effect handle: finding the module, starting it once,
// keeping only its own registrations, and owning effects.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "ML/VSTAudioFilterRegistry.h"
#include "hostkit/Module.h"

namespace {

const std::string kBuiltModule = AF_MODULE_PATH;
const std::string kFakeModule = AF_BINARY_DIR "/libafx_fake_module.so";

std::string folderOfPath(const std::string& path) { return path.substr(0, path.rfind('/') + 1); }

void anchorInTheTestProgram() {}

// Sets an environment variable for one scope and restores it afterwards.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const char* value) : name_(name) {
        const char* old = std::getenv(name);
        hadValue_ = old != nullptr;
        if (hadValue_) old_ = old;
        if (value != nullptr) ::setenv(name, value, 1);
        else ::unsetenv(name);
    }
    ~ScopedVariable() {
        if (hadValue_) ::setenv(name_, old_.c_str(), 1);
        else ::unsetenv(name_);
    }

private:
    const char* name_;
    bool hadValue_ = false;
    std::string old_;
};

TEST(HostKitModule, LoadsTheBuiltModuleWithItsRegistrations) {
    const hostkit::Module module = hostkit::Module::Load(kBuiltModule);
    ASSERT_TRUE(module.loaded()) << module.error();
    EXPECT_EQ(module.registrations().size(), 55u);
    EXPECT_NE(module.startupEntry(), nullptr);
    EXPECT_NE(module.shutdownEntry(), nullptr);
}

TEST(HostKitModule, FindsIdentifiersIgnoringCase) {
    const hostkit::Module module = hostkit::Module::Load(kBuiltModule);
    ASSERT_TRUE(module.loaded()) << module.error();
    const hostkit::Registration* exact = module.find("Internal Highpass Stereo");
    ASSERT_NE(exact, nullptr);
    EXPECT_STREQ(exact->id.c_str(), "Internal Highpass Stereo");
    EXPECT_EQ(module.find("INTERNAL highpass sTEREO"), exact);
    EXPECT_EQ(module.find("Internal Highpass Stereo "), nullptr);
    EXPECT_EQ(module.find("Internal Nothing"), nullptr);
}

TEST(HostKitModule, StartsTheModuleOncePerProcess) {
    const hostkit::Module first = hostkit::Module::Load(kBuiltModule);
    ASSERT_TRUE(first.loaded()) << first.error();
    const std::size_t held = ML::VSTAudioFilterRegistry::Registrations().size();
    const hostkit::Module second = hostkit::Module::Load(kBuiltModule);
    ASSERT_TRUE(second.loaded()) << second.error();
    // A second start-up would have appended another 55 registrations.
    EXPECT_EQ(ML::VSTAudioFilterRegistry::Registrations().size(), held);
    ASSERT_EQ(second.registrations().size(), first.registrations().size());
    for (std::size_t i = 0; i < first.registrations().size(); ++i) {
        EXPECT_TRUE(second.registrations()[i].id == first.registrations()[i].id);
        EXPECT_EQ(second.registrations()[i].factory, first.registrations()[i].factory);
    }
}

TEST(HostKitModule, KeepsOnlyTheRegistrationsOfItsOwnModule) {
    const hostkit::Module real = hostkit::Module::Load(kBuiltModule);
    const hostkit::Module fake = hostkit::Module::Load(kFakeModule);
    ASSERT_TRUE(real.loaded()) << real.error();
    ASSERT_TRUE(fake.loaded()) << fake.error();
    const std::vector<std::string> expected = {"Test Gain Stereo", "Test Slow Mono", "Test Broken Mono",
                                               "Test Calls Stereo"};
    ASSERT_EQ(fake.registrations().size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(fake.registrations()[i].id.c_str(), expected[i]);
    EXPECT_EQ(fake.find("Internal Volume Stereo"), nullptr);
    EXPECT_EQ(real.find("Test Gain Stereo"), nullptr);
    EXPECT_EQ(real.registrations().size(), 55u);
}

TEST(HostKitModule, AMissingFileIsAnErrorThatNamesIt) {
    const hostkit::Module module = hostkit::Module::Load("/nonexistent/libAudioFilters.so");
    EXPECT_FALSE(module.loaded());
    EXPECT_NE(module.error().find("/nonexistent/libAudioFilters.so"), std::string::npos) << module.error();
    EXPECT_TRUE(module.registrations().empty());
    EXPECT_EQ(module.find("Internal Volume Stereo"), nullptr);
}

TEST(HostKitModule, ALibraryWithoutStartUpIsAnError) {
    const hostkit::Module module = hostkit::Module::Load(AF_BINARY_DIR "/libAudioFiltersPlatform.so");
    EXPECT_FALSE(module.loaded());
    EXPECT_NE(module.error().find("AF::Startup"), std::string::npos) << module.error();
}

TEST(HostKitModule, ANameWithoutAFolderIsNotSearchedInTheSystemFolders) {
    // The C library is in every system folder; as a bare name it means ./libc.so.6.
    const hostkit::Module module = hostkit::Module::Load("libc.so.6");
    EXPECT_FALSE(module.loaded());
    EXPECT_NE(module.error().find("libc.so.6"), std::string::npos) << module.error();
}

TEST(HostKitEffect, MadeByTheFactoryAndClosedByTheHandle) {
    const hostkit::Module module = hostkit::Module::Load(kBuiltModule);
    ASSERT_TRUE(module.loaded()) << module.error();
    const hostkit::Registration* registration = module.find("internal highpass stereo");
    ASSERT_NE(registration, nullptr);
    std::string error = "not cleared";
    hostkit::Effect effect = module.create(*registration, &hostkit::quietHost, &error);
    ASSERT_TRUE(effect);
    EXPECT_TRUE(error.empty());
    EXPECT_EQ(effect.record()->magic, kEffectMagic);
    EXPECT_EQ(effect.inputCount(), 2);
    EXPECT_EQ(effect.outputCount(), 2);
    EXPECT_EQ(effect.parameterCount(), 1);
    EXPECT_NE(effect.properties(), nullptr);
    EXPECT_EQ(effect.parameterName(0), "Cutoff");
    EXPECT_EQ(effect.parameterLabel(0), "Hz");
    // A request that writes nothing leaves the buffer's initial text.
    EXPECT_EQ(effect.text(effGetParamName, 5, "untouched"), "untouched");

    hostkit::Effect moved = std::move(effect);
    EXPECT_FALSE(effect);
    ASSERT_TRUE(moved);
    EXPECT_EQ(moved.close(), 1);  // the frame's answer to the close request
    EXPECT_FALSE(moved);
    EXPECT_EQ(moved.close(), 0);  // nothing left to close
}

TEST(HostKitEffect, ProcessesInPlace) {
    const hostkit::Module module = hostkit::Module::Load(kBuiltModule);
    ASSERT_TRUE(module.loaded()) << module.error();
    const hostkit::Registration* registration = module.find("Internal Invert Stereo");
    ASSERT_NE(registration, nullptr);
    hostkit::Effect effect = module.create(*registration, &hostkit::quietHost);
    ASSERT_TRUE(effect);
    effect.start(48000.0f, 4);
    std::vector<float> left = {0.5f, -0.25f, 1.0f, 0.0f};
    std::vector<float> right = {-1.0f, 0.125f, 0.75f, -0.5f};
    float* channels[] = {left.data(), right.data()};
    effect.processReplacing(channels, 4);
    // Inverting is exact: every sample changes sign.
    EXPECT_EQ(left, (std::vector<float>{-0.5f, 0.25f, -1.0f, -0.0f}));
    EXPECT_EQ(right, (std::vector<float>{1.0f, -0.125f, -0.75f, 0.5f}));
    EXPECT_TRUE(std::signbit(left[3]));
}

TEST(HostKitEffect, AFactoryThatMakesNothingGivesAnEmptyHandleAndNoError) {
    const hostkit::Module fake = hostkit::Module::Load(kFakeModule);
    ASSERT_TRUE(fake.loaded()) << fake.error();
    const hostkit::Registration* broken = fake.find("Test Broken Mono");
    ASSERT_NE(broken, nullptr);
    std::string error = "not cleared";
    EXPECT_FALSE(hostkit::createEffect(*broken, &hostkit::quietHost, &error));
    EXPECT_TRUE(error.empty());
    hostkit::Registration without = *broken;
    without.factory = nullptr;
    EXPECT_FALSE(hostkit::createEffect(without, &hostkit::quietHost, &error));
    EXPECT_TRUE(error.empty());
}

TEST(HostKitPath, AProgramFindsTheModuleBesideItself) {
    const void* anchor = reinterpret_cast<const void*>(&anchorInTheTestProgram);
    EXPECT_EQ(hostkit::folderOf(anchor), folderOfPath(kBuiltModule));
    EXPECT_EQ(hostkit::moduleBeside(anchor), folderOfPath(kBuiltModule) + "libAudioFilters.so");
}

TEST(HostKitPath, ALibraryFindsTheModuleBesideTheLibrary) {
    const hostkit::Module fake = hostkit::Module::Load(kFakeModule);
    ASSERT_TRUE(fake.loaded()) << fake.error();
    EXPECT_EQ(hostkit::folderOf(reinterpret_cast<const void*>(fake.startupEntry())), folderOfPath(kFakeModule));
}

TEST(HostKitPath, TheEnvironmentOverridesEveryOtherPlace) {
    const void* anchor = reinterpret_cast<const void*>(&anchorInTheTestProgram);
    {
        const ScopedVariable named("AF_MODULE_PATH", "/somewhere/else.so");
        EXPECT_EQ(hostkit::moduleCandidates(anchor), std::vector<std::string>{"/somewhere/else.so"});
        EXPECT_EQ(hostkit::locateModule(anchor), "/somewhere/else.so");
    }
    {
        const ScopedVariable unset("AF_MODULE_PATH", nullptr);
        const std::string folder = folderOfPath(kBuiltModule);
        EXPECT_EQ(hostkit::moduleCandidates(anchor),
                  (std::vector<std::string>{folder + "libAudioFilters.so", folder + "../audiofilters/libAudioFilters.so"}));
        EXPECT_EQ(hostkit::locateModule(anchor), folder + "libAudioFilters.so");
    }
    {
        const ScopedVariable empty("AF_MODULE_PATH", "");
        EXPECT_EQ(hostkit::moduleCandidates(anchor).size(), 2u);
    }
}

}  // namespace
