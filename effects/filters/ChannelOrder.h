#pragma once
// The order in which a filter family visits the samples of one call, shared by
// every filter and equaliser. Up to six channels go frame by frame (channels in
// order inside each frame) after one coefficient refresh; sixteen channels go
// channel by channel, each pass starting with its own refresh, so a parameter
// stored by another thread mid-call reaches only the later channels.
#include "AEffect.h"

namespace AF {

// `refresh()` compares the parameters with the applied ones (even for a call of
// zero frames); `step(channel, frame)` computes one sample.
template <unsigned Channels, class Refresh, class Step>
inline void forEachSampleInChannelOrder(VstInt32 frames, Refresh&& refresh, Step&& step) {
    if constexpr (Channels == 16) {
        for (unsigned channel = 0; channel < Channels; ++channel) {
            refresh();
            for (VstInt32 frame = 0; frame < frames; ++frame) step(channel, frame);
        }
    } else {
        refresh();
        for (VstInt32 frame = 0; frame < frames; ++frame)
            for (unsigned channel = 0; channel < Channels; ++channel) step(channel, frame);
    }
}

}  // namespace AF
