// The validator at a low level over every effect the built module registers
// and can make (families still being built are skipped): all checks pass.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ValidateCommand.h"
#include "Harness.h"
#include "Validator.h"

namespace {

TEST(ModuleValidation, EveryBuiltEffectPassesAtLevelOne) {
    std::string error;
    const std::vector<afv::EffectMaker> registered = afv::loadModuleEffects(AF_MODULE_PATH, error);
    ASSERT_FALSE(registered.empty()) << error;
    std::vector<afv::EffectMaker> built;
    for (const afv::EffectMaker& maker : registered) {
        if (afv::detail::canMake(maker)) built.push_back(maker);
    }
    ASSERT_FALSE(built.empty()) << "no registered effect could be made";
    afv::Options options;
    options.level = 1;
    options.seed = 11;
    const std::vector<afv::CheckResult> results = afv::validateIsolated(built, options);
    EXPECT_EQ(results.size(), built.size() * 8);
    for (const afv::CheckResult& result : results) {
        EXPECT_TRUE(result.passed) << result.effect << ": " << afv::checkName(result.check) << ": " << result.detail;
    }
}

}  // namespace
