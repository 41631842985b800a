#pragma once
// The module's one table of registered variants: what start-up hands the host's
// registry and what the factory builds, one row per variant, in registration order.
#include <array>
#include <cstddef>

#include "AudioEffect.h"
#include "Ordo/ImmutableString.h"

namespace AF {

// The effect families, by the names the effects folder gives them.
enum class Family {
    invert,
    volume,
    mute,
    delay,
    multitapDelay,
    lowpass,
    highpass,
    bandreject,
    bandpass,
    bass,
    treble,
    parametricEQ,
    swapChannels,
    fillLeft,
    fillRight,
    balance,
    channelVolume,
};

// Builds one variant class with new (std::nothrow): null when memory is short.
using VariantCreator = AudioEffect* (*)(audioMasterCallback audioMaster);

struct VariantRow {
    Family family;
    const char* identifier;  // the text the host's registry knows the variant by
    const char* displayKey;  // localised family name, shared by all its variants
    unsigned flags;          // channel-layout bits of the host's registry
    unsigned channels;
    VariantCreator create;   // constructs the row's class
};

inline constexpr std::size_t kVariantCount = 55;

extern const std::array<VariantRow, kVariantCount> kVariants;

// The interned identifier of row `index`, made once when the module is loaded.
const Ordo::ImmutableString& variantIdentifier(std::size_t index) noexcept;

// The row registered under `id` (identity of the interned handle); null if none.
const VariantRow* findVariant(const Ordo::ImmutableString& id) noexcept;

// Builds the registered variant of `family` for `channels`; null for a channel
// count the family does not register (four channels included).
AudioEffect* createVariant(Family family, unsigned channels, audioMasterCallback audioMaster);

}  // namespace AF
