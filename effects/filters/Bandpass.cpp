#include "Bandpass.h"

namespace AF {

AudioBandpass::AudioBandpass(unsigned channels, audioMasterCallback audioMaster) : SectionFamily(channels, audioMaster) {}
AudioBandpass::~AudioBandpass() = default;

template class CutFilterChannels<AudioBandpass, 1>;
template class CutFilterChannels<AudioBandpass, 2>;
template class CutFilterChannels<AudioBandpass, 6>;
template class CutFilterChannels<AudioBandpass, 16>;

}  // namespace AF
