#pragma once
// The notch, shown to the user as "Notch": one section that removes the
// centre; parameters "Center" and "Q" (see OneSectionFilter.h).
#include "effects/family/ChannelVariant.h"
#include "OneSectionFilter.h"

namespace AF {

class AF_EXPORT AudioBandreject : public SectionFamily<SectionResponse::Notch> {
public:
    AudioBandreject(unsigned channels, audioMasterCallback audioMaster);
    ~AudioBandreject() override;
};

extern template class CutFilterChannels<AudioBandreject, 1>;
extern template class CutFilterChannels<AudioBandreject, 2>;
extern template class CutFilterChannels<AudioBandreject, 6>;
extern template class CutFilterChannels<AudioBandreject, 16>;

class AF_EXPORT AudioBandreject1 final : public ChannelVariant<CutFilterChannels<AudioBandreject, 1>, 1, "AFl1"> { public: explicit AudioBandreject1(audioMasterCallback audioMaster); ~AudioBandreject1() override; };
class AF_EXPORT AudioBandreject2 final : public ChannelVariant<CutFilterChannels<AudioBandreject, 2>, 2, "AFl2"> { public: explicit AudioBandreject2(audioMasterCallback audioMaster); ~AudioBandreject2() override; };
class AF_EXPORT AudioBandreject6 final : public ChannelVariant<CutFilterChannels<AudioBandreject, 6>, 6, "AFl6"> { public: explicit AudioBandreject6(audioMasterCallback audioMaster); ~AudioBandreject6() override; };
class AF_EXPORT AudioBandreject16 final : public ChannelVariant<CutFilterChannels<AudioBandreject, 16>, 16, "AF16"> { public: explicit AudioBandreject16(audioMasterCallback audioMaster); ~AudioBandreject16() override; };

}  // namespace AF
