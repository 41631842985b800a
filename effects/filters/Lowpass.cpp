#include "Lowpass.h"

#include <new>

#include "host/Factory.h"

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

AudioEffect* createLowpass(unsigned channels, audioMasterCallback audioMaster) {
    switch (channels) {
        case 1: return new (std::nothrow) AudioLowpass1(audioMaster);
        case 2: return new (std::nothrow) AudioLowpass2(audioMaster);
        case 6: return new (std::nothrow) AudioLowpass6(audioMaster);
        case 16: return new (std::nothrow) AudioLowpass16(audioMaster);
        default: return nullptr;
    }
}

}  // namespace AF
