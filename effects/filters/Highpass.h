#pragma once
// The fourth-order high-pass: passes what lies above the cutoff;
// one parameter, "Cutoff" (see TwoSectionFilter.h).
#include "effects/family/ChannelVariant.h"
#include "TwoSectionFilter.h"

namespace AF {

class AF_EXPORT AudioHighpass : public CascadeFamily<CascadeResponse::Highpass> {
public:
    AudioHighpass(unsigned channels, audioMasterCallback audioMaster);
    ~AudioHighpass() override;
};

extern template class CutFilterChannels<AudioHighpass, 1>;
extern template class CutFilterChannels<AudioHighpass, 2>;
extern template class CutFilterChannels<AudioHighpass, 6>;
extern template class CutFilterChannels<AudioHighpass, 16>;

class AF_EXPORT AudioHighpass1 final : public ChannelVariant<CutFilterChannels<AudioHighpass, 1>, 1, "AFl1"> { public: explicit AudioHighpass1(audioMasterCallback audioMaster); ~AudioHighpass1() override; };
class AF_EXPORT AudioHighpass2 final : public ChannelVariant<CutFilterChannels<AudioHighpass, 2>, 2, "AFl2"> { public: explicit AudioHighpass2(audioMasterCallback audioMaster); ~AudioHighpass2() override; };
class AF_EXPORT AudioHighpass6 final : public ChannelVariant<CutFilterChannels<AudioHighpass, 6>, 6, "AFl6"> { public: explicit AudioHighpass6(audioMasterCallback audioMaster); ~AudioHighpass6() override; };
class AF_EXPORT AudioHighpass16 final : public ChannelVariant<CutFilterChannels<AudioHighpass, 16>, 16, "AF16"> { public: explicit AudioHighpass16(audioMasterCallback audioMaster); ~AudioHighpass16() override; };

}  // namespace AF
