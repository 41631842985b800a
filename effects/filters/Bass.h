#pragma once
// A low shelf with its corner fixed at 200 Hz: one knob, boost or cut up to 24 dB.
#include "effects/family/ChannelVariant.h"
#include "effects/filters/Shelf.h"

namespace AF {

class AF_EXPORT AudioBass : public AudioShelf {
public:
    AudioBass(unsigned channels, audioMasterCallback audioMaster);
    ~AudioBass() override;
};

// The variants' shared members are instantiated in the family's source file.
extern template class EqChannels<AudioBass, 1>;
extern template class EqChannels<AudioBass, 2>;
extern template class EqChannels<AudioBass, 4>;
extern template class EqChannels<AudioBass, 6>;
extern template class EqChannels<AudioBass, 16>;

class AF_EXPORT AudioBass1 final : public ChannelVariant<EqChannels<AudioBass, 1>, 1, "AFl1"> { public: explicit AudioBass1(audioMasterCallback audioMaster); ~AudioBass1() override; };
class AF_EXPORT AudioBass2 final : public ChannelVariant<EqChannels<AudioBass, 2>, 2, "AFl2"> { public: explicit AudioBass2(audioMasterCallback audioMaster); ~AudioBass2() override; };
// Built and exported, never registered.
class AF_EXPORT AudioBass4 final : public ChannelVariant<EqChannels<AudioBass, 4>, 4, "AFl4"> { public: explicit AudioBass4(audioMasterCallback audioMaster); ~AudioBass4() override; };
class AF_EXPORT AudioBass6 final : public ChannelVariant<EqChannels<AudioBass, 6>, 6, "AFl6"> { public: explicit AudioBass6(audioMasterCallback audioMaster); ~AudioBass6() override; };
class AF_EXPORT AudioBass16 final : public ChannelVariant<EqChannels<AudioBass, 16>, 16, "AF16"> { public: explicit AudioBass16(audioMasterCallback audioMaster); ~AudioBass16() override; };

}  // namespace AF
