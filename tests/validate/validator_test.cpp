// The validator's checks must be able to fail: each deliberately faulty fake
// effect is caught by exactly the check meant for its fault, while a
// well-behaved fake passes everything.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "AllocationWatch.h"
#include "Validator.h"
#include "validate/FakeEffects.h"

namespace {

using afv::Check;
using afv::CheckResult;

afv::Options quickOptions() {
    afv::Options options;
    options.level = 1;
    options.seed = 7;
    return options;
}

const CheckResult* find(const std::vector<CheckResult>& results, Check check) {
    for (const CheckResult& result : results) {
        if (result.check == check) return &result;
    }
    return nullptr;
}

std::vector<CheckResult> validate(const afv::EffectMaker& maker) {
    return afv::validateInProcess({maker}, quickOptions());
}

// Every check but `failing` passes; `failing` fails with a detail naming `words`.
void expectOnlyFailure(const std::vector<CheckResult>& results, Check failing, const std::string& words) {
    ASSERT_EQ(results.size(), 8u);
    for (const CheckResult& result : results) {
        if (result.check == failing) {
            EXPECT_FALSE(result.passed) << afv::checkName(result.check);
            EXPECT_NE(result.detail.find(words), std::string::npos) << result.detail;
        } else {
            EXPECT_TRUE(result.passed) << afv::checkName(result.check) << ": " << result.detail;
        }
    }
}

TEST(Validator, WellBehavedEffectPassesEveryCheck) {
    const auto results = validate(afvtest::makerFor<afvtest::CleanFake>("clean"));
    ASSERT_EQ(results.size(), 8u);
    for (const CheckResult& result : results) {
        EXPECT_TRUE(result.passed) << afv::checkName(result.check) << ": " << result.detail;
    }
    const afv::Tally counts = afv::tally(results);
    EXPECT_EQ(counts.passed, 8);
    EXPECT_EQ(counts.failed, 0);
}

TEST(Validator, AllocationInProcessReplacingFails) {
    expectOnlyFailure(validate(afvtest::makerFor<afvtest::AllocatingFake>("allocating")), Check::Allocation,
                      "processReplacing made");
}

TEST(Validator, AllocationInSetParameterFails) {
    expectOnlyFailure(validate(afvtest::makerFor<afvtest::AllocatingSetterFake>("allocating setter")),
                      Check::Allocation, "setParameter made");
}

TEST(Validator, NameWrittenPastSixtyFourBytesFails) {
    expectOnlyFailure(validate(afvtest::makerFor<afvtest::OverlongNameFake>("overlong")), Check::Parameters,
                      "getParameterName (opcode 8) for index 0 wrote past 64 bytes");
}

TEST(Validator, SubnormalOutputAfterSilenceFails) {
    const auto results = validate(afvtest::makerFor<afvtest::SubnormalFake>("subnormal"));
    const CheckResult* denormals = find(results, Check::Denormals);
    ASSERT_NE(denormals, nullptr);
    EXPECT_FALSE(denormals->passed);
    EXPECT_NE(denormals->detail.find("subnormal output"), std::string::npos) << denormals->detail;
    EXPECT_TRUE(find(results, Check::Finite)->passed);
    EXPECT_TRUE(find(results, Check::Allocation)->passed);
}

TEST(Validator, NondeterministicOutputFails) {
    expectOnlyFailure(validate(afvtest::makerFor<afvtest::NondeterministicFake>("nondeterministic")),
                      Check::Determinism, "two fresh instances differ");
}

TEST(Validator, DivergenceAtInRangeParametersFails) {
    const auto results = validate(afvtest::makerFor<afvtest::DivergingFake>("diverging"));
    const CheckResult* finite = find(results, Check::Finite);
    ASSERT_NE(finite, nullptr);
    EXPECT_FALSE(finite->passed);
    EXPECT_NE(finite->detail.find("output inf"), std::string::npos) << finite->detail;
}

TEST(Validator, MultitapFeedbackAboveOneIsDocumentedNotFailed) {
    const auto results = validate(afvtest::makerFor<afvtest::MultitapLikeFake<false>>("Internal Multitap Delay Mono"));
    const CheckResult* finite = find(results, Check::Finite);
    ASSERT_NE(finite, nullptr);
    EXPECT_TRUE(finite->passed) << finite->detail;
    bool listed = false;
    for (const std::string& note : finite->documented) listed = listed || note.find("feedbacks summing above 1") != std::string::npos;
    EXPECT_TRUE(listed);
}

TEST(Validator, MultitapDivergingWithinItsLimitsStillFails) {
    const auto results = validate(afvtest::makerFor<afvtest::MultitapLikeFake<true>>("Internal Multitap Delay Mono"));
    const CheckResult* finite = find(results, Check::Finite);
    ASSERT_NE(finite, nullptr);
    EXPECT_FALSE(finite->passed);
}

TEST(Validator, DocumentedDivergenceBelongsToTheMultitapOnly) {
    // Level 3 has a trial with every parameter at 1: four feedbacks of 1.
    afv::Options options = quickOptions();
    options.level = 3;
    const auto results =
        afv::validateInProcess({afvtest::makerFor<afvtest::MultitapLikeFake<false>>("Internal Delay Mono")}, options);
    const CheckResult* finite = find(results, Check::Finite);
    ASSERT_NE(finite, nullptr);
    EXPECT_FALSE(finite->passed);
}

TEST(Validator, SlowSilenceFailsTiming) {
    const auto results = validate(afvtest::makerFor<afvtest::SlowSilenceFake>("slow silence"));
    const CheckResult* timing = find(results, Check::Timing);
    ASSERT_NE(timing, nullptr);
    EXPECT_FALSE(timing->passed);
    EXPECT_NE(timing->detail.find("silence costs"), std::string::npos) << timing->detail;
}

TEST(Validator, GigabyteAllocationIsRefusedAndReported) {
    const auto results = validate(afvtest::makerFor<afvtest::GreedyFake>("greedy"));
    const CheckResult* allocation = find(results, Check::Allocation);
    ASSERT_NE(allocation, nullptr);
    EXPECT_FALSE(allocation->passed);
    EXPECT_NE(allocation->detail.find("bytes at once (refused)"), std::string::npos) << allocation->detail;
}

TEST(Validator, CrashIsReportedWithItsCaseAndHidesNothingElse) {
    afv::Options options = quickOptions();
    const auto results = afv::validateIsolated(
        {afvtest::makerFor<afvtest::CrashingFake>("crashing"), afvtest::makerFor<afvtest::CleanFake>("clean")},
        options);
    ASSERT_EQ(results.size(), 16u);
    // Block size 17 is in the life cycle's list, so that check crashes there.
    const CheckResult& lifecycle = results[0];
    EXPECT_EQ(lifecycle.check, Check::Lifecycle);
    EXPECT_FALSE(lifecycle.passed);
    EXPECT_NE(lifecycle.detail.find("crashed"), std::string::npos) << lifecycle.detail;
    EXPECT_NE(lifecycle.detail.find("block size 17"), std::string::npos) << lifecycle.detail;
    EXPECT_NE(lifecycle.detail.find("seed 7"), std::string::npos) << lifecycle.detail;
    // The crash took only its own child: the other effect's checks all ran and passed.
    for (std::size_t i = 8; i < 16; ++i) {
        EXPECT_EQ(results[i].effect, "clean");
        EXPECT_TRUE(results[i].passed) << afv::checkName(results[i].check) << ": " << results[i].detail;
    }
}

TEST(Validator, FactoryThatMakesNothingIsOneFailure) {
    afv::EffectMaker nothing;
    nothing.identifier = "nothing";
    nothing.make = [](audioMasterCallback, ML::VSTPropertySupportMixin** properties) -> AEffect* {
        *properties = nullptr;
        return nullptr;
    };
    const auto results = validate(nothing);
    ASSERT_EQ(results.size(), 1u);
    EXPECT_EQ(results[0].check, Check::Create);
    EXPECT_FALSE(results[0].passed);
}

TEST(Validator, ReportEndsWithTheTally) {
    const auto results = validate(afvtest::makerFor<afvtest::OverlongNameFake>("overlong"));
    const std::string text = afv::formatText(results, 1.0);
    const std::string last = text.substr(text.rfind('\n', text.size() - 2) + 1);
    EXPECT_EQ(last, "7 passed, 1 failed\n");
    EXPECT_NE(text.find("FAIL  overlong: parameters: "), std::string::npos) << text;
    const std::string json = afv::formatJson(results, 1.0, quickOptions());
    EXPECT_NE(json.find("\"summary\": \"7 passed, 1 failed\""), std::string::npos) << json;
    EXPECT_NE(json.find("\"check\": \"parameters\", \"passed\": false"), std::string::npos) << json;
}

TEST(AllocationWatch, CountsOperatorNewOnlyInsideAnAudioCall) {
    const afv::AllocationTally before = afv::audioCallTally();
    // The pointer goes through a volatile so that an optimising build cannot
    // elide the allocation pair the tally is meant to see.
    int* volatile outside = new int(1);  // outside: not counted
    delete outside;
    EXPECT_EQ(afv::audioCallTally().allocations, before.allocations);
    afv::AllocationTally inside;
    {
        afv::AudioCallScope scope;
        int* volatile allocated = new int(2);
        delete allocated;
        inside = scope.tally();
    }
    EXPECT_EQ(inside.allocations, 1u);
    EXPECT_EQ(inside.frees, 1u);
}

TEST(AllocationWatch, RefusesAndRemembersAbsurdRequests) {
    afv::resetRefusedAllocations();
    afv::setAllocationLimit(1u << 20);
    void* refused = ::operator new(std::size_t{1} << 30, std::nothrow);
    afv::setAllocationLimit(0);
    EXPECT_EQ(refused, nullptr);
    EXPECT_EQ(afv::largestRefusedAllocation(), std::size_t{1} << 30);
    afv::resetRefusedAllocations();
}

}  // namespace
