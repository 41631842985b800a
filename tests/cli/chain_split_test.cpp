// How afx shares a chain out among threads from what its first chunk cost:
// a light chain stays whole, a heavy one is cut where its costs balance, and
// no split is made that the cores or the reading and writing would not let run
// faster by a tenth. Expected cuts are worked out by hand or by trying every
// cut in the test.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <vector>

#include "cli/ChainSplit.h"

namespace {

using afx::ChainPart;
using afx::ChunkCosts;
using afx::splitByCost;

// The parts as [first, end) pairs, checking on the way that they run in
// order over every link and that only the last is marked last.
std::vector<std::pair<std::size_t, std::size_t>> runsOf(const std::vector<ChainPart>& parts, std::size_t links) {
    std::vector<std::pair<std::size_t, std::size_t>> runs;
    std::size_t next = 0;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        EXPECT_EQ(parts[i].firstLink, next);
        EXPECT_LT(parts[i].firstLink, parts[i].endLink);
        EXPECT_EQ(parts[i].last, i + 1 == parts.size());
        runs.emplace_back(parts[i].firstLink, parts[i].endLink);
        next = parts[i].endLink;
    }
    EXPECT_EQ(next, links);
    return runs;
}

using Runs = std::vector<std::pair<std::size_t, std::size_t>>;

// Volume and invert: microseconds of effects against a tenth of a
// millisecond of reading and writing. Two threads would only take turns.
TEST(ChainSplit, LightChainStaysWhole) {
    const ChunkCosts costs{{10e-6, 10e-6}, 60e-6, 90e-6};
    EXPECT_EQ(runsOf(splitByCost(costs, 2, 2), 2), (Runs{{0, 2}}));
    EXPECT_EQ(runsOf(splitByCost(costs, 16, 2), 2), (Runs{{0, 2}}));
}

// High-pass, EQ, bass and delay at stereo (microseconds per chunk as measured
// on the two-core machine): one thread takes 570, cut after the EQ the parts
// take 352 and 218, and the two cores share 720 in all, 360 each. Cutting
// after the high-pass (135 | 435) or after the bass (545 | 25) is worse.
TEST(ChainSplit, HeavyChainIsCutWhereItsCostsBalance) {
    const ChunkCosts costs{{135e-6, 217e-6, 193e-6, 25e-6}, 60e-6, 90e-6};
    EXPECT_EQ(runsOf(splitByCost(costs, 2, 4), 4), (Runs{{0, 2}, {2, 4}}));
}

// 10, 1, 1, 1, 1, 1 | 10, 10: 15 against 20. Cut by count (four and four)
// the parts would take 13 and 22.
TEST(ChainSplit, BalancesUnevenLinks) {
    const ChunkCosts costs{{10.0, 1.0, 1.0, 1.0, 1.0, 1.0, 10.0, 10.0}, 0.0, 0.0};
    EXPECT_EQ(runsOf(splitByCost(costs, 2, 8), 8), (Runs{{0, 6}, {6, 8}}));
}

TEST(ChainSplit, OneCoreOrOneLinkNeverSplits) {
    EXPECT_EQ(runsOf(splitByCost(ChunkCosts{{5.0, 5.0, 5.0}, 0.0, 0.0}, 1, 3), 3), (Runs{{0, 3}}));
    EXPECT_EQ(runsOf(splitByCost(ChunkCosts{{5.0}, 0.0, 0.0}, 8, 8), 1), (Runs{{0, 1}}));
}

// Four equal links on eight cores: four parts. Held to three (the buffers'
// limit), three parts would be no faster than two (2, 1, 1), so two it is.
TEST(ChainSplit, FewestPartsThatRunFastest) {
    const ChunkCosts costs{{1.0, 1.0, 1.0, 1.0}, 0.0, 0.0};
    EXPECT_EQ(runsOf(splitByCost(costs, 8, 4), 4), (Runs{{0, 1}, {1, 2}, {2, 3}, {3, 4}}));
    EXPECT_EQ(runsOf(splitByCost(costs, 8, 3), 4), (Runs{{0, 2}, {2, 4}}));
}

// One thread 1.25 against 1.0 split: a fifth faster, so split. One thread
// 1.05 against 1.0: within a tenth, so the chain stays whole.
TEST(ChainSplit, NoSplitForLessThanATenth) {
    EXPECT_EQ(runsOf(splitByCost(ChunkCosts{{1.0, 0.25}, 0.0, 0.0}, 2, 2), 2), (Runs{{0, 1}, {1, 2}}));
    EXPECT_EQ(runsOf(splitByCost(ChunkCosts{{1.0, 0.05}, 0.0, 0.0}, 2, 2), 2), (Runs{{0, 2}}));
}

// Reading or writing slower than any part bounds every split alike: no split.
TEST(ChainSplit, SlowFilesLeaveTheChainWhole) {
    const ChunkCosts costs{{1.0, 1.0}, 5.0, 1.0};
    EXPECT_EQ(runsOf(splitByCost(costs, 4, 2), 2), (Runs{{0, 2}}));
}

// Against every cut tried in turn: the parts chosen never hold a dearer run
// than the best cut into as many parts.
TEST(ChainSplit, DearestPartIsTheLeastPossible) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> cost(0.1, 10.0);
    for (int trial = 0; trial < 300; ++trial) {
        const std::size_t links = 2 + trial % 6;
        ChunkCosts costs;
        for (std::size_t i = 0; i < links; ++i) costs.links.push_back(cost(random));
        const std::vector<ChainPart> parts = splitByCost(costs, 1 + trial % 4, links);
        runsOf(parts, links);
        auto dearestOf = [&](const std::vector<std::size_t>& starts) {
            double dearest = 0.0;
            for (std::size_t k = 0; k < starts.size(); ++k) {
                const std::size_t end = k + 1 < starts.size() ? starts[k + 1] : links;
                double sum = 0.0;
                for (std::size_t i = starts[k]; i < end; ++i) sum += costs.links[i];
                dearest = std::max(dearest, sum);
            }
            return dearest;
        };
        std::vector<std::size_t> chosen;
        for (const ChainPart& part : parts) chosen.push_back(part.firstLink);
        // Every way to cut `links` into parts.size() runs: each subset of the links 1..links-1 as starts.
        double best = 1e300;
        for (unsigned mask = 0; mask < (1u << (links - 1)); ++mask) {
            if (static_cast<std::size_t>(__builtin_popcount(mask)) + 1 != parts.size()) continue;
            std::vector<std::size_t> starts{0};
            for (std::size_t i = 1; i < links; ++i)
                if (mask & (1u << (i - 1))) starts.push_back(i);
            best = std::min(best, dearestOf(starts));
        }
        EXPECT_DOUBLE_EQ(dearestOf(chosen), best) << "trial " << trial;
    }
}

}  // namespace
