#include "Highpass.h"

#include <new>

#include "host/Factory.h"

namespace AF {

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
