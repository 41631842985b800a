// Every family's display and conversions against the independent
// transcription in DisplayTextReference.h, on well over a million random
// inputs: random bit patterns over the whole float range (normals, subnormals,
// both signs, infinities and NaNs), subnormal patterns, bit patterns between 0
// and 1 (every decade of a level) and values spread evenly over each
// parameter's range (support/RandomInputs.h). Families are driven through the loaded module
// as a host drives them.
//
// Seeded: AF_DISPLAY_SEED=<number> in the environment replaces the default
// seed; the seed and the first failing input of each check are printed.
#include <gtest/gtest.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include "support/HostFixture.h"
#include "support/RandomInputs.h"
#include "tests/host/DisplayTextReference.h"

namespace {

using namespace displaytest;

constexpr int kRatesPerVariant = 2;
constexpr int kInputsPerParameterAndRate = 1500;  // each gives a stored value and a display value

// A level whose single-precision logarithm ends one digit high: the stored
// gain 2p is 1.771134853363037, its double logarithm 0.24825162942 rounds to
// the float 0.24825163185596466, times 20 the float 4.965032577514648, shown
// as 4.965032 (the float logarithm gives 4.965033).
TEST(DisplayTextsRandom, VolumeShowsTheDoubleLogarithmRoundedOnce) {
    auto fx = aftest::HostEffect::Create("Internal Volume 5.1");
    ASSERT_TRUE(fx);
    fx->start(48000.0f, 512);
    fx->setParameter(0, 0.8855674266815186f);
    EXPECT_EQ(fx->parameterDisplay(0), "4.965032");
}

// The mapping of parameter `index` of a family, by the family's name in the
// registered identifier.
const displayref::Mapping* mappingFor(const std::string& family, int index) {
    using namespace displayref;
    if (family == "Volume") return &kVolumeLevel;
    if (family == "Channel Volume") return &kChannelLevel;
    if (family == "Balance") return &kBalance;
    if (family == "Mute") return &kMuteSwitch;
    if (family == "Highpass" || family == "Lowpass") return &kCutoff;
    if (family == "Bandpass" || family == "Bandreject") return index == 0 ? &kCutoff : &kSectionQ;
    if (family == "Parametric EQ") {
        static const Mapping* const kEq[] = {&kEqCenter, &kEqWidth, &kBoostDb};
        return kEq[index];
    }
    if (family == "Bass" || family == "Treble") return &kBoostDb;
    if (family == "Delay") return index == 0 ? &kSeconds : &kPercent;
    if (family == "Multitap Delay") {
        if (index == 12) return &kPercent;  // the mix
        static const Mapping* const kTap[] = {&kSeconds, &kPercent, &kTapLevel};
        return kTap[index % 3];
    }
    return nullptr;
}

struct Variant {
    std::string family;
    std::string identifier;
};

std::vector<Variant> variantsWithParameters() {
    std::vector<Variant> out;
    for (const char* family : {"Volume", "Mute", "Delay", "Multitap Delay", "Lowpass", "Highpass", "Bandreject",
                               "Bandpass", "Bass", "Treble", "Parametric EQ"})
        for (const char* layout : {"Mono", "Stereo", "5.1", "16 Channel"})
            out.push_back({family, std::string("Internal ") + family + " " + layout});
    out.push_back({"Balance", "Internal Balance"});
    for (const char* layout : {"Stereo", "5.1", "16 Channel"})
        out.push_back({"Channel Volume", std::string("Internal Channel Volume ") + layout});
    return out;
}

TEST(DisplayTextsRandom, EveryFamilyDisplaysAndConvertsAsDefined) {
    const std::uint64_t seed = testSeed();
    std::cout << "[ seed     ] AF_DISPLAY_SEED=" << seed << std::endl;
    ASSERT_TRUE(aftest::LoadedModule::Get().loaded()) << aftest::LoadedModule::Get().error();
    Inputs inputs(seed);
    long totalInputs = 0;
    for (const Variant& variant : variantsWithParameters()) {
        auto fx = aftest::HostEffect::Create(variant.identifier);
        ASSERT_TRUE(fx) << variant.identifier;
        ML::VSTPropertySupportMixin* properties = fx->properties();
        ASSERT_NE(properties, nullptr) << variant.identifier;
        const int count = fx->effect()->numParams;
        ASSERT_GT(count, 0) << variant.identifier;
        fx->start(inputs.sampleRate(), 512);
        for (int index = 0; index < count; ++index) {
            const displayref::Mapping* mapping = mappingFor(variant.family, index);
            ASSERT_NE(mapping, nullptr) << variant.identifier << " parameter " << index;
            const std::string where = variant.identifier + " parameter " + std::to_string(index);
            Tally display{where + ": getParameterDisplay"}, toDisplay{where + ": ConvertParameterValueToDisplay"},
                toParameter{where + ": ConvertDisplayValueToParameter"};
            const auto u = static_cast<unsigned>(index);
            for (int round = 0; round < kRatesPerVariant; ++round) {
                const float rate = inputs.sampleRate();
                fx->setSampleRate(rate);
                const std::string atRate = " at " + describe(rate) + " Hz";
                const float lo = properties->GetParameterMin(u);
                const float hi = properties->GetParameterMax(u);
                for (int i = 0; i < kInputsPerParameterAndRate; ++i) {
                    const float p = inputs.next(0.0f, 1.0f);
                    fx->setParameter(index, p);
                    const std::string gotText = fx->text(effGetParamDisplay, index, kUntouched);
                    const auto wantText = mapping->display(p, rate);
                    display.record(gotText == expectedText(wantText), describe(p) + atRate + ": got \"" + gotText +
                                                                          "\", want " + describe(wantText));

                    const float gotShown = properties->ConvertParameterValueToDisplay(u, p);
                    const float wantShown = mapping->toDisplay(p, rate);
                    toDisplay.record(sameFloat(gotShown, wantShown), describe(p) + atRate + ": got " +
                                                                         describe(gotShown) + ", want " +
                                                                         describe(wantShown));

                    const float d = inputs.next(lo, hi);
                    const float gotParameter = properties->ConvertDisplayValueToParameter(u, d);
                    const float wantParameter = mapping->toParameter(d, rate);
                    toParameter.record(sameFloat(gotParameter, wantParameter),
                                       describe(d) + atRate + ": got " + describe(gotParameter) + ", want " +
                                           describe(wantParameter));
                    totalInputs += 2;
                }
            }
            for (const Tally* tally : {&display, &toDisplay, &toParameter}) tally->report(seed);
        }
    }
    std::cout << "[ inputs   ] " << totalInputs << " stored and display values over every family" << std::endl;
}

}  // namespace
