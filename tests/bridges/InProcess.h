#pragma once
// The bridges loaded into the test program the way a LADSPA or LV2 host loads
// them (dlopen, the descriptor function), and one instance driven with caller
// buffers: the host's side of both plug-in standards, written from their headers.
#include <ladspa.h>
#include <lv2/core/lv2.h>

#include <string>
#include <vector>

#include "support/Buffers.h"

namespace bridgetest {

using aftest::Channels;

// Every descriptor the LADSPA bridge offers, in index order; empty (and
// `error` set) when the library cannot be loaded.
struct LadspaLibrary {
    static const LadspaLibrary& Get();
    std::string error;
    std::vector<const LADSPA_Descriptor*> descriptors;
    const LADSPA_Descriptor* find(const std::string& label) const;
};

struct Lv2Library {
    static const Lv2Library& Get();
    std::string error;
    std::string bundle;
    std::vector<const LV2_Descriptor*> descriptors;
    const LV2_Descriptor* find(const std::string& uri) const;
};

// How the host hands over its audio buffers.
enum class Buffers {
    kSeparate,   // distinct input and output arrays
    kInPlace,    // each output is its own input
    kCrossed,    // output c is input c+1 (mod channels): a host reusing buffers crosswise
};

// Instantiates, connects (controls as given, in port order), activates, runs
// the blocks of `blocks` and cleans up. Returns the outputs; `ok` false when
// instantiate answered null.
Channels runLadspa(const LADSPA_Descriptor& descriptor, unsigned long rate, const std::vector<float>& controls,
                   const Channels& input, const std::vector<int>& blocks, Buffers buffers, bool& ok);
Channels runLv2(const LV2_Descriptor& descriptor, double rate, const std::vector<float>& controls,
                const Channels& input, const std::vector<int>& blocks, Buffers buffers, bool& ok);

}  // namespace bridgetest
