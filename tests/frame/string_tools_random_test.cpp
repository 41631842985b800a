// The number texts (float2string, dB2string, Hz2string, ms2string) against
// the independent transcription in DisplayTextReference.h, on random inputs of
// the four kinds in support/RandomInputs.h, 100000 per tool. Seeded:
// AF_DISPLAY_SEED=<number> replaces the default seed; the seed and the first
// failing input of each check are printed.
#include <gtest/gtest.h>

#include <iostream>
#include <string>

#include "support/RandomInputs.h"
#include "tests/frame/RecordingEffect.h"
#include "tests/host/DisplayTextReference.h"

namespace {

using namespace displaytest;

constexpr int kStringToolInputs = 100000;  // per tool

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

}  // namespace
