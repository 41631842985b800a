// A chain split across threads through the real binary: each effect still
// gets the same blocks in the same order, so the output of --threads N is,
// bit for bit, that of the chain on one thread (--threads 1), for odd block
// sizes, chunks and lengths, several channel counts and a delay's tail.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "AfxRunner.h"
#include "TestNames.h"
#include "TestSignals.h"
#include "WavFiles.h"

namespace afxtest {
namespace {

constexpr int kRate = 48000;

// High-pass, parametric EQ, bass and a delay whose echoes outlast the input.
const std::vector<std::string> kFourEffects = {
    "-e", "highpass",      "-p", "cutoff=200",
    "-e", "parametric-eq", "-p", "center=3000", "-p", "q=2", "-p", "boost=-6",
    "-e", "bass",          "-p", "boost=3",
    "-e", "delay",         "-p", "delay=0.05",  "-p", "feedback=60"};

struct ThreadCase {
    const char* why;
    int channels;
    int frames;
    std::vector<std::string> options;
};

class AfxChainThreads : public ::testing::TestWithParam<ThreadCase> {};

TEST_P(AfxChainThreads, SameBitsOnAnyNumberOfThreads) {
    const ThreadCase& shape = GetParam();
    ScratchFolder folder;
    writeFloatWav(folder.file("in.wav"), shape.channels, kRate, noise(shape.frames, shape.channels, 21));
    // No thread count: as the first chunk's costs say.
    auto renderOn = [&](const std::string& threads, const std::string& output) {
        std::vector<std::string> arguments = {"render", folder.file("in.wav"), folder.file(output), "--float"};
        if (!threads.empty()) arguments.insert(arguments.end(), {"--threads", threads});
        arguments.insert(arguments.end(), kFourEffects.begin(), kFourEffects.end());
        arguments.insert(arguments.end(), shape.options.begin(), shape.options.end());
        return runAfx(arguments);
    };
    const Outcome one = renderOn("1", "one.wav");
    ASSERT_EQ(one.exitStatus, 0) << one.err;
    EXPECT_EQ(one.out.find("split across"), std::string::npos) << one.out;
    WavData reference;
    ASSERT_TRUE(readWav(folder.file("one.wav"), reference));
    // The delay's tail makes the output longer than the input.
    ASSERT_GT(reference.bytes.size(), static_cast<std::size_t>(shape.frames) * shape.channels * 4);
    const struct {
        const char* threads;
        const char* split;
    } kSplits[] = {{"2", "split across 2 threads: effects 1-2, 3-4"},
                   {"3", "split across 3 threads: effects 1, 2, 3-4"},
                   {"4", "split across 4 threads: effects 1, 2, 3, 4"},
                   {"64", "split across 4 threads: effects 1, 2, 3, 4"}};
    // Whatever the first chunk's costs chose (on one core: no split), the bits are the same.
    const Outcome chosen = renderOn("", "chosen.wav");
    ASSERT_EQ(chosen.exitStatus, 0) << chosen.err;
    WavData chosenBits;
    ASSERT_TRUE(readWav(folder.file("chosen.wav"), chosenBits));
    ASSERT_EQ(chosenBits.bytes, reference.bytes) << chosen.out;
    for (const auto& split : kSplits) {
        const std::string output = std::string("threads-") + split.threads + ".wav";
        const Outcome many = renderOn(split.threads, output);
        ASSERT_EQ(many.exitStatus, 0) << many.err;
        // The chain really was split, as the description says.
        EXPECT_NE(many.out.find(split.split), std::string::npos) << many.out;
        WavData threaded;
        ASSERT_TRUE(readWav(folder.file(output), threaded));
        EXPECT_EQ(threaded.formatCode, 3);
        EXPECT_EQ(threaded.channels, shape.channels);
        ASSERT_EQ(threaded.bytes.size(), reference.bytes.size()) << split.threads;
        EXPECT_EQ(std::memcmp(threaded.bytes.data(), reference.bytes.data(), reference.bytes.size()), 0)
            << split.threads << " threads";
    }
}

INSTANTIATE_TEST_SUITE_P(
    Chains, AfxChainThreads,
    ::testing::Values(
        ThreadCase{"stereo odd blocks and chunks", 2, 48017, {"--block", "77", "--chunk", "500"}},
        ThreadCase{"stereo one frame per chunk", 2, 4801, {"--block", "1000", "--chunk", "1"}},
        ThreadCase{"mono blocks of one frame", 1, 3001, {"--block", "1", "--chunk", "333"}},
        ThreadCase{"three channels a set tail", 3, 20011, {"--block", "129", "--chunk", "1000", "--tail", "0.7"}},
        ThreadCase{"six channels default chunks", 6, 150001, {"--block", "1023"}}),
    NameFromWhy{});

// A chain that fits in one chunk, or of one effect, has nothing to split.
TEST(AfxChainThreadsWhen, OnlyWhenThereIsSomethingToOverlap) {
    ScratchFolder folder;
    writeFloatWav(folder.file("in.wav"), 2, kRate, noise(1000, 2, 22));
    const Outcome oneChunk = runAfx(
        {"render", folder.file("in.wav"), folder.file("short.wav"), "--threads", "4", "-e", "highpass", "-e", "bass"});
    ASSERT_EQ(oneChunk.exitStatus, 0) << oneChunk.err;
    EXPECT_EQ(oneChunk.out.find("split across"), std::string::npos) << oneChunk.out;
    const Outcome single = runAfx({"render", folder.file("in.wav"), folder.file("single.wav"), "--threads", "4",
                                   "--chunk", "100", "-e", "highpass"});
    ASSERT_EQ(single.exitStatus, 0) << single.err;
    EXPECT_EQ(single.out.find("split across"), std::string::npos) << single.out;
    const Outcome bad =
        runAfx({"render", folder.file("in.wav"), folder.file("bad.wav"), "--threads", "0", "-e", "highpass"});
    EXPECT_EQ(bad.exitStatus, 2);
    EXPECT_NE(bad.err.find("--threads takes a number from 1 to 1024"), std::string::npos) << bad.err;
}

}  // namespace
}  // namespace afxtest
