// afx render INPUT OUTPUT -e EFFECT [-p NAME=VALUE]... [--set INDEX=NORMALISED]... [options]
// afx render INPUT... -o DIR [--suffix S] [-j N] -e EFFECT ... (a batch)
#include <cstdio>
#include <cstdlib>
#include <string>

#include "Batch.h"
#include "Commands.h"
#include "Errors.h"
#include "Render.h"
#include "Tail.h"

namespace afx {
namespace {

constexpr const char* kRenderHelp =
    "usage: afx render INPUT OUTPUT -e EFFECT [-p NAME=VALUE]... [--set INDEX=NORMALISED]...\n"
    "                  [-e EFFECT ...]... [--bits N | --float | --double] [--block N] [--chunk N]\n"
    "                  [--tail SECONDS] [--strict] [--no-sync] [--threads N] [-y] [--quiet] [--module PATH]\n"
    "                  [--] [INPUT OUTPUT]\n"
    "       afx render INPUT... -o DIR [--suffix S] [-j N] -e EFFECT ... [options]\n"
    "\n"
    "Reads INPUT, runs it through the effects in the order given and writes OUTPUT.\n"
    "Each effect processes in place, block after block, as a host drives it: open,\n"
    "sample rate, block size, resume, parameters, blocks (the last one shorter),\n"
    "suspend, close. Reading, the effects and writing run side by side on separate\n"
    "threads, a few chunks apart. INPUT or OUTPUT '-' is standard input or output.\n"
    "With -o DIR every INPUT is rendered the same way into DIR (a batch).\n"
    "\n"
    "  -e, --effect EFFECT        add an effect to the chain: an identifier from\n"
    "                             'afx list' (any case, e.g. \"Internal Highpass Stereo\")\n"
    "                             or a family name, which takes the variant for\n"
    "                             INPUT's channel count (1, 2, 6 or 16; for other\n"
    "                             counts one mono instance per channel):\n"
    "                             volume, channel-volume, mute, balance, swap-channels,\n"
    "                             fill-left, fill-right, invert, highpass, lowpass,\n"
    "                             bandpass, notch, parametric-eq, bass, treble, delay,\n"
    "                             multitap-delay (balance, swap and fill: stereo only;\n"
    "                             channel-volume: 2, 6 or 16 channels). An identifier\n"
    "                             narrower than INPUT runs as several instances side\n"
    "                             by side when its channels are independent\n"
    "  -p, --param NAME=VALUE     set a parameter of the effect before it, in display\n"
    "                             units (dB, Hz, seconds, %); NAME is the parameter's\n"
    "                             name (case and blanks ignored, so \"delay1\" is\n"
    "                             \"Delay 1\"; NAME#2 is the second of two parameters\n"
    "                             with one name) or its index; decimal values only;\n"
    "                             see 'afx info EFFECT' for names and ranges\n"
    "      --set INDEX=NORMALISED set a parameter of the effect before it to a\n"
    "                             normalised value, passed exactly as typed\n"
    "      --bits 8|16|24|32      write integer samples of that many bits\n"
    "      --float, --double      write 32-bit or 64-bit float samples\n"
    "                             (default: INPUT's samples where OUTPUT's format\n"
    "                             holds them, else the nearest it does, said in the\n"
    "                             summary)\n"
    "      --block N              frames per processing call (default 1024,\n"
    "                             1 <= N <= 1048576)\n"
    "      --chunk N              frames per file read and write (default: about\n"
    "                             256 KB of samples, 1 <= N <= 16777216), rounded up\n"
    "                             to a whole number of blocks; the output does not\n"
    "                             depend on it. The buffers may take 1 GB at most.\n"
    "      --strict               NaN or infinite output samples and a cut-off INPUT\n"
    "                             are errors (nothing is written), not warnings\n"
    "      --tail SECONDS         keep running the effects on silence for SECONDS after\n"
    "                             INPUT ends (0: OUTPUT is exactly as long as INPUT).\n"
    "                             Default: 0, except for chains with a delay, which run\n"
    "                             until their output has stayed below -120 dBFS for\n"
    "                             2 s (the longest echo), at most 30 s\n"
    "      --no-sync              do not wait for OUTPUT to reach the disk before it is\n"
    "                             put in place (saves the final flush, which counts on\n"
    "                             slow disks; a power cut soon after may leave OUTPUT\n"
    "                             empty or partial). By default afx waits.\n"
    "      --threads N            split a chain of several effects across up to N\n"
    "                             threads, each running its part of the chain on one\n"
    "                             chunk while the next part runs on the chunk before.\n"
    "                             By default afx times each effect on the first chunk\n"
    "                             and splits the chain where that makes it faster on\n"
    "                             the cores it has (in a batch with more than one\n"
    "                             worker: no split). 1 keeps the chain on one thread.\n"
    "                             Every effect sees the same blocks, so the output\n"
    "                             does not depend on it\n"
    "  -y, --overwrite            replace an existing OUTPUT file\n"
    "  -q, --quiet                no chain, progress bar or summary; only warnings\n"
    "      --module PATH          the effects module (default: libAudioFilters.so\n"
    "                             beside afx)\n"
    "      --                     the words after it are file names\n"
    "\n"
    "OUTPUT's format follows its extension through libsndfile's table of formats\n"
    "(.wav, .flac, .aiff, .caf, .w64, .rf64, .au, .ogg for Vorbis, .opus, .mp3 and\n"
    "the others it writes; an unknown extension or none is refused). Title, artist\n"
    "and the other texts of INPUT are carried over where the format holds them.\n"
    "Samples pass untouched: float input written as floats is bit for bit what the\n"
    "effects produced; integer output is rounded to the nearest step and clipped at\n"
    "full scale (a warning counts clipped samples).\n"
    "\n"
    "OUTPUT is written to an unnamed file in its folder and put in place only when\n"
    "complete, so a failed or killed render leaves nothing and an existing OUTPUT\n"
    "intact. A replaced file keeps its mode and owner; a link OUTPUT keeps the link\n"
    "and replaces the file it names. A character device or FIFO (e.g. /dev/null)\n"
    "is never replaced: it receives the finished file; a block device or socket is\n"
    "refused.\n"
    "\n"
    "\n"
    "Batches: several INPUTs, each written into DIR under its own name with its\n"
    "extension (so its format) kept, bit for bit what a single render of it gives.\n"
    "  -o, --output-dir DIR       the folder the outputs go to (it must exist)\n"
    "      --suffix S             put S between each name and its extension\n"
    "                             (a.wav -> DIR/aS.wav; S may start with '-')\n"
    "  -j, --jobs N               render N files at once (default: the cores)\n"
    "Every name is checked before any work starts: two INPUTs with one name, an\n"
    "output that is an INPUT, or an existing output without -y is a usage error.\n"
    "The module is loaded once. A file that fails (unreadable, a format that does\n"
    "not fit the chain) does not stop the others; a summary names each failure and\n"
    "its reason. One progress line shows files done, failures and the pace.\n"
    "\n"
    "Exit status: 0 done, 1 a file (in a batch: any file) or the module failed,\n"
    "2 a usage error.\n";

// A count (`what`: "a frame count") from 1 to `most`, said in the error when it lies outside.
long countFor(const std::string& text, const std::string& option, long most, const char* what = "a number") {
    const std::string range = option + " takes " + what + " from 1 to " + std::to_string(most);
    long count = 0;
    try {
        count = parseInteger(text, option);
    } catch (const UsageError&) {
        throw UsageError(range + ", not '" + text + "'");
    }
    if (count < 1 || count > most) throw UsageError(range + ", not " + text);
    return count;
}

long frameCount(const std::string& text, const std::string& option, long most) {
    return countFor(text, option, most, "a frame count");
}

SampleRequest bitsRequest(const std::string& text) {
    const std::string bits = trimBlanks(text);
    if (bits == "8") return SampleRequest::Bits8;
    if (bits == "16") return SampleRequest::Bits16;
    if (bits == "24") return SampleRequest::Bits24;
    if (bits == "32") return SampleRequest::Bits32;
    throw UsageError("--bits takes 8, 16, 24 or 32 (integer samples; --float and --double write floats), not '" +
                     text + "'");
}

// The most files at once (-j) or threads for a chain: above any core count,
// low enough that a slip of the keyboard cannot start a million threads.
constexpr long kMostWorkers = 1024;

}  // namespace

int renderCommand(Arguments& arguments, const std::string& defaultModule) {
    RenderJob job;
    job.modulePath = defaultModule;
    job.describeChain = true;
    std::vector<std::string> paths;
    BatchJob batch;
    bool isBatch = false;
    bool batchOnly = false;  // -j or --suffix was given
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
            job.blockFrames = static_cast<int>(frameCount(arguments.valueFor(word), "--block", kMostBlockFrames));
        } else if (word == "--chunk") {
            job.chunkFrames = frameCount(arguments.valueFor(word), "--chunk", kMostChunkFrames);
        } else if (word == "--tail") {
            const std::string text = arguments.valueFor(word);
            char* end = nullptr;
            const double seconds = std::strtod(text.c_str(), &end);
            if (text.empty() || *end != '\0' || !(seconds >= 0.0) || seconds > kLongestTailSeconds * 100.0)
                throw UsageError("--tail must be a number of seconds, 0 or more (up to 3000)");
            job.tailSeconds = seconds;
        } else if (word == "--bits") {
            job.samples = bitsRequest(arguments.valueFor(word));
        } else if (word == "--double") {
            job.samples = SampleRequest::Double;
        } else if (word == "--strict") {
            job.strict = true;
        } else if (word == "--no-sync") {
            job.syncOutput = false;
        } else if (word == "--float") {
            job.samples = SampleRequest::Float;
        } else if (word == "--threads") {
            job.chainThreads = static_cast<int>(countFor(arguments.valueFor(word), "--threads", kMostWorkers));
        } else if (word == "-o" || word == "--output-dir") {
            batch.folder = arguments.valueFor(word);
            isBatch = true;
        } else if (word == "--suffix") {
            // Taken as typed: a suffix such as "-hp" is no option.
            if (arguments.done()) throw UsageError("option --suffix needs a value (see afx --help)");
            batch.suffix = arguments.take();
            if (batch.suffix.find('/') != std::string::npos)
                throw UsageError("--suffix '" + batch.suffix + "' holds a '/'; the outputs stay in the -o folder");
            batchOnly = true;
        } else if (word == "-j" || word == "--jobs") {
            batch.workers = static_cast<int>(countFor(arguments.valueFor(word), "-j", kMostWorkers));
            batchOnly = true;
        } else if (word == "-y" || word == "--overwrite" || word == "--yes") {
            job.overwrite = true;
        } else if (word == "-q" || word == "--quiet") {
            job.quiet = true;
        } else if (word == "--") {
            // Everything after "--" is a file name, even when it starts with '-'.
            while (!arguments.done()) paths.push_back(arguments.take());
        } else if (looksLikeOption(word)) {
            throw UsageError("unknown option '" + word + "' for render (see afx render --help)");
        } else {
            paths.push_back(word);
        }
    }
    if (isBatch) {
        if (job.effects.empty()) throw UsageError("render needs at least one -e EFFECT (see afx render --help)");
        batch.render = job;
        batch.inputs = paths;
        return renderBatch(batch);
    }
    if (batchOnly) throw UsageError("-j and --suffix are for batches: add -o DIR (see afx render --help)");
    if (paths.size() < 2) throw UsageError("render needs INPUT and OUTPUT (see afx render --help)");
    if (paths.size() > 2) throw UsageError("render takes one INPUT and one OUTPUT; unexpected '" + paths[2] +
                                          "' (several INPUTs need -o DIR)");
    if (job.effects.empty()) throw UsageError("render needs at least one -e EFFECT (see afx render --help)");
    job.input = paths[0];
    job.output = paths[1];
    return render(job);
}

}  // namespace afx
