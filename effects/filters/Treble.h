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

class AF_EXPORT AudioTreble1 final : public ChannelVariant<EqChannels<AudioTreble, 1>, 1, "AFl1"> { public: explicit AudioTreble1(audioMasterCallback audioMaster); ~AudioTreble1() override; };
class AF_EXPORT AudioTreble2 final : public ChannelVariant<EqChannels<AudioTreble, 2>, 2, "AFl2"> { public: explicit AudioTreble2(audioMasterCallback audioMaster); ~AudioTreble2() override; };
// Built and exported, never registered.
class AF_EXPORT AudioTreble4 final : public ChannelVariant<EqChannels<AudioTreble, 4>, 4, "AFl4"> { public: explicit AudioTreble4(audioMasterCallback audioMaster); ~AudioTreble4() override; };
class AF_EXPORT AudioTreble6 final : public ChannelVariant<EqChannels<AudioTreble, 6>, 6, "AFl6"> { public: explicit AudioTreble6(audioMasterCallback audioMaster); ~AudioTreble6() override; };
class AF_EXPORT AudioTreble16 final : public ChannelVariant<EqChannels<AudioTreble, 16>, 16, "AF16"> { public: explicit AudioTreble16(audioMasterCallback audioMaster); ~AudioTreble16() override; };

}  // namespace AF
