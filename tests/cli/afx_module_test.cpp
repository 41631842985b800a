// afx on the real module: the registration list, what info shows for a
// filter, family-name resolution, and renders compared sample by sample with
// the same effects driven directly through their records in this process.
// Tests whose family the module does not make yet skip, saying so; they turn
// on by themselves when the family lands.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <memory>
#include <optional>

#include "AfxRunner.h"
#include "TestNames.h"
#include "WavFiles.h"
#include "support/HostFixture.h"

namespace afxtest {
namespace {

// The registration table as the module must publish it, in order.
struct ExpectedRegistration {
    const char* identifier;
    const char* name;
    const char* flags;
    int channels;
};

const std::vector<ExpectedRegistration>& expectedTable() {
    static const std::vector<ExpectedRegistration> table = {
        {"Internal Invert Mono", "Invert", "0x104", 1},
        {"Internal Invert Stereo", "Invert", "0x208", 2},
        {"Internal Invert 5.1", "Invert", "0x820", 6},
        {"Internal Invert 16 Channel", "Invert", "0x18000", 16},
        {"Internal Volume Mono", "Volume", "0x4104", 1},
        {"Internal Volume Stereo", "Volume", "0x4208", 2},
        {"Internal Volume 5.1", "Volume", "0x4820", 6},
        {"Internal Volume 16 Channel", "Volume", "0x1C000", 16},
        {"Internal Mute Mono", "Mute", "0x4104", 1},
        {"Internal Mute Stereo", "Mute", "0x4208", 2},
        {"Internal Mute 5.1", "Mute", "0x4820", 6},
        {"Internal Mute 16 Channel", "Mute", "0x1C000", 16},
        {"Internal Delay Mono", "Delay", "0x104", 1},
        {"Internal Delay Stereo", "Delay", "0x208", 2},
        {"Internal Delay 5.1", "Delay", "0x820", 6},
        {"Internal Delay 16 Channel", "Delay", "0x18000", 16},
        {"Internal Multitap Delay Mono", "Multitap Delay", "0x104", 1},
        {"Internal Multitap Delay Stereo", "Multitap Delay", "0x208", 2},
        {"Internal Multitap Delay 5.1", "Multitap Delay", "0x820", 6},
        {"Internal Multitap Delay 16 Channel", "Multitap Delay", "0x18000", 16},
        {"Internal Lowpass Mono", "Lowpass", "0x104", 1},
        {"Internal Lowpass Stereo", "Lowpass", "0x208", 2},
        {"Internal Lowpass 5.1", "Lowpass", "0x820", 6},
        {"Internal Lowpass 16 Channel", "Lowpass", "0x18000", 16},
        {"Internal Highpass Mono", "Highpass", "0x104", 1},
        {"Internal Highpass Stereo", "Highpass", "0x208", 2},
        {"Internal Highpass 5.1", "Highpass", "0x820", 6},
        {"Internal Highpass 16 Channel", "Highpass", "0x18000", 16},
        {"Internal Bandreject Mono", "Notch", "0x104", 1},
        {"Internal Bandreject Stereo", "Notch", "0x208", 2},
        {"Internal Bandreject 5.1", "Notch", "0x820", 6},
        {"Internal Bandreject 16 Channel", "Notch", "0x18000", 16},
        {"Internal Bandpass Mono", "Bandpass", "0x104", 1},
        {"Internal Bandpass Stereo", "Bandpass", "0x208", 2},
        {"Internal Bandpass 5.1", "Bandpass", "0x820", 6},
        {"Internal Bandpass 16 Channel", "Bandpass", "0x18000", 16},
        {"Internal Bass Mono", "Bass", "0x104", 1},
        {"Internal Bass Stereo", "Bass", "0x208", 2},
        {"Internal Bass 5.1", "Bass", "0x820", 6},
        {"Internal Bass 16 Channel", "Bass", "0x18000", 16},
        {"Internal Treble Mono", "Treble", "0x104", 1},
        {"Internal Treble Stereo", "Treble", "0x208", 2},
        {"Internal Treble 5.1", "Treble", "0x820", 6},
        {"Internal Treble 16 Channel", "Treble", "0x18000", 16},
        {"Internal Parametric EQ Mono", "Parametric EQ", "0x104", 1},
        {"Internal Parametric EQ Stereo", "Parametric EQ", "0x208", 2},
        {"Internal Parametric EQ 5.1", "Parametric EQ", "0x820", 6},
        {"Internal Parametric EQ 16 Channel", "Parametric EQ", "0x18000", 16},
        {"Internal Swap Channels", "Swap Channels", "0x208", 2},
        {"Internal Fill Left", "Fill Left", "0x208", 2},
        {"Internal Fill Right", "Fill Right", "0x208", 2},
        {"Internal Balance", "Balance", "0x4208", 2},
        {"Internal Channel Volume Stereo", "Channel Volume", "0x208", 2},
        {"Internal Channel Volume 5.1", "Channel Volume", "0x820", 6},
        {"Internal Channel Volume 16 Channel", "Channel Volume", "0x18000", 16},
    };
    return table;
}

// Skips the calling test until the module's start-up registers its effects.
#define SKIP_UNLESS_REGISTERED()                                                                              \
    do {                                                                                                      \
        const Outcome probe = runAfx({"list"});                                                               \
        if (probe.exitStatus != 0 || lines(probe.out).size() != expectedTable().size())                       \
            GTEST_SKIP() << "the module does not register its effects yet (afx list: " << probe.err << ")"; \
    } while (false)

struct Setting {
    int index;
    float normalised;
};

struct Link {
    std::string identifier;
    std::vector<Setting> settings;
};

// The host's life cycle through the shared test host: open, rate, block size,
// resume, parameters, in-place blocks of `block` frames (the last one
// shorter), suspend, close. Returns nothing when the module makes no such effect.
std::optional<std::vector<float>> driveDirectly(const std::vector<Link>& chain, int channels, int rate, int block,
                                                std::vector<float> interleaved) {
    std::vector<std::unique_ptr<aftest::HostEffect>> effects;
    for (const Link& link : chain) {
        effects.push_back(aftest::HostEffect::Create(link.identifier));
        if (!effects.back()) return std::nullopt;
    }
    for (auto& effect : effects) effect->start(static_cast<float>(rate), block);
    for (std::size_t i = 0; i < effects.size(); ++i)
        for (const Setting& setting : chain[i].settings) effects[i]->setParameter(setting.index, setting.normalised);
    const std::size_t frames = interleaved.size() / static_cast<std::size_t>(channels);
    std::vector<std::vector<float>> planes(channels, std::vector<float>(block));
    std::vector<float*> pointers;
    for (auto& plane : planes) pointers.push_back(plane.data());
    for (std::size_t start = 0; start < frames; start += static_cast<std::size_t>(block)) {
        const std::size_t count = std::min(frames - start, static_cast<std::size_t>(block));
        for (std::size_t i = 0; i < count; ++i)
            for (int c = 0; c < channels; ++c) planes[c][i] = interleaved[(start + i) * channels + c];
        for (auto& effect : effects) {
            AEffect* record = effect->effect();
            record->processReplacing(record, pointers.data(), pointers.data(), static_cast<VstInt32>(count));
        }
        for (std::size_t i = 0; i < count; ++i)
            for (int c = 0; c < channels; ++c) interleaved[(start + i) * channels + c] = planes[c][i];
    }
    for (auto& effect : effects) effect->suspend();
    return interleaved;  // the effects close as they go
}

// A signal with a different value on every sample and channel: a crossed
// channel or a shifted frame cannot go unnoticed.
std::vector<float> testSignal(int channels, int frames) {
    std::vector<float> samples;
    for (int i = 0; i < frames; ++i)
        for (int c = 0; c < channels; ++c)
            samples.push_back(static_cast<float>(0.6 * std::sin(i * (0.011 + 0.003 * c)) +
                                                 0.2 * std::sin(i * 0.37 + c) + 0.001 * c));
    return samples;
}

std::string settingText(const Setting& setting) {
    char text[64];
    std::snprintf(text, sizeof text, "%d=%.9g", setting.index, static_cast<double>(setting.normalised));
    return text;
}

struct RenderCase {
    const char* why;
    int channels;
    std::vector<std::string> typed;  // what follows each -e: the family or identifier typed
    std::vector<Link> chain;         // the identifiers it must resolve to, with their settings
};

void PrintTo(const RenderCase& render, std::ostream* out) { *out << render.why; }

class AfxModuleRender : public ::testing::TestWithParam<RenderCase> {};

// afx's output, written as floats with the same block size, equals the
// effects driven directly, bit for bit: the host adds, drops or converts nothing.
TEST_P(AfxModuleRender, EqualsDrivingTheEffectsDirectly) {
    SKIP_UNLESS_REGISTERED();
    const RenderCase& render = GetParam();
    ASSERT_TRUE(aftest::LoadedModule::Get().loaded()) << aftest::LoadedModule::Get().error();
    constexpr int kFrames = 7000;
    constexpr int kBlock = 300;
    constexpr int kRate = 44100;
    const std::vector<float> input = testSignal(render.channels, kFrames);
    const auto expected = driveDirectly(render.chain, render.channels, kRate, kBlock, input);
    if (!expected) GTEST_SKIP() << "the module does not make every effect of this chain yet";

    ScratchFolder folder;
    writeFloatWav(folder.file("in.wav"), render.channels, kRate, input);
    // No tail: the output is exactly as long as the input.
    std::vector<std::string> arguments = {"render", folder.file("in.wav"), folder.file("out.wav"), "--float",
                                          "--block", std::to_string(kBlock), "--tail", "0"};
    for (std::size_t i = 0; i < render.chain.size(); ++i) {
        arguments.push_back("-e");
        arguments.push_back(render.typed[i]);
        for (const Setting& setting : render.chain[i].settings) {
            arguments.push_back("--set");
            arguments.push_back(settingText(setting));
        }
    }
    const Outcome outcome = runAfx(arguments);
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
    WavData output;
    ASSERT_TRUE(readWav(folder.file("out.wav"), output));
    EXPECT_EQ(output.formatCode, 3);
    EXPECT_EQ(output.channels, render.channels);
    const std::vector<float> samples = output.floats();
    ASSERT_EQ(samples.size(), expected->size());
    for (std::size_t i = 0; i < samples.size(); ++i)
        ASSERT_EQ(std::bit_cast<std::uint32_t>(samples[i]), std::bit_cast<std::uint32_t>((*expected)[i]))
            << render.why << ": sample " << i;
}

INSTANTIATE_TEST_SUITE_P(
    Chains, AfxModuleRender,
    ::testing::Values(
        RenderCase{"volume by family", 2, {"volume"}, {{"Internal Volume Stereo", {{0, 0.3f}}}}},
        RenderCase{"highpass by identifier", 2, {"internal highpass stereo"},
                   {{"Internal Highpass Stereo", {{0, 0.3f}}}}},
        RenderCase{"notch is the band-reject", 1, {"notch"}, {{"Internal Bandreject Mono", {{0, 0.2f}, {1, 0.7f}}}}},
        RenderCase{"parametric EQ on 5.1", 6, {"parametric-eq"},
                   {{"Internal Parametric EQ 5.1", {{0, 0.4f}, {1, 0.3f}, {2, 0.8f}}}}},
        RenderCase{"delay with feedback", 2, {"delay"}, {{"Internal Delay Stereo", {{0, 0.01f}, {1, 0.6f}, {2, 0.5f}}}}},
        RenderCase{"balance", 2, {"balance"}, {{"Internal Balance", {{0, 0.8f}}}}},
        RenderCase{"16 channels through lowpass", 16, {"lowpass"}, {{"Internal Lowpass 16 Channel", {{0, 0.1f}}}}},
        RenderCase{"a chain of four", 2, {"highpass", "parametric-eq", "delay", "volume"},
                   {{"Internal Highpass Stereo", {{0, 0.12f}}},
                    {"Internal Parametric EQ Stereo", {{0, 0.45f}, {2, 0.6f}}},
                    {"Internal Delay Stereo", {{0, 0.005f}, {1, 0.35f}, {2, 0.3f}}},
                    {"Internal Volume Stereo", {{0, 0.35f}}}}}),
    NameFromWhy());

// Rendering reads and writes in chunks on other threads; the effects must
// still see the input block after block as when driven directly, for any
// chunk size, channel count and length, including files shorter than a
// chunk, of odd length, or empty.
struct ChunkedRender {
    const char* why;
    int channels;
    int frames;
    int block;
    int chunk;  // 0: afx's default
};

void PrintTo(const ChunkedRender& render, std::ostream* out) { *out << render.why; }

class AfxModuleChunkedRender : public ::testing::TestWithParam<ChunkedRender> {};

TEST_P(AfxModuleChunkedRender, EqualsDrivingTheEffectsDirectly) {
    SKIP_UNLESS_REGISTERED();
    const ChunkedRender& render = GetParam();
    ASSERT_TRUE(aftest::LoadedModule::Get().loaded()) << aftest::LoadedModule::Get().error();
    const std::string suffix = render.channels == 1   ? "Mono"
                               : render.channels == 2 ? "Stereo"
                               : render.channels == 6 ? "5.1"
                                                      : "16 Channel";
    // A recursive filter and a delay with feedback: both carry state from
    // block to block, so a lost, repeated or reordered block shows.
    const std::vector<Link> chain = {{"Internal Highpass " + suffix, {{0, 0.2f}}},
                                     {"Internal Delay " + suffix, {{0, 0.003f}, {1, 0.5f}, {2, 0.4f}}}};
    constexpr int kRate = 48000;
    const std::vector<float> input = testSignal(render.channels, render.frames);
    const auto expected = driveDirectly(chain, render.channels, kRate, render.block, input);
    if (!expected) GTEST_SKIP() << "the module does not make every effect of this chain yet";

    ScratchFolder folder;
    writeFloatWav(folder.file("in.wav"), render.channels, kRate, input);
    std::vector<std::string> arguments = {"render", folder.file("in.wav"), folder.file("out.wav"), "--float",
                                          "--quiet", "--block", std::to_string(render.block), "--tail", "0"};
    if (render.chunk > 0) arguments.insert(arguments.end(), {"--chunk", std::to_string(render.chunk)});
    for (const Link& link : chain) {
        arguments.insert(arguments.end(), {"-e", link.identifier});
        for (const Setting& setting : link.settings) arguments.insert(arguments.end(), {"--set", settingText(setting)});
    }
    const Outcome outcome = runAfx(arguments);
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
    WavData output;
    ASSERT_TRUE(readWav(folder.file("out.wav"), output));
    EXPECT_EQ(output.channels, render.channels);
    const std::vector<float> samples = output.floats();
    ASSERT_EQ(samples.size(), expected->size());
    for (std::size_t i = 0; i < samples.size(); ++i)
        ASSERT_EQ(std::bit_cast<std::uint32_t>(samples[i]), std::bit_cast<std::uint32_t>((*expected)[i]))
            << render.why << ": sample " << i;
}

INSTANTIATE_TEST_SUITE_P(
    Chunks, AfxModuleChunkedRender,
    ::testing::Values(ChunkedRender{"mono, odd length, small chunks", 1, 20001, 1024, 3000},
                      ChunkedRender{"stereo, block not dividing the asked chunk", 2, 9999, 300, 1000},
                      ChunkedRender{"stereo, default chunk several times over", 2, 80001, 1024, 0},
                      ChunkedRender{"5.1 shorter than one chunk", 6, 777, 128, 0},
                      ChunkedRender{"5.1, chunk of one block", 6, 12345, 512, 1},
                      ChunkedRender{"16 channels, default chunk", 16, 15000, 1024, 0},
                      ChunkedRender{"16 channels, odd block", 16, 4001, 37, 500},
                      ChunkedRender{"16 channels, empty input", 16, 0, 1024, 0},
                      ChunkedRender{"stereo, one frame", 2, 1, 1024, 0}),
    NameFromWhy());

// After the input, a delay keeps sounding: afx feeds it silence, exactly as
// long as asked, or by default until its output has been quiet (below
// -120 dBFS) for two seconds. Either way the output is the effect driven
// directly over the input followed by that much silence.
struct TailCase {
    const char* why;
    std::vector<std::string> tail;  // the --tail option as typed, or nothing
    std::int64_t expectedTailFrames;  // -1: found by the test from the direct run
};

void PrintTo(const TailCase& tail, std::ostream* out) { *out << tail.why; }

class AfxModuleTail : public ::testing::TestWithParam<TailCase> {};

TEST_P(AfxModuleTail, RunsTheDelayOnSilenceAfterTheInput) {
    SKIP_UNLESS_REGISTERED();
    constexpr int kRate = 8000;
    constexpr int kFrames = 1000;
    constexpr int kBlock = 256;
    constexpr int kQuietFrames = 2 * kRate;
    // 0.1 s echoes, each half the one before (-6 dB): 20 echoes fall 120 dB.
    const std::vector<Link> chain = {{"Internal Delay Mono", {{0, 0.05f}, {1, 0.5f}, {2, 0.5f}}}};
    const std::int64_t longest = 20 * kRate;
    std::vector<float> padded = testSignal(1, kFrames);
    padded.resize(static_cast<std::size_t>(kFrames + longest), 0.0f);
    const auto direct = driveDirectly(chain, 1, kRate, kBlock, padded);
    if (!direct) GTEST_SKIP() << "the module does not make the delay yet";
    std::int64_t tailFrames = GetParam().expectedTailFrames;
    if (tailFrames < 0) {
        // Independently of afx: the last frame at or above -120 dBFS, then two seconds of quiet.
        std::int64_t lastLoud = kFrames - 1;
        for (std::int64_t i = kFrames; i < static_cast<std::int64_t>(direct->size()); ++i) {
            if (!(std::fabs((*direct)[static_cast<std::size_t>(i)]) < 1.0e-6f)) lastLoud = i;
        }
        ASSERT_LT(lastLoud + kQuietFrames, static_cast<std::int64_t>(direct->size()));
        ASSERT_GT(lastLoud, kFrames + kRate) << "the echoes last more than a second";
        tailFrames = lastLoud + kQuietFrames + 1 - kFrames;
    }
    ScratchFolder folder;
    writeFloatWav(folder.file("in.wav"), 1, kRate, testSignal(1, kFrames));
    std::vector<std::string> arguments = {"render", folder.file("in.wav"), folder.file("out.wav"), "--float",
                                          "--quiet", "--block", std::to_string(kBlock), "--chunk", "700",
                                          "-e", chain[0].identifier};
    for (const Setting& setting : chain[0].settings) arguments.insert(arguments.end(), {"--set", settingText(setting)});
    arguments.insert(arguments.end(), GetParam().tail.begin(), GetParam().tail.end());
    const Outcome outcome = runAfx(arguments);
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
    WavData output;
    ASSERT_TRUE(readWav(folder.file("out.wav"), output));
    const std::vector<float> samples = output.floats();
    ASSERT_EQ(static_cast<std::int64_t>(samples.size()), kFrames + tailFrames);
    for (std::size_t i = 0; i < samples.size(); ++i)
        ASSERT_EQ(std::bit_cast<std::uint32_t>(samples[i]), std::bit_cast<std::uint32_t>((*direct)[i])) << "sample " << i;
}

INSTANTIATE_TEST_SUITE_P(Tails, AfxModuleTail,
                         ::testing::Values(TailCase{"none when asked for zero", {"--tail", "0"}, 0},
                                           TailCase{"exactly as asked", {"--tail", "0.75"}, 6000},
                                           TailCase{"until quiet by default", {}, -1}),
                         NameFromWhy());

TEST(AfxModule, RefusesANegativeOrNonNumericTail) {
    SKIP_UNLESS_REGISTERED();
    for (const char* bad : {"-1", "soon", "nan"}) {
        const Outcome outcome = runAfx({"render", "in.wav", "out.wav", "-e", "delay", "--tail", bad});
        EXPECT_EQ(outcome.exitStatus, 2) << bad << ": " << outcome.err;
    }
}

TEST(AfxModule, ListsTheFiftyFiveRegistrationsInOrder) {
    SKIP_UNLESS_REGISTERED();
    const Outcome outcome = runAfx({"list"});
    const auto rows = lines(outcome.out);
    ASSERT_EQ(rows.size(), 55u);
    int made = 0;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const ExpectedRegistration& expected = expectedTable()[i];
        const auto cells = columns(rows[i]);
        ASSERT_EQ(cells.size(), 5u) << rows[i];
        EXPECT_EQ(cells[0], expected.identifier);
        EXPECT_EQ(cells[1], expected.name);
        EXPECT_EQ(cells[2], expected.flags);
        // "-": the family is registered but not made yet.
        if (cells[3] != "-") {
            EXPECT_EQ(cells[3], std::to_string(expected.channels)) << rows[i];
            ++made;
        }
    }
    std::printf("afx list: %d of 55 registered effects are made by the module\n", made);
}

// The filters' cut-off defaults to 0.25, which shows as fs (0.99 * 0.25^2 +
// 0.000416666) / 2: 1373.53 Hz at 44.1 kHz, 1495 Hz at 48 kHz; the range
// follows the rate (9.187486 .. 21838.6875 and 9.999984 .. 23770).
TEST(AfxModule, InfoOfAFilterFollowsTheRate) {
    SKIP_UNLESS_REGISTERED();
    struct Expected {
        const char* rate;
        const char* minimum;
        const char* maximum;
        const char* display;
    };
    for (const Expected& expected : {Expected{"44100", "9.187486", "21838.69", "1373.531"},
                                     Expected{"48000", "9.999984", "23770", "1495.000"}}) {
        const Outcome outcome = runAfx({"info", "Internal Highpass Stereo", "--rate", expected.rate});
        if (outcome.exitStatus == 1 && outcome.err.find("makes no instance") != std::string::npos)
            GTEST_SKIP() << "the module does not make Highpass yet";
        ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
        EXPECT_NE(outcome.out.find("unique id    AFl2"), std::string::npos) << outcome.out;
        EXPECT_NE(outcome.out.find("program      Default"), std::string::npos) << outcome.out;
        EXPECT_NE(outcome.out.find("history      yes"), std::string::npos) << outcome.out;
        EXPECT_NE(outcome.out.find("inputs       2\n  outputs      2"), std::string::npos) << outcome.out;
        const auto rows = lines(outcome.out);
        ASSERT_FALSE(rows.empty());
        EXPECT_EQ(columns(rows.back()), (std::vector<std::string>{"0", "'Cutoff'", "'Hz'", "hertz", expected.minimum,
                                                                  expected.maximum, "100", "0.25", expected.display}))
            << rows.back();
    }
}

TEST(AfxModule, InfoOfAnEffectWithoutPropertyInterface) {
    SKIP_UNLESS_REGISTERED();
    const Outcome outcome = runAfx({"info", "invert", "--channels", "6"});
    if (outcome.exitStatus == 1 && outcome.err.find("makes no instance") != std::string::npos)
        GTEST_SKIP() << "the module does not make Invert yet";
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("Internal Invert 5.1 (Invert)"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("unique id    AIn6"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("history      no (no property interface)"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("parameters   0"), std::string::npos) << outcome.out;
}

// A family without a variant for the file's channel count is a usage error
// that says which counts exist; nothing is written.
TEST(AfxModule, FamilyWithoutVariantForTheChannelCount) {
    SKIP_UNLESS_REGISTERED();
    struct Case {
        int channels;
        const char* family;
        const char* mentions;
    };
    for (const Case& wrong : {Case{1, "balance", "exists for 2 channels"},
                              Case{4, "channel-volume", "exists for 2, 6 and 16 channels (its channels work"},
                              Case{1, "channel-volume", "exists for 2, 6 and 16 channels"},
                              Case{6, "swap-channels", "exists for 2 channels"}}) {
        ScratchFolder folder;
        writeFloatWav(folder.file("in.wav"), wrong.channels, 48000, testSignal(wrong.channels, 100));
        const Outcome outcome = runAfx({"render", folder.file("in.wav"), folder.file("out.wav"), "-e", wrong.family});
        EXPECT_EQ(outcome.exitStatus, 2) << outcome.err;
        EXPECT_NE(outcome.err.find(std::string("no variant for ") + std::to_string(wrong.channels) + " channel"),
                  std::string::npos)
            << outcome.err;
        EXPECT_NE(outcome.err.find(wrong.mentions), std::string::npos) << outcome.err;
        EXPECT_EQ(folder.entries(), std::vector<std::string>{"in.wav"});
    }
}

// The multitap delay names its third and fourth tap levels alike: the bare
// name is refused with the two spellings that tell them apart, "level4#1"
// and "level4#2" reach indices 8 and 11, and blanks inside names are ignored.
// The parameters are read back from the chain render prints.
TEST(AfxModule, DuplicatedParameterNamesHaveTheirOwnSpelling) {
    SKIP_UNLESS_REGISTERED();
    ScratchFolder folder;
    writeFloatWav(folder.file("in.wav"), 1, 48000, testSignal(1, 100));
    const Outcome ambiguous = runAfx({"render", folder.file("in.wav"), folder.file("out.wav"), "-e",
                                      "multitap-delay", "-p", "level 4=-6"});
    if (ambiguous.exitStatus == 1 && ambiguous.err.find("makes no instance") != std::string::npos)
        GTEST_SKIP() << "the module does not make Multitap Delay yet";
    EXPECT_EQ(ambiguous.exitStatus, 2) << ambiguous.err;
    EXPECT_NE(ambiguous.err.find("level4#1 (index 8) or level4#2 (index 11)"), std::string::npos) << ambiguous.err;
    EXPECT_EQ(folder.entries(), std::vector<std::string>{"in.wav"});
    const Outcome spelled = runAfx({"render", folder.file("in.wav"), folder.file("out.wav"), "-e", "multitap-delay",
                                    "-p", "level4#1=-12", "-p", "LEVEL 4#2=-3", "-p", "delay1=0.5"});
    ASSERT_EQ(spelled.exitStatus, 0) << spelled.err;
    EXPECT_NE(spelled.out.find("Level 4#1 = -12"), std::string::npos) << spelled.out;
    EXPECT_NE(spelled.out.find("Level 4#2 = -3"), std::string::npos) << spelled.out;
    EXPECT_NE(spelled.out.find("Delay 1 = 0.5"), std::string::npos) << spelled.out;
    // The same settings by index give the same file.
    const Outcome byIndex = runAfx({"render", folder.file("in.wav"), folder.file("index.wav"), "-e",
                                    "multitap-delay", "-p", "8=-12", "-p", "11=-3", "-p", "0=0.5", "--quiet"});
    ASSERT_EQ(byIndex.exitStatus, 0) << byIndex.err;
    EXPECT_EQ(readText(folder.file("out.wav")), readText(folder.file("index.wav")));
}

// A family whose channels are independent runs on any channel count as one
// mono instance per channel; an identifier whose width divides the count runs
// as several side by side. Expected: each channel (or pair) through its own
// instance driven directly in this process; compared bit for bit.
TEST(AfxModule, AnyChannelCountThroughInstancesSideBySide) {
    SKIP_UNLESS_REGISTERED();
    const struct {
        int channels;
        const char* effect;
        const char* variant;  // what each instance is
        int width;
    } kCases[] = {{3, "highpass", "Internal Highpass Mono", 1},
                  {4, "volume", "Internal Volume Mono", 1},
                  {8, "delay", "Internal Delay Mono", 1},
                  {32, "invert", "Internal Invert Mono", 1},
                  {4, "internal lowpass stereo", "Internal Lowpass Stereo", 2}};
    constexpr int kRate = 48000;
    constexpr int kFrames = 3000;
    for (const auto& wide : kCases) {
        ScratchFolder folder;
        const std::vector<float> input = testSignal(wide.channels, kFrames);
        writeFloatWav(folder.file("in.wav"), wide.channels, kRate, input);
        // No tail: the output is as long as the input, the delay's too.
        const Outcome outcome =
            runAfx({"render", folder.file("in.wav"), folder.file("out.wav"), "-e", wide.effect, "--tail", "0"});
        if (outcome.exitStatus == 1 && outcome.err.find("makes no instance") != std::string::npos)
            GTEST_SKIP() << "the module does not make " << wide.variant << " yet";
        ASSERT_EQ(outcome.exitStatus, 0) << wide.effect << ": " << outcome.err;
        const std::string grouping = std::string(wide.variant) + " x " + std::to_string(wide.channels / wide.width) +
                                     " (each on " + std::to_string(wide.width) + " channel";
        EXPECT_NE(outcome.out.find(grouping), std::string::npos) << outcome.out;
        WavData output;
        ASSERT_TRUE(readWav(folder.file("out.wav"), output));
        const std::vector<float> samples = output.floats();
        ASSERT_EQ(samples.size(), input.size());
        for (int first = 0; first < wide.channels; first += wide.width) {
            std::vector<float> group;
            for (int i = 0; i < kFrames; ++i)
                for (int c = 0; c < wide.width; ++c) group.push_back(input[i * wide.channels + first + c]);
            const auto expected = driveDirectly({{wide.variant, {}}}, wide.width, kRate, 1024, group);
            ASSERT_TRUE(expected.has_value());
            for (int i = 0; i < kFrames; ++i)
                for (int c = 0; c < wide.width; ++c)
                    ASSERT_EQ(std::bit_cast<std::uint32_t>(samples[i * wide.channels + first + c]),
                              std::bit_cast<std::uint32_t>((*expected)[i * wide.width + c]))
                        << wide.effect << " channel " << first + c << " frame " << i;
        }
    }
}

// An identifier for another channel count names the one that fits.
TEST(AfxModule, IdentifierForAnotherChannelCountNamesTheFittingOne) {
    SKIP_UNLESS_REGISTERED();
    ScratchFolder folder;
    writeFloatWav(folder.file("in.wav"), 1, 48000, testSignal(1, 100));
    const Outcome outcome = runAfx({"render", folder.file("in.wav"), folder.file("out.wav"), "-e",
                                    "internal volume stereo"});
    EXPECT_EQ(outcome.exitStatus, 2);
    EXPECT_NE(outcome.err.find("use 'Internal Volume Mono' (or the family name 'volume')"), std::string::npos)
        << outcome.err;
}

// Sine tones through the README's equaliser example: the level change the
// README states at each frequency, measured over the second half of one
// second of tone (the filter has settled), within 0.05 dB.
TEST(AfxModule, ReadmeEqualiserExampleDoesWhatItSays) {
    SKIP_UNLESS_REGISTERED();
    ScratchFolder folder;
    constexpr int kRate = 44100;
    const struct {
        bool narrow;  // with -p q=2, else the default width
        double hertz;
        double decibels;  // as the README states them
    } kClaims[] = {{true, 200.0, -0.04},    {true, 1000.0, -0.92},  {true, 2000.0, -3.79}, {true, 3000.0, -6.00},
                   {true, 5000.0, -2.99},   {true, 16000.0, -0.08}, {false, 200.0, -3.8},  {false, 1000.0, -5.9},
                   {false, 3000.0, -6.0},   {false, 16000.0, -4.8}};
    for (const auto& claim : kClaims) {
        std::vector<float> tone;
        for (int i = 0; i < kRate; ++i) {
            const float value = static_cast<float>(0.25 * std::sin(2.0 * M_PI * claim.hertz * i / kRate));
            tone.push_back(value);
            tone.push_back(value);
        }
        writeFloatWav(folder.file("tone.wav"), 2, kRate, tone);
        std::vector<std::string> arguments = {"render", folder.file("tone.wav"), folder.file("eq.wav"), "-y", "-q",
                                              "-e", "parametric-eq", "-p", "center=3000", "-p", "boost=-6"};
        if (claim.narrow) arguments.insert(arguments.end(), {"-p", "q=2"});
        const Outcome outcome = runAfx(arguments);
        if (outcome.exitStatus == 1 && outcome.err.find("makes no instance") != std::string::npos)
            GTEST_SKIP() << "the module does not make the Parametric EQ yet";
        ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
        WavData output;
        ASSERT_TRUE(readWav(folder.file("eq.wav"), output));
        const std::vector<float> samples = output.floats();
        double in = 0.0;
        double out = 0.0;
        for (std::size_t i = tone.size() / 2; i < tone.size(); i += 2) {
            in += static_cast<double>(tone[i]) * tone[i];
            out += static_cast<double>(samples[i]) * samples[i];
        }
        EXPECT_NEAR(10.0 * std::log10(out / in), claim.decibels, 0.05) << claim.hertz << " Hz, narrow " << claim.narrow;
    }
}

// Delay at 2.0 s at 44.1 kHz (the rate the effect is made with, so setting it
// changes nothing) plays undelayed, the effect's own edge case: afx renders
// it, warns, and the value it names gives the echo one frame short of 2 s.
TEST(AfxModule, DelayEdgeCaseIsWarnedWithTheNearestValue) {
    SKIP_UNLESS_REGISTERED();
    ScratchFolder folder;
    constexpr int kRate = 44100;
    std::vector<float> click(3 * kRate, 0.0f);
    click[0] = 0.5f;
    writeFloatWav(folder.file("click.wav"), 1, kRate, click);
    const Outcome edge = runAfx({"render", folder.file("click.wav"), folder.file("edge.wav"), "-q", "-e", "delay",
                                 "-p", "delay=2", "-p", "feedback=0", "-p", "mix=100"});
    if (edge.exitStatus == 1 && edge.err.find("makes no instance") != std::string::npos)
        GTEST_SKIP() << "the module does not make Delay yet";
    ASSERT_EQ(edge.exitStatus, 0) << edge.err;
    EXPECT_NE(edge.err.find("plays undelayed"), std::string::npos) << edge.err;
    EXPECT_NE(edge.err.find("-p delay=1.99998 gives the longest echo"), std::string::npos) << edge.err;
    WavData output;
    ASSERT_TRUE(readWav(folder.file("edge.wav"), output));
    EXPECT_NEAR(output.floats().at(0), 0.5f, 1e-6f);  // the click comes straight through
    const Outcome nearest = runAfx({"render", folder.file("click.wav"), folder.file("echo.wav"), "-q", "-e", "delay",
                                    "-p", "delay=1.99998", "-p", "feedback=0", "-p", "mix=100"});
    ASSERT_EQ(nearest.exitStatus, 0) << nearest.err;
    EXPECT_EQ(nearest.err, "");
    ASSERT_TRUE(readWav(folder.file("echo.wav"), output));
    const std::vector<float> echo = output.floats();
    EXPECT_NEAR(echo.at(0), 0.0f, 1e-6f);
    EXPECT_NEAR(echo.at(2 * kRate - 1), 0.5f, 1e-6f);  // 88199 frames later
}

TEST(AfxModule, DisplayValuesConvertThroughThePropertyInterface) {
    SKIP_UNLESS_REGISTERED();
    ScratchFolder folder;
    const std::vector<float> input = testSignal(2, 2000);
    writeFloatWav(folder.file("in.wav"), 2, 48000, input);
    // Volume: 10^(dB/20) * 0.5 with dB/20 and the power rounded to float.
    const float exponent = static_cast<float>(-6.0 / 20.0);
    const float power = static_cast<float>(std::pow(10.0, static_cast<double>(exponent)));
    const float normalised = static_cast<float>(static_cast<double>(power) * 0.5);
    const auto expected = driveDirectly({{"Internal Volume Stereo", {{0, normalised}}}}, 2, 48000, 1024, input);
    if (!expected) GTEST_SKIP() << "the module does not make Volume yet";
    const Outcome outcome =
        runAfx({"render", folder.file("in.wav"), folder.file("out.wav"), "-e", "volume", "-p", "level=-6"});
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
    WavData output;
    ASSERT_TRUE(readWav(folder.file("out.wav"), output));
    const std::vector<float> samples = output.floats();
    ASSERT_EQ(samples.size(), expected->size());
    for (std::size_t i = 0; i < samples.size(); ++i)
        ASSERT_EQ(std::bit_cast<std::uint32_t>(samples[i]), std::bit_cast<std::uint32_t>((*expected)[i])) << i;
}

TEST(AfxModule, DemoRendersTheBundledExample) {
    SKIP_UNLESS_REGISTERED();
    ScratchFolder folder;
    const Outcome outcome = runAfx({"demo", folder.file("demo.wav")});
    if (outcome.exitStatus == 1 && outcome.err.find("makes no instance") != std::string::npos)
        GTEST_SKIP() << "the module does not make every effect of the demo chain yet: " << outcome.err;
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
    WavData input;
    ASSERT_TRUE(readWav(AF_BINARY_DIR "/examples/afx-demo-input.wav", input));
    WavData output;
    ASSERT_TRUE(readWav(folder.file("demo.wav"), output));
    EXPECT_EQ(output.channels, 2);
    EXPECT_EQ(output.sampleRate, 44100);
    // The delay's echoes go on after the input: the output is longer.
    EXPECT_GT(output.bytes.size(), input.bytes.size());
    EXPECT_NE(outcome.out.find("Internal Highpass Stereo: Cutoff = "), std::string::npos) << outcome.out;
    // Run again: the demo replaces its output without asking.
    EXPECT_EQ(runAfx({"demo", folder.file("demo.wav"), "--quiet"}).exitStatus, 0);
}

}  // namespace
}  // namespace afxtest
