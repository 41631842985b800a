// The shape every mixin family shares, checked on the families that are built
// (Volume now; the others join as they land), through the loaded module.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "ML/VSTPropertySupportMixin.h"
#include "support/HostFixture.h"

namespace {

using aftest::HostEffect;

// A mixin that overrides only what it must: its HasHistory is the host's default.
class MinimalProperties final : public ML::VSTPropertySupportMixin {
public:
    ParameterType GetParameterType(unsigned) override { return kNotAParameter; }
    float GetParameterMax(unsigned) const override { return 0.0f; }
    float GetParameterMin(unsigned) const override { return 0.0f; }
    float GetParameterStep(unsigned) const override { return 0.0f; }
    bool SupportsDisplayValueToParameter(unsigned) const override { return false; }
    float ConvertDisplayValueToParameter(unsigned, float) const override { return 0.0f; }
    float ConvertParameterValueToDisplay(unsigned, float) const override { return 0.0f; }
};

TEST(PropertyInterface, MixinDefaultKeepsHistory) {
    MinimalProperties properties;
    EXPECT_TRUE(properties.HasHistory());
}

TEST(PropertyInterface, VolumeSaysItKeepsNoHistory) {
    for (const char* id : {"Internal Volume Mono", "Internal Volume Stereo", "Internal Volume 5.1",
                           "Internal Volume 16 Channel"}) {
        auto fx = HostEffect::Create(id);
        ASSERT_TRUE(fx) << id;
        ASSERT_NE(fx->properties(), nullptr) << id;
        EXPECT_FALSE(fx->properties()->HasHistory()) << id;
    }
}

TEST(PropertyInterface, TypePastTheLastParameterIsMinusOne) {
    auto fx = HostEffect::Create("Internal Volume Stereo");
    ASSERT_TRUE(fx);
    const unsigned numParams = static_cast<unsigned>(fx->effect()->numParams);
    EXPECT_EQ(fx->properties()->GetParameterType(numParams), ML::VSTPropertySupportMixin::kNotAParameter);
    EXPECT_EQ(static_cast<int>(fx->properties()->GetParameterType(numParams + 7)), -1);
}

TEST(FamilyShape, ParameterNameWithAnInvalidIndexLeavesTheBufferUntouched) {
    auto fx = HostEffect::Create("Internal Volume 16 Channel");
    ASSERT_TRUE(fx);
    const int numParams = fx->effect()->numParams;
    for (int index : {numParams, numParams + 1, -1, std::numeric_limits<int>::min()}) {
        EXPECT_EQ(fx->text(effGetParamName, index, "host text"), "host text") << index;
    }
    EXPECT_NE(fx->text(effGetParamName, 0, "host text"), "host text");
}

TEST(FamilyShape, ProgramZeroRestoresEveryDefault) {
    auto fx = HostEffect::Create("Internal Volume Mono");
    ASSERT_TRUE(fx);
    fx->start();
    const int numParams = fx->effect()->numParams;
    std::vector<float> defaults;
    for (int i = 0; i < numParams; ++i) defaults.push_back(fx->getParameter(i));
    for (int i = 0; i < numParams; ++i) fx->setParameter(i, 0.123f);
    fx->clearCalls();
    fx->setProgram(0);
    const auto automated = fx->callsWithOpcode(audioMasterAutomate);
    ASSERT_EQ(automated.size(), static_cast<std::size_t>(numParams));
    for (int i = 0; i < numParams; ++i) {
        EXPECT_EQ(fx->getParameter(i), defaults[i]) << i;
        EXPECT_EQ(automated[i].index, i);
        EXPECT_EQ(automated[i].opt, defaults[i]);
    }
}

TEST(FamilyShape, DeletingThroughThePropertyInterfaceDestroysTheEffect) {
    // The effect lives in the loaded module; deleting its mixin sub-object runs
    // the whole destructor chain there. The address sanitizer reports a leak or
    // a mismatched free if it does not.
    auto fx = HostEffect::Create("Internal Volume 5.1");
    ASSERT_TRUE(fx);
    fx->start();
    ML::VSTPropertySupportMixin* properties = fx->properties();
    ASSERT_NE(properties, nullptr);
    fx->release();
    delete properties;
}

TEST(FamilyShape, CloseOpcodeAnswersOneAndDestroysTheEffect) {
    auto fx = HostEffect::Create("Internal Volume Stereo");
    ASSERT_TRUE(fx);
    fx->start();
    fx->suspend();
    EXPECT_EQ(fx->close(), 1);
    EXPECT_TRUE(fx->closed());
}

}  // namespace
