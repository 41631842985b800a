#include "effects/filters/Bass.h"

#include <new>

namespace AF {

namespace {

// w = pi 400 / fs puts the corner at 200 Hz; the slope term uses C = 1.5.
constexpr ShelfShape kBassShape{
    400.0, 1.5, ShelfKind::low, {{{"$$$/Korvex/AudioFilters/Boost=Boost", kDecibelLabelKey, 0.5f}}}};

}  // namespace

AudioBass::AudioBass(unsigned channels, audioMasterCallback audioMaster)
    : AudioShelf(channels, audioMaster, kBassShape) {}

AudioBass::~AudioBass() = default;

template class EqVariant<AudioBass, 1>;
template class EqVariant<AudioBass, 2>;
template class EqVariant<AudioBass, 4>;
template class EqVariant<AudioBass, 6>;
template class EqVariant<AudioBass, 16>;

AudioBass1::AudioBass1(audioMasterCallback audioMaster) : EqVariant(audioMaster) {}
AudioBass1::~AudioBass1() = default;
AudioBass2::AudioBass2(audioMasterCallback audioMaster) : EqVariant(audioMaster) {}
AudioBass2::~AudioBass2() = default;
AudioBass4::AudioBass4(audioMasterCallback audioMaster) : EqVariant(audioMaster) {}
AudioBass4::~AudioBass4() = default;
AudioBass6::AudioBass6(audioMasterCallback audioMaster) : EqVariant(audioMaster) {}
AudioBass6::~AudioBass6() = default;
AudioBass16::AudioBass16(audioMasterCallback audioMaster) : EqVariant(audioMaster) {}
AudioBass16::~AudioBass16() = default;

}  // namespace AF
