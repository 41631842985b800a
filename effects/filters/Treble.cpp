#include "effects/filters/Treble.h"

#include "effects/filters/Boost.h"

namespace AF {

namespace {

// w = pi 8000 / fs puts the corner at 4000 Hz; the slope term uses C = 5.
// The parameter's name key (blanks around the word included) is its own, not Bass's.
constexpr ShelfShape kTrebleShape{
    8000.0, 5.0, ShelfKind::high, {boostScale::parameter("$$$/Korvex/AudioFilters/Boost2= Boost ")}};

}  // namespace

AudioTreble::AudioTreble(unsigned channels, audioMasterCallback audioMaster)
    : AudioShelf(channels, audioMaster, kTrebleShape) {}

AudioTreble::~AudioTreble() = default;

template class EqChannels<AudioTreble, 1>;
template class EqChannels<AudioTreble, 2>;
template class EqChannels<AudioTreble, 4>;
template class EqChannels<AudioTreble, 6>;
template class EqChannels<AudioTreble, 16>;

// Each variant defines its constructor and destructor here, so the module exports them under its own name.
AudioTreble1::AudioTreble1(audioMasterCallback audioMaster) : ChannelVariant(audioMaster) {} AudioTreble1::~AudioTreble1() = default;
AudioTreble2::AudioTreble2(audioMasterCallback audioMaster) : ChannelVariant(audioMaster) {} AudioTreble2::~AudioTreble2() = default;
AudioTreble4::AudioTreble4(audioMasterCallback audioMaster) : ChannelVariant(audioMaster) {} AudioTreble4::~AudioTreble4() = default;
AudioTreble6::AudioTreble6(audioMasterCallback audioMaster) : ChannelVariant(audioMaster) {} AudioTreble6::~AudioTreble6() = default;
AudioTreble16::AudioTreble16(audioMasterCallback audioMaster) : ChannelVariant(audioMaster) {} AudioTreble16::~AudioTreble16() = default;

}  // namespace AF
