// High-pass and low-pass: the cutoff parameter, its texts and property
// answers, the lifecycle, DC behaviour and the factory's family creators.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>

#include "CutFilterHarness.h"
#include "effects/variants/NamedVariants.h"
#include "module/VariantTable.h"

namespace {

using namespace cuttest;

// Owns an effect the way a host does: closes it through the record.
template <class Effect>
struct Hosted {
    Effect* effect = new Effect(countingHost);
    Record host{effect->getAeffect()};
    ~Hosted() { host.close(); }
};

const std::string kUntouched(63, 'x');

template <class T>
class CutoffFamily : public ::testing::Test {};
using CutoffFamilies = ::testing::Types<AF::AudioHighpass2, AF::AudioLowpass2>;
TYPED_TEST_SUITE(CutoffFamily, CutoffFamilies);

TYPED_TEST(CutoffFamily, FreshInstanceShowsCutoffInHertz) {
    Hosted<TypeParam> h;
    EXPECT_EQ(h.host.name(0), "Cutoff");
    EXPECT_EQ(h.host.label(0), "Hz");
    EXPECT_EQ(h.host.text(5, 0), "Default");
    // 0.25 maps to 1373.53125 Hz at the default 44.1 kHz: "1373." and three
    // fraction digits 531 (0.53125 * 1000 = 531.25, digits truncated).
    EXPECT_EQ(h.host.display(0), "1373.531");
    h.host.setSampleRate(48000.0f);
    // 1495.0 Hz exactly: "1495." and three zeros.
    EXPECT_EQ(h.host.display(0), "1495.000");
}

TYPED_TEST(CutoffFamily, OtherIndicesWriteNothingAndAnswerNeutrally) {
    Hosted<TypeParam> h;
    for (VstInt32 index : {1, -1, 1000}) {
        EXPECT_EQ(h.host.name(index), kUntouched);
        EXPECT_EQ(h.host.label(index), kUntouched);
        EXPECT_EQ(h.host.display(index), kUntouched);
        EXPECT_EQ(h.host.getParameter(index), 0.0f);
        h.host.setParameter(index, 0.9f);
        EXPECT_EQ(h.host.getParameter(0), 0.25f);
    }
    ML::VSTPropertySupportMixin& p = *h.effect;
    EXPECT_EQ(p.GetParameterType(0), 2);
    EXPECT_EQ(p.GetParameterType(1), -1);
    EXPECT_EQ(p.GetParameterMax(1), 0.0f);
    EXPECT_EQ(p.GetParameterMin(1), 0.0f);
    EXPECT_EQ(p.GetParameterStep(0), 100.0f);
    EXPECT_EQ(p.GetParameterStep(1), 0.0f);
    EXPECT_TRUE(p.SupportsDisplayValueToParameter(0));
    EXPECT_FALSE(p.SupportsDisplayValueToParameter(1));
    EXPECT_EQ(p.ConvertDisplayValueToParameter(1, 1000.0f), 0.0f);
    EXPECT_EQ(p.ConvertParameterValueToDisplay(1, 0.5f), 0.0f);
    EXPECT_TRUE(p.HasHistory());
}

// Range figures are exact floats, compared as bit patterns.
TYPED_TEST(CutoffFamily, RangeFollowsTheSampleRate) {
    Hosted<TypeParam> h;
    ML::VSTPropertySupportMixin& p = *h.effect;
    h.host.setSampleRate(48000.0f);
    EXPECT_EQ(bits(p.GetParameterMax(0)), bits(23770.0f));
    EXPECT_NEAR(p.GetParameterMin(0), 9.999984, 5e-7);
    EXPECT_EQ(bits(p.GetParameterMin(0)), bits(cutref::minHz(48000.0f)));
    h.host.setSampleRate(44100.0f);
    EXPECT_EQ(bits(p.GetParameterMax(0)), bits(21838.6875f));
    EXPECT_NEAR(p.GetParameterMin(0), 9.187486, 5e-7);
    h.host.setSampleRate(96000.0f);
    EXPECT_EQ(bits(p.GetParameterMax(0)), bits(47540.0f));
    EXPECT_NEAR(p.GetParameterMin(0), 20.0, 1e-4);
}

TYPED_TEST(CutoffFamily, ConversionsClampAndInvert) {
    Hosted<TypeParam> h;
    ML::VSTPropertySupportMixin& p = *h.effect;
    h.host.setSampleRate(48000.0f);
    EXPECT_EQ(p.ConvertDisplayValueToParameter(0, 5.0f), 0.0f);  // below the minimum
    EXPECT_EQ(p.ConvertDisplayValueToParameter(0, 30000.0f), 1.0f);
    EXPECT_FLOAT_EQ(p.ConvertDisplayValueToParameter(0, 1495.0f), 0.25f);
    EXPECT_EQ(bits(p.ConvertDisplayValueToParameter(0, 1495.0f)), bits(cutref::inverseHz(1495.0f, 48000.0f)));
    EXPECT_EQ(bits(p.ConvertParameterValueToDisplay(0, 0.25f)), bits(1495.0f));
    EXPECT_EQ(bits(p.ConvertParameterValueToDisplay(0, 0.5f)), bits(5950.0f));
    EXPECT_EQ(bits(p.ConvertParameterValueToDisplay(0, 1.0f)), bits(23770.0f));
    EXPECT_NEAR(p.ConvertParameterValueToDisplay(0, 0.0f), 9.999984, 5e-7);
    for (float hz : {9.0f, 10.0f, 100.0f, 440.0f, 1000.0f, 12345.6f, 23770.0f})
        EXPECT_EQ(bits(p.ConvertDisplayValueToParameter(0, hz)), bits(cutref::inverseHz(hz, 48000.0f))) << hz;
    for (float v : {0.0f, 0.1f, 0.3f, 0.77f, 1.0f, -0.5f, 1.5f})
        EXPECT_EQ(bits(p.ConvertParameterValueToDisplay(0, v)), bits(cutref::forwardHz(v, 48000.0f))) << v;
}

// Rates of 0, negative or huge: the same arithmetic, no crash; a display too
// large for eight digits leaves the text as it was.
TYPED_TEST(CutoffFamily, OddSampleRatesGiveTheArithmeticsAnswers) {
    Hosted<TypeParam> h;
    ML::VSTPropertySupportMixin& p = *h.effect;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (float rate : {0.0f, -48000.0f, 1.0e30f, std::numeric_limits<float>::infinity(), nan}) {
        h.host.setSampleRate(rate);
        EXPECT_TRUE(sameFloat(p.GetParameterMax(0), cutref::maxHz(rate))) << rate;
        EXPECT_TRUE(sameFloat(p.GetParameterMin(0), cutref::minHz(rate))) << rate;
        for (float hz : {0.0f, 1495.0f, -3.0f, nan})
            EXPECT_TRUE(sameFloat(p.ConvertDisplayValueToParameter(0, hz), cutref::inverseHz(hz, rate))) << rate;
        EXPECT_TRUE(sameFloat(p.ConvertParameterValueToDisplay(0, 0.25f), cutref::forwardHz(0.25f, rate)));
    }
    h.host.setSampleRate(0.0f);
    EXPECT_EQ(p.ConvertDisplayValueToParameter(0, 1495.0f), 1.0f);  // 2·hz/0 is infinite: clamped
    EXPECT_EQ(h.host.display(0), "0.000000");
    h.host.setSampleRate(-48000.0f);
    EXPECT_EQ(h.host.display(0), "-1495.00");  // the sign takes a place
    h.host.setSampleRate(1.0e30f);
    EXPECT_EQ(h.host.display(0), kUntouched);
}

TYPED_TEST(CutoffFamily, SampleRateChangeClearsMemoryOnlyWhenItChanges) {
    Hosted<TypeParam> h;
    h.host.setSampleRate(48000.0f);
    Buffers signal = taggedSignal(2, 100);
    h.host.processReplacing(signal.get(), signal.get(), 100);
    const auto designBefore = h.effect->currentDesign();
    auto memory = [&] {
        std::vector<float> m;
        for (int c = 0; c < 2; ++c)
            for (int k = 0; k < 6; ++k) m.push_back(h.effect->historyBuffer().GetChannel(c)[k]);
        return m;
    };
    const std::vector<float> kept = memory();
    EXPECT_NE(kept, std::vector<float>(12, 0.0f));
    h.host.setSampleRate(48000.0f);
    EXPECT_EQ(memory(), kept);
    h.host.setSampleRate(44100.0f);
    EXPECT_EQ(memory(), std::vector<float>(12, 0.0f));
    // The change marked the design stale: the next buffer recomputes, and the
    // coefficients come out the same (they do not depend on the rate).
    h.host.processReplacing(signal.get(), signal.get(), 1);
    EXPECT_EQ(bits(h.effect->currentDesign().gain), bits(designBefore.gain));
    EXPECT_EQ(bits(h.effect->currentDesign().feedback1), bits(designBefore.feedback1));
    EXPECT_EQ(bits(h.effect->currentDesign().feedback2), bits(designBefore.feedback2));
    // Staleness made visible: with the parameter set to the stale marker after
    // a rate change, nothing is recomputed and the earlier design stays.
    h.host.setSampleRate(32000.0f);
    h.host.setParameter(0, -1.0f);
    h.host.processReplacing(signal.get(), signal.get(), 1);
    EXPECT_EQ(bits(h.effect->currentDesign().gain), bits(designBefore.gain));
}

// suspend marks the design stale: a later parameter equal to the stale marker
// then computes nothing, and the design made before the suspend stays.
TYPED_TEST(CutoffFamily, SuspendMarksStaleAndClearsMemory) {
    Hosted<TypeParam> h;
    Buffers signal = taggedSignal(2, 64);
    h.host.processReplacing(signal.get(), signal.get(), 64);
    const auto before = h.effect->currentDesign();
    h.host.suspend();
    for (int c = 0; c < 2; ++c)
        for (int k = 0; k < 6; ++k) EXPECT_EQ(h.effect->historyBuffer().GetChannel(c)[k], 0.0f);
    h.host.setParameter(0, -1.0f);
    h.host.processReplacing(signal.get(), signal.get(), 8);
    EXPECT_EQ(bits(h.effect->currentDesign().gain), bits(before.gain));
    EXPECT_EQ(bits(h.effect->currentDesign().feedback1), bits(before.feedback1));
}

// A constant 1.0: the high-pass decays towards 0, the low-pass settles at 1.
TEST(HighpassLowpass, ConstantInput) {
    Hosted<AF::AudioHighpass1> high;
    Hosted<AF::AudioLowpass1> low;
    Buffers a(1, 48000, 1.0f), b(1, 48000, 1.0f);
    high.host.processReplacing(a.get(), a.get(), 48000);
    low.host.processReplacing(b.get(), b.get(), 48000);
    EXPECT_GT(a.data[0][0], 0.5f);
    EXPECT_LT(std::fabs(a.data[0][47999]), 1e-6f);
    EXPECT_NEAR(b.data[0][47999], 1.0f, 1e-6f);
}

TEST(HighpassLowpass, FamilyCreatorsMakeTheRegisteredVariants) {
    for (AF::Family family : {AF::Family::highpass, AF::Family::lowpass}) {
        for (unsigned channels : {0u, 3u, 4u, 5u, 8u, 17u}) EXPECT_EQ(AF::createVariant(family, channels, nullptr), nullptr);
        for (unsigned channels : {1u, 2u, 6u, 16u}) {
            AudioEffect* effect = AF::createVariant(family, channels, countingHost);
            ASSERT_NE(effect, nullptr);
            EXPECT_EQ(effect->getAeffect()->numInputs, static_cast<VstInt32>(channels));
            // The host may delete through the property interface.
            delete dynamic_cast<ML::VSTPropertySupportMixin*>(effect);
        }
    }
    AudioEffect* e = AF::createVariant(AF::Family::highpass, 6, nullptr);
    EXPECT_NE(dynamic_cast<AF::AudioHighpass6*>(e), nullptr);
    delete e;
    e = AF::createVariant(AF::Family::lowpass, 16, nullptr);
    EXPECT_NE(dynamic_cast<AF::AudioLowpass16*>(e), nullptr);
    delete e;
}

}  // namespace
