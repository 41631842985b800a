#include "Bandpass.h"

#include <new>

namespace AF {

AudioBandpass::AudioBandpass(unsigned channels, audioMasterCallback audioMaster) : SectionFamily(channels, audioMaster) {}
AudioBandpass::~AudioBandpass() = default;

template class CutFilterVariant<AudioBandpass, 1>;
AudioBandpass1::AudioBandpass1(audioMasterCallback audioMaster) : CutFilterVariant(audioMaster) {}
AudioBandpass1::~AudioBandpass1() = default;

template class CutFilterVariant<AudioBandpass, 2>;
AudioBandpass2::AudioBandpass2(audioMasterCallback audioMaster) : CutFilterVariant(audioMaster) {}
AudioBandpass2::~AudioBandpass2() = default;

template class CutFilterVariant<AudioBandpass, 6>;
AudioBandpass6::AudioBandpass6(audioMasterCallback audioMaster) : CutFilterVariant(audioMaster) {}
AudioBandpass6::~AudioBandpass6() = default;

template class CutFilterVariant<AudioBandpass, 16>;
AudioBandpass16::AudioBandpass16(audioMasterCallback audioMaster) : CutFilterVariant(audioMaster) {}
AudioBandpass16::~AudioBandpass16() = default;

}  // namespace AF
