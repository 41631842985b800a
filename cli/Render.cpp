#include "Render.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>

#include "AudioFile.h"
#include "Errors.h"
#include "Interleave.h"
#include "ModuleHost.h"
#include "Progress.h"
#include "RenderPipeline.h"

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


// Drives the chain over an interleaved chunk in host blocks, as a host does:
// each block is copied into the channel arrays, metered, processed in place,
// metered and copied back. Its arrays are made once.
class BlockDriver {
public:
    BlockDriver(const Chain& chain, unsigned channels, int blockFrames)
        : chain_(chain), channels_(channels), block_(blockFrames), before_(channels), after_(channels) {
        // Each array starts on a cache line, and the arrays sit a line more
        // than a multiple of 4 KB apart so that they do not evict each other.
        constexpr std::size_t kLine = 64 / sizeof(float);
        const std::size_t stride = (static_cast<std::size_t>(blockFrames) + kLine - 1) / kLine * kLine + kLine;
        storage_.resize(stride * channels + kLine);
        void* start = storage_.data();
        std::size_t room = storage_.size() * sizeof(float);
        std::align(64, sizeof(float), start, room);
        float* first = static_cast<float*>(start);
        for (unsigned c = 0; c < channels; ++c) pointers_.push_back(first + c * stride);
    }

    void run(float* interleaved, std::int64_t frames) {
        float** planes = pointers_.data();
        for (std::int64_t start = 0; start < frames; start += block_) {
            const int count = static_cast<int>(std::min<std::int64_t>(block_, frames - start));
            float* samples = interleaved + start * channels_;
            deinterleave(samples, channels_, count, planes);
            before_.take(planes, count);
            chain_.process(planes, count);
            after_.take(planes, count);
            interleave(planes, channels_, count, samples);
        }
    }

    const PeakMeter& before() const { return before_; }
    const PeakMeter& after() const { return after_; }

private:
    const Chain& chain_;
    unsigned channels_;
    int block_;
    std::vector<float> storage_;
    std::vector<float*> pointers_;
    PeakMeter before_;
    PeakMeter after_;
};
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
    RenderPipeline pipeline(channels, chunkFramesFor(channels, job.blockFrames, job.chunkFrames), kChunksInFlight);
    BlockDriver blocks(chain, channels, job.blockFrames);
    OutputFile output(job.output, format, channels, input.sampleRate(), pipeline.chunkFrames(),
                      job.syncOutput);
    Progress progress(input.frames(), input.sampleRate(), !job.quiet && ::isatty(STDERR_FILENO));
    std::int64_t processed = 0;
    std::int64_t done = 0;
    try {
        done = pipeline.run([&](float* samples, std::int64_t frames) { return input.read(samples, frames); },
                            [&](float* samples, std::int64_t frames) {
                                blocks.run(samples, frames);
                                processed += frames;
                                progress.update(processed);
                            },
                            [&](const float* samples, std::int64_t frames) { output.write(samples, frames); });
    } catch (...) {
        progress.clear();
        throw;
    }
    progress.clear();
    if (input.frames() > 0 && done < input.frames())
        throw RunError("input '" + job.input + "' ended after " + std::to_string(done) + " of " +
                       std::to_string(input.frames()) + " frames: it is truncated or corrupt");
    chain.finish();
    output.commit();

    const double wall = progress.elapsedSeconds();
    const double audio = static_cast<double>(done) / input.sampleRate();
    if (!job.quiet)
        std::printf("afx: %s: %lld frames, %u channel%s, %.3f s of audio in %.3f s (%.1fx real time); "
                    "peak dBFS in [%s] out [%s]\n",
                    job.output.c_str(), static_cast<long long>(done), channels, channels == 1 ? "" : "s", audio, wall,
                    wall > 0.0 ? audio / wall : 0.0, peakList(blocks.before().peaks()).c_str(),
                    peakList(blocks.after().peaks()).c_str());
    if (output.clippedSamples() > 0)
        std::fprintf(stderr,
                     "afx: warning: %llu samples clipped at full scale in the integer output; lower the level "
                     "(e.g. -e volume -p level=-6) or write floats with --float\n",
                     static_cast<unsigned long long>(output.clippedSamples()));
    return 0;
}

}  // namespace afx
