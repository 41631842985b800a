// Every registered variant at its default parameters against its reference
// vector, through the real loading path: dlopen, AF::Startup, the registered
// factory, the record. Outputs are compared as bit patterns (a NaN matches any
// NaN) because the module promises bit-identical results.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <string>

#include "support/HostFixture.h"
#include "support/ReferenceVectors.h"

namespace {

class ReferenceVectorTest : public ::testing::TestWithParam<std::string> {};

TEST_P(ReferenceVectorTest, MatchesBitForBit) {
    std::string error;
    const auto vector = aftest::loadReferenceVector(aftest::referenceVectorDirectory() + "/" + GetParam(), &error);
    ASSERT_TRUE(vector) << GetParam() << ": " << error;
    ASSERT_TRUE(aftest::LoadedModule::Get().loaded()) << aftest::LoadedModule::Get().error();
    ASSERT_NE(aftest::LoadedModule::Get().find(vector->identifier), nullptr)
        << vector->identifier << " is not registered";

    auto fx = aftest::HostEffect::Create(vector->identifier);
    ASSERT_TRUE(fx) << vector->identifier << ": the factory made no effect";
    ASSERT_EQ(fx->channels(), vector->channels);

    fx->start(vector->sampleRate, vector->blockSize);
    aftest::Channels audio = vector->input;
    fx->processReplacingInBlocks(audio, vector->blocks);
    EXPECT_TRUE(aftest::sameBits(vector->expected, audio)) << vector->identifier;
}

INSTANTIATE_TEST_SUITE_P(Vectors, ReferenceVectorTest, ::testing::ValuesIn(aftest::referenceVectorFiles()),
                         [](const ::testing::TestParamInfo<std::string>& info) {
                             std::string name = info.param.substr(0, info.param.find('.'));
                             for (char& c : name) {
                                 if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
                             }
                             return name;
                         });

TEST(ReferenceVectors, OneFilePerRegisteredIdentifier) {
    const auto files = aftest::referenceVectorFiles();
    ASSERT_EQ(files.size(), 55u);
    const auto& registrations = aftest::LoadedModule::Get().registrations();
    ASSERT_EQ(registrations.size(), 55u);
    std::vector<std::string> identifiers;
    for (const std::string& file : files) {
        std::string error;
        const auto vector = aftest::loadReferenceVector(aftest::referenceVectorDirectory() + "/" + file, &error);
        ASSERT_TRUE(vector) << file << ": " << error;
        identifiers.push_back(vector->identifier);
    }
    for (const auto& registration : registrations) {
        EXPECT_EQ(std::count(identifiers.begin(), identifiers.end(), std::string(registration.id.c_str())), 1)
            << registration.id.c_str();
    }
}

}  // namespace
