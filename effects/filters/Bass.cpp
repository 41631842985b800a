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

}  // namespace AF
