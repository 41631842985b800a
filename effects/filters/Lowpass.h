#pragma once
// The fourth-order low-pass: passes what lies below the cutoff;
// one parameter, "Cutoff" (see TwoSectionFilter.h).
#include "effects/family/ChannelVariant.h"
#include "TwoSectionFilter.h"

namespace AF {

class AF_EXPORT AudioLowpass : public CascadeFamily<CascadeResponse::Lowpass> {
public:
    AudioLowpass(unsigned channels, audioMasterCallback audioMaster);
    ~AudioLowpass() override;
};

extern template class CutFilterChannels<AudioLowpass, 1>;
extern template class CutFilterChannels<AudioLowpass, 2>;
extern template class CutFilterChannels<AudioLowpass, 6>;
extern template class CutFilterChannels<AudioLowpass, 16>;

class AF_EXPORT AudioLowpass1 final : public ChannelVariant<CutFilterChannels<AudioLowpass, 1>, 1, "AFl1"> { public: explicit AudioLowpass1(audioMasterCallback audioMaster); ~AudioLowpass1() override; };
class AF_EXPORT AudioLowpass2 final : public ChannelVariant<CutFilterChannels<AudioLowpass, 2>, 2, "AFl2"> { public: explicit AudioLowpass2(audioMasterCallback audioMaster); ~AudioLowpass2() override; };
class AF_EXPORT AudioLowpass6 final : public ChannelVariant<CutFilterChannels<AudioLowpass, 6>, 6, "AFl6"> { public: explicit AudioLowpass6(audioMasterCallback audioMaster); ~AudioLowpass6() override; };
class AF_EXPORT AudioLowpass16 final : public ChannelVariant<CutFilterChannels<AudioLowpass, 16>, 16, "AF16"> { public: explicit AudioLowpass16(audioMasterCallback audioMaster); ~AudioLowpass16() override; };

}  // namespace AF
