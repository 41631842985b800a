#include "Highpass.h"

namespace AF {

AudioHighpass::AudioHighpass(unsigned channels, audioMasterCallback audioMaster) : CascadeFamily(channels, audioMaster) {}
AudioHighpass::~AudioHighpass() = default;

template class CutFilterChannels<AudioHighpass, 1>;
template class CutFilterChannels<AudioHighpass, 2>;
template class CutFilterChannels<AudioHighpass, 6>;
template class CutFilterChannels<AudioHighpass, 16>;

// Each variant defines its constructor and destructor here, so the module exports them under its own name.
AudioHighpass1::AudioHighpass1(audioMasterCallback audioMaster) : ChannelVariant(audioMaster) {} AudioHighpass1::~AudioHighpass1() = default;
AudioHighpass2::AudioHighpass2(audioMasterCallback audioMaster) : ChannelVariant(audioMaster) {} AudioHighpass2::~AudioHighpass2() = default;
AudioHighpass6::AudioHighpass6(audioMasterCallback audioMaster) : ChannelVariant(audioMaster) {} AudioHighpass6::~AudioHighpass6() = default;
AudioHighpass16::AudioHighpass16(audioMasterCallback audioMaster) : ChannelVariant(audioMaster) {} AudioHighpass16::~AudioHighpass16() = default;

}  // namespace AF
