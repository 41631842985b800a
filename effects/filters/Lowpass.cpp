#include "Lowpass.h"

namespace AF {

AudioLowpass::AudioLowpass(unsigned channels, audioMasterCallback audioMaster) : CascadeFamily(channels, audioMaster) {}
AudioLowpass::~AudioLowpass() = default;

template class CutFilterChannels<AudioLowpass, 1>;
template class CutFilterChannels<AudioLowpass, 2>;
template class CutFilterChannels<AudioLowpass, 6>;
template class CutFilterChannels<AudioLowpass, 16>;

// Each variant defines its constructor and destructor here, so the module exports them under its own name.
AudioLowpass1::AudioLowpass1(audioMasterCallback audioMaster) : ChannelVariant(audioMaster) {} AudioLowpass1::~AudioLowpass1() = default;
AudioLowpass2::AudioLowpass2(audioMasterCallback audioMaster) : ChannelVariant(audioMaster) {} AudioLowpass2::~AudioLowpass2() = default;
AudioLowpass6::AudioLowpass6(audioMasterCallback audioMaster) : ChannelVariant(audioMaster) {} AudioLowpass6::~AudioLowpass6() = default;
AudioLowpass16::AudioLowpass16(audioMasterCallback audioMaster) : ChannelVariant(audioMaster) {} AudioLowpass16::~AudioLowpass16() = default;

}  // namespace AF
