#include "effects/filters/Treble.h"

#include <new>

#include "host/Factory.h"

namespace AF {

namespace {

// w = pi 8000 / fs puts the corner at 4000 Hz; the slope term uses C = 5.
// The parameter's name key (blanks around the word included) is its own, not Bass's.
constexpr ShelfShape kTrebleShape{
    8000.0, 5.0, ShelfKind::high, {{{"$$$/Korvex/AudioFilters/Boost2= Boost ", kDecibelLabelKey, 0.5f}}}};

}  // namespace

AudioTreble::AudioTreble(unsigned channels, audioMasterCallback audioMaster)
    : AudioShelf(channels, audioMaster, kTrebleShape) {}

AudioEffect* createTreble(unsigned channels, audioMasterCallback audioMaster) {
    switch (channels) {
        case 1: return new (std::nothrow) AudioTreble1(audioMaster);
        case 2: return new (std::nothrow) AudioTreble2(audioMaster);
        case 6: return new (std::nothrow) AudioTreble6(audioMaster);
        case 16: return new (std::nothrow) AudioTreble16(audioMaster);
        default: return nullptr;  // the four-channel variant is never registered
    }
}

}  // namespace AF
