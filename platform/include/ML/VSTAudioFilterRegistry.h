#pragma once
#include <vector>

#include "AEffect.h"
#include "ML/VSTPropertySupportMixin.h"
#include "Ordo/ImmutableString.h"
#include "PlatformExport.h"
#include "plinth/WideString.h"

class AudioEffect;

namespace ML {

// The host's registry of effects. A module registers each effect it offers
// under an identifier with a display name, channel-layout flags and a factory;
// the registry keeps every registration in order. Thread-safe.
class PLATFORM_API VSTAudioFilterRegistry {
public:
    using Factory = AudioEffect* (*)(const Ordo::ImmutableString& id, audioMasterCallback audioMaster,
                                     VSTPropertySupportMixin** properties);

    struct Registration {
        Ordo::ImmutableString id;
        plinth::WideString displayName;
        unsigned flags = 0;
        Factory factory = nullptr;
    };

    static void RegisterVSTPlugin(const Ordo::ImmutableString& id, const plinth::WideString& displayName,
                                  unsigned flags, Factory factory);

    // For hosts: every registration so far, in order.
    static std::vector<Registration> Registrations();
    // For hosts: copies the last registration under `id` into `found`; false if none.
    static bool Find(const Ordo::ImmutableString& id, Registration& found);
    // For hosts: forgets every registration (before a module is unloaded).
    static void Clear() noexcept;
};

}  // namespace ML
