#include "effects/filters/Bass.h"

#include "effects/filters/Boost.h"

namespace AF {

namespace {

// w = pi 400 / fs puts the corner at 200 Hz; the slope term uses C = 1.5.
constexpr ShelfShape kBassShape{
    400.0, 1.5, ShelfKind::low, {boostScale::parameter("$$$/Korvex/AudioFilters/Boost=Boost")}};

}  // namespace

AudioBass::AudioBass(unsigned channels, audioMasterCallback audioMaster)
    : AudioShelf(channels, audioMaster, kBassShape) {}

AudioBass::~AudioBass() = default;

template class EqChannels<AudioBass, 1>;
template class EqChannels<AudioBass, 2>;
template class EqChannels<AudioBass, 4>;
template class EqChannels<AudioBass, 6>;
template class EqChannels<AudioBass, 16>;

// Each variant defines its constructor and destructor here, so the module exports them under its own name.
AudioBass1::AudioBass1(audioMasterCallback audioMaster) : ChannelVariant(audioMaster) {} AudioBass1::~AudioBass1() = default;
AudioBass2::AudioBass2(audioMasterCallback audioMaster) : ChannelVariant(audioMaster) {} AudioBass2::~AudioBass2() = default;
AudioBass4::AudioBass4(audioMasterCallback audioMaster) : ChannelVariant(audioMaster) {} AudioBass4::~AudioBass4() = default;
AudioBass6::AudioBass6(audioMasterCallback audioMaster) : ChannelVariant(audioMaster) {} AudioBass6::~AudioBass6() = default;
AudioBass16::AudioBass16(audioMasterCallback audioMaster) : ChannelVariant(audioMaster) {} AudioBass16::~AudioBass16() = default;

}  // namespace AF
