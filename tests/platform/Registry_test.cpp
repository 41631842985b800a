// The host's effect registry, the property interface's default and the host's
// mathematics constants.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <latch>
#include <numbers>
#include <string>
#include <thread>
#include <vector>

#include "AudioEffect.h"
#include "MF/Constants.h"
#include "ML/VSTAudioFilterRegistry.h"
#include "ML/VSTPropertySupportMixin.h"

namespace {

using Registry = ML::VSTAudioFilterRegistry;

AudioEffect* factoryA(const Ordo::ImmutableString&, audioMasterCallback, ML::VSTPropertySupportMixin** properties) {
    if (properties != nullptr) *properties = nullptr;
    return nullptr;
}

AudioEffect* factoryB(const Ordo::ImmutableString&, audioMasterCallback, ML::VSTPropertySupportMixin** properties) {
    if (properties != nullptr) *properties = nullptr;
    return nullptr;
}

Ordo::ImmutableString id(const char* text) { return Ordo::ImmutableString::CreateStatic(text); }

// Other suites of the program may register too: start and end empty.
class PlatformRegistry : public ::testing::Test {
protected:
    void SetUp() override { Registry::Clear(); }
    void TearDown() override { Registry::Clear(); }
};

TEST_F(PlatformRegistry, KeepsRegistrationsInOrder) {
    Registry::RegisterVSTPlugin(id("Test Effect One"), plinth::WideString(u"One"), 0x104, &factoryA);
    Registry::RegisterVSTPlugin(id("Test Effect Two"), plinth::WideString(u"Two"), 0x208, &factoryB);
    Registry::RegisterVSTPlugin(id("Test Effect Three"), plinth::WideString(u"Three"), 0x1C000, &factoryA);
    std::vector<Registry::Registration> all = Registry::Registrations();
    ASSERT_EQ(all.size(), 3u);
    EXPECT_TRUE(all[0].id == id("Test Effect One"));
    EXPECT_EQ(all[0].displayName, plinth::WideString(u"One"));
    EXPECT_EQ(all[0].flags, 0x104u);
    EXPECT_EQ(all[0].factory, &factoryA);
    EXPECT_TRUE(all[1].id == id("Test Effect Two"));
    EXPECT_EQ(all[1].displayName, plinth::WideString(u"Two"));
    EXPECT_EQ(all[1].flags, 0x208u);
    EXPECT_EQ(all[1].factory, &factoryB);
    EXPECT_TRUE(all[2].id == id("Test Effect Three"));
    EXPECT_EQ(all[2].flags, 0x1C000u);
}

TEST_F(PlatformRegistry, RegistrationCopiesTheDisplayName) {
    plinth::WideString name(u"Lautst\u00E4rke");
    Registry::RegisterVSTPlugin(id("Test Effect"), name, 1, &factoryA);
    name = u"changed";
    ASSERT_EQ(Registry::Registrations().size(), 1u);
    EXPECT_EQ(Registry::Registrations()[0].displayName, plinth::WideString(u"Lautst\u00E4rke"));
}

TEST_F(PlatformRegistry, FindGivesTheLastRegistrationOfAnId) {
    Registry::RegisterVSTPlugin(id("Test Effect One"), plinth::WideString(u"first"), 1, &factoryA);
    Registry::RegisterVSTPlugin(id("Test Effect Two"), plinth::WideString(u"other"), 2, &factoryA);
    Registry::RegisterVSTPlugin(id("Test Effect One"), plinth::WideString(u"second"), 3, &factoryB);
    Registry::Registration found;
    // An identifier made from the same text elsewhere matches.
    std::string text = std::string("Test Effect ") + "One";
    ASSERT_TRUE(Registry::Find(Ordo::ImmutableString::CreateStatic(text.c_str()), found));
    EXPECT_EQ(found.displayName, plinth::WideString(u"second"));
    EXPECT_EQ(found.flags, 3u);
    EXPECT_EQ(found.factory, &factoryB);
    ASSERT_TRUE(Registry::Find(id("Test Effect Two"), found));
    EXPECT_EQ(found.flags, 2u);
}

TEST_F(PlatformRegistry, FindOfAnUnknownIdFails) {
    Registry::RegisterVSTPlugin(id("Test Effect One"), plinth::WideString(u"One"), 1, &factoryA);
    Registry::Registration found;
    found.flags = 77;
    EXPECT_FALSE(Registry::Find(id("Test Effect Unknown"), found));
    EXPECT_EQ(found.flags, 77u);  // untouched
    EXPECT_FALSE(Registry::Find(id("test effect one"), found));
}

TEST_F(PlatformRegistry, ClearForgetsEverything) {
    Registry::RegisterVSTPlugin(id("Test Effect One"), plinth::WideString(u"One"), 1, &factoryA);
    ASSERT_EQ(Registry::Registrations().size(), 1u);
    Registry::Clear();
    EXPECT_TRUE(Registry::Registrations().empty());
    Registry::Registration found;
    EXPECT_FALSE(Registry::Find(id("Test Effect One"), found));
}

TEST_F(PlatformRegistry, ConcurrentRegistrationsAreAllKept) {
    constexpr int kThreads = 4;
    constexpr int kEach = 50;
    std::latch start(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            start.arrive_and_wait();
            for (int k = 0; k < kEach; ++k) {
                std::string text = "Test Effect " + std::to_string(t) + "/" + std::to_string(k);
                Registry::RegisterVSTPlugin(id(text.c_str()), plinth::WideString(u"x"),
                                            static_cast<unsigned>(t * 1000 + k), &factoryA);
            }
        });
    }
    for (auto& thread : threads) thread.join();
    std::vector<Registry::Registration> all = Registry::Registrations();
    ASSERT_EQ(all.size(), static_cast<std::size_t>(kThreads * kEach));
    // Each thread's registrations keep that thread's order.
    std::vector<int> next(kThreads, 0);
    for (const auto& registration : all) {
        int t = static_cast<int>(registration.flags / 1000);
        int k = static_cast<int>(registration.flags % 1000);
        ASSERT_LT(t, kThreads);
        EXPECT_EQ(k, next[t]);
        next[t] = k + 1;
        std::string text = "Test Effect " + std::to_string(t) + "/" + std::to_string(k);
        EXPECT_TRUE(registration.id == id(text.c_str()));
    }
}

// ---------------------------------------------------------------------------
// The property interface's own default

int gMixinsDestroyed = 0;

class MinimalProperties : public ML::VSTPropertySupportMixin {
public:
    ~MinimalProperties() override { ++gMixinsDestroyed; }
    ParameterType GetParameterType(unsigned) override { return kNotAParameter; }
    float GetParameterMax(unsigned) const override { return 0.0f; }
    float GetParameterMin(unsigned) const override { return 0.0f; }
    float GetParameterStep(unsigned) const override { return 0.0f; }
    bool SupportsDisplayValueToParameter(unsigned) const override { return false; }
    float ConvertDisplayValueToParameter(unsigned, float) const override { return 0.0f; }
    float ConvertParameterValueToDisplay(unsigned, float) const override { return 0.0f; }
};

TEST(PlatformPropertySupport, HistoryByDefault) {
    MinimalProperties properties;
    ML::VSTPropertySupportMixin& mixin = properties;
    EXPECT_TRUE(mixin.HasHistory());
}

TEST(PlatformPropertySupport, DeletionThroughTheInterface) {
    int before = gMixinsDestroyed;
    ML::VSTPropertySupportMixin* mixin = new MinimalProperties();
    delete mixin;
    EXPECT_EQ(gMixinsDestroyed, before + 1);
}

TEST(PlatformPropertySupport, ParameterTypeValues) {
    EXPECT_EQ(static_cast<int>(ML::VSTPropertySupportMixin::kNotAParameter), -1);
    EXPECT_EQ(static_cast<int>(ML::VSTPropertySupportMixin::kDecibels), 1);
    EXPECT_EQ(static_cast<int>(ML::VSTPropertySupportMixin::kHertz), 2);
    EXPECT_EQ(static_cast<int>(ML::VSTPropertySupportMixin::kTime), 3);
    EXPECT_EQ(static_cast<int>(ML::VSTPropertySupportMixin::kNumber), 4);
}

// ---------------------------------------------------------------------------
// Constants, compared as bit patterns: they must be exactly these values.

TEST(PlatformConstants, PiIsTheNearestFloat) {
    // pi = 3.14159265358979...; the floats around it are 3.14159250 (0x40490FDA)
    // and 3.14159274 (0x40490FDB), the latter 8.7e-8 away, the former 1.5e-7.
    EXPECT_EQ(std::bit_cast<std::uint32_t>(MF::kPi), 0x40490FDBu);
    const double error = std::fabs(static_cast<double>(MF::kPi) - std::numbers::pi);
    EXPECT_LT(error, std::fabs(static_cast<double>(std::nextafter(MF::kPi, 0.0f)) - std::numbers::pi));
    EXPECT_LT(error, std::fabs(static_cast<double>(std::nextafter(MF::kPi, 4.0f)) - std::numbers::pi));
}

TEST(PlatformConstants, SqrtTwoOverTwoIsTheDouble) {
    // sqrt is correctly rounded and halving is exact.
    EXPECT_EQ(std::bit_cast<std::uint64_t>(MF::kSqrt2Over264), std::bit_cast<std::uint64_t>(std::sqrt(2.0) / 2.0));
    EXPECT_EQ(std::bit_cast<std::uint64_t>(MF::kSqrt2Over264), 0x3FE6A09E667F3BCDull);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(MF::kSqrt2Over264), std::bit_cast<std::uint64_t>(std::numbers::sqrt2 / 2.0));
}

}  // namespace
