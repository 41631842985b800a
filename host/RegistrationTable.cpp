#include "RegistrationTable.h"

#include "Identifiers.h"

namespace AF {

namespace {

// Display-name keys, one per family.
constexpr const char* kInvertNameKey = "$$$/Korvex/AudioFilters/Invert=Invert";
constexpr const char* kVolumeNameKey = "$$$/Korvex/AudioFilters/Volume=Volume";
constexpr const char* kMuteNameKey = "$$$/Korvex/AudioFilters/Mute=Mute";
constexpr const char* kDelayNameKey = "$$$/Korvex/AudioFilters/Delay=Delay";
constexpr const char* kMultitapDelayNameKey = "$$$/Korvex/AudioFilters/MultitapDelay=Multitap Delay";
constexpr const char* kLowpassNameKey = "$$$/Korvex/AudioFilters/Lowpass=Lowpass";
constexpr const char* kHighpassNameKey = "$$$/Korvex/AudioFilters/Highpass=Highpass";
constexpr const char* kBandrejectNameKey = "$$$/Korvex/AudioFilters/Bandreject=Notch";
constexpr const char* kBandpassNameKey = "$$$/Korvex/AudioFilters/Bandpass=Bandpass";
constexpr const char* kBassNameKey = "$$$/Korvex/AudioFilters/Bass=Bass";
constexpr const char* kTrebleNameKey = "$$$/Korvex/AudioFilters/Treble=Treble";
constexpr const char* kParametricEQNameKey = "$$$/Korvex/AudioFilters/ParametricEQ=Parametric EQ";
constexpr const char* kSwapChannelsNameKey = "$$$/Korvex/AudioFilters/SwapChannels=Swap Channels";
constexpr const char* kFillLeftNameKey = "$$$/Korvex/AudioFilters/FillLeft=Fill Left";
constexpr const char* kFillRightNameKey = "$$$/Korvex/AudioFilters/FillRight=Fill Right";
constexpr const char* kBalanceNameKey = "$$$/Korvex/AudioFilters/Balance=Balance";
constexpr const char* kChannelVolumeNameKey = "$$$/Korvex/AudioFilters/ChannelVolumeStereo=Channel Volume";

// Layout flags of the host's registry: one pair of bits per layout. Volume, Mute
// and Balance add the level bit; Channel Volume deliberately does not.
constexpr unsigned kMono = 0x104u;
constexpr unsigned kStereo = 0x208u;
constexpr unsigned kSurround51 = 0x820u;
constexpr unsigned kSixteen = 0x18000u;
constexpr unsigned kLevel = 0x4000u;

}  // namespace

// Rows: identifier, display key, flags, family creator, channel count.
constinit const std::array<RegistrationRow, kRegistrationCount> kRegistrationTable = {{
    {&ids::kInvertMono, kInvertNameKey, kMono, createInvert, 1},
    {&ids::kInvertStereo, kInvertNameKey, kStereo, createInvert, 2},
    {&ids::kInvert51, kInvertNameKey, kSurround51, createInvert, 6},
    {&ids::kInvert16, kInvertNameKey, kSixteen, createInvert, 16},
    {&ids::kVolumeMono, kVolumeNameKey, kMono | kLevel, createVolume, 1},
    {&ids::kVolumeStereo, kVolumeNameKey, kStereo | kLevel, createVolume, 2},
    {&ids::kVolume51, kVolumeNameKey, kSurround51 | kLevel, createVolume, 6},
    {&ids::kVolume16, kVolumeNameKey, kSixteen | kLevel, createVolume, 16},
    {&ids::kMuteMono, kMuteNameKey, kMono | kLevel, createMute, 1},
    {&ids::kMuteStereo, kMuteNameKey, kStereo | kLevel, createMute, 2},
    {&ids::kMute51, kMuteNameKey, kSurround51 | kLevel, createMute, 6},
    {&ids::kMute16, kMuteNameKey, kSixteen | kLevel, createMute, 16},
    {&ids::kDelayMono, kDelayNameKey, kMono, createDelay, 1},
    {&ids::kDelayStereo, kDelayNameKey, kStereo, createDelay, 2},
    {&ids::kDelay51, kDelayNameKey, kSurround51, createDelay, 6},
    {&ids::kDelay16, kDelayNameKey, kSixteen, createDelay, 16},
    {&ids::kMultitapDelayMono, kMultitapDelayNameKey, kMono, createMultitapDelay, 1},
    {&ids::kMultitapDelayStereo, kMultitapDelayNameKey, kStereo, createMultitapDelay, 2},
    {&ids::kMultitapDelay51, kMultitapDelayNameKey, kSurround51, createMultitapDelay, 6},
    {&ids::kMultitapDelay16, kMultitapDelayNameKey, kSixteen, createMultitapDelay, 16},
    {&ids::kLowpassMono, kLowpassNameKey, kMono, createLowpass, 1},
    {&ids::kLowpassStereo, kLowpassNameKey, kStereo, createLowpass, 2},
    {&ids::kLowpass51, kLowpassNameKey, kSurround51, createLowpass, 6},
    {&ids::kLowpass16, kLowpassNameKey, kSixteen, createLowpass, 16},
    {&ids::kHighpassMono, kHighpassNameKey, kMono, createHighpass, 1},
    {&ids::kHighpassStereo, kHighpassNameKey, kStereo, createHighpass, 2},
    {&ids::kHighpass51, kHighpassNameKey, kSurround51, createHighpass, 6},
    {&ids::kHighpass16, kHighpassNameKey, kSixteen, createHighpass, 16},
    {&ids::kBandrejectMono, kBandrejectNameKey, kMono, createBandreject, 1},
    {&ids::kBandrejectStereo, kBandrejectNameKey, kStereo, createBandreject, 2},
    {&ids::kBandreject51, kBandrejectNameKey, kSurround51, createBandreject, 6},
    {&ids::kBandreject16, kBandrejectNameKey, kSixteen, createBandreject, 16},
    {&ids::kBandpassMono, kBandpassNameKey, kMono, createBandpass, 1},
    {&ids::kBandpassStereo, kBandpassNameKey, kStereo, createBandpass, 2},
    {&ids::kBandpass51, kBandpassNameKey, kSurround51, createBandpass, 6},
    {&ids::kBandpass16, kBandpassNameKey, kSixteen, createBandpass, 16},
    {&ids::kBassMono, kBassNameKey, kMono, createBass, 1},
    {&ids::kBassStereo, kBassNameKey, kStereo, createBass, 2},
    {&ids::kBass51, kBassNameKey, kSurround51, createBass, 6},
    {&ids::kBass16, kBassNameKey, kSixteen, createBass, 16},
    {&ids::kTrebleMono, kTrebleNameKey, kMono, createTreble, 1},
    {&ids::kTrebleStereo, kTrebleNameKey, kStereo, createTreble, 2},
    {&ids::kTreble51, kTrebleNameKey, kSurround51, createTreble, 6},
    {&ids::kTreble16, kTrebleNameKey, kSixteen, createTreble, 16},
    {&ids::kParametricEQMono, kParametricEQNameKey, kMono, createParametricEQ, 1},
    {&ids::kParametricEQStereo, kParametricEQNameKey, kStereo, createParametricEQ, 2},
    {&ids::kParametricEQ51, kParametricEQNameKey, kSurround51, createParametricEQ, 6},
    {&ids::kParametricEQ16, kParametricEQNameKey, kSixteen, createParametricEQ, 16},
    {&ids::kSwapChannels, kSwapChannelsNameKey, kStereo, createSwapChannels, 2},
    {&ids::kFillLeft, kFillLeftNameKey, kStereo, createFillLeft, 2},
    {&ids::kFillRight, kFillRightNameKey, kStereo, createFillRight, 2},
    {&ids::kBalance, kBalanceNameKey, kStereo | kLevel, createBalance, 2},
    {&ids::kChannelVolumeStereo, kChannelVolumeNameKey, kStereo, createChannelVolume, 2},
    {&ids::kChannelVolume51, kChannelVolumeNameKey, kSurround51, createChannelVolume, 6},
    {&ids::kChannelVolume16, kChannelVolumeNameKey, kSixteen, createChannelVolume, 16},
}};

const RegistrationRow* findRegistration(const Ordo::ImmutableString& id) noexcept {
    for (const RegistrationRow& row : kRegistrationTable) {
        if (*row.id == id) return &row;
    }
    return nullptr;
}

}  // namespace AF
