#pragma once
// Helpers for the bridge tests: where the built bridges are, float WAV files,
// running the real hosts (FFmpeg, SoX, lv2file, the LADSPA and LV2 tools),
// and the reference: the same effect made through the module's factory
// (aftest::HostEffect) and driven directly with the same parameters and the
// same block partition.
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/Buffers.h"
#include "support/HostFixture.h"

namespace bridgetest {

using aftest::Channels;

// build/bin (the LADSPA plug-in beside the module) and build/lv2 (the bundle).
std::string ladspaFolder();
std::string ladspaLibrary();
std::string lv2Folder();
std::string lv2Binary();
// A fresh folder for one test's files.
std::string scratchFolder(const std::string& name);

// An external program found on PATH; false when it is missing.
bool haveTool(const std::string& tool);
// Fails the calling test with a message naming the Debian package when a tool is missing.
#define REQUIRE_TOOL(tool, package)                                                                          \
    do {                                                                                                     \
        if (!::bridgetest::haveTool(tool)) {                                                                 \
            FAIL() << "the tool '" << (tool) << "' is missing: apt-get install -y " << (package);            \
        }                                                                                                    \
    } while (0)

struct CommandResult {
    int status = -1;      // exit status, 128 + signal when killed, -1 when not run
    std::string output;   // standard output and standard error together
};
// Runs `command` with sh, with the bridges' search paths set (LADSPA_PATH,
// LV2_PATH) and, in sanitizer builds, the sanitizer runtimes preloaded.
CommandResult runCommand(const std::string& command);
std::string shellQuoted(const std::string& text);

// 32-bit float WAV files.
struct Wav {
    int rate = 0;
    Channels channels;
};
bool writeFloatWav(const std::string& path, const Wav& wav);
std::optional<Wav> readFloatWav(const std::string& path, std::string& why);

// One control in display units, by the effect's parameter index.
using Setting = std::pair<int, float>;

// The reference: `identifier` made by the module's factory, started at `rate`
// with the bridges' block size, each setting converted with
// ConvertDisplayValueToParameter and set, then the audio processed in place
// in the successive blocks of `blocks`. Null when the module does not make that effect.
std::optional<Channels> renderDirect(const std::string& identifier, double rate, const std::vector<Setting>& settings,
                                     const Channels& input, const std::vector<int>& blocks);
// Every control of a case, by index.
std::vector<Setting> settingsOf(const std::vector<float>& controls);

// Partition of `frames` into blocks of `blockSize` and a shorter rest.
std::vector<int> partition(int frames, int blockSize);

// The LADSPA port name of parameter `index`: "Cutoff (Hz)".
std::string expectedPortName(aftest::HostEffect& fx, int index);
// The range the bridges declare to hosts for parameter `index` of a started effect.
std::pair<double, double> hostRange(aftest::HostEffect& fx, unsigned index);

// Whether the module makes the effect registered under `identifier`.
bool effectAvailable(const std::string& identifier);

}  // namespace bridgetest
