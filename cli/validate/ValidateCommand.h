#pragma once
// The `validate` command: loads the module as a host does (dlopen, then
// AF::Startup registers its effects), validates every registered effect or
// the ones named, prints the report and answers the exit status (0 only when
// every check passed, 2 for a usage or loading error).
//
//   validate [EFFECT...] [--seed N] [--level 1..10] [--json] [--module PATH]
//            [--jobs N] [--timeout SECONDS]
#include <string>
#include <vector>

#include "Validator.h"

namespace afv {

// `arguments` are the words after the command name.
int runValidateCommand(const std::vector<std::string>& arguments);
std::string validateUsage();

// Loads the module at `path` and answers a maker per registration, in
// registration order; on failure answers nothing and sets `error`.
std::vector<EffectMaker> loadModuleEffects(const std::string& path, std::string& error);
// The module beside the running program.
std::string defaultModulePath();

}  // namespace afv
