// Families not built yet: their constructors answer null until their own
// source file defines the real one (which takes precedence at link time).
#include "Factory.h"

#define AF_PENDING_FAMILY(name) \
    __attribute__((weak)) AudioEffect* AF::name(unsigned, audioMasterCallback) { return nullptr; }

AF_PENDING_FAMILY(createInvert)
AF_PENDING_FAMILY(createVolume)
AF_PENDING_FAMILY(createDelay)
AF_PENDING_FAMILY(createMultitapDelay)
AF_PENDING_FAMILY(createLowpass)
AF_PENDING_FAMILY(createHighpass)
AF_PENDING_FAMILY(createBandpass)
AF_PENDING_FAMILY(createBandreject)
AF_PENDING_FAMILY(createParametricEQ)
AF_PENDING_FAMILY(createBass)
AF_PENDING_FAMILY(createTreble)
AF_PENDING_FAMILY(createSwapChannels)
AF_PENDING_FAMILY(createFillLeft)
AF_PENDING_FAMILY(createFillRight)
AF_PENDING_FAMILY(createBalance)
AF_PENDING_FAMILY(createChannelVolume)
AF_PENDING_FAMILY(createMute)
