#pragma once
// The validator's core: checks that an effect survives whatever a host or a
// user throws at it, driven only through its AEffect record and property
// interface.
//
//   lifecycle    create, open, every sample rate and block size with suspend and
//                resume between blocks, close; twenty create/close cycles
//   parameters   every index from -1 to numParams + 1 with extreme values; names,
//                labels, displays and program names into guarded 64-byte texts;
//                every property call; program changes
//   audio        every test signal, in place and with separate buffers, both
//                processing entry points, random block sizes and parameter
//                changes between blocks; nothing written past the frame count
//   finite       finite input at in-range parameters gives finite output (the
//                effect's own divergences are listed as documented behaviour)
//   denormals    no subnormal output once a signal has been followed by 1 s of silence
//   determinism  two fresh instances fed the same calls give the same bits
//   timing       silence after a signal costs at most 3x noise per sample
//   allocation   no heap traffic inside processReplacing, process or setParameter
//
// Each check of each effect can run in a forked child, so a crash, a sanitizer
// report or a stall is reported with the case that caused it and hides nothing else.
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "AEffect.h"
#include "ML/VSTPropertySupportMixin.h"

namespace afv {

// Makes a new instance of one effect for the given host callback and stores its
// property interface (or null); answers the instance's record, or null.
using MakeEffect = std::function<AEffect*(audioMasterCallback master, ML::VSTPropertySupportMixin** properties)>;

struct EffectMaker {
    std::string identifier;
    MakeEffect make;
};

// Create is reported alone, instead of the others, when the factory makes nothing.
enum class Check { Lifecycle, Parameters, Audio, Finite, Denormals, Determinism, Timing, Allocation, Create };
inline constexpr Check kAllChecks[] = {Check::Lifecycle, Check::Parameters,  Check::Audio,  Check::Finite,
                                       Check::Denormals, Check::Determinism, Check::Timing, Check::Allocation};
const char* checkName(Check check);

struct Options {
    std::uint64_t seed = 1;
    int level = 5;        // 1 (quick) .. 10 (thorough)
    int jobs = 2;         // children running at once (isolated runs)
    double timeoutSeconds = 0;  // per check and effect; 0 picks one from the level
};

struct CheckResult {
    std::string effect;
    Check check = Check::Lifecycle;
    bool passed = false;
    std::string detail;                   // the first failing case, or empty
    std::vector<std::string> documented;  // behaviour the effect shows by design
};

// Runs every check on each effect in this process, one after the other.
std::vector<CheckResult> validateInProcess(const std::vector<EffectMaker>& effects, const Options& options);
// Runs each check of each effect in a child process of its own.
std::vector<CheckResult> validateIsolated(const std::vector<EffectMaker>& effects, const Options& options);

struct Tally {
    int passed = 0;
    int failed = 0;
};
Tally tally(const std::vector<CheckResult>& results);

// One line per effect and check, documented behaviour under it, then the
// line "N passed, N failed".
std::string formatText(const std::vector<CheckResult>& results, double seconds);
std::string formatJson(const std::vector<CheckResult>& results, double seconds, const Options& options);

}  // namespace afv
