#pragma once
// What a VST 2 plug-in file asks of the shared entry library: an effect of one
// registered variant, presented under the file's own name and unique id.
// The library is loaded once per process however many plug-in files a host
// opens, so the module behind it is started once too.
#include "AEffect.h"

#define AF_VST2_ENTRY_API __attribute__((visibility("default")))

extern "C" {

// Makes the variant registered as `identifier` for a host with callback `host`
// and returns the record the host drives, or null when the module cannot be
// loaded or makes no such effect. `uniqueId` and `pluginName` are the file's.
AF_VST2_ENTRY_API AEffect* AudioFiltersVst2Open(const char* identifier, const char* pluginName, VstInt32 uniqueId,
                                                audioMasterCallback host);
}
