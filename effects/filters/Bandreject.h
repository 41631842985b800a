#pragma once
// The notch, shown to the user as "Notch": one section that removes the
// centre; parameters "Center" and "Q" (see OneSectionFilter.h).
#include "OneSectionFilter.h"

namespace AF {

class AF_EXPORT AudioBandreject : public SectionFamily<SectionResponse::Notch> {
public:
    AudioBandreject(unsigned channels, audioMasterCallback audioMaster);
    ~AudioBandreject() override;
};

extern template class CutFilterVariant<AudioBandreject, 1>;
class AF_EXPORT AudioBandreject1 final : public CutFilterVariant<AudioBandreject, 1> {
public:
    explicit AudioBandreject1(audioMasterCallback audioMaster);
    ~AudioBandreject1() override;
};

extern template class CutFilterVariant<AudioBandreject, 2>;
class AF_EXPORT AudioBandreject2 final : public CutFilterVariant<AudioBandreject, 2> {
public:
    explicit AudioBandreject2(audioMasterCallback audioMaster);
    ~AudioBandreject2() override;
};

extern template class CutFilterVariant<AudioBandreject, 6>;
class AF_EXPORT AudioBandreject6 final : public CutFilterVariant<AudioBandreject, 6> {
public:
    explicit AudioBandreject6(audioMasterCallback audioMaster);
    ~AudioBandreject6() override;
};

extern template class CutFilterVariant<AudioBandreject, 16>;
class AF_EXPORT AudioBandreject16 final : public CutFilterVariant<AudioBandreject, 16> {
public:
    explicit AudioBandreject16(audioMasterCallback audioMaster);
    ~AudioBandreject16() override;
};

}  // namespace AF
