#pragma once
// The fourth-order low-pass: passes what lies below the cutoff;
// one parameter, "Cutoff" (see TwoSectionFilter.h).
#include "TwoSectionFilter.h"

namespace AF {

class AF_EXPORT AudioLowpass : public CascadeFamily<CascadeResponse::Lowpass> {
public:
    AudioLowpass(unsigned channels, audioMasterCallback audioMaster);
    ~AudioLowpass() override;
};

extern template class CutFilterVariant<AudioLowpass, 1>;
class AF_EXPORT AudioLowpass1 final : public CutFilterVariant<AudioLowpass, 1> {
public:
    explicit AudioLowpass1(audioMasterCallback audioMaster);
    ~AudioLowpass1() override;
};

extern template class CutFilterVariant<AudioLowpass, 2>;
class AF_EXPORT AudioLowpass2 final : public CutFilterVariant<AudioLowpass, 2> {
public:
    explicit AudioLowpass2(audioMasterCallback audioMaster);
    ~AudioLowpass2() override;
};

extern template class CutFilterVariant<AudioLowpass, 6>;
class AF_EXPORT AudioLowpass6 final : public CutFilterVariant<AudioLowpass, 6> {
public:
    explicit AudioLowpass6(audioMasterCallback audioMaster);
    ~AudioLowpass6() override;
};

extern template class CutFilterVariant<AudioLowpass, 16>;
class AF_EXPORT AudioLowpass16 final : public CutFilterVariant<AudioLowpass, 16> {
public:
    explicit AudioLowpass16(audioMasterCallback audioMaster);
    ~AudioLowpass16() override;
};

}  // namespace AF
