#include "Lowpass.h"

#include <new>

#include "host/Factory.h"

namespace AF {

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
