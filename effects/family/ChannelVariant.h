#pragma once
// A channel variant: its family built for a fixed channel count, with the
// record's channel counts, four-character id and replacing flag set. Each
// name the host knows is a one-line final class over this, e.g.
//   class AF_EXPORT AudioEnvelope2 final : public ChannelVariant<AudioEnvelope, 2, "AEn2"> { using ChannelVariant::ChannelVariant; };
#include <cstddef>

#include "AudioEffect.h"
#include "Export.h"
#include "FamilyShape.h"

namespace AF {

// The four characters of a variant id as a template argument.
struct VariantCode {
    char text[5];
    consteval VariantCode(const char (&code)[5]) : text{code[0], code[1], code[2], code[3], 0} {}
};

template <class Family, unsigned Channels, VariantCode Code>
class AF_EXPORT ChannelVariant : public Family {
public:
    explicit ChannelVariant(audioMasterCallback audioMaster) : Family(Channels, audioMaster) {
        configureVariant(*this, static_cast<VstInt32>(Channels), fourCharCode(Code.text));
    }
};

}  // namespace AF
