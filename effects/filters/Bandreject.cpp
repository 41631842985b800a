#include "Bandreject.h"

#include <new>

#include "host/Factory.h"

namespace AF {

AudioEffect* createBandreject(unsigned channels, audioMasterCallback audioMaster) {
    switch (channels) {
        case 1: return new (std::nothrow) AudioBandreject1(audioMaster);
        case 2: return new (std::nothrow) AudioBandreject2(audioMaster);
        case 6: return new (std::nothrow) AudioBandreject6(audioMaster);
        case 16: return new (std::nothrow) AudioBandreject16(audioMaster);
        default: return nullptr;
    }
}

}  // namespace AF
