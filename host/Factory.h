#pragma once
// The module's one factory and the per-family constructors it dispatches to.
#include "AudioEffect.h"
#include "ML/VSTPropertySupportMixin.h"
#include "Ordo/ImmutableString.h"

namespace AF {

// Makes the variant of a family for `channels` with new (std::nothrow); null for
// a channel count the family does not register (four channels included) or
// when memory is short. Each family defines its own in its source file.
using FamilyCreator = AudioEffect* (*)(unsigned channels, audioMasterCallback audioMaster);

AudioEffect* createInvert(unsigned channels, audioMasterCallback audioMaster);
AudioEffect* createVolume(unsigned channels, audioMasterCallback audioMaster);
AudioEffect* createDelay(unsigned channels, audioMasterCallback audioMaster);
AudioEffect* createMultitapDelay(unsigned channels, audioMasterCallback audioMaster);
AudioEffect* createLowpass(unsigned channels, audioMasterCallback audioMaster);
AudioEffect* createHighpass(unsigned channels, audioMasterCallback audioMaster);
AudioEffect* createBandpass(unsigned channels, audioMasterCallback audioMaster);
AudioEffect* createBandreject(unsigned channels, audioMasterCallback audioMaster);
AudioEffect* createParametricEQ(unsigned channels, audioMasterCallback audioMaster);
AudioEffect* createBass(unsigned channels, audioMasterCallback audioMaster);
AudioEffect* createTreble(unsigned channels, audioMasterCallback audioMaster);
AudioEffect* createSwapChannels(unsigned channels, audioMasterCallback audioMaster);  // 2 only
AudioEffect* createFillLeft(unsigned channels, audioMasterCallback audioMaster);      // 2 only
AudioEffect* createFillRight(unsigned channels, audioMasterCallback audioMaster);     // 2 only
AudioEffect* createBalance(unsigned channels, audioMasterCallback audioMaster);       // 2 only
AudioEffect* createChannelVolume(unsigned channels, audioMasterCallback audioMaster);
AudioEffect* createMute(unsigned channels, audioMasterCallback audioMaster);

// The factory registered with every identifier: compares `id` by interned
// handle with the 55 identifiers, builds the variant and hands back its
// property interface (null for the classes without it, and for an unknown id).
AudioEffect* CreateAudioFilter(const Ordo::ImmutableString& id, audioMasterCallback audioMaster,
                               ML::VSTPropertySupportMixin** properties);

}  // namespace AF
