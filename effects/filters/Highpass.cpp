#include "Highpass.h"

#include <new>

#include "host/Factory.h"

namespace AF {

AudioHighpass::AudioHighpass(unsigned channels, audioMasterCallback audioMaster) : CascadeFamily(channels, audioMaster) {}
AudioHighpass::~AudioHighpass() = default;

template class CascadeVariant<AudioHighpass, 1>;
AudioHighpass1::AudioHighpass1(audioMasterCallback audioMaster) : CascadeVariant(audioMaster) {}
AudioHighpass1::~AudioHighpass1() = default;

template class CascadeVariant<AudioHighpass, 2>;
AudioHighpass2::AudioHighpass2(audioMasterCallback audioMaster) : CascadeVariant(audioMaster) {}
AudioHighpass2::~AudioHighpass2() = default;

template class CascadeVariant<AudioHighpass, 6>;
AudioHighpass6::AudioHighpass6(audioMasterCallback audioMaster) : CascadeVariant(audioMaster) {}
AudioHighpass6::~AudioHighpass6() = default;

template class CascadeVariant<AudioHighpass, 16>;
AudioHighpass16::AudioHighpass16(audioMasterCallback audioMaster) : CascadeVariant(audioMaster) {}
AudioHighpass16::~AudioHighpass16() = default;

AudioEffect* createHighpass(unsigned channels, audioMasterCallback audioMaster) {
    switch (channels) {
        case 1: return new (std::nothrow) AudioHighpass1(audioMaster);
        case 2: return new (std::nothrow) AudioHighpass2(audioMaster);
        case 6: return new (std::nothrow) AudioHighpass6(audioMaster);
        case 16: return new (std::nothrow) AudioHighpass16(audioMaster);
        default: return nullptr;
    }
}

}  // namespace AF
