#pragma once
// A plug-in record of the entry's own, put in front of an effect's record.
//
// The effect's record stays exactly as the module made it. The host sees this
// one instead: it carries the plug-in file's unique id and version and answers
// the effect's name, vendor, product, vendor version and category; every other
// call goes through to the effect's record unchanged, and the effect's calls to
// the host come back with this record in place of its own.
#include <string>

#include "AEffect.h"

namespace AFVst2 {

struct Identity {
    std::string pluginName;  // "Highpass Stereo"
    VstInt32 uniqueId = 0;
};

// Puts a front record before `inner` (made with hostCallback() as its callback)
// for a host with callback `host`; null if no more effects can be tracked.
// The front and the effect end together with the host's close request.
AEffect* presentInFront(AEffect* inner, const Identity& identity, audioMasterCallback host);

// The callback to give the effects this entry makes: it passes each call on to
// the right host with that host's record.
audioMasterCallback hostCallback();

}  // namespace AFVst2
