// The factory the host calls with a registered identifier: builds the variant
// and hands back its property interface.
#include "Factory.h"

#include "VariantTable.h"

namespace AF {

AudioEffect* CreateAudioFilter(const Ordo::ImmutableString& id, audioMasterCallback audioMaster,
                               ML::VSTPropertySupportMixin** properties) {
    AudioEffect* effect = nullptr;
    try {
        if (const VariantRow* row = findVariant(id)) effect = row->create(audioMaster);
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
