#pragma once
// Every variant class the host knows by name, one line each: a family built
// for a fixed channel count (effects/family/ChannelVariant.h). A host may
// construct one of these classes directly, so each keeps its own exported
// constructor and destructor (NamedVariants.cpp). The four-channel Invert and
// equalisers are built and exported, never registered. Fill Left copies the
// left input into the right output, Fill Right the other way round.
#include "effects/delay/Delay.h"
#include "effects/delay/MultitapDelay.h"
#include "effects/family/ChannelVariant.h"
#include "effects/filters/CutFilters.h"
#include "effects/filters/ParametricEQ.h"
#include "effects/filters/Shelf.h"
#include "effects/level/ChannelVolume.h"
#include "effects/level/Fill.h"
#include "effects/level/Invert.h"
#include "effects/level/Mute.h"
#include "effects/level/Volume.h"

namespace AF {

// The loops, instantiated once: the delays' in each family's source file, the
// filters' in NamedVariants.cpp.
extern template class DelayChannels<AudioDelay, 1>;
extern template class DelayChannels<AudioDelay, 2>;
extern template class DelayChannels<AudioDelay, 6>;
extern template class DelayChannels<AudioDelay, 16>;
extern template class DelayChannels<AudioMultitapDelay, 1>;
extern template class DelayChannels<AudioMultitapDelay, 2>;
extern template class DelayChannels<AudioMultitapDelay, 6>;
extern template class DelayChannels<AudioMultitapDelay, 16>;
extern template class CutFilterChannels<AudioHighpass, 1>;
extern template class CutFilterChannels<AudioHighpass, 2>;
extern template class CutFilterChannels<AudioHighpass, 6>;
extern template class CutFilterChannels<AudioHighpass, 16>;
extern template class CutFilterChannels<AudioLowpass, 1>;
extern template class CutFilterChannels<AudioLowpass, 2>;
extern template class CutFilterChannels<AudioLowpass, 6>;
extern template class CutFilterChannels<AudioLowpass, 16>;
extern template class CutFilterChannels<AudioBandpass, 1>;
extern template class CutFilterChannels<AudioBandpass, 2>;
extern template class CutFilterChannels<AudioBandpass, 6>;
extern template class CutFilterChannels<AudioBandpass, 16>;
extern template class CutFilterChannels<AudioBandreject, 1>;
extern template class CutFilterChannels<AudioBandreject, 2>;
extern template class CutFilterChannels<AudioBandreject, 6>;
extern template class CutFilterChannels<AudioBandreject, 16>;
extern template class EqChannels<AudioBass, 1>;
extern template class EqChannels<AudioBass, 2>;
extern template class EqChannels<AudioBass, 4>;
extern template class EqChannels<AudioBass, 6>;
extern template class EqChannels<AudioBass, 16>;
extern template class EqChannels<AudioTreble, 1>;
extern template class EqChannels<AudioTreble, 2>;
extern template class EqChannels<AudioTreble, 4>;
extern template class EqChannels<AudioTreble, 6>;
extern template class EqChannels<AudioTreble, 16>;
extern template class EqChannels<AudioParametricEQ, 1>;
extern template class EqChannels<AudioParametricEQ, 2>;
extern template class EqChannels<AudioParametricEQ, 4>;
extern template class EqChannels<AudioParametricEQ, 6>;
extern template class EqChannels<AudioParametricEQ, 16>;

class AF_EXPORT AudioInvert1 final : public ChannelVariant<InvertChannels<1>, 1, "AIn1"> { public: explicit AudioInvert1(audioMasterCallback audioMaster); ~AudioInvert1() override; };
class AF_EXPORT AudioInvert2 final : public ChannelVariant<InvertChannels<2>, 2, "AIn2"> { public: explicit AudioInvert2(audioMasterCallback audioMaster); ~AudioInvert2() override; };
class AF_EXPORT AudioInvert4 final : public ChannelVariant<InvertChannels<4>, 4, "AIn4"> { public: explicit AudioInvert4(audioMasterCallback audioMaster); ~AudioInvert4() override; };
class AF_EXPORT AudioInvert6 final : public ChannelVariant<InvertChannels<6>, 6, "AIn6"> { public: explicit AudioInvert6(audioMasterCallback audioMaster); ~AudioInvert6() override; };
class AF_EXPORT AudioInvert16 final : public ChannelVariant<InvertChannels<16>, 16, "AI16"> { public: explicit AudioInvert16(audioMasterCallback audioMaster); ~AudioInvert16() override; };
class AF_EXPORT AudioEnvelope1 final : public ChannelVariant<AudioEnvelope, 1, "AEn1"> { public: explicit AudioEnvelope1(audioMasterCallback audioMaster); ~AudioEnvelope1() override; };
class AF_EXPORT AudioEnvelope2 final : public ChannelVariant<AudioEnvelope, 2, "AEn2"> { public: explicit AudioEnvelope2(audioMasterCallback audioMaster); ~AudioEnvelope2() override; };
class AF_EXPORT AudioEnvelope6 final : public ChannelVariant<AudioEnvelope, 6, "AEn6"> { public: explicit AudioEnvelope6(audioMasterCallback audioMaster); ~AudioEnvelope6() override; };
class AF_EXPORT AudioEnvelope16 final : public ChannelVariant<AudioEnvelope, 16, "AE16"> { public: explicit AudioEnvelope16(audioMasterCallback audioMaster); ~AudioEnvelope16() override; };
class AF_EXPORT AudioMute1 final : public ChannelVariant<AudioMute, 1, "AMn1"> { public: explicit AudioMute1(audioMasterCallback audioMaster); ~AudioMute1() override; };
class AF_EXPORT AudioMute2 final : public ChannelVariant<AudioMute, 2, "AMn2"> { public: explicit AudioMute2(audioMasterCallback audioMaster); ~AudioMute2() override; };
class AF_EXPORT AudioMute6 final : public ChannelVariant<AudioMute, 6, "AMn6"> { public: explicit AudioMute6(audioMasterCallback audioMaster); ~AudioMute6() override; };
class AF_EXPORT AudioMute16 final : public ChannelVariant<AudioMute, 16, "AM16"> { public: explicit AudioMute16(audioMasterCallback audioMaster); ~AudioMute16() override; };
class AF_EXPORT AudioChannelEnvelope2 final : public ChannelVariant<AudioChannelEnvelope, 2, "AEn2"> { public: explicit AudioChannelEnvelope2(audioMasterCallback audioMaster); ~AudioChannelEnvelope2() override; };
class AF_EXPORT AudioChannelEnvelope6 final : public ChannelVariant<AudioChannelEnvelope, 6, "AEn6"> { public: explicit AudioChannelEnvelope6(audioMasterCallback audioMaster); ~AudioChannelEnvelope6() override; };
class AF_EXPORT AudioChannelEnvelope16 final : public ChannelVariant<AudioChannelEnvelope, 16, "AE16"> { public: explicit AudioChannelEnvelope16(audioMasterCallback audioMaster); ~AudioChannelEnvelope16() override; };
class AF_EXPORT AudioFillLeft final : public ChannelVariant<FillChannel<0, 1>, 2, "AFlL"> { public: explicit AudioFillLeft(audioMasterCallback audioMaster); ~AudioFillLeft() override; };
class AF_EXPORT AudioFillRight final : public ChannelVariant<FillChannel<1, 0>, 2, "AFlR"> { public: explicit AudioFillRight(audioMasterCallback audioMaster); ~AudioFillRight() override; };
class AF_EXPORT AudioDelay1 final : public ChannelVariant<DelayChannels<AudioDelay, 1>, 1, "ADl1"> { public: explicit AudioDelay1(audioMasterCallback audioMaster); ~AudioDelay1() override; };
class AF_EXPORT AudioDelay2 final : public ChannelVariant<DelayChannels<AudioDelay, 2>, 2, "ADl2"> { public: explicit AudioDelay2(audioMasterCallback audioMaster); ~AudioDelay2() override; };
class AF_EXPORT AudioDelay6 final : public ChannelVariant<DelayChannels<AudioDelay, 6>, 6, "ADl6"> { public: explicit AudioDelay6(audioMasterCallback audioMaster); ~AudioDelay6() override; };
class AF_EXPORT AudioDelay16 final : public ChannelVariant<DelayChannels<AudioDelay, 16>, 16, "AD16"> { public: explicit AudioDelay16(audioMasterCallback audioMaster); ~AudioDelay16() override; };
class AF_EXPORT AudioMultitapDelay1 final : public ChannelVariant<DelayChannels<AudioMultitapDelay, 1>, 1, "ADl1"> { public: explicit AudioMultitapDelay1(audioMasterCallback audioMaster); ~AudioMultitapDelay1() override; };
class AF_EXPORT AudioMultitapDelay2 final : public ChannelVariant<DelayChannels<AudioMultitapDelay, 2>, 2, "ADl2"> { public: explicit AudioMultitapDelay2(audioMasterCallback audioMaster); ~AudioMultitapDelay2() override; };
class AF_EXPORT AudioMultitapDelay6 final : public ChannelVariant<DelayChannels<AudioMultitapDelay, 6>, 6, "ADl6"> { public: explicit AudioMultitapDelay6(audioMasterCallback audioMaster); ~AudioMultitapDelay6() override; };
class AF_EXPORT AudioMultitapDelay16 final : public ChannelVariant<DelayChannels<AudioMultitapDelay, 16>, 16, "AD16"> { public: explicit AudioMultitapDelay16(audioMasterCallback audioMaster); ~AudioMultitapDelay16() override; };
class AF_EXPORT AudioHighpass1 final : public ChannelVariant<CutFilterChannels<AudioHighpass, 1>, 1, "AFl1"> { public: explicit AudioHighpass1(audioMasterCallback audioMaster); ~AudioHighpass1() override; };
class AF_EXPORT AudioHighpass2 final : public ChannelVariant<CutFilterChannels<AudioHighpass, 2>, 2, "AFl2"> { public: explicit AudioHighpass2(audioMasterCallback audioMaster); ~AudioHighpass2() override; };
class AF_EXPORT AudioHighpass6 final : public ChannelVariant<CutFilterChannels<AudioHighpass, 6>, 6, "AFl6"> { public: explicit AudioHighpass6(audioMasterCallback audioMaster); ~AudioHighpass6() override; };
class AF_EXPORT AudioHighpass16 final : public ChannelVariant<CutFilterChannels<AudioHighpass, 16>, 16, "AF16"> { public: explicit AudioHighpass16(audioMasterCallback audioMaster); ~AudioHighpass16() override; };
class AF_EXPORT AudioLowpass1 final : public ChannelVariant<CutFilterChannels<AudioLowpass, 1>, 1, "AFl1"> { public: explicit AudioLowpass1(audioMasterCallback audioMaster); ~AudioLowpass1() override; };
class AF_EXPORT AudioLowpass2 final : public ChannelVariant<CutFilterChannels<AudioLowpass, 2>, 2, "AFl2"> { public: explicit AudioLowpass2(audioMasterCallback audioMaster); ~AudioLowpass2() override; };
class AF_EXPORT AudioLowpass6 final : public ChannelVariant<CutFilterChannels<AudioLowpass, 6>, 6, "AFl6"> { public: explicit AudioLowpass6(audioMasterCallback audioMaster); ~AudioLowpass6() override; };
class AF_EXPORT AudioLowpass16 final : public ChannelVariant<CutFilterChannels<AudioLowpass, 16>, 16, "AF16"> { public: explicit AudioLowpass16(audioMasterCallback audioMaster); ~AudioLowpass16() override; };
class AF_EXPORT AudioBandpass1 final : public ChannelVariant<CutFilterChannels<AudioBandpass, 1>, 1, "AFl1"> { public: explicit AudioBandpass1(audioMasterCallback audioMaster); ~AudioBandpass1() override; };
class AF_EXPORT AudioBandpass2 final : public ChannelVariant<CutFilterChannels<AudioBandpass, 2>, 2, "AFl2"> { public: explicit AudioBandpass2(audioMasterCallback audioMaster); ~AudioBandpass2() override; };
class AF_EXPORT AudioBandpass6 final : public ChannelVariant<CutFilterChannels<AudioBandpass, 6>, 6, "AFl6"> { public: explicit AudioBandpass6(audioMasterCallback audioMaster); ~AudioBandpass6() override; };
class AF_EXPORT AudioBandpass16 final : public ChannelVariant<CutFilterChannels<AudioBandpass, 16>, 16, "AF16"> { public: explicit AudioBandpass16(audioMasterCallback audioMaster); ~AudioBandpass16() override; };
class AF_EXPORT AudioBandreject1 final : public ChannelVariant<CutFilterChannels<AudioBandreject, 1>, 1, "AFl1"> { public: explicit AudioBandreject1(audioMasterCallback audioMaster); ~AudioBandreject1() override; };
class AF_EXPORT AudioBandreject2 final : public ChannelVariant<CutFilterChannels<AudioBandreject, 2>, 2, "AFl2"> { public: explicit AudioBandreject2(audioMasterCallback audioMaster); ~AudioBandreject2() override; };
class AF_EXPORT AudioBandreject6 final : public ChannelVariant<CutFilterChannels<AudioBandreject, 6>, 6, "AFl6"> { public: explicit AudioBandreject6(audioMasterCallback audioMaster); ~AudioBandreject6() override; };
class AF_EXPORT AudioBandreject16 final : public ChannelVariant<CutFilterChannels<AudioBandreject, 16>, 16, "AF16"> { public: explicit AudioBandreject16(audioMasterCallback audioMaster); ~AudioBandreject16() override; };
class AF_EXPORT AudioBass1 final : public ChannelVariant<EqChannels<AudioBass, 1>, 1, "AFl1"> { public: explicit AudioBass1(audioMasterCallback audioMaster); ~AudioBass1() override; };
class AF_EXPORT AudioBass2 final : public ChannelVariant<EqChannels<AudioBass, 2>, 2, "AFl2"> { public: explicit AudioBass2(audioMasterCallback audioMaster); ~AudioBass2() override; };
class AF_EXPORT AudioBass4 final : public ChannelVariant<EqChannels<AudioBass, 4>, 4, "AFl4"> { public: explicit AudioBass4(audioMasterCallback audioMaster); ~AudioBass4() override; };
class AF_EXPORT AudioBass6 final : public ChannelVariant<EqChannels<AudioBass, 6>, 6, "AFl6"> { public: explicit AudioBass6(audioMasterCallback audioMaster); ~AudioBass6() override; };
class AF_EXPORT AudioBass16 final : public ChannelVariant<EqChannels<AudioBass, 16>, 16, "AF16"> { public: explicit AudioBass16(audioMasterCallback audioMaster); ~AudioBass16() override; };
class AF_EXPORT AudioTreble1 final : public ChannelVariant<EqChannels<AudioTreble, 1>, 1, "AFl1"> { public: explicit AudioTreble1(audioMasterCallback audioMaster); ~AudioTreble1() override; };
class AF_EXPORT AudioTreble2 final : public ChannelVariant<EqChannels<AudioTreble, 2>, 2, "AFl2"> { public: explicit AudioTreble2(audioMasterCallback audioMaster); ~AudioTreble2() override; };
class AF_EXPORT AudioTreble4 final : public ChannelVariant<EqChannels<AudioTreble, 4>, 4, "AFl4"> { public: explicit AudioTreble4(audioMasterCallback audioMaster); ~AudioTreble4() override; };
class AF_EXPORT AudioTreble6 final : public ChannelVariant<EqChannels<AudioTreble, 6>, 6, "AFl6"> { public: explicit AudioTreble6(audioMasterCallback audioMaster); ~AudioTreble6() override; };
class AF_EXPORT AudioTreble16 final : public ChannelVariant<EqChannels<AudioTreble, 16>, 16, "AF16"> { public: explicit AudioTreble16(audioMasterCallback audioMaster); ~AudioTreble16() override; };
class AF_EXPORT AudioParametricEQ1 final : public ChannelVariant<EqChannels<AudioParametricEQ, 1>, 1, "AFl1"> { public: explicit AudioParametricEQ1(audioMasterCallback audioMaster); ~AudioParametricEQ1() override; };
class AF_EXPORT AudioParametricEQ2 final : public ChannelVariant<EqChannels<AudioParametricEQ, 2>, 2, "AFl2"> { public: explicit AudioParametricEQ2(audioMasterCallback audioMaster); ~AudioParametricEQ2() override; };
class AF_EXPORT AudioParametricEQ4 final : public ChannelVariant<EqChannels<AudioParametricEQ, 4>, 4, "AFl4"> { public: explicit AudioParametricEQ4(audioMasterCallback audioMaster); ~AudioParametricEQ4() override; };
class AF_EXPORT AudioParametricEQ6 final : public ChannelVariant<EqChannels<AudioParametricEQ, 6>, 6, "AFl6"> { public: explicit AudioParametricEQ6(audioMasterCallback audioMaster); ~AudioParametricEQ6() override; };
class AF_EXPORT AudioParametricEQ16 final : public ChannelVariant<EqChannels<AudioParametricEQ, 16>, 16, "AF16"> { public: explicit AudioParametricEQ16(audioMasterCallback audioMaster); ~AudioParametricEQ16() override; };

}  // namespace AF
