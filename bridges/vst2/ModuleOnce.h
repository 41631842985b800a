#pragma once
// The effects module as the VST 2 entry sees it: loaded from beside the entry
// library and started the first time any plug-in file needs it, once per process.
#include "AEffect.h"
#include "ML/VSTPropertySupportMixin.h"

namespace AFVst2 {

// The record of a new effect of the registered variant `identifier`, made
// through the registry's factory with `host` as its callback; null when the
// module is missing or knows no such variant (the reason goes to stderr once).
AEffect* createRegisteredEffect(const char* identifier, audioMasterCallback host);

}  // namespace AFVst2
