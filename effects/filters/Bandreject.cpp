#include "Bandreject.h"

namespace AF {

AudioBandreject::AudioBandreject(unsigned channels, audioMasterCallback audioMaster) : SectionFamily(channels, audioMaster) {}
AudioBandreject::~AudioBandreject() = default;

template class CutFilterChannels<AudioBandreject, 1>;
template class CutFilterChannels<AudioBandreject, 2>;
template class CutFilterChannels<AudioBandreject, 6>;
template class CutFilterChannels<AudioBandreject, 16>;

}  // namespace AF
