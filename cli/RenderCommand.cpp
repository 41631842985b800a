// afx render INPUT OUTPUT -e EFFECT [-p NAME=VALUE]... [--set INDEX=NORMALISED]... [options]
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "Commands.h"
#include "Errors.h"
#include "Render.h"
#include "Tail.h"

namespace afx {
namespace {

constexpr const char* kRenderHelp =
    "usage: afx render INPUT OUTPUT -e EFFECT [-p NAME=VALUE]... [--set INDEX=NORMALISED]...\n"
    "                  [-e EFFECT ...]... [--block N] [--chunk N] [--tail SECONDS] [--float]\n"
    "                  [--no-sync] [-y]\n"
    "                  [--quiet] [--module PATH]\n"
    "\n"
    "Reads INPUT, runs it through the effects in the order given and writes OUTPUT.\n"
    "Each effect processes in place, block after block, as a host drives it: open,\n"
    "sample rate, block size, resume, parameters, blocks (the last one shorter),\n"
    "suspend, close. OUTPUT is written to a hidden file beside it and renamed only\n"
    "when the render is complete, so a failed or interrupted render leaves no\n"
    "partial file and an existing OUTPUT intact. Reading, the effects and writing\n"
    "run side by side on separate threads, a few chunks apart.\n"
    "\n"
    "  -e, --effect EFFECT        add an effect to the chain: an identifier from\n"
    "                             'afx list' (any case, e.g. \"Internal Highpass Stereo\")\n"
    "                             or a family name, which takes the variant for\n"
    "                             INPUT's channel count (1, 2, 6 or 16):\n"
    "                             volume, channel-volume, mute, balance, swap-channels,\n"
    "                             fill-left, fill-right, invert, highpass, lowpass,\n"
    "                             bandpass, notch, parametric-eq, bass, treble, delay,\n"
    "                             multitap-delay (balance, swap and fill: stereo only)\n"
    "  -p, --param NAME=VALUE     set a parameter of the effect before it, in display\n"
    "                             units (dB, Hz, seconds, %); NAME is the parameter's\n"
    "                             name (case and blanks ignored) or its index; see\n"
    "                             'afx info EFFECT' for names and ranges\n"
    "      --set INDEX=NORMALISED set a parameter of the effect before it to a\n"
    "                             normalised value, passed exactly as typed\n"
    "      --block N              frames per processing call (default 1024, N >= 1)\n"
    "      --chunk N              frames per file read and write (default: about\n"
    "                             256 KB of samples), rounded up to a whole number of\n"
    "                             blocks; the output does not depend on it\n"
    "      --tail SECONDS         keep running the effects on silence for SECONDS after\n"
    "                             INPUT ends (0: OUTPUT is exactly as long as INPUT).\n"
    "                             Default: 0, except for chains with a delay, which run\n"
    "                             until their output has stayed below -120 dBFS for\n"
    "                             2 s (the longest echo), at most 30 s\n"
    "      --float                write 32-bit float samples (default: INPUT's format)\n"
    "      --no-sync              do not wait for OUTPUT to reach the disk before it is\n"
    "                             renamed (saves the final flush, which counts on slow\n"
    "                             disks; a power cut soon after may leave OUTPUT empty\n"
    "                             or partial). By default afx waits.\n"
    "  -y, --overwrite            replace an existing OUTPUT\n"
    "  -q, --quiet                no progress bar and no summary line\n"
    "      --module PATH          the effects module (default: libAudioFilters.so\n"
    "                             beside afx)\n"
    "\n"
    "OUTPUT's container follows its extension (.wav, .aiff, .flac, .caf, .w64, .au,\n"
    ".ogg as Vorbis) or else INPUT's. Samples pass untouched: float input written\n"
    "with --float is bit for bit what the effects produced; integer output is\n"
    "rounded to the nearest step and clipped at full scale (a warning counts\n"
    "clipped samples).\n"
    "\n"
    "Exit status: 0 done, 1 a file or the module failed, 2 a usage error.\n";

}  // namespace

int renderCommand(Arguments& arguments, const std::string& defaultModule) {
    RenderJob job;
    job.modulePath = defaultModule;
    std::vector<std::string> paths;
    while (!arguments.done()) {
        std::string inlineValue;
        const std::string word = optionWord(arguments, inlineValue);
        if (word == "--help" || word == "-h") {
            std::fputs(kRenderHelp, stdout);
            return 0;
        }
        if (takeModuleOption(word, arguments, job.modulePath)) continue;
        if (word == "-e" || word == "--effect") {
            job.effects.push_back({arguments.valueFor(word), {}});
        } else if (word == "-p" || word == "--param" || word == "--set") {
            const std::string assignment = arguments.valueFor(word);
            if (job.effects.empty()) throw UsageError(word + " " + assignment + " must follow the -e EFFECT it sets");
            ParameterRequest request;
            request.normalised = word == "--set";
            splitAssignment(assignment, word, request.parameter, request.value);
            job.effects.back().parameters.push_back(request);
        } else if (word == "--block" || word == "-b") {
            const long frames = parseInteger(arguments.valueFor(word), "--block");
            if (frames < 1 || frames > INT_MAX) throw UsageError("--block must be a frame count of at least 1");
            job.blockFrames = static_cast<int>(frames);
        } else if (word == "--chunk") {
            const long frames = parseInteger(arguments.valueFor(word), "--chunk");
            if (frames < 1 || frames > INT_MAX) throw UsageError("--chunk must be a frame count of at least 1");
            job.chunkFrames = frames;
        } else if (word == "--tail") {
            const std::string text = arguments.valueFor(word);
            char* end = nullptr;
            const double seconds = std::strtod(text.c_str(), &end);
            if (text.empty() || *end != '\0' || !(seconds >= 0.0) || seconds > kLongestTailSeconds * 100.0)
                throw UsageError("--tail must be a number of seconds, 0 or more (up to 3000)");
            job.tailSeconds = seconds;
        } else if (word == "--no-sync") {
            job.syncOutput = false;
        } else if (word == "--float") {
            job.asFloat = true;
        } else if (word == "-y" || word == "--overwrite" || word == "--yes") {
            job.overwrite = true;
        } else if (word == "-q" || word == "--quiet") {
            job.quiet = true;
        } else if (looksLikeOption(word)) {
            throw UsageError("unknown option '" + word + "' for render (see afx render --help)");
        } else {
            paths.push_back(word);
        }
    }
    if (paths.size() < 2) throw UsageError("render needs INPUT and OUTPUT (see afx render --help)");
    if (paths.size() > 2) throw UsageError("render takes one INPUT and one OUTPUT; unexpected '" + paths[2] + "'");
    if (job.effects.empty()) throw UsageError("render needs at least one -e EFFECT (see afx render --help)");
    job.input = paths[0];
    job.output = paths[1];
    return render(job);
}

}  // namespace afx
