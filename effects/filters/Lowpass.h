#pragma once
// The fourth-order low-pass: passes what lies below the cutoff,
// one parameter "Cutoff" (see TwoSectionFilter.h).
#include "TwoSectionFilter.h"

namespace AF {

class AF_EXPORT AudioLowpass : public CascadeFamily<CascadeResponse::Lowpass> {
public:
    using CascadeFamily::CascadeFamily;
};

class AF_EXPORT AudioLowpass1 final : public CascadeVariant<AudioLowpass, 1> {
public:
    explicit AudioLowpass1(audioMasterCallback audioMaster) : CascadeVariant(audioMaster) {}
};

class AF_EXPORT AudioLowpass2 final : public CascadeVariant<AudioLowpass, 2> {
public:
    explicit AudioLowpass2(audioMasterCallback audioMaster) : CascadeVariant(audioMaster) {}
};

class AF_EXPORT AudioLowpass6 final : public CascadeVariant<AudioLowpass, 6> {
public:
    explicit AudioLowpass6(audioMasterCallback audioMaster) : CascadeVariant(audioMaster) {}
};

class AF_EXPORT AudioLowpass16 final : public CascadeVariant<AudioLowpass, 16> {
public:
    explicit AudioLowpass16(audioMasterCallback audioMaster) : CascadeVariant(audioMaster) {}
};

}  // namespace AF
