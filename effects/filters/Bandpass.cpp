#include "Bandpass.h"

namespace AF {

AudioBandpass::AudioBandpass(unsigned channels, audioMasterCallback audioMaster) : SectionFamily(channels, audioMaster) {}
AudioBandpass::~AudioBandpass() = default;

template class CutFilterChannels<AudioBandpass, 1>;
template class CutFilterChannels<AudioBandpass, 2>;
template class CutFilterChannels<AudioBandpass, 6>;
template class CutFilterChannels<AudioBandpass, 16>;

// Each variant defines its constructor and destructor here, so the module exports them under its own name.
AudioBandpass1::AudioBandpass1(audioMasterCallback audioMaster) : ChannelVariant(audioMaster) {} AudioBandpass1::~AudioBandpass1() = default;
AudioBandpass2::AudioBandpass2(audioMasterCallback audioMaster) : ChannelVariant(audioMaster) {} AudioBandpass2::~AudioBandpass2() = default;
AudioBandpass6::AudioBandpass6(audioMasterCallback audioMaster) : ChannelVariant(audioMaster) {} AudioBandpass6::~AudioBandpass6() = default;
AudioBandpass16::AudioBandpass16(audioMasterCallback audioMaster) : ChannelVariant(audioMaster) {} AudioBandpass16::~AudioBandpass16() = default;

}  // namespace AF
