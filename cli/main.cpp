// afx: the reference host of the AudioFilters module on the command line.
#include <algorithm>
#include <cstdio>
#include <new>
#include <string>
#include <vector>

#include "Commands.h"
#include "EffectNames.h"
#include "Errors.h"
#include "ModuleHost.h"
#include "ValidateCommand.h"

namespace afx {
namespace {

constexpr const char* kHelp =
    "usage: afx [--module PATH] COMMAND [options]\n"
    "\n"
    "Loads the AudioFilters effects module as a host application does and\n"
    "renders audio files through its effects.\n"
    "\n"
    "commands:\n"
    "  list [--json]                      every registered effect\n"
    "  info EFFECT [--rate HZ] [--json]   parameters, ranges and defaults of one effect\n"
    "  render INPUT OUTPUT -e EFFECT [-p NAME=VALUE]... [-e EFFECT ...]... [options]\n"
    "                                     INPUT through a chain of effects into OUTPUT\n"
    "  demo [OUTPUT]                      the bundled example through a default chain\n"
    "  validate [EFFECT...] [--level N] [--seed N] [--json]\n"
    "                                     checks every effect against crashes, allocation,\n"
    "                                     subnormals, non-finite output and nondeterminism\n"
    "  help [COMMAND]                     this text, or the usage of one command\n"
    "\n"
    "options:\n"
    "  --module PATH  the effects module (default: libAudioFilters.so beside afx)\n"
    "  -h, --help     this text; 'afx help COMMAND' describes each command\n"
    "  --version      the program's version\n"
    "\n"
    "Exit status: 0 done, 1 a file or the module failed, 2 a usage error.\n";

constexpr const char* kCommands = "list, info, render, demo and validate";

int run(std::vector<std::string> words) {
    Arguments arguments(std::move(words));
    std::string modulePath = ModuleHost::defaultModulePath();
    while (!arguments.done()) {
        std::string inlineValue;
        const std::string word = optionWord(arguments, inlineValue);
        if (word == "--help" || word == "-h" || word == "help") {
            // "afx help COMMAND" is "afx COMMAND --help".
            if (word == "help" && !arguments.done() && !looksLikeOption(arguments.peek())) {
                const std::string command = arguments.take();
                return run({command, "--help"});
            }
            std::fputs(kHelp, stdout);
            return 0;
        }
        if (word == "--version") {
            std::printf("afx 0.1.0\n");
            return 0;
        }
        if (takeModuleOption(word, arguments, modulePath)) continue;
        if (word == "list") return listCommand(arguments, modulePath);
        if (word == "info") return infoCommand(arguments, modulePath);
        if (word == "render") return renderCommand(arguments, modulePath);
        if (word == "demo") return demoCommand(arguments, modulePath);
        if (word == "validate") {
            // The validator reads its own options; afx's module comes first so that
            // a --module after the command still wins.
            std::vector<std::string> rest = {"--module", modulePath};
            while (!arguments.done()) rest.push_back(arguments.take());
            afv::CommandStyle style;
            style.program = "afx";
            style.helpCommand = "afx validate --help";
            // A family name stands for every variant of the family.
            style.identifiersFor = [](const std::string& name) {
                std::vector<std::string> identifiers;
                if (const Family* family = findFamily(name))
                    for (unsigned channels : {1u, 2u, 6u, 16u}) {
                        const std::string identifier = familyIdentifier(*family, channels);
                        if (!identifier.empty()) identifiers.push_back(identifier);
                    }
                return identifiers;
            };
            return afv::runValidateCommand(rest, style);
        }
        throw UsageError((looksLikeOption(word) ? "unknown option '" : "unknown command '") + word +
                         "'; commands are " + kCommands + " (see afx --help)");
    }
    throw UsageError(std::string("no command given; commands are ") + kCommands + " (see afx --help)");
}

}  // namespace

bool takeModuleOption(const std::string& option, Arguments& arguments, std::string& modulePath) {
    if (option != "--module" && option != "-m") return false;
    modulePath = arguments.valueFor(option);
    return true;
}

namespace {

// Short options that take a value ("-evolume" is "-e volume") and those that
// do not ("-yq" is "-y -q").
bool takesValue(char letter) {
    return letter == 'e' || letter == 'p' || letter == 'm' || letter == 'b' || letter == 'o' || letter == 'j';
}
bool isFlag(char letter) { return letter == 'y' || letter == 'q' || letter == 'h'; }

}  // namespace

std::string optionWord(Arguments& arguments, std::string& inlineValue) {
    std::string word = arguments.take();
    if (word.size() > 2 && word[0] == '-' && word[1] != '-' && looksLikeOption(word)) {
        if (takesValue(word[1])) {
            arguments.pushFront(word.substr(2));
            return word.substr(0, 2);
        }
        const bool allFlags = std::all_of(word.begin() + 1, word.end(), isFlag);
        if (allFlags) {
            for (std::size_t i = word.size() - 1; i >= 2; --i) arguments.pushFront(std::string("-") + word[i]);
            return word.substr(0, 2);
        }
    }
    const std::size_t equals = word.find('=');
    if (word.rfind("--", 0) == 0 && equals != std::string::npos) {
        inlineValue = word.substr(equals + 1);
        word.erase(equals);
        arguments.pushFront(inlineValue);
    }
    return word;
}

}  // namespace afx

int main(int argc, char** argv) {
    std::vector<std::string> words(argv + 1, argv + argc);
    try {
        return afx::run(std::move(words));
    } catch (const afx::UsageError& error) {
        std::fprintf(stderr, "afx: error: %s\n", error.what());
        return afx::kExitUsage;
    } catch (const afx::RunError& error) {
        std::fprintf(stderr, "afx: error: %s\n", error.what());
        return afx::kExitRunFailure;
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "afx: error: out of memory (try a smaller --block)\n");
        return afx::kExitRunFailure;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "afx: error: %s\n", error.what());
        return afx::kExitRunFailure;
    }
}
