// The render pipeline with its processing split into several stages: every
// stage sees every chunk, in order, after the stage before it and on its own
// thread (the first on the calling one); the ring still bounds what is in
// flight, and a failure on any stage ends the run with that stage's error.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "cli/RenderPipeline.h"

namespace {

using afx::RenderPipeline;

constexpr std::int64_t kChunk = 16;

// Chunks of `kChunk` mono frames, the frame number as the sample, `total` frames in all.
struct Counter {
    std::int64_t total;
    std::int64_t next = 0;
    std::int64_t operator()(float* chunk) {
        const std::int64_t count = std::min(kChunk, total - next);
        for (std::int64_t i = 0; i < count; ++i) chunk[i] = static_cast<float>(next + i);
        next += count;
        return count;
    }
};

struct StageLog {
    std::vector<float> firstSamples;  // each chunk's first sample as the stage found it
    std::set<std::thread::id> threads;
};

class PipelineStages : public ::testing::TestWithParam<int> {};

// Stage k maps x to 3x + (k + 1): a different order of stages, or a stage
// skipped or run twice, gives other numbers (all exact in float here).
TEST_P(PipelineStages, EveryStageEveryChunkInOrder) {
    const int stages = GetParam();
    constexpr std::int64_t kTotal = 16 * 40 + 5;
    RenderPipeline pipeline(kChunk, kChunk, 4 + stages - 1);
    Counter counter{kTotal};
    std::vector<StageLog> logs(static_cast<std::size_t>(stages));
    std::vector<RenderPipeline::Processor> processes;
    for (int stage = 0; stage < stages; ++stage)
        processes.emplace_back([&logs, stage](float* chunk, std::int64_t frames) {
            StageLog& log = logs[static_cast<std::size_t>(stage)];
            log.firstSamples.push_back(chunk[0]);
            log.threads.insert(std::this_thread::get_id());
            for (std::int64_t i = 0; i < frames; ++i) chunk[i] = 3.0f * chunk[i] + static_cast<float>(stage + 1);
        });
    std::vector<float> written;
    std::vector<std::int64_t> sizes;
    const std::int64_t passed =
        pipeline.run(std::ref(counter), processes, [&](const float* chunk, std::int64_t frames) {
            written.insert(written.end(), chunk, chunk + frames);
            sizes.push_back(frames);
        });
    EXPECT_EQ(passed, kTotal);
    ASSERT_EQ(written.size(), static_cast<std::size_t>(kTotal));
    for (std::int64_t frame = 0; frame < kTotal; ++frame) {
        double expected = static_cast<double>(frame);
        for (int stage = 0; stage < stages; ++stage) expected = 3.0 * expected + (stage + 1);
        ASSERT_EQ(written[static_cast<std::size_t>(frame)], static_cast<float>(expected)) << "frame " << frame;
    }
    EXPECT_EQ(sizes.size(), 41u);
    EXPECT_EQ(sizes.back(), 5);
    // Each stage saw the chunks in reading order, as the stage before left them.
    std::set<std::thread::id> allThreads;
    for (int stage = 0; stage < stages; ++stage) {
        const StageLog& log = logs[static_cast<std::size_t>(stage)];
        ASSERT_EQ(log.firstSamples.size(), 41u);
        for (std::size_t chunk = 0; chunk < 41; ++chunk) {
            double expected = static_cast<double>(chunk * kChunk);
            for (int before = 0; before < stage; ++before) expected = 3.0 * expected + (before + 1);
            EXPECT_EQ(log.firstSamples[chunk], static_cast<float>(expected)) << "stage " << stage << " chunk " << chunk;
        }
        ASSERT_EQ(log.threads.size(), 1u) << "stage " << stage;
        allThreads.insert(*log.threads.begin());
    }
    EXPECT_EQ(allThreads.size(), static_cast<std::size_t>(stages));
    EXPECT_EQ(*logs.front().threads.begin(), std::this_thread::get_id());
}

INSTANTIATE_TEST_SUITE_P(Render, PipelineStages, ::testing::Values(1, 2, 3, 5));

// The ring bounds the chunks between the reader and the writer however many
// stages there are, and a stage may not overtake the one before it.
TEST(PipelineStagesRing, NeverMoreThanTheRingInFlight) {
    constexpr int kDepth = 4;
    constexpr int kStages = 3;
    RenderPipeline pipeline(kChunk, kChunk, kDepth);
    Counter counter{kChunk * 200};
    std::mutex mutex;
    int read = 0;
    int written = 0;
    int mostInFlight = 0;
    std::vector<int> passedBy(kStages, 0);
    bool overtook = false;
    std::vector<RenderPipeline::Processor> processes;
    for (int stage = 0; stage < kStages; ++stage)
        processes.emplace_back([&, stage](float*, std::int64_t) {
            const std::lock_guard<std::mutex> lock(mutex);
            const int before = stage == 0 ? read : passedBy[static_cast<std::size_t>(stage - 1)];
            if (passedBy[static_cast<std::size_t>(stage)] + 1 > before) overtook = true;
            ++passedBy[static_cast<std::size_t>(stage)];
        });
    pipeline.run(
        [&](float* chunk) {
            const std::int64_t got = counter(chunk);
            const std::lock_guard<std::mutex> lock(mutex);
            if (got > 0) ++read;
            mostInFlight = std::max(mostInFlight, read - written);
            return got;
        },
        processes,
        [&](const float*, std::int64_t) {
            const std::lock_guard<std::mutex> lock(mutex);
            ++written;
        });
    EXPECT_EQ(written, 200);
    EXPECT_LE(mostInFlight, kDepth);
    EXPECT_FALSE(overtook);
    for (int passed : passedBy) EXPECT_EQ(passed, 200);
}

class PipelineStageFailures : public ::testing::TestWithParam<int> {};

// The stage numbered by the parameter fails at its fifth chunk: run() throws
// its error and no chunk after the failed one is written.
TEST_P(PipelineStageFailures, FirstErrorEndsTheRun) {
    const int failing = GetParam();
    constexpr int kStages = 3;
    constexpr int kFailAt = 4;
    RenderPipeline pipeline(kChunk, kChunk, 6);
    Counter counter{kChunk * 1000};
    std::atomic<int> reads{0};
    std::vector<int> passed(kStages, 0);
    std::vector<float> firstWritten;
    std::vector<RenderPipeline::Processor> processes;
    for (int stage = 0; stage < kStages; ++stage)
        processes.emplace_back([&, stage](float*, std::int64_t) {
            if (stage == failing && passed[static_cast<std::size_t>(stage)] == kFailAt)
                throw std::runtime_error("stage " + std::to_string(stage) + " failed");
            ++passed[static_cast<std::size_t>(stage)];
        });
    try {
        pipeline.run(
            [&](float* chunk) {
                ++reads;
                return counter(chunk);
            },
            processes, [&](const float* chunk, std::int64_t) { firstWritten.push_back(chunk[0]); });
        FAIL() << "no error came out";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(std::string(error.what()), "stage " + std::to_string(failing) + " failed");
    }
    ASSERT_LE(firstWritten.size(), static_cast<std::size_t>(kFailAt));
    for (std::size_t i = 0; i < firstWritten.size(); ++i) EXPECT_EQ(firstWritten[i], static_cast<float>(i * kChunk));
    EXPECT_LE(reads.load(), kFailAt + 6 + 1);
}

INSTANTIATE_TEST_SUITE_P(Render, PipelineStageFailures, ::testing::Values(0, 1, 2));

}  // namespace
