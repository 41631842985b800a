// The factory the host calls with a registered identifier: builds the variant
// and hands back its property interface.
#include <array>

#include "Factory.h"
#include "Identifiers.h"
#include "RegistrationTable.h"

namespace AF {

namespace {

// The order in which identifiers are compared: by family (Invert, Volume, the
// delays, the filters and equalisers, the channel utilities, Balance, Channel
// Volume, Mute), mono to 16 channels within each. Identifiers are distinct, so
// the order only decides how soon a match is found.
constinit const std::array<const Ordo::ImmutableString*, kRegistrationCount> kFactoryOrder = {{
    &ids::kInvertMono,
    &ids::kInvertStereo,
    &ids::kInvert51,
    &ids::kInvert16,
    &ids::kVolumeMono,
    &ids::kVolumeStereo,
    &ids::kVolume51,
    &ids::kVolume16,
    &ids::kDelayMono,
    &ids::kDelayStereo,
    &ids::kDelay51,
    &ids::kDelay16,
    &ids::kMultitapDelayMono,
    &ids::kMultitapDelayStereo,
    &ids::kMultitapDelay51,
    &ids::kMultitapDelay16,
    &ids::kLowpassMono,
    &ids::kLowpassStereo,
    &ids::kLowpass51,
    &ids::kLowpass16,
    &ids::kHighpassMono,
    &ids::kHighpassStereo,
    &ids::kHighpass51,
    &ids::kHighpass16,
    &ids::kBandpassMono,
    &ids::kBandpassStereo,
    &ids::kBandpass51,
    &ids::kBandpass16,
    &ids::kBandrejectMono,
    &ids::kBandrejectStereo,
    &ids::kBandreject51,
    &ids::kBandreject16,
    &ids::kParametricEQMono,
    &ids::kParametricEQStereo,
    &ids::kParametricEQ51,
    &ids::kParametricEQ16,
    &ids::kBassMono,
    &ids::kBassStereo,
    &ids::kBass51,
    &ids::kBass16,
    &ids::kTrebleMono,
    &ids::kTrebleStereo,
    &ids::kTreble51,
    &ids::kTreble16,
    &ids::kSwapChannels,
    &ids::kFillLeft,
    &ids::kFillRight,
    &ids::kBalance,
    &ids::kChannelVolumeStereo,
    &ids::kChannelVolume51,
    &ids::kChannelVolume16,
    &ids::kMuteMono,
    &ids::kMuteStereo,
    &ids::kMute51,
    &ids::kMute16,
}};

const RegistrationRow* matchIdentifier(const Ordo::ImmutableString& id) noexcept {
    for (const Ordo::ImmutableString* known : kFactoryOrder) {
        if (*known == id) return findRegistration(*known);
    }
    return nullptr;
}

}  // namespace

AudioEffect* CreateAudioFilter(const Ordo::ImmutableString& id, audioMasterCallback audioMaster,
                               ML::VSTPropertySupportMixin** properties) {
    AudioEffect* effect = nullptr;
    try {
        if (const RegistrationRow* row = matchIdentifier(id)) effect = row->create(row->channels, audioMaster);
    } catch (...) {
        // A family constructor that fails for want of memory yields no effect.
        effect = nullptr;
    }
    // The property interface is the effect's second base, found by a cross-cast;
    // the classes without it (and a missing effect) give null.
    ML::VSTPropertySupportMixin* mixin = dynamic_cast<ML::VSTPropertySupportMixin*>(effect);
    if (properties != nullptr) *properties = mixin;
    return effect;
}

}  // namespace AF
