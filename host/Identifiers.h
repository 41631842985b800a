#pragma once
// The registry identifiers of the 55 registered variants. Each is interned once
// when the module is loaded; equal texts share one handle, so the factory tells
// them apart by identity.
#include "Ordo/ImmutableString.h"

namespace AF::ids {

extern const Ordo::ImmutableString kInvertMono;
extern const Ordo::ImmutableString kInvertStereo;
extern const Ordo::ImmutableString kInvert51;
extern const Ordo::ImmutableString kInvert16;
extern const Ordo::ImmutableString kVolumeMono;
extern const Ordo::ImmutableString kVolumeStereo;
extern const Ordo::ImmutableString kVolume51;
extern const Ordo::ImmutableString kVolume16;
extern const Ordo::ImmutableString kMuteMono;
extern const Ordo::ImmutableString kMuteStereo;
extern const Ordo::ImmutableString kMute51;
extern const Ordo::ImmutableString kMute16;
extern const Ordo::ImmutableString kDelayMono;
extern const Ordo::ImmutableString kDelayStereo;
extern const Ordo::ImmutableString kDelay51;
extern const Ordo::ImmutableString kDelay16;
extern const Ordo::ImmutableString kMultitapDelayMono;
extern const Ordo::ImmutableString kMultitapDelayStereo;
extern const Ordo::ImmutableString kMultitapDelay51;
extern const Ordo::ImmutableString kMultitapDelay16;
extern const Ordo::ImmutableString kLowpassMono;
extern const Ordo::ImmutableString kLowpassStereo;
extern const Ordo::ImmutableString kLowpass51;
extern const Ordo::ImmutableString kLowpass16;
extern const Ordo::ImmutableString kHighpassMono;
extern const Ordo::ImmutableString kHighpassStereo;
extern const Ordo::ImmutableString kHighpass51;
extern const Ordo::ImmutableString kHighpass16;
extern const Ordo::ImmutableString kBandrejectMono;
extern const Ordo::ImmutableString kBandrejectStereo;
extern const Ordo::ImmutableString kBandreject51;
extern const Ordo::ImmutableString kBandreject16;
extern const Ordo::ImmutableString kBandpassMono;
extern const Ordo::ImmutableString kBandpassStereo;
extern const Ordo::ImmutableString kBandpass51;
extern const Ordo::ImmutableString kBandpass16;
extern const Ordo::ImmutableString kBassMono;
extern const Ordo::ImmutableString kBassStereo;
extern const Ordo::ImmutableString kBass51;
extern const Ordo::ImmutableString kBass16;
extern const Ordo::ImmutableString kTrebleMono;
extern const Ordo::ImmutableString kTrebleStereo;
extern const Ordo::ImmutableString kTreble51;
extern const Ordo::ImmutableString kTreble16;
extern const Ordo::ImmutableString kParametricEQMono;
extern const Ordo::ImmutableString kParametricEQStereo;
extern const Ordo::ImmutableString kParametricEQ51;
extern const Ordo::ImmutableString kParametricEQ16;
extern const Ordo::ImmutableString kSwapChannels;
extern const Ordo::ImmutableString kFillLeft;
extern const Ordo::ImmutableString kFillRight;
extern const Ordo::ImmutableString kBalance;
extern const Ordo::ImmutableString kChannelVolumeStereo;
extern const Ordo::ImmutableString kChannelVolume51;
extern const Ordo::ImmutableString kChannelVolume16;

}  // namespace AF::ids
