#pragma once
// The fourth-order high-pass: passes what lies above the cutoff;
// one parameter, "Cutoff" (see TwoSectionFilter.h).
#include "TwoSectionFilter.h"

namespace AF {

class AF_EXPORT AudioHighpass : public CascadeFamily<CascadeResponse::Highpass> {
public:
    AudioHighpass(unsigned channels, audioMasterCallback audioMaster);
    ~AudioHighpass() override;
};

extern template class CutFilterVariant<AudioHighpass, 1>;
class AF_EXPORT AudioHighpass1 final : public CutFilterVariant<AudioHighpass, 1> {
public:
    explicit AudioHighpass1(audioMasterCallback audioMaster);
    ~AudioHighpass1() override;
};

extern template class CutFilterVariant<AudioHighpass, 2>;
class AF_EXPORT AudioHighpass2 final : public CutFilterVariant<AudioHighpass, 2> {
public:
    explicit AudioHighpass2(audioMasterCallback audioMaster);
    ~AudioHighpass2() override;
};

extern template class CutFilterVariant<AudioHighpass, 6>;
class AF_EXPORT AudioHighpass6 final : public CutFilterVariant<AudioHighpass, 6> {
public:
    explicit AudioHighpass6(audioMasterCallback audioMaster);
    ~AudioHighpass6() override;
};

extern template class CutFilterVariant<AudioHighpass, 16>;
class AF_EXPORT AudioHighpass16 final : public CutFilterVariant<AudioHighpass, 16> {
public:
    explicit AudioHighpass16(audioMasterCallback audioMaster);
    ~AudioHighpass16() override;
};

}  // namespace AF
