// afx demo: the bundled example through a small mastering-style chain.
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <string>

#include "Commands.h"
#include "Errors.h"
#include "Render.h"

namespace afx {
namespace {

constexpr const char* kDemoHelp =
    "usage: afx demo [OUTPUT] [--quiet] [--module PATH]\n"
    "\n"
    "Renders the bundled example (examples/afx-demo-input.wav, 2.5 s of stereo\n"
    "16-bit audio) through highpass 80 Hz -> parametric EQ (+4 dB at 2500 Hz) ->\n"
    "delay (0.25 s, 35 % feedback, 30 % mix) -> volume +2 dB, lets the echoes\n"
    "die away after the input, and writes OUTPUT (default afx-demo.wav in the\n"
    "current folder, replaced if present).\n"
    "\n"
    "  -q, --quiet        print nothing but errors\n"
    "      --module PATH  the effects module (default: libAudioFilters.so beside afx)\n";

constexpr const char* kDemoInputName = "afx-demo-input.wav";

bool isFile(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

// Beside the program first (the build copies it there), then the source tree.
std::string findDemoInput() {
    char exe[PATH_MAX] = {};
    const ssize_t length = ::readlink("/proc/self/exe", exe, sizeof exe - 1);
    if (length > 0) {
        std::string folder(exe, static_cast<std::size_t>(length));
        folder = folder.substr(0, folder.rfind('/'));
        const std::string candidate = folder + "/examples/" + kDemoInputName;
        if (isFile(candidate)) return candidate;
        const std::string installed = folder + "/" AFX_INSTALLED_DATA_DIR "/" + kDemoInputName;
        if (isFile(installed)) return installed;
    }
    const std::string source = std::string(AFX_EXAMPLES_DIR) + "/" + kDemoInputName;
    if (isFile(source)) return source;
    throw RunError(std::string("cannot find the demo input ") + kDemoInputName +
                   " (beside afx in examples/, or in " AFX_EXAMPLES_DIR ")");
}

}  // namespace

int demoCommand(Arguments& arguments, const std::string& defaultModule) {
    RenderJob job;
    job.modulePath = defaultModule;
    job.output = "afx-demo.wav";
    job.overwrite = true;
    job.describeChain = true;
    bool outputGiven = false;
    while (!arguments.done()) {
        std::string inlineValue;
        const std::string word = optionWord(arguments, inlineValue);
        if (word == "--help" || word == "-h") {
            std::fputs(kDemoHelp, stdout);
            return 0;
        }
        if (takeModuleOption(word, arguments, job.modulePath)) continue;
        if (word == "-q" || word == "--quiet") {
            job.quiet = true;
        } else if (looksLikeOption(word)) {
            throw UsageError("unknown option '" + word + "' for demo (see afx demo --help)");
        } else if (!outputGiven) {
            job.output = word;
            outputGiven = true;
        } else {
            throw UsageError("demo takes at most one OUTPUT; unexpected '" + word + "'");
        }
    }
    job.input = findDemoInput();
    job.effects = {
        {"highpass", {{false, "Cutoff", "80"}}},
        {"parametric-eq", {{false, "Center", "2500"}, {false, "Boost", "4"}}},
        {"delay", {{false, "Delay", "0.25"}, {false, "Feedback", "35"}, {false, "Mix", "30"}}},
        {"volume", {{false, "Level", "2"}}},
    };
    if (!job.quiet) std::printf("afx demo: %s -> %s through\n", job.input.c_str(), job.output.c_str());
    return render(job);
}

}  // namespace afx
