#pragma once
// The `validate` command: loads the module as a host does (dlopen, then
// AF::Startup registers its effects), validates every registered effect or
// the ones named, prints the report and answers the exit status (0 only when
// every check passed, 1 when a check failed or the module does not load, 2
// for a usage error; every error is one line "<program>: error: ...").
//
//   validate [EFFECT...] [--seed N] [--level 1..10] [--json] [--module PATH]
//            [--jobs N] [--timeout SECONDS]
#include <functional>
#include <string>
#include <vector>

#include "Validator.h"

namespace afv {

// How the command speaks for the program that runs it.
struct CommandStyle {
    std::string program = "afx-validate";   // in "<program>: error: ..."
    std::string helpCommand = "afx-validate --help";
    // Identifiers a name that is not one may stand for (a family name); none by default.
    std::function<std::vector<std::string>(const std::string&)> identifiersFor;
};

// `arguments` are the words after the command name.
int runValidateCommand(const std::vector<std::string>& arguments, const CommandStyle& style = {});
std::string validateUsage();

// Loads the module at `path` and answers a maker per registration, in
// registration order; on failure answers nothing and sets `error`.
std::vector<EffectMaker> loadModuleEffects(const std::string& path, std::string& error);
// The module beside the running program.
std::string defaultModulePath();

}  // namespace afv
