// What the equalisers do with input a host should not send: parameters
// outside 0..1, NaN and infinities, odd sample rates, empty and negative frame
// counts, null buffers. Results follow the reference (a NaN matches any NaN);
// nothing crashes, and the sanitizer build runs these too.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <typeinfo>

#include "EqHarness.h"
#include "effects/variants/NamedVariants.h"
#include "module/VariantTable.h"

namespace {

using namespace eqtest;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

template <class Effect>
class EqBadInputTest : public ::testing::Test {};
TYPED_TEST_SUITE(EqBadInputTest, EqVariants);

// Runs blocks of 64, 5 and 64 frames through both; true when they agree.
template <class Effect>
::testing::AssertionResult sameAsReference(Rig& rig, eqref::Model& model, Channels& actual, Channels& expected,
                                           const Channels& input) {
    int offset = 0;
    for (int frames : {64, 5, 64}) {
        rig.call(false, actual, actual, offset, frames);
        model.run(input, expected, offset, frames, false);
        offset += frames;
    }
    return sameChannels(actual, expected);
}

TYPED_TEST(EqBadInputTest, ParametersOutsideTheRangeFollowTheReference) {
    const unsigned channels = channelsOf<TypeParam>();
    const Channels input = taggedSignal(channels, 133);
    for (float value : {1.5f, -0.5f, 2.0f, 1e30f, -1e30f, kNaN, kInf, -kInf}) {
        for (int index = 0; index < eqref::Model::make(familyOf<TypeParam>(), 1).parameterCount(); ++index) {
            SCOPED_TRACE(::testing::Message() << "parameter " << index << " = " << value);
            auto rig = makeRig<TypeParam>();
            eqref::Model model = eqref::Model::make(familyOf<TypeParam>(), channels);
            rig->setSampleRate(48000.0f);
            model.setSampleRate(48000.0f);
            rig->setParameter(index, value);
            model.setParameter(index, value);
            Channels actual = input, expected = input;
            EXPECT_TRUE(sameAsReference<TypeParam>(*rig, model, actual, expected, input));
            if (std::isnan(value)) {
                // Every coefficient is NaN, and stays so: NaN never equals the snapshot.
                for (const auto& channel : actual)
                    for (float y : channel) ASSERT_TRUE(std::isnan(y));
            }
            // Back to a sane value and a suspend: finite output again.
            rig->setParameter(index, 0.6f);
            model.setParameter(index, 0.6f);
            rig->suspend();
            model.suspend();
            actual = input;
            expected = input;
            EXPECT_TRUE(sameAsReference<TypeParam>(*rig, model, actual, expected, input));
            for (const auto& channel : actual)
                for (float y : channel) ASSERT_TRUE(std::isfinite(y));
        }
    }
}

TYPED_TEST(EqBadInputTest, OddSampleRatesFollowTheReference) {
    const unsigned channels = channelsOf<TypeParam>();
    const Channels input = taggedSignal(channels, 133);
    const bool shelf = familyOf<TypeParam>() != eqref::Family::parametricEq;
    for (float rate : {0.0f, -48000.0f, 1e30f, 1e-30f, kNaN, kInf}) {
        SCOPED_TRACE(::testing::Message() << "rate " << rate);
        auto rig = makeRig<TypeParam>();
        eqref::Model model = eqref::Model::make(familyOf<TypeParam>(), channels);
        rig->setSampleRate(rate);
        model.setSampleRate(rate);
        const int boostIndex = shelf ? 0 : 2;
        rig->setParameter(boostIndex, 0.8f);
        model.setParameter(boostIndex, 0.8f);
        Channels actual = input, expected = input;
        EXPECT_TRUE(sameAsReference<TypeParam>(*rig, model, actual, expected, input));
        if (shelf && rate == 0.0f) {
            // w = pi K / 0 is infinite and the slope term is NaN.
            for (const auto& channel : actual)
                for (float y : channel) ASSERT_TRUE(std::isnan(y));
        }
        // The property answers stay harmless.
        auto& p = rig->properties();
        for (unsigned index = 0; index < 4; ++index) {
            (void)p.GetParameterMax(index);
            (void)p.GetParameterMin(index);
            (void)p.ConvertDisplayValueToParameter(index, 1000.0f);
            (void)p.ConvertDisplayValueToParameter(index, 0.0f);
            (void)p.ConvertParameterValueToDisplay(index, 0.5f);
            (void)rig->display(static_cast<int>(index));
        }
    }
}

TYPED_TEST(EqBadInputTest, EmptyAndNegativeCallsTouchNothing) {
    const unsigned channels = channelsOf<TypeParam>();
    const Channels input = taggedSignal(channels, 64);
    auto rig = makeRig<TypeParam>();
    eqref::Model model = eqref::Model::make(familyOf<TypeParam>(), channels);
    rig->setParameter(0, 0.7f);
    model.setParameter(0, 0.7f);
    Channels in = input;
    Channels out(channels, std::vector<float>(64, 7.0f));
    for (int frames : {0, -1, -64, std::numeric_limits<VstInt32>::min()}) {
        rig->call(false, in, out, 0, frames);
        rig->call(true, in, out, 0, frames);
        model.run(input, out, 0, 0, false);
    }
    for (const auto& channel : out)
        for (float y : channel) ASSERT_EQ(y, 7.0f);
    Channels expected = input;
    Channels actual = input;
    rig->call(false, actual, actual, 0, 64);
    model.run(input, expected, 0, 64, false);
    EXPECT_TRUE(sameChannels(actual, expected)) << "the history was left alone";
}

TYPED_TEST(EqBadInputTest, AnEmptyCallStillRefreshesTheCoefficients) {
    // The refresh runs before the frame count is looked at. Seen from outside:
    // after an empty call has applied other values, storing the reset markers
    // again is a change, so the next call computes coefficients from them
    // instead of running on the initial zeros.
    const unsigned channels = channelsOf<TypeParam>();
    const bool peaking = familyOf<TypeParam>() == eqref::Family::parametricEq;
    const Channels input = taggedSignal(channels, 32);
    auto rig = makeRig<TypeParam>();
    eqref::Model model = eqref::Model::make(familyOf<TypeParam>(), channels);
    const std::vector<float> applied = peaking ? std::vector<float>{0.3f, 0.2f, 0.9f} : std::vector<float>{0.9f};
    const std::vector<float> markers = peaking ? std::vector<float>{-1.0f, -1.0f, 0.0f} : std::vector<float>{-1.0f};
    for (std::size_t i = 0; i < applied.size(); ++i) {
        rig->setParameter(static_cast<int>(i), applied[i]);
        model.setParameter(static_cast<int>(i), applied[i]);
    }
    Channels actual = input, expected = input;
    rig->call(false, actual, actual, 0, 0);
    model.run(input, expected, 0, 0, false);
    for (std::size_t i = 0; i < markers.size(); ++i) {
        rig->setParameter(static_cast<int>(i), markers[i]);
        model.setParameter(static_cast<int>(i), markers[i]);
    }
    rig->call(false, actual, actual, 0, 32);
    model.run(input, expected, 0, 32, false);
    EXPECT_TRUE(sameChannels(actual, expected));
    EXPECT_FALSE(sameSample(actual[0][0], 1e-25f)) << "zero coefficients would give the bias alone";
}

TYPED_TEST(EqBadInputTest, NullBuffersAreHarmless) {
    const unsigned channels = channelsOf<TypeParam>();
    auto rig = makeRig<TypeParam>();
    AEffect* record = rig->record();
    Channels out(channels, std::vector<float>(64, 7.0f));
    std::vector<float*> outputs;
    for (auto& channel : out) outputs.push_back(channel.data());
    std::vector<float*> inputs = outputs;
    inputs[channels - 1] = nullptr;
    record->processReplacing(record, nullptr, nullptr, 64);
    record->process(record, nullptr, outputs.data(), 64);
    record->processReplacing(record, outputs.data(), nullptr, 64);
    record->processReplacing(record, inputs.data(), outputs.data(), 64);
    record->process(record, outputs.data(), inputs.data(), 64);
    for (const auto& channel : out)
        for (float y : channel) ASSERT_EQ(y, 7.0f);
}

TYPED_TEST(EqBadInputTest, DeletingThroughThePropertyInterfaceRunsTheWholeDestructor) {
    // The property interface is a sub-object at its own address; deleting
    // through it must still free the whole effect, history buffer included
    // (the sanitizer build reports a leak or a mismatched free otherwise).
    AudioEffect* effect = new TypeParam(nullptr);
    auto* properties = dynamic_cast<ML::VSTPropertySupportMixin*>(effect);
    ASSERT_NE(properties, nullptr);
    EXPECT_NE(static_cast<void*>(properties), static_cast<void*>(effect));
    EXPECT_EQ(dynamic_cast<void*>(properties), dynamic_cast<void*>(effect));
    delete properties;
}

template <class Expected>
void expectCreated(AudioEffect* effect, unsigned channels) {
    ASSERT_NE(effect, nullptr) << channels;
    EXPECT_EQ(typeid(*effect), typeid(Expected));
    EXPECT_EQ(effect->getAeffect()->numInputs, static_cast<VstInt32>(channels));
    delete effect;
}

TEST(EqFactory, CreatesTheRegisteredVariantsOnly) {
    expectCreated<AF::AudioParametricEQ1>(AF::createVariant(AF::Family::parametricEQ, 1, nullptr), 1);
    expectCreated<AF::AudioParametricEQ2>(AF::createVariant(AF::Family::parametricEQ, 2, nullptr), 2);
    expectCreated<AF::AudioParametricEQ6>(AF::createVariant(AF::Family::parametricEQ, 6, nullptr), 6);
    expectCreated<AF::AudioParametricEQ16>(AF::createVariant(AF::Family::parametricEQ, 16, nullptr), 16);
    expectCreated<AF::AudioBass1>(AF::createVariant(AF::Family::bass, 1, nullptr), 1);
    expectCreated<AF::AudioBass2>(AF::createVariant(AF::Family::bass, 2, nullptr), 2);
    expectCreated<AF::AudioBass6>(AF::createVariant(AF::Family::bass, 6, nullptr), 6);
    expectCreated<AF::AudioBass16>(AF::createVariant(AF::Family::bass, 16, nullptr), 16);
    expectCreated<AF::AudioTreble1>(AF::createVariant(AF::Family::treble, 1, nullptr), 1);
    expectCreated<AF::AudioTreble2>(AF::createVariant(AF::Family::treble, 2, nullptr), 2);
    expectCreated<AF::AudioTreble6>(AF::createVariant(AF::Family::treble, 6, nullptr), 6);
    expectCreated<AF::AudioTreble16>(AF::createVariant(AF::Family::treble, 16, nullptr), 16);
    for (unsigned channels : {0u, 3u, 4u, 5u, 8u, 17u, 4294967295u}) {
        EXPECT_EQ(AF::createVariant(AF::Family::parametricEQ, channels, nullptr), nullptr) << channels;
        EXPECT_EQ(AF::createVariant(AF::Family::bass, channels, nullptr), nullptr) << channels;
        EXPECT_EQ(AF::createVariant(AF::Family::treble, channels, nullptr), nullptr) << channels;
    }
}

}  // namespace
