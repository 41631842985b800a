#pragma once
// The module's one factory, registered with every identifier.
#include "AudioEffect.h"
#include "ML/VSTPropertySupportMixin.h"
#include "Ordo/ImmutableString.h"

namespace AF {

// Compares `id` by interned handle with the registered identifiers, builds the
// variant and hands back its property interface (null for the classes without
// it, and for an unknown id).
AudioEffect* CreateAudioFilter(const Ordo::ImmutableString& id, audioMasterCallback audioMaster,
                               ML::VSTPropertySupportMixin** properties);

}  // namespace AF
