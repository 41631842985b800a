#include "Lowpass.h"

namespace AF {

AudioLowpass::AudioLowpass(unsigned channels, audioMasterCallback audioMaster) : CascadeFamily(channels, audioMaster) {}
AudioLowpass::~AudioLowpass() = default;

template class CutFilterChannels<AudioLowpass, 1>;
template class CutFilterChannels<AudioLowpass, 2>;
template class CutFilterChannels<AudioLowpass, 6>;
template class CutFilterChannels<AudioLowpass, 16>;

}  // namespace AF
