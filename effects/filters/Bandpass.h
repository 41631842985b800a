#pragma once
// The band-pass: one section with unity gain at the centre;
// parameters "Center" and "Q" (see OneSectionFilter.h).
#include "OneSectionFilter.h"

namespace AF {

class AF_EXPORT AudioBandpass : public SectionFamily<SectionResponse::Bandpass> {
public:
    AudioBandpass(unsigned channels, audioMasterCallback audioMaster);
    ~AudioBandpass() override;
};

extern template class CutFilterVariant<AudioBandpass, 1>;
class AF_EXPORT AudioBandpass1 final : public CutFilterVariant<AudioBandpass, 1> {
public:
    explicit AudioBandpass1(audioMasterCallback audioMaster);
    ~AudioBandpass1() override;
};

extern template class CutFilterVariant<AudioBandpass, 2>;
class AF_EXPORT AudioBandpass2 final : public CutFilterVariant<AudioBandpass, 2> {
public:
    explicit AudioBandpass2(audioMasterCallback audioMaster);
    ~AudioBandpass2() override;
};

extern template class CutFilterVariant<AudioBandpass, 6>;
class AF_EXPORT AudioBandpass6 final : public CutFilterVariant<AudioBandpass, 6> {
public:
    explicit AudioBandpass6(audioMasterCallback audioMaster);
    ~AudioBandpass6() override;
};

extern template class CutFilterVariant<AudioBandpass, 16>;
class AF_EXPORT AudioBandpass16 final : public CutFilterVariant<AudioBandpass, 16> {
public:
    explicit AudioBandpass16(audioMasterCallback audioMaster);
    ~AudioBandpass16() override;
};

}  // namespace AF
