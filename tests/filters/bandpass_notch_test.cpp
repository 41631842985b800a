// Band-pass and notch: centre and Q, their texts and property answers, the
// lazy refresh on either parameter, the lifecycle and the family creators.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "CutFilterHarness.h"
#include "effects/variants/NamedVariants.h"
#include "module/VariantTable.h"

namespace {

using namespace cuttest;

const std::string kUntouched(63, 'x');

template <class Effect>
struct Hosted {
    Effect* effect = new Effect(countingHost);
    Record host{effect->getAeffect()};
    ~Hosted() { host.close(); }
};

template <class T>
class CenterQFamily : public ::testing::Test {
protected:
    static constexpr Kind kKind = std::is_same_v<T, AF::AudioBandpass2> ? Kind::Bandpass : Kind::Notch;
};
using CenterQFamilies = ::testing::Types<AF::AudioBandpass2, AF::AudioBandreject2>;
TYPED_TEST_SUITE(CenterQFamily, CenterQFamilies);

TYPED_TEST(CenterQFamily, FreshInstanceShowsCenterAndQ) {
    Hosted<TypeParam> h;
    EXPECT_EQ(h.host.name(0), "Center");
    EXPECT_EQ(h.host.label(0), "Hz");
    EXPECT_EQ(h.host.name(1), "Q");
    EXPECT_EQ(h.host.label(1), "");  // no unit: the empty string is written
    EXPECT_EQ(h.host.text(5, 0), "Default");
    // Q = 0.25·9.9 + 0.1 = 2.575, as a float 2.5750000476...: "2." and six
    // fraction digits 575000 (575000.047 truncated digit by digit).
    EXPECT_EQ(h.host.display(1), "2.575000");
    EXPECT_EQ(h.host.display(0), "1373.531");  // 1373.53125 Hz at 44.1 kHz
    h.host.setSampleRate(48000.0f);
    EXPECT_EQ(h.host.display(0), "1495.000");
    for (VstInt32 index : {2, -1, 99}) {
        EXPECT_EQ(h.host.name(index), kUntouched);
        EXPECT_EQ(h.host.label(index), kUntouched);
        EXPECT_EQ(h.host.display(index), kUntouched);
        EXPECT_EQ(h.host.getParameter(index), 0.0f);
    }
}

TYPED_TEST(CenterQFamily, PropertyAnswers) {
    Hosted<TypeParam> h;
    h.host.setSampleRate(48000.0f);
    ML::VSTPropertySupportMixin& p = *h.effect;
    EXPECT_EQ(p.GetParameterType(0), 2);
    EXPECT_EQ(p.GetParameterType(1), 4);
    EXPECT_EQ(p.GetParameterType(2), -1);
    // Exact floats: bit patterns.
    EXPECT_EQ(bits(p.GetParameterMax(0)), bits(23770.0f));
    EXPECT_EQ(bits(p.GetParameterMin(0)), bits(cutref::minHz(48000.0f)));
    EXPECT_EQ(p.GetParameterMax(1), 10.0f);
    EXPECT_EQ(bits(p.GetParameterMin(1)), bits(0.1f));
    EXPECT_EQ(p.GetParameterStep(0), 100.0f);
    EXPECT_EQ(bits(p.GetParameterStep(1)), bits(0.1f));
    EXPECT_EQ(p.GetParameterMax(2), 0.0f);
    EXPECT_EQ(p.GetParameterMin(2), 0.0f);
    EXPECT_EQ(p.GetParameterStep(2), 0.0f);
    EXPECT_TRUE(p.SupportsDisplayValueToParameter(0));
    EXPECT_TRUE(p.SupportsDisplayValueToParameter(1));
    EXPECT_FALSE(p.SupportsDisplayValueToParameter(2));
    EXPECT_EQ(p.ConvertDisplayValueToParameter(2, 3.0f), 0.0f);
    EXPECT_EQ(p.ConvertParameterValueToDisplay(2, 0.3f), 0.0f);
    EXPECT_TRUE(p.HasHistory());
    h.host.setSampleRate(44100.0f);
    EXPECT_EQ(bits(p.GetParameterMax(0)), bits(21838.6875f));
}

TYPED_TEST(CenterQFamily, QConversions) {
    Hosted<TypeParam> h;
    ML::VSTPropertySupportMixin& p = *h.effect;
    EXPECT_EQ(p.ConvertDisplayValueToParameter(1, 10.0f), 1.0f);
    EXPECT_EQ(p.ConvertDisplayValueToParameter(1, 0.1f), 0.0f);
    EXPECT_TRUE(std::isnan(p.ConvertDisplayValueToParameter(1, 0.05f)));  // not clamped
    EXPECT_NEAR(p.ConvertDisplayValueToParameter(1, 40.0f), 2.0, 0.01);    // above 1, not clamped
    EXPECT_EQ(bits(p.ConvertDisplayValueToParameter(1, 40.0f)), bits(cutref::qParameter(40.0f)));
    EXPECT_EQ(bits(p.ConvertParameterValueToDisplay(1, 0.5f)), bits(2.575f));
    for (float v : {0.0f, 0.1f, 0.5f, 0.9f, 1.0f, -1.0f, 3.0f})
        EXPECT_EQ(bits(p.ConvertParameterValueToDisplay(1, v)), bits(cutref::shownQ(v))) << v;
    for (float q : {0.1f, 0.5f, 1.0f, 2.575f, 7.0f, 10.0f, 12.0f})
        EXPECT_EQ(bits(p.ConvertDisplayValueToParameter(1, q)), bits(cutref::qParameter(q))) << q;
    // The centre uses the cutoff mapping, clamped.
    h.host.setSampleRate(48000.0f);
    EXPECT_EQ(p.ConvertDisplayValueToParameter(0, 5.0f), 0.0f);
    EXPECT_EQ(p.ConvertDisplayValueToParameter(0, 30000.0f), 1.0f);
    EXPECT_FLOAT_EQ(p.ConvertDisplayValueToParameter(0, 1495.0f), 0.25f);
    EXPECT_EQ(bits(p.ConvertParameterValueToDisplay(0, 0.25f)), bits(1495.0f));
}

TYPED_TEST(CenterQFamily, ChangingOnlyQRecomputes) {
    Hosted<TypeParam> h;
    Buffers signal = taggedSignal(2, 16);
    h.host.processReplacing(signal.get(), signal.get(), 16);
    const auto first = h.effect->currentDesign();
    const auto expectedFirst = cutref::sectionCoefficients(TestFixture::kKind, 0.25f, 0.5f);
    EXPECT_EQ(bits(first.b0), bits(expectedFirst.b0));
    h.host.setParameter(1, 0.8f);
    h.host.processReplacing(signal.get(), signal.get(), 16);
    const auto second = h.effect->currentDesign();
    const auto expectedSecond = cutref::sectionCoefficients(TestFixture::kKind, 0.25f, 0.8f);
    EXPECT_EQ(bits(second.b0), bits(expectedSecond.b0));
    EXPECT_EQ(bits(second.a1), bits(expectedSecond.a1));
    EXPECT_EQ(bits(second.a2), bits(expectedSecond.a2));
    EXPECT_NE(bits(second.a2), bits(first.a2));
}

// suspend and a real rate change mark both parameters stale: with both then
// set to the stale marker nothing is recomputed and the old design stays.
TYPED_TEST(CenterQFamily, SuspendAndRateChangeMarkBothStale) {
    for (int way = 0; way < 2; ++way) {
        Hosted<TypeParam> h;
        Buffers signal = taggedSignal(2, 16);
        h.host.processReplacing(signal.get(), signal.get(), 16);
        const auto before = h.effect->currentDesign();
        if (way == 0) h.host.suspend();
        else h.host.setSampleRate(22050.0f);
        for (int c = 0; c < 2; ++c)
            for (int k = 0; k < 4; ++k) EXPECT_EQ(h.effect->historyBuffer().GetChannel(c)[k], 0.0f);
        h.host.setParameter(0, -1.0f);
        h.host.setParameter(1, -1.0f);
        h.host.processReplacing(signal.get(), signal.get(), 16);
        EXPECT_EQ(bits(h.effect->currentDesign().b0), bits(before.b0));
        EXPECT_EQ(bits(h.effect->currentDesign().a1), bits(before.a1));
    }
}

TYPED_TEST(CenterQFamily, OddSampleRatesGiveTheArithmeticsAnswers) {
    Hosted<TypeParam> h;
    ML::VSTPropertySupportMixin& p = *h.effect;
    for (float rate : {0.0f, -48000.0f, 1.0e30f, std::numeric_limits<float>::infinity()}) {
        h.host.setSampleRate(rate);
        EXPECT_TRUE(sameFloat(p.GetParameterMax(0), cutref::maxHz(rate))) << rate;
        EXPECT_TRUE(sameFloat(p.ConvertDisplayValueToParameter(0, 1495.0f), cutref::inverseHz(1495.0f, rate)));
        EXPECT_EQ(p.GetParameterMax(1), 10.0f);  // Q does not follow the rate
    }
    h.host.setSampleRate(1.0e30f);
    EXPECT_EQ(h.host.display(0), kUntouched);  // too large for eight digits
    EXPECT_EQ(h.host.display(1), "2.575000");
}

TEST(BandpassNotch, FamilyCreatorsMakeTheRegisteredVariants) {
    for (AF::Family family : {AF::Family::bandpass, AF::Family::bandreject}) {
        for (unsigned channels : {0u, 3u, 4u, 5u, 8u, 17u}) EXPECT_EQ(AF::createVariant(family, channels, nullptr), nullptr);
        for (unsigned channels : {1u, 2u, 6u, 16u}) {
            AudioEffect* effect = AF::createVariant(family, channels, countingHost);
            ASSERT_NE(effect, nullptr);
            EXPECT_EQ(effect->getAeffect()->numOutputs, static_cast<VstInt32>(channels));
            EXPECT_EQ(effect->getAeffect()->numParams, 2);
            delete dynamic_cast<ML::VSTPropertySupportMixin*>(effect);
        }
    }
    AudioEffect* e = AF::createVariant(AF::Family::bandpass, 2, nullptr);
    EXPECT_NE(dynamic_cast<AF::AudioBandpass2*>(e), nullptr);
    delete e;
    e = AF::createVariant(AF::Family::bandreject, 1, nullptr);
    EXPECT_NE(dynamic_cast<AF::AudioBandreject1*>(e), nullptr);
    delete e;
}

}  // namespace
