#pragma once
// The module's registration table: what AF::Startup hands the host's registry,
// one row per registered variant, in registration order.
#include <array>
#include <cstddef>

#include "Factory.h"
#include "Ordo/ImmutableString.h"

namespace AF {

struct RegistrationRow {
    const Ordo::ImmutableString* id;  // interned when the module is loaded
    const char* displayKey;           // localised family name, shared by all its variants
    unsigned flags;                   // channel-layout bits of the host's registry
    FamilyCreator create;             // the family's constructor of variants
    unsigned channels;                // the variant's channel count
};

inline constexpr std::size_t kRegistrationCount = 55;

extern const std::array<RegistrationRow, kRegistrationCount> kRegistrationTable;

// The row registered under `id` (identity of the interned handle); null if none.
const RegistrationRow* findRegistration(const Ordo::ImmutableString& id) noexcept;

}  // namespace AF
