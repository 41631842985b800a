#pragma once
// The module's exported entry points. A host calls AF::Startup once after
// loading the module; it registers every variant with the host's registry.
#include "Export.h"

namespace AF {

// Registers the 55 variants, in table order, each with the module's factory.
AF_EXPORT void Startup();
// Exported for symmetry; unregisters nothing.
AF_EXPORT void Shutdown();

}  // namespace AF
