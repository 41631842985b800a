#pragma once
// The notch (shown to the user as "Notch"): one section that removes the centre;
// parameters "Center" and "Q" (see OneSectionFilter.h).
#include "OneSectionFilter.h"

namespace AF {

class AF_EXPORT AudioBandreject : public SectionFamily<SectionResponse::Notch> {
public:
    using SectionFamily::SectionFamily;
};

class AF_EXPORT AudioBandreject1 final : public SectionVariant<AudioBandreject, 1> {
public:
    explicit AudioBandreject1(audioMasterCallback audioMaster) : SectionVariant(audioMaster) {}
};

class AF_EXPORT AudioBandreject2 final : public SectionVariant<AudioBandreject, 2> {
public:
    explicit AudioBandreject2(audioMasterCallback audioMaster) : SectionVariant(audioMaster) {}
};

class AF_EXPORT AudioBandreject6 final : public SectionVariant<AudioBandreject, 6> {
public:
    explicit AudioBandreject6(audioMasterCallback audioMaster) : SectionVariant(audioMaster) {}
};

class AF_EXPORT AudioBandreject16 final : public SectionVariant<AudioBandreject, 16> {
public:
    explicit AudioBandreject16(audioMasterCallback audioMaster) : SectionVariant(audioMaster) {}
};

}  // namespace AF
