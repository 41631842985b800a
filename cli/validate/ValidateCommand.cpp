#include "ValidateCommand.h"

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
    return "usage: validate [EFFECT...] [--seed N] [--level 1..10] [--json] [--module PATH] [--jobs N] "
           "[--timeout SECONDS]\n"
           "  EFFECT   a registry identifier such as \"Internal Highpass Stereo\" (default: every registered effect)\n"
           "  --seed   seed of every random choice (default 1); a failing case names it\n"
           "  --level  thoroughness against time (default 5)\n"
           "  --json   print the report as JSON\n"
           "  --module the module to load (default: libAudioFilters.so beside this program)\n"
           "  --jobs   checks run at once, each in a child process (default 2)\n"
           "  --timeout seconds after which a check counts as stalled (default 60 + 30 x level)\n";
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

int runValidateCommand(const std::vector<std::string>& arguments) {
    Options options;
    bool json = false;
    std::string modulePath;
    std::vector<std::string> names;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& word = arguments[i];
        auto value = [&](long long low, long long high, long long& out) {
            if (i + 1 >= arguments.size() || !parseNumber(arguments[i + 1], low, high, out)) {
                std::fprintf(stderr, "validate: %s needs a number from %lld to %lld\n%s", word.c_str(), low, high,
                             validateUsage().c_str());
                return false;
            }
            ++i;
            return true;
        };
        long long number = 0;
        if (word == "--help" || word == "-h") {
            std::fputs(validateUsage().c_str(), stdout);
            return 0;
        } else if (word == "--json") {
            json = true;
        } else if (word == "--seed") {
            if (!value(0, 9223372036854775807LL, number)) return 2;
            options.seed = static_cast<std::uint64_t>(number);
        } else if (word == "--level") {
            if (!value(1, 10, number)) return 2;
            options.level = static_cast<int>(number);
        } else if (word == "--jobs") {
            if (!value(1, 64, number)) return 2;
            options.jobs = static_cast<int>(number);
        } else if (word == "--timeout") {
            if (!value(1, 86400, number)) return 2;
            options.timeoutSeconds = static_cast<double>(number);
        } else if (word == "--module") {
            if (i + 1 >= arguments.size()) {
                std::fprintf(stderr, "validate: --module needs a path\n%s", validateUsage().c_str());
                return 2;
            }
            modulePath = arguments[++i];
        } else if (!word.empty() && word[0] == '-') {
            std::fprintf(stderr, "validate: unknown option %s\n%s", word.c_str(), validateUsage().c_str());
            return 2;
        } else {
            names.push_back(word);
        }
    }
    if (modulePath.empty()) modulePath = defaultModulePath();
    std::string error;
    std::vector<EffectMaker> registered = loadModuleEffects(modulePath, error);
    if (registered.empty()) {
        std::fprintf(stderr, "validate: %s\n", error.c_str());
        return 2;
    }
    std::vector<EffectMaker> chosen;
    if (names.empty()) {
        chosen = registered;
    } else {
        for (const std::string& name : names) {
            bool found = false;
            for (const EffectMaker& maker : registered) {
                if (maker.identifier == name) {
                    chosen.push_back(maker);
                    found = true;
                    break;
                }
            }
            if (!found) {
                std::fprintf(stderr, "validate: no registered effect is called \"%s\"\n", name.c_str());
                return 2;
            }
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
