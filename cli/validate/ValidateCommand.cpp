#include "ValidateCommand.h"

#include <cctype>
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "hostkit/Module.h"

namespace afv {
namespace {

bool parseNumber(const std::string& text, long long low, long long high, long long& value) {
    char* end = nullptr;
    const long long parsed = std::strtoll(text.c_str(), &end, 10);
    if (text.empty() || end == nullptr || *end != '\0' || parsed < low || parsed > high) return false;
    value = parsed;
    return true;
}

}  // namespace

std::string validateUsage() {
    return "usage: afx validate [EFFECT...] [--seed N] [--level 1..10] [--json] [--module PATH] [--jobs N] "
           "[--timeout SECONDS]\n"
           "  EFFECT   an identifier such as \"Internal Highpass Stereo\" (any case) or, in afx, a family name\n"
           "           such as highpass, which means all its variants (default: every registered effect)\n"
           "  --seed   seed of every random choice (default 1); a failing case names it\n"
           "  --level  thoroughness against time (default 5)\n"
           "  --json   print the report as JSON\n"
           "  --module the module to load (default: libAudioFilters.so beside this program)\n"
           "  --jobs   checks run at once, each in a child process (default 2)\n"
           "  --timeout seconds after which a check counts as stalled (default 60 + 30 x level)\n"
           "\n"
           "Exit status: 0 every check passed, 1 a check failed or the module did not load, 2 a usage error.\n";
}

std::string defaultModulePath() { return hostkit::moduleBeside(reinterpret_cast<const void*>(&parseNumber)); }

std::vector<EffectMaker> loadModuleEffects(const std::string& path, std::string& error) {
    const hostkit::Module module = hostkit::Module::Load(path);
    if (!module.loaded()) {
        error = module.error();
        return {};
    }
    std::vector<EffectMaker> effects;
    for (const hostkit::Registration& registration : module.registrations()) {
        EffectMaker maker;
        maker.identifier = registration.id.c_str();
        // The validator owns the records it is given: the handle lets go of them.
        maker.make = [registration](audioMasterCallback master, ML::VSTPropertySupportMixin** properties) {
            hostkit::Effect effect = hostkit::createEffect(registration, master);
            *properties = effect.properties();
            return effect.release();
        };
        effects.push_back(std::move(maker));
    }
    if (effects.empty()) error = path + " registered no effect";
    return effects;
}

namespace {

bool sameIgnoringCase(const std::string& a, const std::string& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    return true;
}

}  // namespace

int runValidateCommand(const std::vector<std::string>& arguments, const CommandStyle& style) {
    auto fail = [&](int status, const std::string& message) {
        std::fprintf(stderr, "%s: error: %s\n", style.program.c_str(), message.c_str());
        return status;
    };
    const std::string seeHelp = " (see " + style.helpCommand + ")";
    Options options;
    bool json = false;
    std::string modulePath;
    std::vector<std::string> names;
    bool onlyNames = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& word = arguments[i];
        bool valid = true;
        auto value = [&](long long low, long long high, long long& out) {
            if (i + 1 >= arguments.size() || !parseNumber(arguments[i + 1], low, high, out)) {
                valid = false;
                return false;
            }
            ++i;
            return true;
        };
        long long number = 0;
        if (onlyNames) {
            names.push_back(word);
        } else if (word == "--") {
            onlyNames = true;
        } else if (word == "--help" || word == "-h") {
            std::fputs(validateUsage().c_str(), stdout);
            return 0;
        } else if (word == "--json") {
            json = true;
        } else if (word == "--seed") {
            if (value(0, 9223372036854775807LL, number)) options.seed = static_cast<std::uint64_t>(number);
        } else if (word == "--level") {
            if (value(1, 10, number)) options.level = static_cast<int>(number);
        } else if (word == "--jobs") {
            if (value(1, 64, number)) options.jobs = static_cast<int>(number);
        } else if (word == "--timeout") {
            if (value(1, 86400, number)) options.timeoutSeconds = static_cast<double>(number);
        } else if (word == "--module") {
            if (i + 1 >= arguments.size()) return fail(2, "option --module needs a value" + seeHelp);
            modulePath = arguments[++i];
        } else if (!word.empty() && word[0] == '-') {
            return fail(2, "unknown option '" + word + "' for validate" + seeHelp);
        } else {
            names.push_back(word);
        }
        if (!valid) {
            const char* range = word == "--level" ? "1 to 10" : word == "--jobs" ? "1 to 64"
                                : word == "--timeout" ? "1 to 86400" : "0 to 9223372036854775807";
            return fail(2, "option " + word + " needs a whole number from " + range + seeHelp);
        }
    }
    if (modulePath.empty()) modulePath = defaultModulePath();
    std::string error;
    std::vector<EffectMaker> registered = loadModuleEffects(modulePath, error);
    if (registered.empty()) return fail(1, error);
    std::vector<EffectMaker> chosen;
    if (names.empty()) {
        chosen = registered;
    } else {
        for (const std::string& name : names) {
            // The identifier itself (any case), else what the name stands for.
            std::vector<std::string> wanted = {name};
            if (style.identifiersFor) {
                const std::vector<std::string> more = style.identifiersFor(name);
                wanted.insert(wanted.end(), more.begin(), more.end());
            }
            bool found = false;
            for (const EffectMaker& maker : registered)
                for (const std::string& identifier : wanted)
                    if (sameIgnoringCase(maker.identifier, identifier)) {
                        chosen.push_back(maker);
                        found = true;
                        break;
                    }
            if (!found) return fail(2, "no registered effect is called '" + name + "'" + seeHelp);
        }
    }
    const auto begin = std::chrono::steady_clock::now();
    const std::vector<CheckResult> results = validateIsolated(chosen, options);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    const std::string report = json ? formatJson(results, seconds, options) : formatText(results, seconds);
    std::fputs(report.c_str(), stdout);
    std::fflush(stdout);
    return tally(results).failed == 0 ? 0 : 1;
}

}  // namespace afv
