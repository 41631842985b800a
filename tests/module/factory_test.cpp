// The factory linked into the test program: each identifier makes its class
// (checked with dynamic_cast) and hands out the effect's own property interface.
#include <gtest/gtest.h>

#include <cstdint>

#include "Opcodes.h"
#include "Ordo/ImmutableString.h"
#include "effects/level/Invert.h"
#include "effects/level/Volume.h"
#include "effects/variants/NamedVariants.h"
#include "module/Factory.h"

namespace {

Ordo::ImmutableString intern(const char* text) { return Ordo::ImmutableString::CreateStatic(text); }

TEST(Factory, VolumeFiveOneIsAnEnvelope6WithItsPropertyInterface) {
    ML::VSTPropertySupportMixin* properties = nullptr;
    AudioEffect* effect = AF::CreateAudioFilter(intern("Internal Volume 5.1"), nullptr, &properties);
    ASSERT_NE(effect, nullptr);
    auto* envelope = dynamic_cast<AF::AudioEnvelope6*>(effect);
    EXPECT_NE(envelope, nullptr);
    EXPECT_EQ(properties, static_cast<ML::VSTPropertySupportMixin*>(envelope));
    AEffect* record = effect->getAeffect();
    record->dispatcher(record, effClose, 0, 0, nullptr, 0.0f);
}

TEST(Factory, InProcessEachVolumeIdentifierMakesItsClass) {
    struct Case {
        const char* identifier;
        bool (*isRightClass)(AudioEffect*);
    };
    const Case cases[] = {
        {"Internal Volume Mono", [](AudioEffect* e) { return dynamic_cast<AF::AudioEnvelope1*>(e) != nullptr; }},
        {"Internal Volume Stereo", [](AudioEffect* e) { return dynamic_cast<AF::AudioEnvelope2*>(e) != nullptr; }},
        {"Internal Volume 5.1", [](AudioEffect* e) { return dynamic_cast<AF::AudioEnvelope6*>(e) != nullptr; }},
        {"Internal Volume 16 Channel",
         [](AudioEffect* e) { return dynamic_cast<AF::AudioEnvelope16*>(e) != nullptr; }},
    };
    for (const Case& c : cases) {
        AudioEffect* effect = AF::CreateAudioFilter(intern(c.identifier), nullptr, nullptr);
        ASSERT_NE(effect, nullptr) << c.identifier;
        EXPECT_TRUE(c.isRightClass(effect)) << c.identifier;
        delete effect;
    }
}

}  // namespace

// The stereo Invert identifier makes the class AF::AudioInvert2,
// which has no property interface.
TEST(Factory, InvertStereoIsAnInvert2) {
    auto* sentinel = reinterpret_cast<ML::VSTPropertySupportMixin*>(std::uintptr_t{0x10});
    ML::VSTPropertySupportMixin* properties = sentinel;
    AudioEffect* effect = AF::CreateAudioFilter(intern("Internal Invert Stereo"), nullptr, &properties);
    ASSERT_NE(effect, nullptr);
    EXPECT_NE(dynamic_cast<AF::AudioInvert2*>(effect), nullptr);
    EXPECT_EQ(properties, nullptr);
    delete effect;
}
