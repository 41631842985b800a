// The number texts and every family's display and conversions against the
// independent transcription in DisplayTextReference.h, on well over a million
// random inputs: random bit patterns over the whole float range (normals,
// subnormals, both signs, infinities and NaNs), subnormal patterns, bit
// patterns between 0 and 1 (every decade of a level) and values spread evenly
// over each parameter's range. Families are driven through the loaded module
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
#include "tests/frame/RecordingEffect.h"
#include "tests/host/DisplayTextReference.h"

namespace {

constexpr std::uint64_t kDefaultSeed = 20261122;
constexpr int kStringToolInputs = 100000;  // per tool
constexpr int kRatesPerVariant = 2;
constexpr int kInputsPerParameterAndRate = 1500;  // each gives a stored value and a display value
const char* const kUntouched = "untouched";

std::uint64_t testSeed() {
    const char* text = std::getenv("AF_DISPLAY_SEED");
    return text != nullptr && *text != '\0' ? std::strtoull(text, nullptr, 0) : kDefaultSeed;
}

std::string describe(float value) {
    std::uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    char text[64];
    std::snprintf(text, sizeof text, "%.9g (0x%08" PRIx32 ")", static_cast<double>(value), bits);
    return text;
}

std::string describe(const std::optional<std::string>& text) { return text ? '"' + *text + '"' : "(untouched)"; }

bool sameFloat(float a, float b) {
    if (std::isnan(a) && std::isnan(b)) return true;  // which NaN payload survives is not promised
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// Random inputs of the four kinds, in turn.
class Inputs {
public:
    explicit Inputs(std::uint64_t seed) : rng_(seed) {}

    float next(float lo, float hi) {
        switch (turn_++ % 4) {
            case 0: return fromBits(static_cast<std::uint32_t>(rng_()));
            case 1: return fromBits((static_cast<std::uint32_t>(rng_()) & 0x807FFFFFu) | 0x1u);  // subnormal
            case 2: return fromBits(static_cast<std::uint32_t>(rng_() % 0x3F800001u));           // a float in [0, 1]
            default: {
                const double u = std::uniform_real_distribution<double>(0.0, 1.0)(rng_);
                return static_cast<float>(static_cast<double>(lo) + (static_cast<double>(hi) - lo) * u);
            }
        }
    }
    float sampleRate() {
        static constexpr float kRates[] = {8000.0f, 11025.0f, 22050.0f, 44100.0f, 48000.0f,
                                           88200.0f, 96000.0f, 192000.0f, 384000.0f};
        const std::uint64_t pick = rng_() % (std::size(kRates) + 1);
        if (pick < std::size(kRates)) return kRates[pick];
        return static_cast<float>(std::uniform_real_distribution<double>(1000.0, 400000.0)(rng_));
    }
    std::uint64_t word() { return rng_(); }

private:
    static float fromBits(std::uint32_t bits) {
        float value;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }
    std::mt19937_64 rng_;
    unsigned turn_ = 0;
};

// Counts the comparisons of one check and keeps its first failure.
struct Tally {
    explicit Tally(std::string checkName) : name(std::move(checkName)) {}
    std::string name;
    long checked = 0;
    long failed = 0;
    std::string first;

    void record(bool ok, const std::string& what) {
        ++checked;
        if (!ok && failed++ == 0) first = what;
    }
    void report(std::uint64_t seed) const {
        EXPECT_EQ(failed, 0) << name << ": " << failed << " of " << checked << " inputs differ (seed " << seed
                             << "); first: " << first;
    }
};

// The text a tool writes into a buffer that held kUntouched.
template <class Tool>
std::string written(Tool tool) {
    char buffer[64] = {};
    std::strcpy(buffer, kUntouched);
    tool(buffer);
    buffer[sizeof buffer - 1] = 0;
    return buffer;
}

std::string expectedText(const std::optional<std::string>& text) { return text ? *text : kUntouched; }

TEST(DisplayTextsRandom, StringToolsAgreeWithTheirDefinition) {
    const std::uint64_t seed = testSeed();
    std::cout << "[ seed     ] AF_DISPLAY_SEED=" << seed << std::endl;
    Inputs inputs(seed);
    frame_test::PlainEffect effect;
    Tally floats{"float2string"}, decibels{"dB2string"}, hertz{"Hz2string"}, millis{"ms2string"};
    for (int i = 0; i < kStringToolInputs; ++i) {
        // The limit is eight characters as every family uses, sometimes fewer.
        const int maxLen = (inputs.word() % 4 == 0) ? static_cast<int>(inputs.word() % 9) : 8;
        const std::string limit = " maxLen " + std::to_string(maxLen);

        const float number = inputs.next(-1.0e8f, 1.0e8f);
        const std::string gotNumber = written([&](char* t) { effect.float2string(number, t, maxLen); });
        const auto wantNumber = displayref::float2string(number, maxLen);
        floats.record(gotNumber == expectedText(wantNumber),
                      describe(number) + limit + ": got \"" + gotNumber + "\", want " + describe(wantNumber));

        const float level = inputs.next(0.0f, 2.0f);
        const std::string gotLevel = written([&](char* t) { effect.dB2string(level, t, maxLen); });
        const auto wantLevel = displayref::dB2string(level, maxLen);
        decibels.record(gotLevel == expectedText(wantLevel),
                        describe(level) + limit + ": got \"" + gotLevel + "\", want " + describe(wantLevel));

        const float rate = inputs.sampleRate();
        effect.setSampleRate(rate);
        const std::string atRate = " at " + describe(rate) + " Hz" + limit;

        const float period = inputs.next(0.0f, 100000.0f);
        const std::string gotHz = written([&](char* t) { effect.Hz2string(period, t, maxLen); });
        const auto wantHz = displayref::Hz2string(period, rate, maxLen);
        hertz.record(gotHz == expectedText(wantHz),
                     describe(period) + atRate + ": got \"" + gotHz + "\", want " + describe(wantHz));

        const float frames = inputs.next(0.0f, 1000000.0f);
        const std::string gotMs = written([&](char* t) { effect.ms2string(frames, t, maxLen); });
        const auto wantMs = displayref::ms2string(frames, rate, maxLen);
        millis.record(gotMs == expectedText(wantMs),
                      describe(frames) + atRate + ": got \"" + gotMs + "\", want " + describe(wantMs));
    }
    for (const Tally* tally : {&floats, &decibels, &hertz, &millis}) tally->report(seed);
}

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
