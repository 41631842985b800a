// afx as a host, on the stand-in module (tests/cli/fake): command-line
// handling, the render path's exactness, errors, and interruption. These do
// not depend on which effect families the real module provides.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <thread>

#include "AfxRunner.h"
#include "TestNames.h"
#include "WavFiles.h"

namespace afxtest {
namespace {

const std::vector<std::string> kFake = {"--module", kFakeModule};

std::vector<std::string> withFake(std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), kFake.begin(), kFake.end());
    return arguments;
}

// A stereo test signal: a different value on every sample, some above full
// scale and some tiny, so a crossed channel or a dropped frame shows.
std::vector<float> stereoSignal(int frames) {
    std::vector<float> samples;
    for (int i = 0; i < frames; ++i) {
        samples.push_back(static_cast<float>(std::sin(i * 0.013) * 1.1));
        samples.push_back(static_cast<float>(std::cos(i * 0.007) * 1e-3 + i * 1e-7));
    }
    return samples;
}

void expectOneErrorLine(const Outcome& outcome) {
    const auto errorLines = lines(outcome.err);
    ASSERT_EQ(errorLines.size(), 1u) << outcome.err;
    EXPECT_EQ(errorLines[0].rfind("afx: error: ", 0), 0u) << errorLines[0];
}

TEST(AfxHelp, DescribesEveryOption) {
    const Outcome top = runAfx({"--help"});
    EXPECT_EQ(top.exitStatus, 0);
    for (const char* word : {"list", "info", "render", "demo", "--module", "--help"})
        EXPECT_NE(top.out.find(word), std::string::npos) << word;
    const Outcome render = runAfx({"render", "--help"});
    EXPECT_EQ(render.exitStatus, 0);
    for (const char* word : {"--effect", "--param", "--set", "--block", "--chunk", "--float", "--no-sync",
                             "--overwrite", "-y", "--quiet",
                             "--module", "notch", "multitap-delay", "channel-volume"})
        EXPECT_NE(render.out.find(word), std::string::npos) << word;
    const Outcome info = runAfx({"info", "--help"});
    for (const char* word : {"--rate", "--json", "--channels", "--module"})
        EXPECT_NE(info.out.find(word), std::string::npos) << word;
    const Outcome list = runAfx({"list", "--help"});
    EXPECT_NE(list.out.find("--json"), std::string::npos);
    const Outcome demo = runAfx({"demo", "--help"});
    EXPECT_NE(demo.out.find("OUTPUT"), std::string::npos);
}

TEST(AfxList, OneLinePerRegistrationInOrder) {
    const Outcome outcome = runAfx(withFake({"list"}));
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
    const auto rows = lines(outcome.out);
    ASSERT_EQ(rows.size(), 4u) << outcome.out;  // no heading when stdout is not a terminal
    const std::vector<std::vector<std::string>> expected = {
        {"Test Gain Stereo", "Test Gain", "0x208", "2", "1"},
        {"Test Slow Mono", "Test Slow", "0x104", "1", "1"},
        {"Test Broken Mono", "Test Broken", "0x104", "-", "-"},
        {"Test Calls Stereo", "Test Calls", "0x208", "2", "0"},
    };
    for (std::size_t i = 0; i < rows.size(); ++i) EXPECT_EQ(columns(rows[i]), expected[i]) << rows[i];
}

TEST(AfxList, Json) {
    const Outcome outcome = runAfx(withFake({"list", "--json"}));
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("\"identifier\": \"Test Gain Stereo\", \"name\": \"Test Gain\", \"flags\": \"0x208\", "
                               "\"flagsValue\": 520, \"channels\": 2, \"parameters\": 1"),
              std::string::npos)
        << outcome.out;
    EXPECT_NE(outcome.out.find("\"channels\": null, \"parameters\": null"), std::string::npos) << outcome.out;
}

TEST(AfxInfo, ShowsWhatTheHostAsks) {
    const Outcome outcome = runAfx(withFake({"info", "TEST GAIN STEREO", "--rate", "44100"}));
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("unique id    TGn2"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("program      Default"), std::string::npos);
    EXPECT_NE(outcome.out.find("history      no\n"), std::string::npos);
    EXPECT_NE(outcome.out.find("sample rate  44100 Hz"), std::string::npos);
    // index, name, label, type, min, max, step, default normalised, display
    const auto rows = lines(outcome.out);
    ASSERT_FALSE(rows.empty());
    EXPECT_EQ(columns(rows.back()),
              (std::vector<std::string>{"0", "'Gain'", "'x'", "number", "0", "2", "0.01", "0.5", "1.000000"}))
        << rows.back();
}

TEST(AfxInfo, EffectWithoutPropertyInterface) {
    const Outcome outcome = runAfx(withFake({"info", "Test Slow Mono", "--json"}));
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("\"propertyInterface\": false"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("\"history\": false"), std::string::npos);
    EXPECT_NE(outcome.out.find("\"min\": null"), std::string::npos);
    const Outcome text = runAfx(withFake({"info", "Test Slow Mono"}));
    EXPECT_NE(text.out.find("history      no (no property interface)"), std::string::npos) << text.out;
}

// The host adds nothing: with --set and --float the output is the stand-in's
// own product in * (p + p), sample by sample, for a block size that leaves a
// short last block. Compared as bit patterns because exactness is the point.
TEST(AfxRender, FloatThroughIsBitExact) {
    ScratchFolder folder;
    constexpr int kFrames = 5000;
    const std::vector<float> input = stereoSignal(kFrames);
    writeFloatWav(folder.file("in.wav"), 2, 48000, input);
    const Outcome outcome = runAfx(withFake({"render", folder.file("in.wav"), folder.file("out.wav"), "-e",
                                             "test gain stereo", "--set", "0=0.7", "--block", "333", "--float"}));
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
    WavData output;
    ASSERT_TRUE(readWav(folder.file("out.wav"), output));
    EXPECT_EQ(output.formatCode, 3);
    EXPECT_EQ(output.channels, 2);
    EXPECT_EQ(output.sampleRate, 48000);
    const std::vector<float> samples = output.floats();
    ASSERT_EQ(samples.size(), input.size());
    const float parameter = 0.7f;
    const float gain = parameter + parameter;
    for (std::size_t i = 0; i < samples.size(); ++i)
        ASSERT_EQ(std::bit_cast<std::uint32_t>(samples[i]), std::bit_cast<std::uint32_t>(input[i] * gain)) << i;
    EXPECT_EQ(folder.entries(), (std::vector<std::string>{"in.wav", "out.wav"}));
}

TEST(AfxRender, DisplayValueGoesThroughTheConversion) {
    ScratchFolder folder;
    const std::vector<float> input = stereoSignal(100);
    writeFloatWav(folder.file("in.wav"), 2, 48000, input);
    const Outcome outcome = runAfx(withFake({"render", folder.file("in.wav"), folder.file("out.wav"), "-e",
                                             "test gain stereo", "-p", " GAIN =1.5", "--quiet"}));
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "");
    WavData output;
    ASSERT_TRUE(readWav(folder.file("out.wav"), output));
    EXPECT_EQ(output.formatCode, 3);  // the input's sample format
    const std::vector<float> samples = output.floats();
    ASSERT_EQ(samples.size(), input.size());
    const float parameter = 1.5f * 0.5f;  // the stand-in's display-to-parameter conversion
    for (std::size_t i = 0; i < samples.size(); ++i)
        ASSERT_EQ(std::bit_cast<std::uint32_t>(samples[i]), std::bit_cast<std::uint32_t>(input[i] * (parameter + parameter)));
}

TEST(AfxRender, SixteenBitRoundTripIsUntouched) {
    ScratchFolder folder;
    std::vector<std::int16_t> input;
    for (int i = 0; i < 3000; ++i) {
        input.push_back(static_cast<std::int16_t>(i * 37 % 65536 - 32768));
        input.push_back(static_cast<std::int16_t>(32767 - i));
    }
    writePcm16Wav(folder.file("in.wav"), 2, 44100, input);
    const Outcome outcome =
        runAfx(withFake({"render", folder.file("in.wav"), folder.file("out.wav"), "-e", "test gain stereo"}));
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
    WavData output;
    ASSERT_TRUE(readWav(folder.file("out.wav"), output));
    EXPECT_EQ(output.formatCode, 1);
    EXPECT_EQ(output.bitsPerSample, 16);
    EXPECT_EQ(output.pcm16(), input);  // unity gain: every sample comes back as it was
    EXPECT_EQ(outcome.err, "");
    // The summary: frames, channels, seconds, peaks before and after (channel 0
    // reaches -32768, full scale; channel 1 peaks at 32767, 20 log10(32767/32768) = -0.0003 dB).
    EXPECT_NE(outcome.out.find("3000 frames, 2 channels, 0.068 s of audio"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("peak dBFS in [0.00 -0.00] out [0.00 -0.00]"), std::string::npos) << outcome.out;
}

TEST(AfxRender, ClippedIntegerOutputIsCountedAndWarned) {
    ScratchFolder folder;
    std::vector<std::int16_t> input;
    for (int i = 0; i < 2000; ++i) {
        input.push_back(static_cast<std::int16_t>((i * 97) % 40000 - 20000));
        input.push_back(static_cast<std::int16_t>(i));
    }
    writePcm16Wav(folder.file("in.wav"), 2, 44100, input);
    // Independent count: a sample s reads as s / 32768, is doubled, and is
    // clipped when the doubled value rounds outside -32768..32767.
    int expectedClipped = 0;
    for (std::int16_t s : input) {
        const float doubled = (static_cast<float>(s) / 32768.0f) * 2.0f;
        const double step = std::nearbyint(static_cast<double>(doubled) * 32768.0);
        if (step > 32767.0 || step < -32768.0) ++expectedClipped;
    }
    ASSERT_GT(expectedClipped, 0);
    const Outcome outcome = runAfx(withFake({"render", folder.file("in.wav"), folder.file("out.wav"), "-e",
                                             "test gain stereo", "--set", "0=1"}));
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
    EXPECT_NE(outcome.err.find("afx: warning: " + std::to_string(expectedClipped) + " samples clipped"),
              std::string::npos)
        << outcome.err;
    WavData output;
    ASSERT_TRUE(readWav(folder.file("out.wav"), output));
    const auto samples = output.pcm16();
    ASSERT_EQ(samples.size(), input.size());
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double doubled = static_cast<double>(input[i]) * 2.0;
        const double expected = std::max(-32768.0, std::min(32767.0, doubled));
        ASSERT_EQ(samples[i], static_cast<std::int16_t>(expected)) << i;
    }
}

TEST(AfxRender, BlockOfOneFrame) {
    ScratchFolder folder;
    const std::vector<float> input = stereoSignal(50);
    writeFloatWav(folder.file("in.wav"), 2, 8000, input);
    const Outcome outcome = runAfx(withFake({"render", folder.file("in.wav"), folder.file("out.wav"), "-e",
                                             "test gain stereo", "--block", "1", "--quiet"}));
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
    WavData output;
    ASSERT_TRUE(readWav(folder.file("out.wav"), output));
    EXPECT_EQ(output.floats(), input);
}

TEST(AfxRender, OverwritesOnlyWithYes) {
    ScratchFolder folder;
    writeFloatWav(folder.file("in.wav"), 2, 48000, stereoSignal(64));
    std::ofstream(folder.file("out.wav")) << "precious";
    const Outcome refused =
        runAfx(withFake({"render", folder.file("in.wav"), folder.file("out.wav"), "-e", "test gain stereo"}));
    EXPECT_EQ(refused.exitStatus, 2);
    expectOneErrorLine(refused);
    EXPECT_NE(refused.err.find("-y"), std::string::npos);
    EXPECT_EQ(readText(folder.file("out.wav")), "precious");
    const Outcome accepted =
        runAfx(withFake({"render", folder.file("in.wav"), folder.file("out.wav"), "-e", "test gain stereo", "-y"}));
    EXPECT_EQ(accepted.exitStatus, 0) << accepted.err;
    WavData output;
    EXPECT_TRUE(readWav(folder.file("out.wav"), output));
    EXPECT_EQ(folder.entries(), (std::vector<std::string>{"in.wav", "out.wav"}));
}

// How a render is cut up: the file is read and written in chunks of
// --chunk frames (rounded up to whole blocks), the effects get --block frames
// per call. Whatever the chunking, the samples and the call sequence must be
// those of plain block-after-block driving.
struct Chunking {
    const char* why;
    int frames;
    int block;
    int chunk;  // 0: afx's default
};

void PrintTo(const Chunking& chunking, std::ostream* out) { *out << chunking.why; }

class AfxRenderChunking : public ::testing::TestWithParam<Chunking> {
protected:
    std::vector<std::string> renderArguments(const ScratchFolder& folder, const char* effect) const {
        std::vector<std::string> arguments = {"render", folder.file("in.wav"), folder.file("out.wav"), "-y",
                                              "--quiet", "--float", "-e", effect, "--block",
                                              std::to_string(GetParam().block)};
        if (GetParam().chunk > 0) {
            arguments.push_back("--chunk");
            arguments.push_back(std::to_string(GetParam().chunk));
        }
        return withFake(arguments);
    }
};

// Every sample is the input times the gain, in its place: nothing is
// dropped, repeated or reordered between chunks. Bit patterns, since the
// product is exact and any change would be a fault.
TEST_P(AfxRenderChunking, SamplesArriveInOrder) {
    const Chunking& chunking = GetParam();
    ScratchFolder folder;
    const std::vector<float> input = stereoSignal(chunking.frames);
    writeFloatWav(folder.file("in.wav"), 2, 48000, input);
    std::vector<std::string> arguments = renderArguments(folder, "test gain stereo");
    arguments.insert(arguments.end(), {"--set", "0=0.7"});
    const Outcome outcome = runAfx(arguments);
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
    WavData output;
    ASSERT_TRUE(readWav(folder.file("out.wav"), output));
    const std::vector<float> samples = output.floats();
    ASSERT_EQ(samples.size(), input.size());
    const float gain = 0.7f + 0.7f;
    for (std::size_t i = 0; i < samples.size(); ++i)
        ASSERT_EQ(std::bit_cast<std::uint32_t>(samples[i]), std::bit_cast<std::uint32_t>(input[i] * gain)) << i;
    EXPECT_EQ(folder.entries(), (std::vector<std::string>{"in.wav", "out.wav"}));
}

// The effect sees calls of exactly `block` frames, numbered in order, and
// only the last one shorter: frame f belongs to call f / block.
TEST_P(AfxRenderChunking, EffectsGetTheSameBlocks) {
    const Chunking& chunking = GetParam();
    ScratchFolder folder;
    writeFloatWav(folder.file("in.wav"), 2, 48000, stereoSignal(chunking.frames));
    const Outcome outcome = runAfx(renderArguments(folder, "test calls stereo"));
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
    WavData output;
    ASSERT_TRUE(readWav(folder.file("out.wav"), output));
    const std::vector<float> samples = output.floats();
    ASSERT_EQ(samples.size(), static_cast<std::size_t>(chunking.frames) * 2);
    for (int frame = 0; frame < chunking.frames; ++frame) {
        const int call = frame / chunking.block;
        const int callStart = call * chunking.block;
        const int callFrames = std::min(chunking.block, chunking.frames - callStart);
        ASSERT_EQ(samples[2 * frame], static_cast<float>(call)) << "frame " << frame;
        ASSERT_EQ(samples[2 * frame + 1], static_cast<float>(callFrames)) << "frame " << frame;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Render, AfxRenderChunking,
    ::testing::Values(Chunking{"empty input", 0, 1024, 0}, Chunking{"one frame", 1, 1024, 0},
                      Chunking{"shorter than one chunk", 999, 64, 4096},
                      Chunking{"block does not divide the asked chunk", 5001, 333, 1000},
                      Chunking{"chunk of one frame", 777, 5, 1},
                      Chunking{"block larger than the asked chunk", 3001, 1000, 10},
                      Chunking{"block of one frame", 4097, 1, 1000},
                      Chunking{"chunk a whole number of blocks", 4096, 256, 1024},
                      Chunking{"default chunk many times over", 100003, 1024, 0}),
    NameFromWhy());

// Integer output is clipped and counted on the writing thread; the count is
// the same however the file is cut into chunks.
TEST(AfxRender, ClippedCountDoesNotDependOnTheChunking) {
    ScratchFolder folder;
    std::vector<std::int16_t> input;
    for (int i = 0; i < 5001; ++i) {
        input.push_back(static_cast<std::int16_t>((i * 97) % 40000 - 20000));
        input.push_back(static_cast<std::int16_t>(i % 3000 * 7));
    }
    writePcm16Wav(folder.file("in.wav"), 2, 44100, input);
    // A sample s reads as s / 32768 and is doubled: it clips when the doubled
    // step 2s lies outside -32768..32767.
    int expectedClipped = 0;
    for (std::int16_t s : input)
        if (2 * s > 32767 || 2 * s < -32768) ++expectedClipped;
    ASSERT_GT(expectedClipped, 0);
    for (const char* chunk : {"1", "700", "4096", "100000"}) {
        const Outcome outcome = runAfx(withFake({"render", folder.file("in.wav"), folder.file("out.wav"), "-y",
                                                 "--quiet", "-e", "test gain stereo", "--set", "0=1", "--block", "100",
                                                 "--chunk", chunk}));
        ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
        EXPECT_NE(outcome.err.find("afx: warning: " + std::to_string(expectedClipped) + " samples clipped"),
                  std::string::npos)
            << chunk << ": " << outcome.err;
        WavData output;
        ASSERT_TRUE(readWav(folder.file("out.wav"), output));
        const auto samples = output.pcm16();
        ASSERT_EQ(samples.size(), input.size()) << chunk;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const int doubled = 2 * input[i];
            ASSERT_EQ(samples[i], std::max(-32768, std::min(32767, doubled))) << chunk << ": " << i;
        }
    }
}

// A file that breaks off in the middle fails while chunks are already being
// processed and written: one error line, exit status 1, and neither an
// output nor a temporary file is left.
TEST(AfxRender, ReadErrorMidwayLeavesNothing) {
    ScratchFolder folder;
    std::vector<std::int16_t> noise;
    std::uint32_t state = 12345;
    for (int i = 0; i < 2 * 48000 * 3; ++i) {
        state = state * 1664525u + 1013904223u;
        noise.push_back(static_cast<std::int16_t>(state >> 16));
    }
    writePcm16Wav(folder.file("in.wav"), 2, 48000, noise);
    // A compressed copy (unity gain), cut to half its length: its decoder
    // loses the stream part way through.
    const Outcome made = runAfx(withFake({"render", folder.file("in.wav"), folder.file("whole.flac"), "--quiet",
                                          "-e", "test gain stereo", "--set", "0=0.5"}));
    ASSERT_EQ(made.exitStatus, 0) << made.err;
    const std::string whole = readText(folder.file("whole.flac"));
    ASSERT_GT(whole.size(), 100000u);
    std::ofstream(folder.file("cut.flac"), std::ios::binary) << whole.substr(0, whole.size() / 2);
    for (const char* chunk : {"1024", "100000"}) {
        const Outcome outcome = runAfx(withFake({"render", folder.file("cut.flac"), folder.file("out.wav"), "-e",
                                                 "test gain stereo", "--chunk", chunk}));
        EXPECT_EQ(outcome.exitStatus, 1) << chunk;
        expectOneErrorLine(outcome);
        EXPECT_NE(outcome.err.find("cannot read input '" + folder.file("cut.flac") + "'"), std::string::npos)
            << outcome.err;
        EXPECT_EQ(folder.entries(), (std::vector<std::string>{"cut.flac", "in.wav", "whole.flac"})) << chunk;
    }
}

struct BadCommand {
    const char* why;
    std::vector<std::string> arguments;  // "IN" and "OUT" stand for files of the scratch folder
    int exitStatus;
    const char* mentions;
};

void PrintTo(const BadCommand& bad, std::ostream* out) { *out << bad.why; }

class AfxErrors : public ::testing::TestWithParam<BadCommand> {};

// Each bad command gets one "afx: error:" line, its exit status, and leaves
// no output (nor a temporary file) behind.
TEST_P(AfxErrors, ClearLineAndNothingWritten) {
    const BadCommand& bad = GetParam();
    ScratchFolder folder;
    writeFloatWav(folder.file("in.wav"), 2, 48000, stereoSignal(256));
    writeFloatWav(folder.file("mono.wav"), 1, 48000, std::vector<float>(256, 0.25f));
    std::ofstream(folder.file("corrupt.wav")) << "RIFF....WAVEfmt this is not audio";
    std::vector<std::string> arguments;
    for (const std::string& word : bad.arguments) {
        if (word == "IN") arguments.push_back(folder.file("in.wav"));
        else if (word == "MONO") arguments.push_back(folder.file("mono.wav"));
        else if (word == "CORRUPT") arguments.push_back(folder.file("corrupt.wav"));
        else if (word == "MISSING") arguments.push_back(folder.file("missing.wav"));
        else if (word == "OUT") arguments.push_back(folder.file("out.wav"));
        else if (word == "FLACOUT") arguments.push_back(folder.file("out.flac"));
        else if (word == "NOFOLDER") arguments.push_back(folder.file("no/such/folder/out.wav"));
        else arguments.push_back(word);
    }
    const Outcome outcome = runAfx(arguments);
    EXPECT_EQ(outcome.exitStatus, bad.exitStatus) << bad.why << ": " << outcome.err;
    expectOneErrorLine(outcome);
    EXPECT_NE(outcome.err.find(bad.mentions), std::string::npos) << bad.why << ": " << outcome.err;
    EXPECT_EQ(folder.entries(), (std::vector<std::string>{"corrupt.wav", "in.wav", "mono.wav"})) << bad.why;
}

const std::string kModule = kFakeModule;

INSTANTIATE_TEST_SUITE_P(
    Usage, AfxErrors,
    ::testing::Values(
        BadCommand{"no command", {}, 2, "no command"},
        BadCommand{"unknown command", {"mix"}, 2, "unknown command 'mix'"},
        BadCommand{"unknown option", {"render", "IN", "OUT", "-e", "test gain stereo", "--fast", "--module", kModule}, 2,
                   "unknown option '--fast'"},
        BadCommand{"unknown effect", {"render", "IN", "OUT", "-e", "reverb", "--module", kModule}, 2,
                   "unknown effect 'reverb'"},
        BadCommand{"unknown parameter", {"render", "IN", "OUT", "-e", "test gain stereo", "-p", "drive=1", "--module",
                                         kModule}, 2, "no parameter 'drive'"},
        BadCommand{"parameter index too high", {"render", "IN", "OUT", "-e", "test gain stereo", "--set", "1=0.5",
                                                "--module", kModule}, 2, "no parameter '1'"},
        BadCommand{"value not a number", {"render", "IN", "OUT", "-e", "test gain stereo", "-p", "gain=loud",
                                          "--module", kModule}, 2, "must be a number"},
        BadCommand{"normalised value not a number", {"render", "IN", "OUT", "-e", "test gain stereo", "--set", "0=x",
                                                     "--module", kModule}, 2, "must be a number"},
        BadCommand{"value outside the range", {"render", "IN", "OUT", "-e", "test gain stereo", "-p", "gain=2.5",
                                               "--module", kModule}, 2, "outside 0 .. 2"},
        BadCommand{"display value without property interface", {"render", "MONO", "OUT", "-e", "test slow mono", "-p",
                                                                 "pause=1", "--module", kModule}, 2,
                   "no property interface"},
        BadCommand{"assignment without =", {"render", "IN", "OUT", "-e", "test gain stereo", "-p", "gain", "--module",
                                            kModule}, 2, "NAME=VALUE"},
        BadCommand{"-p before any -e", {"render", "IN", "OUT", "-p", "gain=1", "-e", "test gain stereo", "--module",
                                        kModule}, 2, "must follow the -e"},
        BadCommand{"option without its value", {"render", "IN", "OUT", "-e", "test gain stereo", "--block"}, 2,
                   "--block needs a value"},
        BadCommand{"option value is another option", {"render", "IN", "OUT", "-e", "--float"}, 2, "-e needs a value"},
        BadCommand{"block of zero", {"render", "IN", "OUT", "-e", "test gain stereo", "--block", "0", "--module",
                                     kModule}, 2, "--block"},
        BadCommand{"chunk of zero", {"render", "IN", "OUT", "-e", "test gain stereo", "--chunk", "0", "--module",
                                     kModule}, 2, "--chunk"},
        BadCommand{"no effect", {"render", "IN", "OUT", "--module", kModule}, 2, "at least one -e"},
        BadCommand{"no output", {"render", "IN", "-e", "test gain stereo", "--module", kModule}, 2, "INPUT and OUTPUT"},
        BadCommand{"input is output", {"render", "IN", "IN", "-y", "-e", "test gain stereo", "--module", kModule}, 2,
                   "same file"},
        BadCommand{"identifier for another channel count", {"render", "MONO", "OUT", "-e", "test gain stereo",
                                                            "--module", kModule}, 2, "takes 2 channel(s)"},
        BadCommand{"float into a container without floats", {"render", "IN", "FLACOUT", "-e", "test gain stereo",
                                                              "--float", "--module", kModule}, 2, "cannot hold"},
        BadCommand{"info without effect", {"info", "--module", kModule}, 2, "needs an EFFECT"},
        BadCommand{"info with a bad rate", {"info", "test gain stereo", "--rate", "fast", "--module", kModule}, 2,
                   "--rate"}),
    NameFromWhy());

INSTANTIATE_TEST_SUITE_P(
    RunTime, AfxErrors,
    ::testing::Values(
        BadCommand{"missing input", {"render", "MISSING", "OUT", "-e", "test gain stereo", "--module", kModule}, 1,
                   "cannot read input"},
        BadCommand{"corrupt input", {"render", "CORRUPT", "OUT", "-e", "test gain stereo", "--module", kModule}, 1,
                   "cannot read input"},
        BadCommand{"output folder missing", {"render", "IN", "NOFOLDER", "-e", "test gain stereo", "--module",
                                             kModule}, 1, "cannot write"},
        BadCommand{"module missing", {"render", "IN", "OUT", "-e", "volume", "--module", "/no/such/module.so"}, 1,
                   "cannot load the effects module"},
        BadCommand{"module without start-up", {"list", "--module", AF_BINARY_DIR "/libAudioFiltersPlatform.so"}, 1,
                   "no AF::Startup"},
        BadCommand{"factory makes nothing", {"render", "MONO", "OUT", "-e", "test broken mono", "--module", kModule},
                   1, "makes no instance"}),
    NameFromWhy());

// A render stopped by SIGINT, SIGTERM or SIGKILL (which gives afx no
// chance to clean up) leaves no partial output, no temporary file, and an
// existing OUTPUT exactly as it was.
TEST(AfxRender, InterruptionLeavesNoPartialFile) {
    for (int signalNumber : {SIGINT, SIGTERM, SIGKILL}) {
        ScratchFolder folder;
        // 3 s of mono at 8 kHz in blocks of 64 frames: the stand-in sleeps 20 ms a block, so about 7 s.
        writeFloatWav(folder.file("in.wav"), 1, 8000, std::vector<float>(24000, 0.5f));
        std::ofstream(folder.file("keep.wav")) << "precious";
        for (const char* output : {"new.wav", "keep.wav"}) {
            const std::string logs = folder.path() + "-logs";
            const pid_t child = startAfx(withFake({"render", folder.file("in.wav"), folder.file(output), "-y", "-e",
                                                   "test slow mono", "--block", "64"}),
                                         logs);
            ASSERT_GT(child, 0);
            // Wait until afx holds its output open (not merely the input), so
            // the signal lands mid-render.
            bool rendering = false;
            for (int tries = 0; tries < 500 && !rendering; ++tries) {
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
                rendering = holdsFileIn(child, folder.path(), "in.wav");
            }
            EXPECT_TRUE(rendering);
            ::kill(child, signalNumber);
            const Outcome outcome = finishAfx(child, logs);
            EXPECT_EQ(outcome.signal, signalNumber) << outcome.err;
            EXPECT_EQ(folder.entries(), (std::vector<std::string>{"in.wav", "keep.wav"})) << output;
            EXPECT_EQ(readText(folder.file("keep.wav")), "precious");
        }
    }
}

}  // namespace
}  // namespace afxtest
