// The test host and its helpers: they must load the real module and must be
// able to fail.
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <link.h>

#include <cmath>
#include <limits>

#include "support/Buffers.h"
#include "support/HostFixture.h"
#include "support/MiniJson.h"

namespace {

TEST(TestHost, EffectsRunCodeOfTheLoadedModule) {
    auto fx = aftest::HostEffect::Create("Internal Volume Stereo");
    ASSERT_TRUE(fx);
    // The record's entry points lie in the dlopen'ed module, not in the test program.
    Dl_info info{};
    ASSERT_NE(dladdr(reinterpret_cast<void*>(fx->effect()->dispatcher), &info), 0);
    link_map* map = nullptr;
    ASSERT_EQ(dlinfo(aftest::LoadedModule::Get().handle(), RTLD_DI_LINKMAP, &map), 0);
    EXPECT_EQ(info.dli_fbase, reinterpret_cast<void*>(map->l_addr));
}

TEST(TestHost, UnknownIdentifierGivesNoEffect) {
    EXPECT_FALSE(aftest::HostEffect::Create("Internal Nothing"));
}

TEST(TestHost, RecordsHostCallsWithTheirArguments) {
    auto fx = aftest::HostEffect::Create("Internal Volume Mono");
    ASSERT_TRUE(fx);
    fx->setAnswer([](const aftest::HostCall&) { return std::intptr_t{0}; });
    fx->setProgram(0);
    ASSERT_EQ(fx->calls().size(), 1u);
    EXPECT_EQ(fx->calls()[0].effect, fx->effect());
    fx->clearCalls();
    EXPECT_TRUE(fx->calls().empty());
}

TEST(Buffers, SameBitsTellsSignedZerosAndNaNsApart) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(aftest::sameBits(std::vector<float>{0.0f}, std::vector<float>{-0.0f}));
    EXPECT_TRUE(aftest::sameBits(std::vector<float>{nan}, std::vector<float>{-nan}));
    EXPECT_FALSE(aftest::sameBits(std::vector<float>{nan}, std::vector<float>{-nan}, aftest::NanPolicy::kExactBits));
    EXPECT_FALSE(aftest::sameBits(std::vector<float>{1.0f}, std::vector<float>{1.0f, 2.0f}));
    const auto failure = aftest::sameBits(std::vector<float>{1.0f, 2.0f}, std::vector<float>{1.0f, 3.0f});
    EXPECT_FALSE(failure);
    EXPECT_NE(std::string(failure.message()).find("[1]"), std::string::npos) << failure.message();
}

TEST(Buffers, TaggedSignalsNameTheirChannel) {
    const auto ramp = aftest::taggedRamp(3, 4);
    EXPECT_EQ(ramp[2][3], 11.0f);  // channel 2, frame 3: 2 + 3 * 3
    const auto a = aftest::taggedNoise(2, 8, 5);
    const auto b = aftest::taggedNoise(2, 8, 5);
    EXPECT_TRUE(aftest::sameBits(a, b));
    EXPECT_FALSE(aftest::sameBits(a[0], a[1]));
    for (const auto& channel : a) {
        for (float sample : channel) {
            EXPECT_GE(sample, -1.0f);
            EXPECT_LT(sample, 1.0f);
        }
    }
}

TEST(MiniJson, ReadsTheShapesOfTheVectorFiles) {
    const auto value = aftest::parseJson(R"({"effect": "A \"b\"\n", "n": -1.5e2, "list": [1, 2, 3], "t": true, "z": null})");
    ASSERT_TRUE(value);
    EXPECT_EQ(value->get("effect")->string, "A \"b\"\n");
    EXPECT_EQ(value->get("n")->number, -150.0);
    ASSERT_EQ(value->get("list")->array.size(), 3u);
    EXPECT_EQ(value->get("list")->array[2].number, 3.0);
    EXPECT_TRUE(value->get("t")->boolean);
    EXPECT_EQ(value->get("z")->kind, aftest::JsonValue::Kind::kNull);
    EXPECT_EQ(value->get("missing"), nullptr);
}

TEST(MiniJson, RejectsBrokenDocuments) {
    for (const char* text : {"", "{", "[1, 2", R"({"a" 1})", R"({"a": 1} x)", R"("open)", "tru", "{\"a\": -}"}) {
        std::string error;
        EXPECT_FALSE(aftest::parseJson(text, &error)) << text;
        EXPECT_FALSE(error.empty()) << text;
    }
}

TEST(Base64, DecodesLittleEndianFloats) {
    // 1.0f is 00 00 80 3F in little-endian order: base64 "AACAPw==".
    const auto bytes = aftest::decodeBase64("AACAPw==");
    ASSERT_TRUE(bytes);
    ASSERT_EQ(bytes->size(), 4u);
    const auto floats = aftest::floatsFromLittleEndian(*bytes);
    ASSERT_TRUE(floats);
    EXPECT_EQ(floats->at(0), 1.0f);
    EXPECT_FALSE(aftest::decodeBase64("AA*A"));
    EXPECT_FALSE(aftest::floatsFromLittleEndian({1, 2, 3}));
}

}  // namespace
