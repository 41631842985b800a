#include "Render.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <thread>

#include "AudioFile.h"
#include "Errors.h"
#include "KeptQuirks.h"
#include "ModuleHost.h"
#include "OutputTarget.h"
#include "Progress.h"
#include "RenderPipeline.h"
#include "RenderStages.h"

namespace afx {
namespace {

// Chunks in the pipeline at once: one being read, one processed, one
// written, and one spare so that no stage waits for a slot in the steady state;
// one more for each further thread of a split chain.
constexpr int kChunksInFlight = 4;

// INPUT's status, null for standard input; RunError when it is missing.
const struct stat* inputStatus(const std::string& input, struct stat& status) {
    if (input == "-") return nullptr;
    if (::stat(input.c_str(), &status) != 0)
        throw RunError("cannot read input '" + input + "': " + std::strerror(errno));
    return &status;
}

// The pipeline's buffers: the ring of chunks, the reading and writing
// threads' interleaved frames and the integer conversion.
std::int64_t bufferBytes(unsigned channels, std::int64_t chunkFrames, int chunksInFlight) {
    constexpr std::int64_t kAlignmentFrames = 32;  // the most a chunk's channel arrays are padded by
    const std::int64_t interleaved = chunkFrames * channels;
    const std::int64_t chunk = (chunkFrames + kAlignmentFrames) * channels;
    return static_cast<std::int64_t>(sizeof(float)) * (chunk * chunksInFlight + 3 * interleaved);
}

void checkBufferSize(unsigned channels, std::int64_t chunkFrames) {
    const std::int64_t bytes = bufferBytes(channels, chunkFrames, kChunksInFlight);
    if (bytes > kMostBufferBytes)
        throw UsageError("the buffers for " + std::to_string(chunkFrames) + " frames of " + std::to_string(channels) +
                         " channels per chunk would take " + std::to_string(bytes >> 20) +
                         " MB, more than afx allows (" + std::to_string(kMostBufferBytes >> 20) +
                         " MB); choose a smaller --block or --chunk");
}

void describe(const Chain& chain, std::FILE* out) {
    for (std::size_t link = 0; link < chain.size(); ++link) {
        std::fprintf(out, "  %zu. %s", link + 1, chain.identifier(link).c_str());
        if (chain.instances(link) > 1)
            std::fprintf(out, " x %zu (each on %u channel%s of its own)", chain.instances(link), chain.width(link),
                         chain.width(link) == 1 ? "" : "s");
        for (const AppliedParameter& parameter : chain.applied(link))
            std::fprintf(out, "%s %s = %s%s%s", &parameter == &chain.applied(link).front() ? ":" : ",",
                        parameter.name.c_str(), parameter.display.c_str(), parameter.label.empty() ? "" : " ",
                        parameter.label.c_str());
        std::fprintf(out, "\n");
    }
}

// "effects 1-2, 3, 4" for the parts of a split chain.
std::string partList(const std::vector<ChainPart>& parts) {
    std::string text = "effects ";
    for (const ChainPart& part : parts) {
        if (&part != &parts.front()) text += ", ";
        text += std::to_string(part.firstLink + 1);
        if (part.endLink > part.firstLink + 1) {
            text += '-';
            text += std::to_string(part.endLink);
        }
    }
    return text;
}

std::string peakList(const std::vector<float>& peaks) {
    std::string text;
    for (float peak : peaks) {
        if (!text.empty()) text += ' ';
        text += decibelsFullScale(peak);
    }
    return text;
}

std::string countList(const std::vector<std::uint64_t>& counts) {
    std::string text;
    for (std::uint64_t count : counts) {
        if (!text.empty()) text += ' ';
        text += std::to_string(count);
    }
    return text;
}

void warn(RenderReport& report, const std::string& text) {
    if (report.keepWarnings)
        report.warnings.push_back(text);
    else
        std::fprintf(stderr, "afx: warning: %s\n", text.c_str());
}

void renderTo(const RenderJob& job, const OutputTarget& target, const ModuleHost& host, RenderReport& report) {
    // With the audio on standard output, everything else goes to stderr.
    std::FILE* const messages = target.isStandardOutput() ? stderr : stdout;
    InputFile input(job.input);
    const unsigned channels = input.channels();
    const FormatChoice format = chooseOutputFormat(job.output, target.kind == OutputKind::Stream, input.format(),
                                                   job.samples, static_cast<int>(channels), input.sampleRate());
    // Every buffer is made below, once: the blocks allocate nothing.
    const std::int64_t chunkFrames = chunkFramesFor(channels, job.blockFrames, job.chunkFrames, input.frames());
    checkBufferSize(channels, chunkFrames);
    Chain chain(host, job.effects, channels, input.sampleRate(), job.blockFrames);
    if (job.describeChain && !job.quiet) describe(chain, messages);
    for (const std::string& warning : keptQuirkWarnings(chain, input.sampleRate())) warn(report, warning);

    const TailPlan plan = planTail(job.tailSeconds, chain, input.sampleRate());
    const std::int64_t renderFrames = input.frames() > 0 ? input.frames() + plan.maxFrames : 0;
    // Each further part of a split chain holds one more chunk; no split
    // passes the buffers' limit.
    std::size_t mostParts = std::max<std::size_t>(chain.size(), 1);
    while (mostParts > 1 && bufferBytes(channels, chunkFrames, kChunksInFlight + static_cast<int>(mostParts) - 1) >
                                kMostBufferBytes)
        --mostParts;
    const std::size_t cores = std::max(1u, std::thread::hardware_concurrency());
    // Asked for (--threads), the split is even in links; by default the first
    // chunk goes through on this thread with each link timed, and the split is
    // chosen from what it cost (see splitByCost), so that a light chain is
    // not split at all and a heavy one is cut where its costs balance.
    const bool splitFromFirstChunk = job.fileThreads && job.chainThreads == 0 && chain.size() > 1 && cores > 1 &&
                                     (renderFrames == 0 || renderFrames > chunkFrames);
    std::vector<ChainPart> parts;
    if (!splitFromFirstChunk) {
        const std::size_t threads =
            job.fileThreads ? chainThreadsFor(job.chainThreads, chain.size(), renderFrames, chunkFrames) : 1;
        parts = splitChain(chain.size(), std::min(threads, mostParts));
    }
    RenderStages stages(channels, chunkFrames, job.blockFrames, mostParts);
    OutputFile output(target, format.format, channels, input.sampleRate(), chunkFrames, input.tags(), job.syncOutput);
    Progress progress(input.frames(), input.sampleRate(), !job.quiet && ::isatty(STDERR_FILENO));
    TailWatch tail(plan);
    std::int64_t inputRead = 0;
    bool inputEnded = false;
    std::int64_t tailFed = 0;
    // The input, then (in the same chunk and after) silence for the tail.
    auto read = [&](float* chunk) -> std::int64_t {
        std::int64_t frames = 0;
        if (!inputEnded) {
            frames = stages.read(input, chunk);
            inputRead += frames;
            if (frames == chunkFrames) return frames;
            inputEnded = true;
            tail.inputEnded(inputRead);
        }
        if (tail.finished()) return frames;
        const std::int64_t fed = std::min(chunkFrames - frames, plan.maxFrames - tailFed);
        stages.silence(chunk, frames, frames + fed);
        tailFed += fed;
        return frames + fed;
    };
    std::int64_t done = 0;
    auto write = [&](const float* chunk, std::int64_t frames) {
        // Chunks read ahead after the tail went quiet are dropped.
        const std::int64_t kept = std::max<std::int64_t>(0, std::min(frames, tail.endFrame() - done));
        if (kept > 0) stages.write(output, chunk, kept);
        done += kept;
    };
    try {
        std::int64_t firstFrames = 0;
        if (splitFromFirstChunk) {
            using Clock = std::chrono::steady_clock;
            auto seconds = [](Clock::time_point from, Clock::time_point to) {
                return std::chrono::duration<double>(to - from).count();
            };
            std::vector<float> first(stages.chunkFloats());
            ChunkCosts costs;
            costs.links.assign(chain.size(), 0.0);
            const Clock::time_point reading = Clock::now();
            firstFrames = read(first.data());
            const Clock::time_point processing = Clock::now();
            stages.processTimed(chain, first.data(), firstFrames, 0, tail, costs.links);
            progress.update(firstFrames);
            const Clock::time_point writing = Clock::now();
            write(first.data(), firstFrames);
            costs.read = seconds(reading, processing);
            costs.write = seconds(writing, Clock::now());
            parts = splitByCost(costs, cores, mostParts);
        }
        if (job.describeChain && !job.quiet && parts.size() > 1)
            std::fprintf(messages, "  split across %zu threads: %s\n", parts.size(), partList(parts).c_str());
        // An input that ended within the measured chunk is done.
        if (!splitFromFirstChunk || firstFrames == chunkFrames) {
            const int chunksInFlight = kChunksInFlight + static_cast<int>(parts.size()) - 1;
            // A render known to fit in one chunk runs on this thread anyway: one buffer is enough.
            const bool overlap = job.fileThreads && !(renderFrames > 0 && renderFrames <= chunkFrames);
            RenderPipeline pipeline(stages.chunkFloats(), chunkFrames, chunksInFlight, overlap);
            // Each part of the chain counts the frames it has passed; the last
            // one follows the tail and shows the progress.
            std::vector<std::int64_t> processed(parts.size(), firstFrames);
            std::vector<RenderPipeline::Processor> processes;
            for (std::size_t index = 0; index < parts.size(); ++index)
                processes.emplace_back([&, index](float* chunk, std::int64_t frames) {
                    stages.process(chain, parts[index], index, chunk, frames, processed[index], tail);
                    processed[index] += frames;
                    if (parts[index].last) progress.update(processed[index]);
                });
            pipeline.run(read, processes, write);
        }
    } catch (...) {
        progress.clear();
        throw;
    }
    progress.clear();
    if (input.frames() > 0 && inputRead < input.frames())
        throw RunError("input '" + job.input + "' ended after " + std::to_string(inputRead) + " of " +
                       std::to_string(input.frames()) + " frames: it is truncated or corrupt");
    chain.finish();
    if (input.isCutOff() && job.strict)
        throw RunError("input '" + job.input + "' is cut off: its header promises more than the file holds");
    const std::uint64_t nonFiniteOut = stages.after().nonFiniteTotal();
    if (nonFiniteOut > 0 && job.strict)
        throw RunError(std::to_string(nonFiniteOut) + " output samples are NaN or infinite (per channel [" +
                       countList(stages.after().nonFinite()) + "]); nothing written");
    output.commit();

    const double wall = progress.elapsedSeconds();
    const double audio = static_cast<double>(done) / input.sampleRate();
    if (!job.quiet)
        std::fprintf(messages, "afx: %s: %lld frames, %u channel%s, %.3f s of audio in %.3f s (%.1fx real time); "
                    "peak dBFS in [%s] out [%s]\n",
                    job.output.c_str(), static_cast<long long>(done), channels, channels == 1 ? "" : "s", audio, wall,
                    wall > 0.0 ? audio / wall : 0.0, peakList(stages.before().peaks()).c_str(),
                    peakList(stages.after().peaks()).c_str());
    const bool anyNonFinite = nonFiniteOut > 0 || stages.before().nonFiniteTotal() > 0;
    if (!job.quiet && anyNonFinite)
        std::fprintf(messages, "afx: NaN or infinite samples in [%s] out [%s]\n",
                     countList(stages.before().nonFinite()).c_str(), countList(stages.after().nonFinite()).c_str());
    if (!job.quiet && !format.note.empty())
        std::fprintf(messages, "afx: written as %s (%s)\n", describeFormat(format.format).c_str(), format.note.c_str());
    if (input.isCutOff())
        warn(report, "input '" + job.input +
                         "' is cut off: its header promises more than the file holds; rendered the " +
                         std::to_string(inputRead) + " frames it has");
    if (nonFiniteOut > 0)
        warn(report, std::to_string(nonFiniteOut) + " output samples are NaN or infinite (per channel [" +
                         countList(stages.after().nonFinite()) + "])" +
                         (output.isInteger() ? ", written as silence in the integer output" : "") +
                         "; --strict makes this an error");
    if (!output.ownerWarning().empty()) warn(report, output.ownerWarning());
    if (output.clippedSamples() > 0)
        warn(report, std::to_string(output.clippedSamples()) +
                         " samples clipped at full scale in the integer output; lower the level "
                         "(e.g. -e volume -p level=-6) or write floats with --float");
    report.audioSeconds = audio;
}

}  // namespace

std::size_t chainThreadsFor(int wanted, std::size_t links, std::int64_t renderFrames, std::int64_t chunkFrames) {
    if (renderFrames > 0 && renderFrames <= chunkFrames) return 1;
    const std::size_t threads = wanted > 0 ? static_cast<std::size_t>(wanted) : 1;
    return std::clamp<std::size_t>(threads, 1, std::max<std::size_t>(links, 1));
}

int render(const RenderJob& job) {
    struct stat inputFileStatus {};
    const OutputTarget target = resolveOutput(job.output, job.overwrite, inputStatus(job.input, inputFileStatus));
    const ModuleHost host(job.modulePath);
    RenderReport report;
    renderTo(job, target, host, report);
    return 0;
}

void render(const RenderJob& job, const ModuleHost& host, RenderReport& report) {
    struct stat inputFileStatus {};
    const OutputTarget target = resolveOutput(job.output, job.overwrite, inputStatus(job.input, inputFileStatus));
    renderTo(job, target, host, report);
}

}  // namespace afx
