#include "Startup.h"

#include <cstddef>
#include <optional>

#include "Factory.h"
#include "ML/VSTAudioFilterRegistry.h"
#include "VariantTable.h"
#include "effects/family/Localized.h"

namespace AF {

void Startup() {
    try {
        // The family's display name is fetched once and shared by its variants;
        // it is released before the next family's is fetched.
        std::optional<plinth::WideString> displayName;
        const VariantRow* familyStart = nullptr;
        for (std::size_t index = 0; index < kVariantCount; ++index) {
            const VariantRow& row = kVariants[index];
            if (familyStart == nullptr || familyStart->family != row.family) {
                displayName.reset();
                displayName.emplace(localizedWideText(row.displayKey));
                familyStart = &row;
            }
            ML::VSTAudioFilterRegistry::RegisterVSTPlugin(variantIdentifier(index), *displayName, row.flags,
                                                          &CreateAudioFilter);
        }
    } catch (...) {
        // Start-up reports nothing to the host: a registration that cannot be
        // made (memory exhausted) ends it with what was registered so far.
    }
}

void Shutdown() {}

}  // namespace AF
