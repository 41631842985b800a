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

class AF_EXPORT AudioBandpass1 final : public ChannelVariant<CutFilterChannels<AudioBandpass, 1>, 1, "AFl1"> { using ChannelVariant::ChannelVariant; };
class AF_EXPORT AudioBandpass2 final : public ChannelVariant<CutFilterChannels<AudioBandpass, 2>, 2, "AFl2"> { using ChannelVariant::ChannelVariant; };
class AF_EXPORT AudioBandpass6 final : public ChannelVariant<CutFilterChannels<AudioBandpass, 6>, 6, "AFl6"> { using ChannelVariant::ChannelVariant; };
class AF_EXPORT AudioBandpass16 final : public ChannelVariant<CutFilterChannels<AudioBandpass, 16>, 16, "AF16"> { using ChannelVariant::ChannelVariant; };

}  // namespace AF
