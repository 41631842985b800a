// afx list on the real module: the module's own variants are listed without
// being made, so every count it prints is checked against an instance made
// here, and the whole listing against the one afx printed when it still made
// every effect to read its counts (tests/data/afx, written by that afx).
#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "AfxRunner.h"
#include "support/HostFixture.h"

namespace afxtest {
namespace {

constexpr std::size_t kRegistrations = 55;

struct InstanceCounts {
    std::string channels;
    std::string parameters;
};

// The inputs and parameters of a fresh instance, as the table prints them.
InstanceCounts countsOfAnInstance(const std::string& identifier) {
    const auto effect = aftest::HostEffect::Create(identifier);
    if (!effect) return {"-", "-"};
    return {std::to_string(effect->effect()->numInputs), std::to_string(effect->effect()->numParams)};
}

TEST(AfxList, CountsAreThoseOfEveryInstance) {
    ASSERT_TRUE(aftest::LoadedModule::Get().loaded()) << aftest::LoadedModule::Get().error();
    const Outcome outcome = runAfx({"list"});
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
    const auto rows = lines(outcome.out);
    ASSERT_EQ(rows.size(), kRegistrations) << outcome.out;
    for (const std::string& row : rows) {
        const auto cells = columns(row);
        ASSERT_EQ(cells.size(), 5u) << row;
        const InstanceCounts instance = countsOfAnInstance(cells[0]);
        EXPECT_NE(instance.channels, "-") << cells[0] << ": the module makes every variant it registers";
        EXPECT_EQ(cells[3], instance.channels) << row;
        EXPECT_EQ(cells[4], instance.parameters) << row;
    }
}

TEST(AfxList, JsonCountsAreThoseOfEveryInstance) {
    ASSERT_TRUE(aftest::LoadedModule::Get().loaded()) << aftest::LoadedModule::Get().error();
    const Outcome outcome = runAfx({"list", "--json"});
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
    const std::regex entry("\"identifier\": \"([^\"]+)\".*\"channels\": ([0-9]+|null), \"parameters\": ([0-9]+|null)");
    std::size_t entries = 0;
    for (const std::string& line : lines(outcome.out)) {
        std::smatch match;
        if (!std::regex_search(line, match, entry)) continue;
        ++entries;
        const InstanceCounts instance = countsOfAnInstance(match[1]);
        EXPECT_EQ(match[2].str(), instance.channels) << line;
        EXPECT_EQ(match[3].str(), instance.parameters) << line;
    }
    EXPECT_EQ(entries, kRegistrations) << outcome.out;
}

TEST(AfxList, TextAndJsonAreWhatTheInstanceMakingListingPrinted) {
    const Outcome text = runAfx({"list"});
    ASSERT_EQ(text.exitStatus, 0) << text.err;
    EXPECT_EQ(text.out, readText(AF_TEST_DATA_DIR "/afx/list.txt"));
    const Outcome json = runAfx({"list", "--json"});
    ASSERT_EQ(json.exitStatus, 0) << json.err;
    EXPECT_EQ(json.out, readText(AF_TEST_DATA_DIR "/afx/list.json"));
}

}  // namespace
}  // namespace afxtest
