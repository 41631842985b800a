#include "Lowpass.h"

#include <new>

namespace AF {

AudioLowpass::AudioLowpass(unsigned channels, audioMasterCallback audioMaster) : CascadeFamily(channels, audioMaster) {}
AudioLowpass::~AudioLowpass() = default;

template class CutFilterVariant<AudioLowpass, 1>;
AudioLowpass1::AudioLowpass1(audioMasterCallback audioMaster) : CutFilterVariant(audioMaster) {}
AudioLowpass1::~AudioLowpass1() = default;

template class CutFilterVariant<AudioLowpass, 2>;
AudioLowpass2::AudioLowpass2(audioMasterCallback audioMaster) : CutFilterVariant(audioMaster) {}
AudioLowpass2::~AudioLowpass2() = default;

template class CutFilterVariant<AudioLowpass, 6>;
AudioLowpass6::AudioLowpass6(audioMasterCallback audioMaster) : CutFilterVariant(audioMaster) {}
AudioLowpass6::~AudioLowpass6() = default;

template class CutFilterVariant<AudioLowpass, 16>;
AudioLowpass16::AudioLowpass16(audioMasterCallback audioMaster) : CutFilterVariant(audioMaster) {}
AudioLowpass16::~AudioLowpass16() = default;

}  // namespace AF
