#include "RenderStages.h"

#include <algorithm>
#include <chrono>
#include <limits>

#include "Interleave.h"
#include "RenderPipeline.h"

namespace afx {
namespace {

// The channel arrays sit a whole number of cache lines plus one apart, so
// that the same frame of different channels never shares a cache set (with
// arrays 4 KB apart, sixteen channels would fight over one).
std::size_t strideFor(std::int64_t frames) {
    constexpr std::size_t kLine = 64 / sizeof(float);
    return (static_cast<std::size_t>(frames) + kLine - 1) / kLine * kLine + kLine;
}

}  // namespace

RenderStages::RenderStages(unsigned channels, std::int64_t chunkFrames, int blockFrames, std::size_t chainParts)
    : channels_(channels), chunkFrames_(chunkFrames), blockFrames_(blockFrames), stride_(strideFor(chunkFrames)),
      readFrames_(static_cast<std::size_t>(chunkFrames) * channels), readPlanes_(channels),
      blockPlanes_(std::max<std::size_t>(chainParts, 1), std::vector<float*>(channels)),
      writeFrames_(static_cast<std::size_t>(chunkFrames) * channels), writePlanes_(channels), before_(channels),
      after_(channels) {}

std::int64_t RenderStages::read(InputFile& input, float* chunk) {
    const std::int64_t frames = readFully([&](float* samples, std::int64_t count) { return input.read(samples, count); },
                                          readFrames_.data(), channels_, chunkFrames_);
    pointInto(chunk, 0, readPlanes_);
    deinterleave(readFrames_.data(), channels_, frames, readPlanes_.data());
    before_.take(readPlanes_.data(), frames);
    return frames;
}

void RenderStages::silence(float* chunk, std::int64_t from, std::int64_t to) const {
    for (unsigned c = 0; c < channels_; ++c) std::fill(chunk + c * stride_ + from, chunk + c * stride_ + to, 0.0f);
}

void RenderStages::process(const Chain& chain, const ChainPart& part, std::size_t partIndex, float* chunk,
                           std::int64_t frames, std::int64_t first, TailWatch& tail) {
    passBlocks(chain, part, blockPlanes_[partIndex], chunk, frames, first, tail, nullptr);
}

void RenderStages::processTimed(const Chain& chain, float* chunk, std::int64_t frames, std::int64_t first,
                                TailWatch& tail, std::vector<double>& linkSeconds) {
    const ChainPart whole{0, chain.size(), true};
    passBlocks(chain, whole, blockPlanes_.front(), chunk, frames, first, tail, &linkSeconds);
}

void RenderStages::passBlocks(const Chain& chain, const ChainPart& part, std::vector<float*>& planes, float* chunk,
                              std::int64_t frames, std::int64_t first, TailWatch& tail,
                              std::vector<double>* linkSeconds) {
    using Clock = std::chrono::steady_clock;
    for (std::int64_t start = 0; start < frames; start += blockFrames_) {
        const auto count = static_cast<int>(std::min<std::int64_t>(blockFrames_, frames - start));
        pointInto(chunk, start, planes);
        if (linkSeconds == nullptr) {
            chain.process(planes.data(), count, part.firstLink, part.endLink);
        } else {
            // Link by link is the chain's own order within a block.
            for (std::size_t link = part.firstLink; link < part.endLink; ++link) {
                const Clock::time_point before = Clock::now();
                chain.process(planes.data(), count, link, link + 1);
                (*linkSeconds)[link] += std::chrono::duration<double>(Clock::now() - before).count();
            }
        }
        if (!part.last) continue;
        tail.take(planes.data(), channels_, first + start, count);
        // Metered while the block is still in the cache; writing is the busier thread.
        after_.take(planes.data(), count);
    }
}

void RenderStages::write(OutputFile& output, const float* chunk, std::int64_t frames) {
    pointInto(chunk, 0, writePlanes_);
    interleave(writePlanes_.data(), channels_, frames, writeFrames_.data());
    output.write(writeFrames_.data(), frames);
}

}  // namespace afx
