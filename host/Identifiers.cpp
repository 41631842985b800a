#include "Identifiers.h"

// Made by static initialisation when the module is loaded, released by static
// destruction when it is unloaded.
namespace AF::ids {

const Ordo::ImmutableString kInvertMono = Ordo::ImmutableString::CreateStatic("Internal Invert Mono");
const Ordo::ImmutableString kInvertStereo = Ordo::ImmutableString::CreateStatic("Internal Invert Stereo");
const Ordo::ImmutableString kInvert51 = Ordo::ImmutableString::CreateStatic("Internal Invert 5.1");
const Ordo::ImmutableString kInvert16 = Ordo::ImmutableString::CreateStatic("Internal Invert 16 Channel");
const Ordo::ImmutableString kVolumeMono = Ordo::ImmutableString::CreateStatic("Internal Volume Mono");
const Ordo::ImmutableString kVolumeStereo = Ordo::ImmutableString::CreateStatic("Internal Volume Stereo");
const Ordo::ImmutableString kVolume51 = Ordo::ImmutableString::CreateStatic("Internal Volume 5.1");
const Ordo::ImmutableString kVolume16 = Ordo::ImmutableString::CreateStatic("Internal Volume 16 Channel");
const Ordo::ImmutableString kMuteMono = Ordo::ImmutableString::CreateStatic("Internal Mute Mono");
const Ordo::ImmutableString kMuteStereo = Ordo::ImmutableString::CreateStatic("Internal Mute Stereo");
const Ordo::ImmutableString kMute51 = Ordo::ImmutableString::CreateStatic("Internal Mute 5.1");
const Ordo::ImmutableString kMute16 = Ordo::ImmutableString::CreateStatic("Internal Mute 16 Channel");
const Ordo::ImmutableString kDelayMono = Ordo::ImmutableString::CreateStatic("Internal Delay Mono");
const Ordo::ImmutableString kDelayStereo = Ordo::ImmutableString::CreateStatic("Internal Delay Stereo");
const Ordo::ImmutableString kDelay51 = Ordo::ImmutableString::CreateStatic("Internal Delay 5.1");
const Ordo::ImmutableString kDelay16 = Ordo::ImmutableString::CreateStatic("Internal Delay 16 Channel");
const Ordo::ImmutableString kMultitapDelayMono = Ordo::ImmutableString::CreateStatic("Internal Multitap Delay Mono");
const Ordo::ImmutableString kMultitapDelayStereo = Ordo::ImmutableString::CreateStatic("Internal Multitap Delay Stereo");
const Ordo::ImmutableString kMultitapDelay51 = Ordo::ImmutableString::CreateStatic("Internal Multitap Delay 5.1");
const Ordo::ImmutableString kMultitapDelay16 = Ordo::ImmutableString::CreateStatic("Internal Multitap Delay 16 Channel");
const Ordo::ImmutableString kLowpassMono = Ordo::ImmutableString::CreateStatic("Internal Lowpass Mono");
const Ordo::ImmutableString kLowpassStereo = Ordo::ImmutableString::CreateStatic("Internal Lowpass Stereo");
const Ordo::ImmutableString kLowpass51 = Ordo::ImmutableString::CreateStatic("Internal Lowpass 5.1");
const Ordo::ImmutableString kLowpass16 = Ordo::ImmutableString::CreateStatic("Internal Lowpass 16 Channel");
const Ordo::ImmutableString kHighpassMono = Ordo::ImmutableString::CreateStatic("Internal Highpass Mono");
const Ordo::ImmutableString kHighpassStereo = Ordo::ImmutableString::CreateStatic("Internal Highpass Stereo");
const Ordo::ImmutableString kHighpass51 = Ordo::ImmutableString::CreateStatic("Internal Highpass 5.1");
const Ordo::ImmutableString kHighpass16 = Ordo::ImmutableString::CreateStatic("Internal Highpass 16 Channel");
const Ordo::ImmutableString kBandrejectMono = Ordo::ImmutableString::CreateStatic("Internal Bandreject Mono");
const Ordo::ImmutableString kBandrejectStereo = Ordo::ImmutableString::CreateStatic("Internal Bandreject Stereo");
const Ordo::ImmutableString kBandreject51 = Ordo::ImmutableString::CreateStatic("Internal Bandreject 5.1");
const Ordo::ImmutableString kBandreject16 = Ordo::ImmutableString::CreateStatic("Internal Bandreject 16 Channel");
const Ordo::ImmutableString kBandpassMono = Ordo::ImmutableString::CreateStatic("Internal Bandpass Mono");
const Ordo::ImmutableString kBandpassStereo = Ordo::ImmutableString::CreateStatic("Internal Bandpass Stereo");
const Ordo::ImmutableString kBandpass51 = Ordo::ImmutableString::CreateStatic("Internal Bandpass 5.1");
const Ordo::ImmutableString kBandpass16 = Ordo::ImmutableString::CreateStatic("Internal Bandpass 16 Channel");
const Ordo::ImmutableString kBassMono = Ordo::ImmutableString::CreateStatic("Internal Bass Mono");
const Ordo::ImmutableString kBassStereo = Ordo::ImmutableString::CreateStatic("Internal Bass Stereo");
const Ordo::ImmutableString kBass51 = Ordo::ImmutableString::CreateStatic("Internal Bass 5.1");
const Ordo::ImmutableString kBass16 = Ordo::ImmutableString::CreateStatic("Internal Bass 16 Channel");
const Ordo::ImmutableString kTrebleMono = Ordo::ImmutableString::CreateStatic("Internal Treble Mono");
const Ordo::ImmutableString kTrebleStereo = Ordo::ImmutableString::CreateStatic("Internal Treble Stereo");
const Ordo::ImmutableString kTreble51 = Ordo::ImmutableString::CreateStatic("Internal Treble 5.1");
const Ordo::ImmutableString kTreble16 = Ordo::ImmutableString::CreateStatic("Internal Treble 16 Channel");
const Ordo::ImmutableString kParametricEQMono = Ordo::ImmutableString::CreateStatic("Internal Parametric EQ Mono");
const Ordo::ImmutableString kParametricEQStereo = Ordo::ImmutableString::CreateStatic("Internal Parametric EQ Stereo");
const Ordo::ImmutableString kParametricEQ51 = Ordo::ImmutableString::CreateStatic("Internal Parametric EQ 5.1");
const Ordo::ImmutableString kParametricEQ16 = Ordo::ImmutableString::CreateStatic("Internal Parametric EQ 16 Channel");
const Ordo::ImmutableString kSwapChannels = Ordo::ImmutableString::CreateStatic("Internal Swap Channels");
const Ordo::ImmutableString kFillLeft = Ordo::ImmutableString::CreateStatic("Internal Fill Left");
const Ordo::ImmutableString kFillRight = Ordo::ImmutableString::CreateStatic("Internal Fill Right");
const Ordo::ImmutableString kBalance = Ordo::ImmutableString::CreateStatic("Internal Balance");
const Ordo::ImmutableString kChannelVolumeStereo = Ordo::ImmutableString::CreateStatic("Internal Channel Volume Stereo");
const Ordo::ImmutableString kChannelVolume51 = Ordo::ImmutableString::CreateStatic("Internal Channel Volume 5.1");
const Ordo::ImmutableString kChannelVolume16 = Ordo::ImmutableString::CreateStatic("Internal Channel Volume 16 Channel");

}  // namespace AF::ids
