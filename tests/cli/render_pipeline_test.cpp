// afx's render pipeline in this process: chunks keep their order, the ring
// bounds what is in memory, the calling thread processes, every chunk but the
// last is full, and a failure on any stage ends the run with that stage's error.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <bit>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "cli/Interleave.h"
#include "cli/Progress.h"
#include "cli/RenderPipeline.h"

namespace {

using afx::RenderPipeline;

// The sample value for frame f, channel c: distinct everywhere and exact in float.
float sampleAt(std::int64_t frame, unsigned channel) { return static_cast<float>(frame * 16 + channel); }

// A source of `total` frames that hands out at most `most` frames per call
// (as a decoder may), so the pipeline has to ask again to fill a chunk.
struct Source {
    unsigned channels;
    std::int64_t total;
    std::int64_t most;
    std::int64_t next = 0;
    std::int64_t operator()(float* samples, std::int64_t frames) {
        const std::int64_t count = std::min({frames, most, total - next});
        for (std::int64_t i = 0; i < count; ++i)
            for (unsigned c = 0; c < channels; ++c) samples[i * channels + c] = sampleAt(next + i, c);
        next += count;
        return count;
    }
};

struct Shape {
    unsigned channels;
    std::int64_t total;
    std::int64_t chunk;
    int depth;
    std::int64_t mostPerRead;
};

class PipelineShapes : public ::testing::TestWithParam<Shape> {};

// The source hands out fewer frames per call than a chunk takes, so chunks
// are filled by asking again. Processing negates each sample; the writer must
// get every frame negated, in order, in chunks of exactly `chunk` frames but
// the last.
// The same holds for a pipeline that runs every stage in turn on one thread.
void expectEveryFrameInOrder(const Shape& shape, bool overlap) {
    RenderPipeline pipeline(static_cast<std::size_t>(shape.chunk) * shape.channels, shape.chunk, shape.depth,
                            overlap);
    Source source{shape.channels, shape.total, shape.mostPerRead};
    std::vector<std::int64_t> processedSizes;
    std::vector<std::int64_t> writtenSizes;
    std::vector<float> written;
    const std::int64_t passed = pipeline.run(
        [&](float* chunk) { return afx::readFully(std::ref(source), chunk, shape.channels, shape.chunk); },
        [&](float* samples, std::int64_t frames) {
            processedSizes.push_back(frames);
            for (std::int64_t i = 0; i < frames * shape.channels; ++i) samples[i] = -samples[i];
        },
        [&](const float* samples, std::int64_t frames) {
            writtenSizes.push_back(frames);
            written.insert(written.end(), samples, samples + frames * shape.channels);
        });
    EXPECT_EQ(passed, shape.total);
    ASSERT_EQ(written.size(), static_cast<std::size_t>(shape.total * shape.channels));
    for (std::int64_t f = 0; f < shape.total; ++f)
        for (unsigned c = 0; c < shape.channels; ++c)
            ASSERT_EQ(written[f * shape.channels + c], -sampleAt(f, c)) << "frame " << f << " channel " << c;
    // Full chunks, then what is left; nothing for an empty input.
    std::vector<std::int64_t> expectedSizes(shape.total / shape.chunk, shape.chunk);
    if (shape.total % shape.chunk != 0) expectedSizes.push_back(shape.total % shape.chunk);
    EXPECT_EQ(processedSizes, expectedSizes);
    EXPECT_EQ(writtenSizes, expectedSizes);
}

TEST_P(PipelineShapes, EveryFrameInOrder) { expectEveryFrameInOrder(GetParam(), true); }

TEST_P(PipelineShapes, EveryFrameInOrderInTurn) { expectEveryFrameInOrder(GetParam(), false); }

INSTANTIATE_TEST_SUITE_P(Render, PipelineShapes,
                         ::testing::Values(Shape{2, 0, 64, 4, 64}, Shape{2, 1, 64, 4, 64}, Shape{1, 63, 64, 4, 64},
                                           Shape{2, 64, 64, 4, 64}, Shape{2, 1000, 64, 4, 64},
                                           Shape{6, 1001, 100, 2, 7}, Shape{16, 3333, 256, 3, 1000},
                                           Shape{3, 5000, 1, 4, 1}, Shape{2, 20000, 1024, 8, 333}));

// With a slow writer the reader runs ahead, but never more than the ring's
// depth of chunks; and the ring's buffers are the only ones handed out.
TEST(RenderPipeline, NeverMoreThanTheRingInFlight) {
    constexpr int kDepth = 3;
    RenderPipeline pipeline(20, 10, kDepth);
    Source source{2, 500, 10};
    std::atomic<int> read{0};
    std::atomic<int> written{0};
    std::atomic<int> mostInFlight{0};
    std::set<const float*> buffers;
    pipeline.run(
        [&](float* chunk) {
            const std::int64_t got = source(chunk, 10);
            if (got > 0) {
                const int inFlight = ++read - written;
                int most = mostInFlight;
                while (inFlight > most && !mostInFlight.compare_exchange_weak(most, inFlight)) {
                }
            }
            return got;
        },
        [&](float*, std::int64_t) {},
        [&](const float* samples, std::int64_t) {
            buffers.insert(samples);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            ++written;
        });
    EXPECT_EQ(written, 50);
    EXPECT_LE(mostInFlight, kDepth);
    EXPECT_GE(mostInFlight, 2);  // the reader did run ahead of the writer
    EXPECT_EQ(buffers.size(), static_cast<std::size_t>(kDepth));
}

// The effects are made on the calling thread and are driven there too. The
// calling thread reads the first chunk, to see whether the input ends within
// it; every later chunk is read on the reader's own thread.
TEST(RenderPipeline, ProcessesOnTheCallingThread) {
    RenderPipeline pipeline(8, 8, 4);
    Source source{1, 100, 8};
    const std::thread::id caller = std::this_thread::get_id();
    std::set<std::thread::id> processing;
    std::atomic<int> readsHere{0};
    std::atomic<int> readsElsewhere{0};
    pipeline.run(
        [&](float* chunk) {
            ++(std::this_thread::get_id() == caller ? readsHere : readsElsewhere);
            return source(chunk, 8);
        },
        [&](float*, std::int64_t) { processing.insert(std::this_thread::get_id()); }, [](const float*, std::int64_t) {});
    EXPECT_EQ(processing, std::set<std::thread::id>{caller});
    EXPECT_EQ(readsHere, 1);
    EXPECT_EQ(readsElsewhere, 100 / 8);  // twelve more full chunks, then the last four frames
}

// An input that ends within its first chunk starts no thread: the one chunk
// is read, processed and written on the calling thread, in that order.
TEST(RenderPipeline, ShortInputRunsOnTheCallingThread) {
    for (const std::int64_t total : {std::int64_t{0}, std::int64_t{1}, std::int64_t{7}}) {
        RenderPipeline pipeline(16, 8, 4);
        Source source{2, total, 8};
        const std::thread::id caller = std::this_thread::get_id();
        std::vector<std::string> steps;
        std::set<std::thread::id> threads;
        const std::int64_t passed = pipeline.run(
            [&](float* chunk) {
                threads.insert(std::this_thread::get_id());
                steps.push_back("read");
                return source(chunk, 8);
            },
            [&](float*, std::int64_t) {
                threads.insert(std::this_thread::get_id());
                steps.push_back("process");
            },
            [&](const float*, std::int64_t) {
                threads.insert(std::this_thread::get_id());
                steps.push_back("write");
            });
        EXPECT_EQ(passed, total);
        EXPECT_EQ(threads, std::set<std::thread::id>{caller}) << total << " frames";
        const std::vector<std::string> expected =
            total == 0 ? std::vector<std::string>{"read"} : std::vector<std::string>{"read", "process", "write"};
        EXPECT_EQ(steps, expected) << total << " frames";
    }
}

// Without overlap every chunk is read, processed and written on the calling
// thread before the next is read, in one buffer, through every processing stage.
TEST(RenderPipeline, InTurnRunsEachChunkThroughOnTheCallingThread) {
    RenderPipeline pipeline(16, 8, 4, false);
    EXPECT_EQ(pipeline.depth(), 1);
    Source source{2, 20, 3};
    const std::thread::id caller = std::this_thread::get_id();
    std::vector<std::string> steps;
    std::set<std::thread::id> threads;
    std::set<const float*> buffers;
    auto note = [&](const char* step, const float* chunk) {
        threads.insert(std::this_thread::get_id());
        buffers.insert(chunk);
        steps.push_back(step);
    };
    const std::int64_t passed = pipeline.run(
        [&](float* chunk) {
            note("read", chunk);
            return afx::readFully(std::ref(source), chunk, 2, 8);
        },
        std::vector<RenderPipeline::Processor>{[&](float* chunk, std::int64_t) { note("first", chunk); },
                                               [&](float* chunk, std::int64_t) { note("second", chunk); }},
        [&](const float* chunk, std::int64_t) { note("write", chunk); });
    EXPECT_EQ(passed, 20);
    EXPECT_EQ(threads, std::set<std::thread::id>{caller});
    EXPECT_EQ(buffers.size(), 1u);
    const std::vector<std::string> chunk{"read", "first", "second", "write"};
    std::vector<std::string> expected;
    for (int i = 0; i < 3; ++i) expected.insert(expected.end(), chunk.begin(), chunk.end());  // 8, 8 and 4 frames
    EXPECT_EQ(steps, expected);
}

// Without overlap a failing stage's error comes out of run() as it is, and
// no stage sees a chunk after it.
TEST(RenderPipeline, InTurnFailureComesOut) {
    for (const char* failing : {"read", "process", "write"}) {
        RenderPipeline pipeline(16, 8, 4, false);
        Source source{2, 40, 8};
        const std::string stage = failing;
        int calls = 0;
        try {
            pipeline.run(
                [&](float* chunk) {
                    if (stage == "read" && ++calls == 2) throw std::runtime_error("read failed");
                    return source(chunk, 8);
                },
                [&](float*, std::int64_t) {
                    if (stage == "process" && ++calls == 2) throw std::runtime_error("process failed");
                },
                [&](const float*, std::int64_t) {
                    if (stage == "write" && ++calls == 2) throw std::runtime_error("write failed");
                });
            ADD_FAILURE() << "no error came out of a failing " << stage;
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(std::string(error.what()), stage + " failed");
        }
        EXPECT_EQ(source.next, stage == "read" ? 8 : 16) << stage;  // nothing read after the failure
    }
}

// A failure in the one chunk of a short input comes out of run() as it is.
TEST(RenderPipeline, ShortInputFailureComesOut) {
    for (const char* failing : {"read", "process", "write"}) {
        RenderPipeline pipeline(16, 8, 4);
        Source source{2, 5, 8};
        const std::string stage = failing;
        try {
            pipeline.run(
                [&](float* chunk) {
                    if (stage == "read") throw std::runtime_error("read failed");
                    return source(chunk, 8);
                },
                [&](float*, std::int64_t) {
                    if (stage == "process") throw std::runtime_error("process failed");
                },
                [&](const float*, std::int64_t) {
                    if (stage == "write") throw std::runtime_error("write failed");
                });
            ADD_FAILURE() << "no error came out of a failing " << stage;
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(error.what(), stage + " failed");
        }
    }
}

enum class Stage { kRead, kProcess, kWrite };

class PipelineFailures : public ::testing::TestWithParam<Stage> {};

// A stage fails at its fifth chunk: run() throws that very error, nothing
// after the failed chunk reaches the writer, and the reader stops early.
TEST_P(PipelineFailures, FirstErrorEndsTheRun) {
    const Stage failing = GetParam();
    constexpr int kFailAt = 4;
    RenderPipeline pipeline(32, 16, 4);
    Source source{2, 16 * 1000, 16};
    int reads = 0;
    int processes = 0;
    int writes = 0;
    std::vector<float> firstSamples;
    try {
        pipeline.run(
            [&](float* chunk) {
                if (failing == Stage::kRead && reads == kFailAt) throw std::runtime_error("read failed");
                ++reads;
                return source(chunk, 16);
            },
            [&](float*, std::int64_t) {
                if (failing == Stage::kProcess && processes == kFailAt) throw std::runtime_error("process failed");
                ++processes;
            },
            [&](const float* samples, std::int64_t) {
                if (failing == Stage::kWrite && writes == kFailAt) throw std::runtime_error("write failed");
                firstSamples.push_back(samples[0]);
                ++writes;
            });
        FAIL() << "no error came out";
    } catch (const std::runtime_error& error) {
        const char* expected = failing == Stage::kRead      ? "read failed"
                               : failing == Stage::kProcess ? "process failed"
                                                            : "write failed";
        EXPECT_STREQ(error.what(), expected);
    }
    EXPECT_LE(writes, kFailAt);
    for (int i = 0; i < writes; ++i) EXPECT_EQ(firstSamples[i], sampleAt(16 * i, 0));
    // The reader is at most a ring ahead of the failure, far from the input's 1000 chunks.
    EXPECT_LE(reads, kFailAt + 4 + 1);
}

INSTANTIATE_TEST_SUITE_P(Render, PipelineFailures, ::testing::Values(Stage::kRead, Stage::kProcess, Stage::kWrite));

// The chunk holds whole blocks: the asked frames (or about 256 KB of floats,
// or the input's length when that is less) rounded up to a multiple of the
// block, and never less than one block.
TEST(RenderPipeline, ChunkFramesAreWholeBlocks) {
    EXPECT_EQ(afx::chunkFramesFor(2, 1024, 0), 32768);   // 262144 bytes / 8 per frame
    EXPECT_EQ(afx::chunkFramesFor(16, 1024, 0), 4096);   // 262144 / 64
    EXPECT_EQ(afx::chunkFramesFor(6, 1024, 0), 11264);   // 262144 / 24 = 10922.67 -> 11 blocks
    EXPECT_EQ(afx::chunkFramesFor(2, 1000, 0), 33000);   // 32768 -> 33 blocks of 1000
    EXPECT_EQ(afx::chunkFramesFor(2, 333, 1000), 1332);  // 1000 -> 4 blocks of 333
    EXPECT_EQ(afx::chunkFramesFor(2, 1000, 10), 1000);   // at least one block
    EXPECT_EQ(afx::chunkFramesFor(2, 1, 1), 1);
    EXPECT_EQ(afx::chunkFramesFor(1, 256, 1024), 1024);
    EXPECT_EQ(afx::chunkFramesFor(2, 1024, 0, 480), 1024);       // a short file: one block
    EXPECT_EQ(afx::chunkFramesFor(2, 1024, 0, 5000), 5120);      // 5000 -> 5 blocks
    EXPECT_EQ(afx::chunkFramesFor(2, 1024, 0, 1000000), 32768);  // a long file: the default
    EXPECT_EQ(afx::chunkFramesFor(2, 333, 1000, 100), 333);
}

// Interleaving moves samples only: bit patterns (a NaN payload, -0, a
// subnormal) come through untouched, for the fixed-count loops and the rest.
TEST(Interleave, MovesEverySampleToItsPlace) {
    for (unsigned channels : {1u, 2u, 3u, 6u, 16u, 17u}) {
        for (std::int64_t frames : {0, 1, 7, 1027}) {
            std::vector<float> interleaved(static_cast<std::size_t>(frames) * channels);
            for (std::size_t i = 0; i < interleaved.size(); ++i)
                interleaved[i] = std::bit_cast<float>(static_cast<std::uint32_t>(0x7FC00001u + i * 2654435761u));
            if (!interleaved.empty()) interleaved[0] = -0.0f;
            if (interleaved.size() > 1) interleaved[1] = std::numeric_limits<float>::denorm_min();
            std::vector<std::vector<float>> planes(channels, std::vector<float>(static_cast<std::size_t>(frames) + 1));
            std::vector<float*> pointers;
            for (auto& plane : planes) pointers.push_back(plane.data());
            afx::deinterleave(interleaved.data(), channels, frames, pointers.data());
            for (std::int64_t i = 0; i < frames; ++i)
                for (unsigned c = 0; c < channels; ++c)
                    ASSERT_EQ(std::bit_cast<std::uint32_t>(planes[c][i]),
                              std::bit_cast<std::uint32_t>(interleaved[i * channels + c]))
                        << channels << " channels, frame " << i;
            for (auto& plane : planes) EXPECT_EQ(plane.back(), 0.0f);  // nothing past the frames
            std::vector<float> back(interleaved.size() + 1, 0.0f);
            afx::interleave(pointers.data(), channels, frames, back.data());
            for (std::size_t i = 0; i < interleaved.size(); ++i)
                ASSERT_EQ(std::bit_cast<std::uint32_t>(back[i]), std::bit_cast<std::uint32_t>(interleaved[i]))
                    << channels << " channels, sample " << i;
            EXPECT_EQ(back.back(), 0.0f);
        }
    }
}

}  // namespace

namespace {

// The meter keeps, per channel, the largest finite magnitude seen and counts
// the NaNs and infinities. The expected values come from a plain loop written
// here, over every length from 0 to 40 so the vector loop's tails are all covered.
TEST(PeakMeter, LargestMagnitudePerChannel) {
    std::uint32_t state = 7;
    auto next = [&state] {
        state = state * 1103515245u + 12345u;
        return state;
    };
    for (int frames = 0; frames <= 40; ++frames) {
        for (int trial = 0; trial < 20; ++trial) {
            std::vector<std::vector<float>> planes(3, std::vector<float>(static_cast<std::size_t>(frames)));
            for (auto& plane : planes)
                for (float& sample : plane) {
                    const std::uint32_t pick = next() % 16;
                    if (pick == 0) sample = std::numeric_limits<float>::quiet_NaN();
                    else if (pick == 1) sample = -0.0f;
                    else if (pick == 2 && trial == 3) sample = -std::numeric_limits<float>::infinity();
                    else sample = static_cast<float>(static_cast<int>(next() % 20001) - 10000) / 4096.0f;
                }
            std::vector<const float*> pointers;
            for (auto& plane : planes) pointers.push_back(plane.data());
            afx::PeakMeter meter(3);
            meter.take(pointers.data(), frames);
            meter.take(pointers.data(), frames / 2);  // a second call only re-sees samples
            for (std::size_t c = 0; c < planes.size(); ++c) {
                float expected = 0.0f;
                std::uint64_t nonFinite = 0;
                for (std::size_t i = 0; i < planes[c].size(); ++i) {
                    const float sample = planes[c][i];
                    const float magnitude = sample < 0.0f ? -sample : sample;
                    if (std::isnan(magnitude) || std::isinf(magnitude)) {
                        nonFinite += 1 + (i < static_cast<std::size_t>(frames / 2) ? 1 : 0);
                        continue;
                    }
                    if (magnitude > expected) expected = magnitude;
                }
                EXPECT_EQ(meter.nonFinite()[c], nonFinite) << frames << " frames, trial " << trial;
                ASSERT_EQ(std::bit_cast<std::uint32_t>(meter.peaks()[c]), std::bit_cast<std::uint32_t>(expected))
                    << frames << " frames, trial " << trial << ", channel " << c;
            }
        }
    }
}

}  // namespace
