// The four-channel classes have no registration row, yet a host that loads
// the module finds their tables and types exported like every other variant's.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/HostFixture.h"

namespace {

using aftest::LoadedModule;

// A class AF::<name> as the Itanium C++ ABI writes it: N 2AF <length><name> E.
std::string nested(const std::string& name) { return "N2AF" + std::to_string(name.size()) + name + "E"; }

TEST(UnregisteredVariants, FourChannelClassesKeepTheirTablesAndTypesInTheModule) {
    const LoadedModule& module = LoadedModule::Get();
    ASSERT_TRUE(module.loaded()) << module.error();
    for (const char* name : {"AudioInvert4", "AudioParametricEQ4", "AudioBass4", "AudioTreble4"}) {
        SCOPED_TRACE(name);
        EXPECT_NE(dlsym(module.handle(), ("_ZTV" + nested(name)).c_str()), nullptr);
        EXPECT_NE(dlsym(module.handle(), ("_ZTI" + nested(name)).c_str()), nullptr);
    }
}

}  // namespace

// Every variant class the module names, four-channel ones included, exports its
// constructor (taking the host callback) and its destructor under its own name,
// so a host may build and destroy one directly, as it did before variants were
// one-line classes. The names are the binary interface's, typed here.
TEST(VariantExports, EveryVariantExportsItsConstructorAndDestructor) {
    const LoadedModule& module = LoadedModule::Get();
    ASSERT_TRUE(module.loaded()) << module.error();
    // The host callback: long (*)(AEffect*, int, int, long, void*, float).
    const std::string callback = "PFlP7AEffectiilPvfE";
    const char* families[] = {"Invert", "Envelope", "Mute", "Delay", "MultitapDelay", "Lowpass", "Highpass",
                              "Bandreject", "Bandpass", "Bass", "Treble", "ParametricEQ"};
    std::vector<std::string> names = {"AudioChannelEnvelope2", "AudioChannelEnvelope6", "AudioChannelEnvelope16",
                                      "AudioFillLeft", "AudioFillRight", "AudioInvert4", "AudioParametricEQ4",
                                      "AudioBass4", "AudioTreble4"};
    for (const char* family : families)
        for (const char* channels : {"1", "2", "6", "16"}) names.push_back(std::string("Audio") + family + channels);
    ASSERT_EQ(names.size(), 57u);
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        const std::string qualified = "_ZN2AF" + std::to_string(name.size()) + name;
        EXPECT_NE(dlsym(module.handle(), (qualified + "C1E" + callback).c_str()), nullptr);
        EXPECT_NE(dlsym(module.handle(), (qualified + "D1Ev").c_str()), nullptr);
    }
}
