#pragma once
// The commands of afx. Each takes the words after its name and returns the
// exit status; failures are thrown as UsageError or RunError.
#include "CommandLine.h"

namespace afx {

int listCommand(Arguments& arguments, const std::string& modulePath);
int infoCommand(Arguments& arguments, const std::string& modulePath);
int renderCommand(Arguments& arguments, const std::string& modulePath);
int demoCommand(Arguments& arguments, const std::string& modulePath);

// Reads "--module PATH" (or "--module=PATH") if `option` is it; true when consumed.
bool takeModuleOption(const std::string& option, Arguments& arguments, std::string& modulePath);

// Splits "--name=value" into "--name" and puts "value" back in front.
std::string optionWord(Arguments& arguments, std::string& inlineValue);

}  // namespace afx
