// Volume's classes linked into the test program: the unrolled scale loop,
// the destructor chain, the variants' shape and the variant table's creator.
#include <gtest/gtest.h>

#include <limits>
#include <type_traits>
#include <vector>

#include "Opcodes.h"
#include "effects/level/Volume.h"
#include "effects/variants/NamedVariants.h"
#include "module/VariantTable.h"
#include "support/Buffers.h"

namespace {

using aftest::sameBits;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

TEST(VolumeScale, UnrolledMultiplyEqualsThePlainProduct) {
    // Every length around the unroll width, and a long odd one.
    for (int frames : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 1027}) {
        for (float gain : {0.5f, 1.3f, -2.0f, 0.0f, kNaN, kInfinity}) {
            std::vector<float> samples = aftest::taggedNoise(1, frames, 90u + static_cast<unsigned>(frames))[0];
            std::vector<float> expected = samples;
            for (float& sample : expected) sample = sample * gain;
            AF::scaleInPlace(samples.data(), frames, gain);
            EXPECT_TRUE(sameBits(expected, samples)) << "frames " << frames << ", gain " << gain;
        }
    }
    // A negative count touches nothing.
    std::vector<float> samples = {1.0f, 2.0f};
    AF::scaleInPlace(samples.data(), -3, 5.0f);
    EXPECT_EQ(samples, (std::vector<float>{1.0f, 2.0f}));
}

int destructorRuns = 0;

// Counts how often the whole destructor chain runs.
class CountingEnvelope final : public AF::AudioEnvelope {
public:
    explicit CountingEnvelope(audioMasterCallback audioMaster) : AF::AudioEnvelope(2, audioMaster) {}
    ~CountingEnvelope() override { ++destructorRuns; }
};

TEST(VolumeLifetime, DeletingThroughThePropertyInterfaceRunsTheWholeDestructor) {
    destructorRuns = 0;
    auto* effect = new CountingEnvelope(nullptr);
    ML::VSTPropertySupportMixin* properties = effect;
    EXPECT_NE(static_cast<void*>(properties), static_cast<void*>(effect));  // a distinct sub-object
    delete properties;
    EXPECT_EQ(destructorRuns, 1);
}

TEST(VolumeLifetime, CloseOpcodeDeletesTheEffect) {
    destructorRuns = 0;
    auto* effect = new CountingEnvelope(nullptr);
    AEffect* record = effect->getAeffect();
    EXPECT_EQ(record->dispatcher(record, effClose, 0, 0, nullptr, 0.0f), 1);
    EXPECT_EQ(destructorRuns, 1);
}

static_assert(std::is_final_v<AF::AudioEnvelope1> && std::is_final_v<AF::AudioEnvelope2> &&
              std::is_final_v<AF::AudioEnvelope6> && std::is_final_v<AF::AudioEnvelope16>);
static_assert(std::is_base_of_v<AudioEffectX, AF::AudioEnvelope> &&
              std::is_base_of_v<ML::VSTPropertySupportMixin, AF::AudioEnvelope>);

TEST(VolumeCreator, MakesEachRegisteredVariantAndNothingElse) {
    auto check = [](unsigned channels, auto* expectedType) {
        AudioEffect* effect = AF::createVariant(AF::Family::volume, channels, nullptr);
        ASSERT_NE(effect, nullptr) << channels;
        EXPECT_NE(dynamic_cast<decltype(expectedType)>(effect), nullptr) << channels;
        AEffect* record = effect->getAeffect();
        record->dispatcher(record, effClose, 0, 0, nullptr, 0.0f);
    };
    check(1, static_cast<AF::AudioEnvelope1*>(nullptr));
    check(2, static_cast<AF::AudioEnvelope2*>(nullptr));
    check(6, static_cast<AF::AudioEnvelope6*>(nullptr));
    check(16, static_cast<AF::AudioEnvelope16*>(nullptr));
    for (unsigned channels : {0u, 3u, 4u, 5u, 8u, 17u}) EXPECT_EQ(AF::createVariant(AF::Family::volume, channels, nullptr), nullptr);
}

}  // namespace
