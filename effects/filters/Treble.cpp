#include "effects/filters/Treble.h"

#include <new>

namespace AF {

namespace {

// w = pi 8000 / fs puts the corner at 4000 Hz; the slope term uses C = 5.
// The parameter's name key (blanks around the word included) is its own, not Bass's.
constexpr ShelfShape kTrebleShape{
    8000.0, 5.0, ShelfKind::high, {{{"$$$/Korvex/AudioFilters/Boost2= Boost ", kDecibelLabelKey, 0.5f}}}};

}  // namespace

AudioTreble::AudioTreble(unsigned channels, audioMasterCallback audioMaster)
    : AudioShelf(channels, audioMaster, kTrebleShape) {}

AudioTreble::~AudioTreble() = default;

template class EqVariant<AudioTreble, 1>;
template class EqVariant<AudioTreble, 2>;
template class EqVariant<AudioTreble, 4>;
template class EqVariant<AudioTreble, 6>;
template class EqVariant<AudioTreble, 16>;

AudioTreble1::AudioTreble1(audioMasterCallback audioMaster) : EqVariant(audioMaster) {}
AudioTreble1::~AudioTreble1() = default;
AudioTreble2::AudioTreble2(audioMasterCallback audioMaster) : EqVariant(audioMaster) {}
AudioTreble2::~AudioTreble2() = default;
AudioTreble4::AudioTreble4(audioMasterCallback audioMaster) : EqVariant(audioMaster) {}
AudioTreble4::~AudioTreble4() = default;
AudioTreble6::AudioTreble6(audioMasterCallback audioMaster) : EqVariant(audioMaster) {}
AudioTreble6::~AudioTreble6() = default;
AudioTreble16::AudioTreble16(audioMasterCallback audioMaster) : EqVariant(audioMaster) {}
AudioTreble16::~AudioTreble16() = default;

}  // namespace AF
