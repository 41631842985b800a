#pragma once
// Where a host finds the effects module. A program and a plug-in library (a
// bridge another application loads) look in the same places, relative to the
// binary their own code lives in.
#include <string>
#include <vector>

namespace hostkit {

// The module's file name.
inline constexpr const char* kModuleFile = "libAudioFilters.so";
// The environment variable that names the module, overriding every other place.
inline constexpr const char* kModulePathVariable = "AF_MODULE_PATH";

// The folder, with a trailing slash, of the binary holding `address`: the
// program itself (its real path) or the shared library the address lies in.
// "./" when it cannot be told.
std::string folderOf(const void* address);

// libAudioFilters.so in the folder of the binary holding `address`.
std::string moduleBeside(const void* address);

// Every place a plug-in library or program at `address` looks, in order:
//   1. the file named by AF_MODULE_PATH, when set and not empty (and then no other);
//   2. libAudioFilters.so in the binary's own folder;
//   3. ../audiofilters/libAudioFilters.so from that folder (the installed layout:
//      lib/ladspa/ beside lib/audiofilters/).
std::vector<std::string> moduleCandidates(const void* address);

// The first candidate that exists and is readable, else the last one (so that
// the load error names a place that was looked in).
std::string locateModule(const void* address);

}  // namespace hostkit
