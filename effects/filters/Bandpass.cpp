#include "Bandpass.h"

#include <new>

#include "host/Factory.h"

namespace AF {

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
