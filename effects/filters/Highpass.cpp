#include "Highpass.h"

#include <new>

namespace AF {

AudioHighpass::AudioHighpass(unsigned channels, audioMasterCallback audioMaster) : CascadeFamily(channels, audioMaster) {}
AudioHighpass::~AudioHighpass() = default;

template class CutFilterVariant<AudioHighpass, 1>;
AudioHighpass1::AudioHighpass1(audioMasterCallback audioMaster) : CutFilterVariant(audioMaster) {}
AudioHighpass1::~AudioHighpass1() = default;

template class CutFilterVariant<AudioHighpass, 2>;
AudioHighpass2::AudioHighpass2(audioMasterCallback audioMaster) : CutFilterVariant(audioMaster) {}
AudioHighpass2::~AudioHighpass2() = default;

template class CutFilterVariant<AudioHighpass, 6>;
AudioHighpass6::AudioHighpass6(audioMasterCallback audioMaster) : CutFilterVariant(audioMaster) {}
AudioHighpass6::~AudioHighpass6() = default;

template class CutFilterVariant<AudioHighpass, 16>;
AudioHighpass16::AudioHighpass16(audioMasterCallback audioMaster) : CutFilterVariant(audioMaster) {}
AudioHighpass16::~AudioHighpass16() = default;

}  // namespace AF
