#pragma once
// What the single-tap and the four-tap delay share beyond the line itself
// (dsp/delay/DelayLine.h): the creators' constructor call.
#include <new>

#include "AudioEffect.h"
#include "dsp/delay/DelayLine.h"

namespace AF::delay {

// The family creators' constructor call: null when memory is short, and an
// effect whose line could not be allocated is deleted, not handed out.
template <class Variant>
AudioEffect* makeVariant(audioMasterCallback audioMaster) noexcept {
    try {
        auto* effect = new (std::nothrow) Variant(audioMaster);
        if (effect != nullptr && !effect->hasDelayLine()) {
            delete effect;
            return nullptr;
        }
        return effect;
    } catch (...) {
        return nullptr;
    }
}

}  // namespace AF::delay
