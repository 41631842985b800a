#include "Bandreject.h"

#include <new>

namespace AF {

AudioBandreject::AudioBandreject(unsigned channels, audioMasterCallback audioMaster) : SectionFamily(channels, audioMaster) {}
AudioBandreject::~AudioBandreject() = default;

template class CutFilterVariant<AudioBandreject, 1>;
AudioBandreject1::AudioBandreject1(audioMasterCallback audioMaster) : CutFilterVariant(audioMaster) {}
AudioBandreject1::~AudioBandreject1() = default;

template class CutFilterVariant<AudioBandreject, 2>;
AudioBandreject2::AudioBandreject2(audioMasterCallback audioMaster) : CutFilterVariant(audioMaster) {}
AudioBandreject2::~AudioBandreject2() = default;

template class CutFilterVariant<AudioBandreject, 6>;
AudioBandreject6::AudioBandreject6(audioMasterCallback audioMaster) : CutFilterVariant(audioMaster) {}
AudioBandreject6::~AudioBandreject6() = default;

template class CutFilterVariant<AudioBandreject, 16>;
AudioBandreject16::AudioBandreject16(audioMasterCallback audioMaster) : CutFilterVariant(audioMaster) {}
AudioBandreject16::~AudioBandreject16() = default;

}  // namespace AF
