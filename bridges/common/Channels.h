#pragma once
// The role of each audio buffer of a variant, as hosts name and route them.
// The 5.1 variants take their buffers in the order L, R, C, LFE, Ls, Rs (the
// order of 5.1 WAV and FLAC files); sixteen channels are plain discrete ones.
#include <string>

namespace AFBridge {

struct ChannelRole {
    std::string name;         // "Left", "LFE", "Channel 7"
    std::string symbol;       // "left", "lfe", "ch7"
    const char* designation;  // the LV2 port-groups channel, or null for a discrete channel
};

ChannelRole channelRole(int channels, int channel);
// The LV2 port-groups class of a variant's audio ports ("pg:StereoGroup").
const char* channelGroupClass(int channels);

}  // namespace AFBridge
