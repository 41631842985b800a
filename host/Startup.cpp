#include "Startup.h"

#include <cstring>
#include <optional>

#include "Factory.h"
#include "Localized.h"
#include "ML/VSTAudioFilterRegistry.h"
#include "RegistrationTable.h"

namespace AF {

namespace {

bool sameFamily(const RegistrationRow& a, const RegistrationRow& b) noexcept {
    return std::strcmp(a.displayKey, b.displayKey) == 0;
}

}  // namespace

void Startup() {
    try {
        // The family's display name is fetched once and shared by its variants;
        // it is released before the next family's is fetched.
        std::optional<plinth::WideString> displayName;
        const RegistrationRow* familyStart = nullptr;
        for (const RegistrationRow& row : kRegistrationTable) {
            if (familyStart == nullptr || !sameFamily(*familyStart, row)) {
                displayName.reset();
                displayName.emplace(localizedWideText(row.displayKey));
                familyStart = &row;
            }
            ML::VSTAudioFilterRegistry::RegisterVSTPlugin(*row.id, *displayName, row.flags, &CreateAudioFilter);
        }
    } catch (...) {
        // Start-up reports nothing to the host: a registration that cannot be
        // made (memory exhausted) ends it with what was registered so far.
    }
}

void Shutdown() {}

}  // namespace AF
