#include "Render.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>

#include "AudioFile.h"
#include "Errors.h"
#include "ModuleHost.h"
#include "Progress.h"
#include "RenderPipeline.h"
#include "RenderStages.h"

namespace afx {
namespace {

// Chunks in the pipeline at once: one being read, one processed, one
// written, and one spare so that no stage waits for a slot in the steady state.
constexpr int kChunksInFlight = 4;

// Refuses what would lose data before anything is loaded or written.
void checkPaths(const RenderJob& job) {
    struct stat inputStatus {};
    if (::stat(job.input.c_str(), &inputStatus) != 0)
        throw RunError("cannot read input '" + job.input + "': no such file");
    struct stat outputStatus {};
    if (::stat(job.output.c_str(), &outputStatus) == 0) {
        if (outputStatus.st_dev == inputStatus.st_dev && outputStatus.st_ino == inputStatus.st_ino)
            throw UsageError("INPUT and OUTPUT are the same file '" + job.output +
                             "'; write to another file and rename it afterwards");
        if (S_ISDIR(outputStatus.st_mode))
            throw UsageError("OUTPUT '" + job.output + "' is a folder; name a file");
        if (!job.overwrite)
            throw UsageError("OUTPUT '" + job.output + "' exists; add -y to overwrite it");
    }
}

void describe(const Chain& chain) {
    for (std::size_t link = 0; link < chain.size(); ++link) {
        std::printf("  %zu. %s", link + 1, chain.identifier(link).c_str());
        for (const AppliedParameter& parameter : chain.applied(link))
            std::printf("%s %s = %s%s%s", &parameter == &chain.applied(link).front() ? ":" : ",",
                        parameter.name.c_str(), parameter.display.c_str(), parameter.label.empty() ? "" : " ",
                        parameter.label.c_str());
        std::printf("\n");
    }
}

std::string peakList(const std::vector<float>& peaks) {
    std::string text;
    for (float peak : peaks) {
        if (!text.empty()) text += ' ';
        text += decibelsFullScale(peak);
    }
    return text;
}


}  // namespace

int render(const RenderJob& job) {
    checkPaths(job);
    ModuleHost host(job.modulePath);
    InputFile input(job.input);
    const unsigned channels = input.channels();
    const int format = outputFormat(job.output, input.format(), job.asFloat);
    Chain chain(host, job.effects, channels, input.sampleRate(), job.blockFrames);
    if (job.describeChain && !job.quiet) describe(chain);

    // Every buffer is made here, once: the blocks allocate nothing.
    const std::int64_t chunkFrames = chunkFramesFor(channels, job.blockFrames, job.chunkFrames, input.frames());
    RenderStages stages(channels, chunkFrames, job.blockFrames);
    RenderPipeline pipeline(stages.chunkFloats(), chunkFrames, kChunksInFlight);
    OutputFile output(job.output, format, channels, input.sampleRate(), chunkFrames, job.syncOutput);
    Progress progress(input.frames(), input.sampleRate(), !job.quiet && ::isatty(STDERR_FILENO));
    const TailPlan plan = planTail(job.tailSeconds, chain, input.sampleRate());
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
    std::int64_t processed = 0;
    std::int64_t done = 0;
    try {
        pipeline.run(read,
                     [&](float* chunk, std::int64_t frames) {
                         stages.process(chain, chunk, frames, processed, tail);
                         processed += frames;
                         progress.update(processed);
                     },
                     [&](const float* chunk, std::int64_t frames) {
                         // Chunks read ahead after the tail went quiet are dropped.
                         const std::int64_t kept = std::max<std::int64_t>(0, std::min(frames, tail.endFrame() - done));
                         if (kept > 0) stages.write(output, chunk, kept);
                         done += kept;
                     });
    } catch (...) {
        progress.clear();
        throw;
    }
    progress.clear();
    if (input.frames() > 0 && inputRead < input.frames())
        throw RunError("input '" + job.input + "' ended after " + std::to_string(inputRead) + " of " +
                       std::to_string(input.frames()) + " frames: it is truncated or corrupt");
    chain.finish();
    output.commit();

    const double wall = progress.elapsedSeconds();
    const double audio = static_cast<double>(done) / input.sampleRate();
    if (!job.quiet)
        std::printf("afx: %s: %lld frames, %u channel%s, %.3f s of audio in %.3f s (%.1fx real time); "
                    "peak dBFS in [%s] out [%s]\n",
                    job.output.c_str(), static_cast<long long>(done), channels, channels == 1 ? "" : "s", audio, wall,
                    wall > 0.0 ? audio / wall : 0.0, peakList(stages.before().peaks()).c_str(),
                    peakList(stages.after().peaks()).c_str());
    if (output.clippedSamples() > 0)
        std::fprintf(stderr,
                     "afx: warning: %llu samples clipped at full scale in the integer output; lower the level "
                     "(e.g. -e volume -p level=-6) or write floats with --float\n",
                     static_cast<unsigned long long>(output.clippedSamples()));
    return 0;
}

}  // namespace afx
