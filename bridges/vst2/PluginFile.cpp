// One VST 2 plug-in file: the entry points a host looks up, for the variant
// this file was built for (AF_VST2_IDENTIFIER, AF_VST2_NAME, AF_VST2_UNIQUE_ID,
// given by the build from the variant table).
#include "Entry.h"

#define AF_VST2_PLUGIN_API extern "C" __attribute__((visibility("default")))

namespace {

AEffect* openThisVariant(audioMasterCallback host) {
    return AudioFiltersVst2Open(AF_VST2_IDENTIFIER, AF_VST2_NAME, fourCharCode(AF_VST2_UNIQUE_ID), host);
}

}  // namespace

AF_VST2_PLUGIN_API AEffect* VSTPluginMain(audioMasterCallback host) { return openThisVariant(host); }

// Older hosts look the entry up as "main"; a C++ function cannot carry that
// name, so the symbol is given to it explicitly.
AF_VST2_PLUGIN_API AEffect* legacyMain(audioMasterCallback host) __asm__("main");
AF_VST2_PLUGIN_API AEffect* legacyMain(audioMasterCallback host) { return openThisVariant(host); }
