#include "Highpass.h"

namespace AF {

AudioHighpass::AudioHighpass(unsigned channels, audioMasterCallback audioMaster) : CascadeFamily(channels, audioMaster) {}
AudioHighpass::~AudioHighpass() = default;

template class CutFilterChannels<AudioHighpass, 1>;
template class CutFilterChannels<AudioHighpass, 2>;
template class CutFilterChannels<AudioHighpass, 6>;
template class CutFilterChannels<AudioHighpass, 16>;

}  // namespace AF
