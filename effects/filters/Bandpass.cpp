#include "Bandpass.h"

#include <new>

#include "host/Factory.h"

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

AudioEffect* createBandpass(unsigned channels, audioMasterCallback audioMaster) {
    switch (channels) {
        case 1: return new (std::nothrow) AudioBandpass1(audioMaster);
        case 2: return new (std::nothrow) AudioBandpass2(audioMaster);
        case 6: return new (std::nothrow) AudioBandpass6(audioMaster);
        case 16: return new (std::nothrow) AudioBandpass16(audioMaster);
        default: return nullptr;
    }
}

}  // namespace AF
