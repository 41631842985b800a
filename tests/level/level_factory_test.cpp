// The module's factory for the level and channel effects: the variant it
// builds for each identifier, its property interface and its history answer.
#include <functional>
#include <string>

#include "LevelTestSupport.h"
#include "Ordo/ImmutableString.h"
#include "effects/level/Balance.h"
#include "effects/level/ChannelVolume.h"
#include "effects/level/Fill.h"
#include "effects/level/Invert.h"
#include "effects/level/Mute.h"
#include "effects/level/SwapChannels.h"
#include "effects/variants/NamedVariants.h"
#include "module/Factory.h"

namespace {

using level_test::HostedEffect;

enum class History { kNone, kMixinFalse, kMixinTrue, kOwnFalse };

struct Expected {
    const char* identifier;
    VstInt32 channels;
    VstInt32 uniqueId;
    std::function<bool(AudioEffect*)> isVariant;
    History history;
    // The classes without the property interface answer through their own
    // HasHistory.
    std::function<bool(AudioEffect*)> ownHistory;
};

template <class Effect>
bool isA(AudioEffect* effect) {
    return dynamic_cast<Effect*>(effect) != nullptr;
}

template <class Effect>
bool ownHistoryOf(AudioEffect* effect) {
    return dynamic_cast<Effect*>(effect)->HasHistory();
}

const Expected kExpected[] = {
    {"Internal Channel Volume Stereo", 2, 0x41456E32, isA<AF::AudioChannelEnvelope2>, History::kMixinFalse, {}},
    {"Internal Channel Volume 5.1", 6, 0x41456E36, isA<AF::AudioChannelEnvelope6>, History::kMixinFalse, {}},
    {"Internal Channel Volume 16 Channel", 16, 0x41453136, isA<AF::AudioChannelEnvelope16>, History::kMixinFalse, {}},
    {"Internal Balance", 2, 0x41426C32, isA<AF::AudioBalance>, History::kMixinTrue, {}},
    {"Internal Mute Mono", 1, 0x414D6E31, isA<AF::AudioMute1>, History::kMixinFalse, {}},
    {"Internal Mute Stereo", 2, 0x414D6E32, isA<AF::AudioMute2>, History::kMixinFalse, {}},
    {"Internal Mute 5.1", 6, 0x414D6E36, isA<AF::AudioMute6>, History::kMixinFalse, {}},
    {"Internal Mute 16 Channel", 16, 0x414D3136, isA<AF::AudioMute16>, History::kMixinFalse, {}},
    {"Internal Swap Channels", 2, 0x41537743, isA<AF::AudioSwapChannels>, History::kOwnFalse,
     ownHistoryOf<AF::AudioSwapChannels>},
    {"Internal Fill Left", 2, 0x41466C4C, isA<AF::AudioFillLeft>, History::kOwnFalse, ownHistoryOf<AF::AudioFillLeft>},
    {"Internal Fill Right", 2, 0x41466C52, isA<AF::AudioFillRight>, History::kOwnFalse,
     ownHistoryOf<AF::AudioFillRight>},
    {"Internal Invert Mono", 1, 0x41496E31, isA<AF::AudioInvert1>, History::kOwnFalse, ownHistoryOf<AF::AudioInvert1>},
    {"Internal Invert Stereo", 2, 0x41496E32, isA<AF::AudioInvert2>, History::kOwnFalse,
     ownHistoryOf<AF::AudioInvert2>},
    {"Internal Invert 5.1", 6, 0x41496E36, isA<AF::AudioInvert6>, History::kOwnFalse, ownHistoryOf<AF::AudioInvert6>},
    {"Internal Invert 16 Channel", 16, 0x41493136, isA<AF::AudioInvert16>, History::kOwnFalse,
     ownHistoryOf<AF::AudioInvert16>},
};

TEST(LevelFactory, BuildsEachVariantWithItsPropertyInterface) {
    for (const Expected& expected : kExpected) {
        SCOPED_TRACE(expected.identifier);
        ML::VSTPropertySupportMixin* properties = reinterpret_cast<ML::VSTPropertySupportMixin*>(0x1);
        AudioEffect* effect = AF::CreateAudioFilter(Ordo::ImmutableString::CreateStatic(expected.identifier),
                                                    level_test::recordingHost, &properties);
        ASSERT_NE(effect, nullptr);
        HostedEffect host(effect->getAeffect());
        EXPECT_TRUE(expected.isVariant(effect));
        EXPECT_EQ(host->numInputs, expected.channels);
        EXPECT_EQ(host->numOutputs, expected.channels);
        EXPECT_EQ(host->uniqueID, expected.uniqueId);
        switch (expected.history) {
            case History::kOwnFalse:
                // Invert, Swap and Fill have no property interface.
                EXPECT_EQ(properties, nullptr);
                EXPECT_FALSE(expected.ownHistory(effect));
                break;
            case History::kMixinFalse:
                ASSERT_NE(properties, nullptr);
                EXPECT_EQ(properties, dynamic_cast<ML::VSTPropertySupportMixin*>(effect));
                EXPECT_FALSE(properties->HasHistory());
                break;
            case History::kMixinTrue:
                ASSERT_NE(properties, nullptr);
                EXPECT_EQ(properties, dynamic_cast<ML::VSTPropertySupportMixin*>(effect));
                EXPECT_TRUE(properties->HasHistory());
                break;
            case History::kNone: break;
        }
    }
}

// The four-channel Invert class exists, but no identifier builds it.
TEST(LevelFactory, OffersNoFourChannelInvert) {
    for (const char* identifier : {"Internal Invert 4 Channel", "Internal Invert Quad", "Internal Invert 4"}) {
        ML::VSTPropertySupportMixin* properties = nullptr;
        AudioEffect* effect =
            AF::CreateAudioFilter(Ordo::ImmutableString::CreateStatic(identifier), nullptr, &properties);
        EXPECT_EQ(effect, nullptr) << identifier;
        EXPECT_EQ(properties, nullptr) << identifier;
    }
}

// A mixin family made by the factory can be deleted through the interface the
// factory handed out (the sanitizer build checks the whole object goes).
TEST(LevelFactory, EffectsDeletedThroughTheirPropertyInterface) {
    for (const char* identifier : {"Internal Channel Volume 16 Channel", "Internal Balance", "Internal Mute 5.1"}) {
        ML::VSTPropertySupportMixin* properties = nullptr;
        AudioEffect* effect =
            AF::CreateAudioFilter(Ordo::ImmutableString::CreateStatic(identifier), nullptr, &properties);
        ASSERT_NE(effect, nullptr) << identifier;
        ASSERT_NE(properties, nullptr) << identifier;
        delete properties;
    }
}

}  // namespace
