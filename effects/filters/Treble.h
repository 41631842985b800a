#pragma once
// A high shelf with its corner fixed at 4000 Hz: one knob, boost or cut up to 24 dB.
#include "effects/filters/Shelf.h"

namespace AF {

class AF_EXPORT AudioTreble : public AudioShelf {
public:
    AudioTreble(unsigned channels, audioMasterCallback audioMaster);
    ~AudioTreble() override;
};

// The variants' shared members are instantiated in the family's source file.
extern template class EqVariant<AudioTreble, 1>;
extern template class EqVariant<AudioTreble, 2>;
extern template class EqVariant<AudioTreble, 4>;
extern template class EqVariant<AudioTreble, 6>;
extern template class EqVariant<AudioTreble, 16>;

class AF_EXPORT AudioTreble1 final : public EqVariant<AudioTreble, 1> {
public:
    explicit AudioTreble1(audioMasterCallback audioMaster);
    ~AudioTreble1() override;
};
class AF_EXPORT AudioTreble2 final : public EqVariant<AudioTreble, 2> {
public:
    explicit AudioTreble2(audioMasterCallback audioMaster);
    ~AudioTreble2() override;
};
// Built and exported, never registered.
class AF_EXPORT AudioTreble4 final : public EqVariant<AudioTreble, 4> {
public:
    explicit AudioTreble4(audioMasterCallback audioMaster);
    ~AudioTreble4() override;
};
class AF_EXPORT AudioTreble6 final : public EqVariant<AudioTreble, 6> {
public:
    explicit AudioTreble6(audioMasterCallback audioMaster);
    ~AudioTreble6() override;
};
class AF_EXPORT AudioTreble16 final : public EqVariant<AudioTreble, 16> {
public:
    explicit AudioTreble16(audioMasterCallback audioMaster);
    ~AudioTreble16() override;
};

}  // namespace AF
