// The four filter families as a host loads them: the registered factory, the
// record and the property interface of the dlopen'ed module.
#include <gtest/gtest.h>

#include <string>

#include "support/HostFixture.h"

namespace {

class CutFilterInModule : public ::testing::TestWithParam<const char*> {};

TEST_P(CutFilterInModule, FactoryGivesFilterWithHistoryAndSilentProgramReset) {
    auto fx = aftest::HostEffect::Create(GetParam());
    ASSERT_TRUE(fx) << GetParam();
    ASSERT_NE(fx->properties(), nullptr);
    EXPECT_TRUE(fx->properties()->HasHistory());
    EXPECT_EQ(fx->properties()->GetParameterType(2), -1);
    fx->start(48000.0f, 512);
    EXPECT_EQ(fx->parameterDisplay(0), "1495.000");
    fx->setParameter(0, 0.9f);
    fx->clearCalls();
    fx->setProgram(0);  // a reset through the plain setter: nothing reported
    EXPECT_TRUE(fx->calls().empty());
    EXPECT_EQ(fx->getParameter(0), 0.25f);
    EXPECT_EQ(fx->getProgram(), 0);
}

TEST_P(CutFilterInModule, DeletingThroughThePropertyInterfaceRunsTheWholeDestructor) {
    auto fx = aftest::HostEffect::Create(GetParam());
    ASSERT_TRUE(fx);
    ML::VSTPropertySupportMixin* properties = fx->properties();
    fx->release();
    delete properties;  // the sanitizer build sees a leak or a bad free if this is wrong
}

INSTANTIATE_TEST_SUITE_P(Registered, CutFilterInModule,
                         ::testing::Values("Internal Highpass Mono", "Internal Highpass Stereo",
                                           "Internal Highpass 5.1", "Internal Highpass 16 Channel",
                                           "Internal Lowpass Mono", "Internal Lowpass Stereo",
                                           "Internal Lowpass 5.1", "Internal Lowpass 16 Channel",
                                           "Internal Bandpass Mono", "Internal Bandpass Stereo",
                                           "Internal Bandpass 5.1", "Internal Bandpass 16 Channel",
                                           "Internal Bandreject Mono", "Internal Bandreject Stereo",
                                           "Internal Bandreject 5.1", "Internal Bandreject 16 Channel"),
                         [](const ::testing::TestParamInfo<const char*>& info) {
                             std::string name = info.param;
                             for (char& c : name)
                                 if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
                             return name;
                         });

}  // namespace
