#include "VariantTable.h"

#include <new>
#include <utility>

#include "effects/delay/Delay.h"
#include "effects/delay/MultitapDelay.h"
#include "effects/filters/CutFilters.h"
#include "effects/filters/ParametricEQ.h"
#include "effects/filters/Shelf.h"
#include "effects/level/Balance.h"
#include "effects/level/ChannelVolume.h"
#include "effects/level/Fill.h"
#include "effects/level/Invert.h"
#include "effects/level/Mute.h"
#include "effects/level/SwapChannels.h"
#include "effects/level/Volume.h"
#include "effects/variants/NamedVariants.h"

namespace AF {

namespace {

template <class Variant>
AudioEffect* make(audioMasterCallback audioMaster) {
    return new (std::nothrow) Variant(audioMaster);
}

// Display-name keys, one per family. Two families are known to the host by
// other names than ours: Volume's classes are the AudioEnvelope ones (and
// Channel Volume's the AudioChannelEnvelope ones), and the band-reject filter
// is shown as "Notch".
constexpr const char* kInvertKey = "$$$/Korvex/AudioFilters/Invert=Invert";
constexpr const char* kVolumeKey = "$$$/Korvex/AudioFilters/Volume=Volume";
constexpr const char* kMuteKey = "$$$/Korvex/AudioFilters/Mute=Mute";
constexpr const char* kDelayKey = "$$$/Korvex/AudioFilters/Delay=Delay";
constexpr const char* kMultitapDelayKey = "$$$/Korvex/AudioFilters/MultitapDelay=Multitap Delay";
constexpr const char* kLowpassKey = "$$$/Korvex/AudioFilters/Lowpass=Lowpass";
constexpr const char* kHighpassKey = "$$$/Korvex/AudioFilters/Highpass=Highpass";
constexpr const char* kBandrejectKey = "$$$/Korvex/AudioFilters/Bandreject=Notch";
constexpr const char* kBandpassKey = "$$$/Korvex/AudioFilters/Bandpass=Bandpass";
constexpr const char* kBassKey = "$$$/Korvex/AudioFilters/Bass=Bass";
constexpr const char* kTrebleKey = "$$$/Korvex/AudioFilters/Treble=Treble";
constexpr const char* kParametricEQKey = "$$$/Korvex/AudioFilters/ParametricEQ=Parametric EQ";
constexpr const char* kSwapChannelsKey = "$$$/Korvex/AudioFilters/SwapChannels=Swap Channels";
constexpr const char* kFillLeftKey = "$$$/Korvex/AudioFilters/FillLeft=Fill Left";
constexpr const char* kFillRightKey = "$$$/Korvex/AudioFilters/FillRight=Fill Right";
constexpr const char* kBalanceKey = "$$$/Korvex/AudioFilters/Balance=Balance";
constexpr const char* kChannelVolumeKey = "$$$/Korvex/AudioFilters/ChannelVolumeStereo=Channel Volume";

// Layout flags of the host's registry: one pair of bits per layout. Volume, Mute
// and Balance add the level bit; Channel Volume deliberately does not.
constexpr unsigned kMono = 0x104u;
constexpr unsigned kStereo = 0x208u;
constexpr unsigned kSurround51 = 0x820u;
constexpr unsigned kSixteen = 0x18000u;
constexpr unsigned kLevel = 0x4000u;

// The four-channel classes have no row, and the module builds them nowhere
// else: naming their makers here emits their tables and types in the module,
// exported like every other variant's.
[[gnu::used]] constexpr AudioEffect* (*kUnregisteredVariants[])(audioMasterCallback) = {
    make<AudioInvert4>, make<AudioParametricEQ4>, make<AudioBass4>, make<AudioTreble4>};

}  // namespace

// The four-channel classes of Invert and the equalisers are built but have no row.
constinit const std::array<VariantRow, kVariantCount> kVariants = {{
    {Family::invert, "Internal Invert Mono", kInvertKey, kMono, 1, make<AudioInvert1>},
    {Family::invert, "Internal Invert Stereo", kInvertKey, kStereo, 2, make<AudioInvert2>},
    {Family::invert, "Internal Invert 5.1", kInvertKey, kSurround51, 6, make<AudioInvert6>},
    {Family::invert, "Internal Invert 16 Channel", kInvertKey, kSixteen, 16, make<AudioInvert16>},
    {Family::volume, "Internal Volume Mono", kVolumeKey, kMono | kLevel, 1, make<AudioEnvelope1>},
    {Family::volume, "Internal Volume Stereo", kVolumeKey, kStereo | kLevel, 2, make<AudioEnvelope2>},
    {Family::volume, "Internal Volume 5.1", kVolumeKey, kSurround51 | kLevel, 6, make<AudioEnvelope6>},
    {Family::volume, "Internal Volume 16 Channel", kVolumeKey, kSixteen | kLevel, 16, make<AudioEnvelope16>},
    {Family::mute, "Internal Mute Mono", kMuteKey, kMono | kLevel, 1, make<AudioMute1>},
    {Family::mute, "Internal Mute Stereo", kMuteKey, kStereo | kLevel, 2, make<AudioMute2>},
    {Family::mute, "Internal Mute 5.1", kMuteKey, kSurround51 | kLevel, 6, make<AudioMute6>},
    {Family::mute, "Internal Mute 16 Channel", kMuteKey, kSixteen | kLevel, 16, make<AudioMute16>},
    {Family::delay, "Internal Delay Mono", kDelayKey, kMono, 1, make<AudioDelay1>},
    {Family::delay, "Internal Delay Stereo", kDelayKey, kStereo, 2, make<AudioDelay2>},
    {Family::delay, "Internal Delay 5.1", kDelayKey, kSurround51, 6, make<AudioDelay6>},
    {Family::delay, "Internal Delay 16 Channel", kDelayKey, kSixteen, 16, make<AudioDelay16>},
    {Family::multitapDelay, "Internal Multitap Delay Mono", kMultitapDelayKey, kMono, 1, make<AudioMultitapDelay1>},
    {Family::multitapDelay, "Internal Multitap Delay Stereo", kMultitapDelayKey, kStereo, 2, make<AudioMultitapDelay2>},
    {Family::multitapDelay, "Internal Multitap Delay 5.1", kMultitapDelayKey, kSurround51, 6, make<AudioMultitapDelay6>},
    {Family::multitapDelay, "Internal Multitap Delay 16 Channel", kMultitapDelayKey, kSixteen, 16, make<AudioMultitapDelay16>},
    {Family::lowpass, "Internal Lowpass Mono", kLowpassKey, kMono, 1, make<AudioLowpass1>},
    {Family::lowpass, "Internal Lowpass Stereo", kLowpassKey, kStereo, 2, make<AudioLowpass2>},
    {Family::lowpass, "Internal Lowpass 5.1", kLowpassKey, kSurround51, 6, make<AudioLowpass6>},
    {Family::lowpass, "Internal Lowpass 16 Channel", kLowpassKey, kSixteen, 16, make<AudioLowpass16>},
    {Family::highpass, "Internal Highpass Mono", kHighpassKey, kMono, 1, make<AudioHighpass1>},
    {Family::highpass, "Internal Highpass Stereo", kHighpassKey, kStereo, 2, make<AudioHighpass2>},
    {Family::highpass, "Internal Highpass 5.1", kHighpassKey, kSurround51, 6, make<AudioHighpass6>},
    {Family::highpass, "Internal Highpass 16 Channel", kHighpassKey, kSixteen, 16, make<AudioHighpass16>},
    {Family::bandreject, "Internal Bandreject Mono", kBandrejectKey, kMono, 1, make<AudioBandreject1>},
    {Family::bandreject, "Internal Bandreject Stereo", kBandrejectKey, kStereo, 2, make<AudioBandreject2>},
    {Family::bandreject, "Internal Bandreject 5.1", kBandrejectKey, kSurround51, 6, make<AudioBandreject6>},
    {Family::bandreject, "Internal Bandreject 16 Channel", kBandrejectKey, kSixteen, 16, make<AudioBandreject16>},
    {Family::bandpass, "Internal Bandpass Mono", kBandpassKey, kMono, 1, make<AudioBandpass1>},
    {Family::bandpass, "Internal Bandpass Stereo", kBandpassKey, kStereo, 2, make<AudioBandpass2>},
    {Family::bandpass, "Internal Bandpass 5.1", kBandpassKey, kSurround51, 6, make<AudioBandpass6>},
    {Family::bandpass, "Internal Bandpass 16 Channel", kBandpassKey, kSixteen, 16, make<AudioBandpass16>},
    {Family::bass, "Internal Bass Mono", kBassKey, kMono, 1, make<AudioBass1>},
    {Family::bass, "Internal Bass Stereo", kBassKey, kStereo, 2, make<AudioBass2>},
    {Family::bass, "Internal Bass 5.1", kBassKey, kSurround51, 6, make<AudioBass6>},
    {Family::bass, "Internal Bass 16 Channel", kBassKey, kSixteen, 16, make<AudioBass16>},
    {Family::treble, "Internal Treble Mono", kTrebleKey, kMono, 1, make<AudioTreble1>},
    {Family::treble, "Internal Treble Stereo", kTrebleKey, kStereo, 2, make<AudioTreble2>},
    {Family::treble, "Internal Treble 5.1", kTrebleKey, kSurround51, 6, make<AudioTreble6>},
    {Family::treble, "Internal Treble 16 Channel", kTrebleKey, kSixteen, 16, make<AudioTreble16>},
    {Family::parametricEQ, "Internal Parametric EQ Mono", kParametricEQKey, kMono, 1, make<AudioParametricEQ1>},
    {Family::parametricEQ, "Internal Parametric EQ Stereo", kParametricEQKey, kStereo, 2, make<AudioParametricEQ2>},
    {Family::parametricEQ, "Internal Parametric EQ 5.1", kParametricEQKey, kSurround51, 6, make<AudioParametricEQ6>},
    {Family::parametricEQ, "Internal Parametric EQ 16 Channel", kParametricEQKey, kSixteen, 16, make<AudioParametricEQ16>},
    {Family::swapChannels, "Internal Swap Channels", kSwapChannelsKey, kStereo, 2, make<AudioSwapChannels>},
    {Family::fillLeft, "Internal Fill Left", kFillLeftKey, kStereo, 2, make<AudioFillLeft>},
    {Family::fillRight, "Internal Fill Right", kFillRightKey, kStereo, 2, make<AudioFillRight>},
    {Family::balance, "Internal Balance", kBalanceKey, kStereo | kLevel, 2, make<AudioBalance>},
    {Family::channelVolume, "Internal Channel Volume Stereo", kChannelVolumeKey, kStereo, 2, make<AudioChannelEnvelope2>},
    {Family::channelVolume, "Internal Channel Volume 5.1", kChannelVolumeKey, kSurround51, 6, make<AudioChannelEnvelope6>},
    {Family::channelVolume, "Internal Channel Volume 16 Channel", kChannelVolumeKey, kSixteen, 16,
     make<AudioChannelEnvelope16>},
}};

namespace {

template <std::size_t... Index>
std::array<Ordo::ImmutableString, kVariantCount> internIdentifiers(std::index_sequence<Index...>) {
    return {{Ordo::ImmutableString::CreateStatic(kVariants[Index].identifier)...}};
}

// One interned identifier per row, made in row order when the module is
// loaded and destroyed when it is unloaded. Equal texts share one handle, so
// the factory tells identifiers apart by identity.
const std::array<Ordo::ImmutableString, kVariantCount> kIdentifiers =
    internIdentifiers(std::make_index_sequence<kVariantCount>{});

}  // namespace

const Ordo::ImmutableString& variantIdentifier(std::size_t index) noexcept { return kIdentifiers[index]; }

const VariantRow* findVariant(const Ordo::ImmutableString& id) noexcept {
    for (std::size_t index = 0; index < kVariantCount; ++index) {
        if (kIdentifiers[index] == id) return &kVariants[index];
    }
    return nullptr;
}

AudioEffect* createVariant(Family family, unsigned channels, audioMasterCallback audioMaster) {
    for (const VariantRow& row : kVariants) {
        if (row.family == family && row.channels == channels) return row.create(audioMaster);
    }
    return nullptr;
}

}  // namespace AF
