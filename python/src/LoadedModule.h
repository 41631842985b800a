#pragma once
// The one place the extension reaches the effects module: it is loaded once per
// process from the package's own folder, the way every host loads it, and stays
// loaded until the process ends (effects made from it may outlive any object).
#include <string>

#include "ModuleHost.h"

namespace audiofilters {

// The folder the extension was loaded from, with a trailing slash; the module
// and the platform library live there.
std::string packageFolder();

// The loaded module; loads it on the first call. Throws afx::RunError when it cannot be loaded.
const afx::ModuleHost& loadedModule();

}  // namespace audiofilters
