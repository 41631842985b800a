#include "Batch.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <new>
#include <system_error>
#include <thread>

#include "BatchProgress.h"
#include "Errors.h"
#include "OutputTarget.h"

namespace afx {
namespace {

void checkFolder(const std::string& folder) {
    struct stat status {};
    if (folder.empty()) throw UsageError("-o takes a folder; the name is empty");
    if (::stat(folder.c_str(), &status) != 0)
        throw UsageError("cannot use the folder '" + folder + "' of -o: " + std::strerror(errno));
    if (!S_ISDIR(status.st_mode)) throw UsageError("-o takes a folder; '" + folder + "' is not one");
}

bool sameFile(const struct stat& a, const struct stat& b) { return a.st_dev == b.st_dev && a.st_ino == b.st_ino; }

// Every output's name, checked as a single render checks its OUTPUT, and
// against the other files of the batch.
std::vector<std::string> plannedOutputs(const BatchJob& job) {
    checkFolder(job.folder);
    std::vector<std::string> outputs;
    std::map<std::string, std::size_t> firstInputFor;
    std::map<std::string, std::size_t> firstInputReaching;  // by the file a name reaches, links followed
    std::vector<struct stat> inputStatus(job.inputs.size());
    std::vector<bool> inputExists(job.inputs.size(), false);
    for (std::size_t i = 0; i < job.inputs.size(); ++i) {
        const std::string& input = job.inputs[i];
        if (input == "-")
            throw UsageError("a batch reads files; for standard input use the single form 'afx render - OUTPUT'");
        // An input that cannot be read fails on its own turn, with its reason.
        inputExists[i] = ::stat(input.c_str(), &inputStatus[i]) == 0;
        const std::string output = batchOutputName(input, job.folder, job.suffix);
        const auto [named, added] = firstInputFor.emplace(output, i);
        if (!added)
            throw UsageError("inputs '" + job.inputs[named->second] + "' and '" + input +
                             "' would both be written to '" + output +
                             "'; rename one, or render them in separate batches or with another --suffix");
        const OutputTarget target =
            resolveOutput(output, job.render.overwrite, inputExists[i] ? &inputStatus[i] : nullptr);
        // Two names may be links to one file.
        const auto [reached, first] = firstInputReaching.emplace(target.path.empty() ? output : target.path, i);
        if (!first)
            throw UsageError("inputs '" + job.inputs[reached->second] + "' and '" + input +
                             "' would both be written to '" + reached->first +
                             "' (through a link); rename one, or render them in separate batches");
        outputs.push_back(output);
    }
    // No output may replace an input of the batch, which another worker may be reading.
    for (const std::string& output : outputs) {
        struct stat status {};
        if (::stat(output.c_str(), &status) != 0) continue;
        for (std::size_t i = 0; i < job.inputs.size(); ++i)
            if (inputExists[i] && sameFile(status, inputStatus[i]))
                throw UsageError("the output '" + output + "' is the input '" + job.inputs[i] +
                                 "'; choose another folder or a --suffix");
    }
    return outputs;
}

struct FileOutcome {
    bool rendered = false;
    std::string reason;
};

}  // namespace

std::string batchOutputName(const std::string& input, const std::string& folder, const std::string& suffix) {
    const std::size_t slash = input.rfind('/');
    const std::string name = slash == std::string::npos ? input : input.substr(slash + 1);
    // A leading dot starts a hidden name, not an extension.
    const std::size_t dot = name.rfind('.');
    const bool hasExtension = dot != std::string::npos && dot > 0;
    const std::string stem = hasExtension ? name.substr(0, dot) : name;
    const std::string extension = hasExtension ? name.substr(dot) : "";
    const std::string prefix = !folder.empty() && folder.back() == '/' ? folder : folder + "/";
    return prefix + stem + suffix + extension;
}

int renderBatch(const BatchJob& job) {
    if (job.inputs.empty()) throw UsageError("render -o DIR needs at least one INPUT (see afx render --help)");
    const std::vector<std::string> outputs = plannedOutputs(job);
    const ModuleHost host(job.render.modulePath);

    const std::size_t cores = std::max(1u, std::thread::hardware_concurrency());
    const std::size_t workers =
        std::min(job.workers > 0 ? static_cast<std::size_t>(job.workers) : cores, job.inputs.size());
    RenderJob shared = job.render;
    // The files already keep the cores busy: unless a split chain is asked
    // for, each file is read, processed and written on its worker's thread.
    if (workers > 1 && shared.chainThreads <= 1) shared.fileThreads = false;
    shared.quiet = true;
    shared.describeChain = false;

    BatchProgress progress(job.inputs.size(), !job.render.quiet && ::isatty(STDERR_FILENO));
    std::vector<FileOutcome> outcomes(job.inputs.size());
    std::atomic<std::size_t> next{0};
    auto work = [&] {
        for (std::size_t index = next.fetch_add(1); index < job.inputs.size(); index = next.fetch_add(1)) {
            RenderJob file = shared;
            file.input = job.inputs[index];
            file.output = outputs[index];
            RenderReport report;
            report.keepWarnings = true;
            FileOutcome& outcome = outcomes[index];
            try {
                render(file, host, report);
                outcome.rendered = true;
            } catch (const std::bad_alloc&) {
                outcome.reason = "out of memory";
            } catch (const std::exception& error) {
                outcome.reason = error.what();
            }
            for (const std::string& warning : report.warnings)
                progress.say("afx: warning: " + file.input + ": " + warning);
            progress.fileFinished(!outcome.rendered, report.audioSeconds);
        }
    };
    std::vector<std::thread> threads;
    try {
        while (threads.size() + 1 < workers) threads.emplace_back(work);
    } catch (const std::system_error&) {
        // Fewer threads than asked: the ones there are share the files.
    }
    work();
    for (std::thread& thread : threads) thread.join();
    progress.clear();

    const double wall = progress.elapsedSeconds();
    const double audio = progress.audioSeconds();
    if (!job.render.quiet)
        std::printf(
            "afx: %zu file%s into %s: %zu done, %zu failed; %.3f s of audio in %.3f s (%.1fx real time, "
            "%.1f files/s, %zu worker%s)\n",
            job.inputs.size(), job.inputs.size() == 1 ? "" : "s", job.folder.c_str(), progress.done(),
            progress.failed(), audio, wall, wall > 0.0 ? audio / wall : 0.0,
            wall > 0.0 ? static_cast<double>(job.inputs.size()) / wall : 0.0, workers, workers == 1 ? "" : "s");
    std::fflush(stdout);
    for (std::size_t i = 0; i < outcomes.size(); ++i)
        if (!outcomes[i].rendered)
            std::fprintf(stderr, "afx: error: %s: %s\n", job.inputs[i].c_str(), outcomes[i].reason.c_str());
    return progress.failed() > 0 ? kExitRunFailure : 0;
}

}  // namespace afx
