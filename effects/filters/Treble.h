#pragma once
// A high shelf with its corner fixed at 4000 Hz: one knob, boost or cut up to 24 dB.
#include "effects/family/ChannelVariant.h"
#include "effects/filters/Shelf.h"

namespace AF {

class AF_EXPORT AudioTreble : public AudioShelf {
public:
    AudioTreble(unsigned channels, audioMasterCallback audioMaster);
    ~AudioTreble() override;
};

// The variants' shared members are instantiated in the family's source file.
extern template class EqChannels<AudioTreble, 1>;
extern template class EqChannels<AudioTreble, 2>;
extern template class EqChannels<AudioTreble, 4>;
extern template class EqChannels<AudioTreble, 6>;
extern template class EqChannels<AudioTreble, 16>;

class AF_EXPORT AudioTreble1 final : public ChannelVariant<EqChannels<AudioTreble, 1>, 1, "AFl1"> { using ChannelVariant::ChannelVariant; };
class AF_EXPORT AudioTreble2 final : public ChannelVariant<EqChannels<AudioTreble, 2>, 2, "AFl2"> { using ChannelVariant::ChannelVariant; };
// Built and exported, never registered.
class AF_EXPORT AudioTreble4 final : public ChannelVariant<EqChannels<AudioTreble, 4>, 4, "AFl4"> { using ChannelVariant::ChannelVariant; };
class AF_EXPORT AudioTreble6 final : public ChannelVariant<EqChannels<AudioTreble, 6>, 6, "AFl6"> { using ChannelVariant::ChannelVariant; };
class AF_EXPORT AudioTreble16 final : public ChannelVariant<EqChannels<AudioTreble, 16>, 16, "AF16"> { using ChannelVariant::ChannelVariant; };

}  // namespace AF
