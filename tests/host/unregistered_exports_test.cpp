// The four-channel classes have no registration row, yet a host that loads
// the module finds their tables and types exported like every other variant's.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>

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
