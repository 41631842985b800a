#include "Bandreject.h"

namespace AF {

AudioBandreject::AudioBandreject(unsigned channels, audioMasterCallback audioMaster) : SectionFamily(channels, audioMaster) {}
AudioBandreject::~AudioBandreject() = default;

template class CutFilterChannels<AudioBandreject, 1>;
template class CutFilterChannels<AudioBandreject, 2>;
template class CutFilterChannels<AudioBandreject, 6>;
template class CutFilterChannels<AudioBandreject, 16>;

// Each variant defines its constructor and destructor here, so the module exports them under its own name.
AudioBandreject1::AudioBandreject1(audioMasterCallback audioMaster) : ChannelVariant(audioMaster) {} AudioBandreject1::~AudioBandreject1() = default;
AudioBandreject2::AudioBandreject2(audioMasterCallback audioMaster) : ChannelVariant(audioMaster) {} AudioBandreject2::~AudioBandreject2() = default;
AudioBandreject6::AudioBandreject6(audioMasterCallback audioMaster) : ChannelVariant(audioMaster) {} AudioBandreject6::~AudioBandreject6() = default;
AudioBandreject16::AudioBandreject16(audioMasterCallback audioMaster) : ChannelVariant(audioMaster) {} AudioBandreject16::~AudioBandreject16() = default;

}  // namespace AF
