#pragma once
// The band-pass: one section with unity gain at the centre;
// parameters "Center" and "Q" (see OneSectionFilter.h).
#include "effects/family/ChannelVariant.h"
#include "OneSectionFilter.h"

namespace AF {

class AF_EXPORT AudioBandpass : public SectionFamily<SectionResponse::Bandpass> {
public:
    AudioBandpass(unsigned channels, audioMasterCallback audioMaster);
    ~AudioBandpass() override;
};

extern template class CutFilterChannels<AudioBandpass, 1>;
extern template class CutFilterChannels<AudioBandpass, 2>;
extern template class CutFilterChannels<AudioBandpass, 6>;
extern template class CutFilterChannels<AudioBandpass, 16>;

class AF_EXPORT AudioBandpass1 final : public ChannelVariant<CutFilterChannels<AudioBandpass, 1>, 1, "AFl1"> { public: explicit AudioBandpass1(audioMasterCallback audioMaster); ~AudioBandpass1() override; };
class AF_EXPORT AudioBandpass2 final : public ChannelVariant<CutFilterChannels<AudioBandpass, 2>, 2, "AFl2"> { public: explicit AudioBandpass2(audioMasterCallback audioMaster); ~AudioBandpass2() override; };
class AF_EXPORT AudioBandpass6 final : public ChannelVariant<CutFilterChannels<AudioBandpass, 6>, 6, "AFl6"> { public: explicit AudioBandpass6(audioMasterCallback audioMaster); ~AudioBandpass6() override; };
class AF_EXPORT AudioBandpass16 final : public ChannelVariant<CutFilterChannels<AudioBandpass, 16>, 16, "AF16"> { public: explicit AudioBandpass16(audioMasterCallback audioMaster); ~AudioBandpass16() override; };

}  // namespace AF
