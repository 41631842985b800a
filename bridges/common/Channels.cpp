#include "Channels.h"

namespace AFBridge {

namespace {

struct NamedRole {
    const char* name;
    const char* symbol;
    const char* designation;
};

constexpr NamedRole kMono[] = {{"Mono", "mono", "pg:center"}};
constexpr NamedRole kStereo[] = {{"Left", "left", "pg:left"}, {"Right", "right", "pg:right"}};
// Buffer order of the 5.1 variants; the filters treat index 3 as the LFE.
constexpr NamedRole kFivePointOne[] = {
    {"Left", "left", "pg:left"},          {"Right", "right", "pg:right"},
    {"Center", "center", "pg:center"},    {"LFE", "lfe", "pg:lowFrequencyEffects"},
    {"Left Surround", "left_surround", "pg:rearLeft"}, {"Right Surround", "right_surround", "pg:rearRight"},
};

}  // namespace

ChannelRole channelRole(int channels, int channel) {
    const NamedRole* table = nullptr;
    if (channels == 1) table = kMono;
    if (channels == 2) table = kStereo;
    if (channels == 6) table = kFivePointOne;
    if (table != nullptr && channel >= 0 && channel < channels) {
        return {table[channel].name, table[channel].symbol, table[channel].designation};
    }
    return {"Channel " + std::to_string(channel + 1), "ch" + std::to_string(channel + 1), nullptr};
}

const char* channelGroupClass(int channels) {
    switch (channels) {
        case 1: return "pg:MonoGroup";
        case 2: return "pg:StereoGroup";
        case 6: return "pg:FivePointOneGroup";
        default: return "pg:DiscreteGroup";
    }
}

}  // namespace AFBridge
