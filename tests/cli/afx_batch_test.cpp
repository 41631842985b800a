// Batches through the real binary: every output of 'afx render IN... -o DIR'
// is compared, sample bit for sample bit, with a single 'afx render' of the
// same file and options (so the expected files are not made by the batch
// path); a failing file in the middle, clashing names, --suffix and the rules
// for existing outputs.
#include <gtest/gtest.h>
#include <sndfile.h>

#include <cctype>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "AfxRunner.h"
#include "TestSignals.h"
#include "WavFiles.h"

namespace afxtest {
namespace {

constexpr int kRate = 48000;

std::vector<std::int16_t> noise16(int frames, int channels, std::uint32_t seed) {
    std::vector<std::int16_t> samples;
    for (float sample : noise(frames, channels, seed)) samples.push_back(static_cast<std::int16_t>(sample * 32767.0f));
    return samples;
}

// A stereo 16-bit FLAC file, written through libsndfile.
void writeFlac(const std::string& path, int frames, std::uint32_t seed) {
    SF_INFO info{};
    info.samplerate = kRate;
    info.channels = 2;
    info.format = SF_FORMAT_FLAC | SF_FORMAT_PCM_16;
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    ASSERT_NE(file, nullptr) << sf_strerror(nullptr);
    const std::vector<std::int16_t> samples = noise16(frames, 2, seed);
    sf_writef_short(file, samples.data(), frames);
    sf_close(file);
}

// A file as libsndfile reads it: its format and every sample as a double
// (exact for every integer size and for 32-bit floats).
struct Decoded {
    bool opened = false;
    SF_INFO info{};
    std::vector<double> samples;
};

Decoded decode(const std::string& path) {
    Decoded result;
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &result.info);
    if (file == nullptr) return result;
    result.opened = true;
    std::vector<double> block(4096 * static_cast<std::size_t>(result.info.channels));
    for (sf_count_t got; (got = sf_readf_double(file, block.data(), 4096)) > 0;)
        result.samples.insert(result.samples.end(), block.begin(), block.begin() + got * result.info.channels);
    sf_close(file);
    return result;
}

// Same format, same length and every sample the same bit pattern.
void expectSameFile(const std::string& batch, const std::string& single) {
    const Decoded a = decode(batch);
    const Decoded b = decode(single);
    ASSERT_TRUE(a.opened) << batch;
    ASSERT_TRUE(b.opened) << single;
    EXPECT_EQ(a.info.format, b.info.format) << batch;
    EXPECT_EQ(a.info.channels, b.info.channels) << batch;
    EXPECT_EQ(a.info.samplerate, b.info.samplerate) << batch;
    ASSERT_EQ(a.samples.size(), b.samples.size()) << batch;
    ASSERT_FALSE(a.samples.empty()) << batch;
    EXPECT_EQ(std::memcmp(a.samples.data(), b.samples.data(), a.samples.size() * sizeof(double)), 0) << batch;
}

// Inputs of several channel counts, lengths and formats, in `folder`.
std::vector<std::string> mixedInputs(const ScratchFolder& folder) {
    writeFloatWav(folder.file("stereo.wav"), 2, kRate, noise(10007, 2, 1));
    writePcm16Wav(folder.file("mono16.wav"), 1, kRate, noise16(4099, 1, 2));
    writeFloatWav(folder.file("six.wav"), 6, kRate, noise(3001, 6, 3));
    writeFloatWav(folder.file("three.wav"), 3, kRate, noise(2222, 3, 4));
    writeFlac(folder.file("take.flac"), 5003, 5);
    return {folder.file("stereo.wav"), folder.file("mono16.wav"), folder.file("six.wav"), folder.file("three.wav"),
            folder.file("take.flac")};
}

std::vector<std::string> withOptions(std::vector<std::string> arguments, const std::vector<std::string>& options) {
    arguments.insert(arguments.end(), options.begin(), options.end());
    return arguments;
}

// A chain with a delay, so that the default tail (until quiet) is part of what is compared.
const std::vector<std::string> kChain = {"-e",    "highpass", "-p",         "cutoff=200", "-e",
                                         "delay", "-p",       "delay=0.01", "-p",         "feedback=50"};

struct BatchCase {
    const char* why;
    std::vector<std::string> batchOptions;  // -j
    std::vector<std::string> options;       // for the batch and the single renders alike
};

class AfxBatchMatchesSingle : public ::testing::TestWithParam<BatchCase> {};

TEST_P(AfxBatchMatchesSingle, EveryOutputBitForBit) {
    ScratchFolder folder;
    const std::vector<std::string> inputs = mixedInputs(folder);
    const std::string out = folder.file("out");
    ASSERT_EQ(::mkdir(out.c_str(), 0755), 0);
    std::vector<std::string> batch = {"render"};
    batch.insert(batch.end(), inputs.begin(), inputs.end());
    batch = withOptions(withOptions(batch, {"-o", out, "--quiet"}), kChain);
    const Outcome outcome = runAfx(withOptions(withOptions(batch, GetParam().batchOptions), GetParam().options));
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "");
    const std::vector<std::string> names = {"stereo.wav", "mono16.wav", "six.wav", "three.wav", "take.flac"};
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        const std::string single = folder.file("single-" + names[i]);
        const Outcome alone =
            runAfx(withOptions(withOptions({"render", inputs[i], single, "--quiet"}, kChain), GetParam().options));
        ASSERT_EQ(alone.exitStatus, 0) << alone.err;
        expectSameFile(out + "/" + names[i], single);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Batches, AfxBatchMatchesSingle,
    ::testing::Values(BatchCase{"one worker", {"-j", "1"}, {}}, BatchCase{"three workers", {"-j", "3"}, {}},
                      BatchCase{"default workers odd blocks and a set tail", {}, {"--block", "77", "--tail", "0.3"}},
                      BatchCase{"three workers 24 bits and no tail", {"-j", "3"}, {"--bits", "24", "--tail", "0"}},
                      BatchCase{"two workers chains on threads", {"-j", "2", "--threads", "2"}, {"--chunk", "500"}}),
    [](const auto& info) {
        std::string name;
        for (char c : std::string(info.param.why)) name += std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
        return name;
    });

TEST(AfxBatch, AFailingFileDoesNotStopTheOthers) {
    ScratchFolder folder;
    writeFloatWav(folder.file("first.wav"), 2, kRate, noise(3000, 2, 7));
    std::ofstream(folder.file("broken.wav")) << "not a sound file";
    writeFloatWav(folder.file("last.wav"), 1, kRate, noise(2000, 1, 8));
    const std::string out = folder.file("out");
    ASSERT_EQ(::mkdir(out.c_str(), 0755), 0);
    const Outcome outcome =
        runAfx({"render", folder.file("first.wav"), folder.file("broken.wav"), folder.file("missing.wav"),
                folder.file("last.wav"), "-o", out, "-j", "2", "-e", "highpass", "-p", "cutoff=300"});
    EXPECT_EQ(outcome.exitStatus, 1) << outcome.err;
    EXPECT_NE(outcome.out.find("4 files into " + out + ": 2 done, 2 failed"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.err.find("afx: error: " + folder.file("broken.wav") + ": "), std::string::npos) << outcome.err;
    EXPECT_NE(outcome.err.find("afx: error: " + folder.file("missing.wav") + ": "), std::string::npos) << outcome.err;
    EXPECT_NE(outcome.err.find("No such file"), std::string::npos) << outcome.err;
    EXPECT_EQ(outcome.err.find("first.wav"), std::string::npos) << outcome.err;
    // The failures leave nothing in the folder; the others are whole.
    for (const char* name : {"first.wav", "last.wav"}) {
        const std::string single = folder.file(std::string("single-") + name);
        ASSERT_EQ(runAfx({"render", folder.file(name), single, "-q", "-e", "highpass", "-p", "cutoff=300"}).exitStatus,
                  0);
        expectSameFile(out + "/" + name, single);
    }
    EXPECT_EQ(entriesOf(out), (std::vector<std::string>{"first.wav", "last.wav"}));
}

// The batch loads the module once: the dynamic loader, asked to say what it
// does (LD_DEBUG=files), runs the module's initialisers once for five files.
// (A module opened and closed per file would be initialised per file.)
TEST(AfxBatch, LoadsTheModuleOnce) {
    ScratchFolder folder;
    std::vector<std::string> arguments = {"render"};
    for (int i = 0; i < 5; ++i) {
        const std::string name = folder.file("in" + std::to_string(i) + ".wav");
        writeFloatWav(name, 2, kRate, noise(2000, 2, 30 + i));
        arguments.push_back(name);
    }
    const std::string out = folder.file("out");
    ASSERT_EQ(::mkdir(out.c_str(), 0755), 0);
    arguments.insert(arguments.end(), {"-o", out, "-j", "2", "-e", "highpass", "-e", "delay"});
    ::setenv("LD_DEBUG", "files", 1);
    const Outcome outcome = runAfx(arguments);
    ::unsetenv("LD_DEBUG");
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.err;
    EXPECT_EQ(entriesOf(out).size(), 5u);
    std::size_t initialised = 0;
    std::size_t lines = 0;
    std::istringstream text(outcome.err);
    for (std::string line; std::getline(text, line);) {
        ++lines;
        if (line.find("calling init: ") != std::string::npos && line.find("/libAudioFilters.so") != std::string::npos)
            ++initialised;
    }
    ASSERT_GT(lines, 10u) << "the loader said nothing: " << outcome.err;
    EXPECT_EQ(initialised, 1u) << outcome.err;
}

// Temporary files a dead afx left in DIR are removed; a batch lists DIR for
// them once, and every output still arrives.
TEST(AfxBatch, StaleTemporariesInTheFolderAreRemoved) {
    ScratchFolder folder;
    const std::string out = folder.file("out");
    ASSERT_EQ(::mkdir(out.c_str(), 0755), 0);
    // Above the largest process number Linux allows (2^22), so no process has it.
    std::ofstream(out + "/.afx-4194400-a1b2c3") << "stale";
    std::vector<std::string> arguments = {"render"};
    for (int i = 0; i < 3; ++i) {
        const std::string name = folder.file("in" + std::to_string(i) + ".wav");
        writeFloatWav(name, 1, kRate, noise(500, 1, 40 + i));
        arguments.push_back(name);
    }
    arguments.insert(arguments.end(), {"-o", out, "-j", "3", "-e", "invert"});
    const Outcome outcome = runAfx(arguments);
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.err;
    EXPECT_EQ(entriesOf(out), (std::vector<std::string>{"in0.wav", "in1.wav", "in2.wav"}));
}

// A file the chain does not fit (balance is stereo only) fails on its own; the exit status says so.
TEST(AfxBatch, AFileTheChainDoesNotFitFailsAlone) {
    ScratchFolder folder;
    writeFloatWav(folder.file("mono.wav"), 1, kRate, noise(500, 1, 19));
    writeFloatWav(folder.file("stereo.wav"), 2, kRate, noise(500, 2, 20));
    const std::string out = folder.file("out");
    ASSERT_EQ(::mkdir(out.c_str(), 0755), 0);
    const Outcome outcome = runAfx({"render", folder.file("mono.wav"), folder.file("stereo.wav"), "-o", out, "-q", "-e",
                                    "balance", "-p", "balance=-50"});
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_NE(outcome.err.find("afx: error: " + folder.file("mono.wav") + ": "), std::string::npos) << outcome.err;
    EXPECT_NE(outcome.err.find("has no variant for 1 channel"), std::string::npos) << outcome.err;
    ASSERT_EQ(runAfx({"render", folder.file("stereo.wav"), folder.file("single.wav"), "-q", "-e", "balance", "-p",
                      "balance=-50"})
                  .exitStatus,
              0);
    expectSameFile(out + "/stereo.wav", folder.file("single.wav"));
    EXPECT_EQ(entriesOf(out), std::vector<std::string>{"stereo.wav"});
}

TEST(AfxBatch, SuffixGoesBeforeTheExtension) {
    ScratchFolder folder;
    writeFloatWav(folder.file("a.wav"), 2, kRate, noise(1000, 2, 9));
    writeFloatWav(folder.file("b.take.wav"), 2, kRate, noise(1000, 2, 10));
    writeFloatWav(folder.file("plain"), 2, kRate, noise(1000, 2, 11));
    const std::string out = folder.file("out");
    ASSERT_EQ(::mkdir(out.c_str(), 0755), 0);
    const Outcome outcome = runAfx({"render", folder.file("a.wav"), folder.file("b.take.wav"), "-o", out + "/",
                                    "--suffix", "-hp", "-q", "-e", "invert"});
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
    EXPECT_EQ(entriesOf(out), (std::vector<std::string>{"a-hp.wav", "b.take-hp.wav"}));
    // With no extension the name has no format: that file fails, with the reason.
    const Outcome plain = runAfx({"render", folder.file("plain"), "-o", out, "--suffix=_x", "-q", "-e", "invert"});
    EXPECT_EQ(plain.exitStatus, 1);
    EXPECT_NE(plain.err.find(folder.file("plain") + ": "), std::string::npos) << plain.err;
    EXPECT_FALSE(exists(out + "/plain_x"));
    const Outcome slash = runAfx({"render", folder.file("a.wav"), "-o", out, "--suffix", "x/y", "-e", "invert"});
    EXPECT_EQ(slash.exitStatus, 2);
    EXPECT_NE(slash.err.find("--suffix 'x/y'"), std::string::npos) << slash.err;
}

TEST(AfxBatch, ClashingNamesAreRefusedBeforeAnyWork) {
    ScratchFolder folder;
    ASSERT_EQ(::mkdir(folder.file("x").c_str(), 0755), 0);
    ASSERT_EQ(::mkdir(folder.file("y").c_str(), 0755), 0);
    ASSERT_EQ(::mkdir(folder.file("out").c_str(), 0755), 0);
    writeFloatWav(folder.file("first.wav"), 2, kRate, noise(1000, 2, 12));
    writeFloatWav(folder.file("x/song.wav"), 2, kRate, noise(1000, 2, 13));
    writeFloatWav(folder.file("y/song.wav"), 2, kRate, noise(1000, 2, 14));
    const Outcome outcome = runAfx({"render", folder.file("first.wav"), folder.file("x/song.wav"),
                                    folder.file("y/song.wav"), "-o", folder.file("out"), "-e", "invert"});
    EXPECT_EQ(outcome.exitStatus, 2);
    EXPECT_NE(outcome.err.find("'" + folder.file("x/song.wav") + "' and '" + folder.file("y/song.wav") +
                               "' would both be written to '" + folder.file("out") + "/song.wav'"),
              std::string::npos)
        << outcome.err;
    // Not even the first file, which had a name of its own, was rendered.
    EXPECT_EQ(entriesOf(folder.file("out")), std::vector<std::string>{});
    // Two names that are links to one file clash too.
    writeFloatWav(folder.file("other.wav"), 2, kRate, noise(1000, 2, 23));
    ASSERT_EQ(::symlink(folder.file("shared.wav").c_str(), folder.file("out/other.wav").c_str()), 0);
    ASSERT_EQ(::symlink(folder.file("shared.wav").c_str(), folder.file("out/first.wav").c_str()), 0);
    const Outcome linked = runAfx(
        {"render", folder.file("first.wav"), folder.file("other.wav"), "-o", folder.file("out"), "-y", "-e", "invert"});
    EXPECT_EQ(linked.exitStatus, 2);
    EXPECT_NE(linked.err.find("(through a link)"), std::string::npos) << linked.err;
    EXPECT_FALSE(exists(folder.file("shared.wav")));
    ASSERT_EQ(::unlink(folder.file("out/other.wav").c_str()), 0);
    ASSERT_EQ(::unlink(folder.file("out/first.wav").c_str()), 0);
    // The same input twice clashes with itself.
    const Outcome twice = runAfx(
        {"render", folder.file("first.wav"), folder.file("first.wav"), "-o", folder.file("out"), "-e", "invert"});
    EXPECT_EQ(twice.exitStatus, 2);
    EXPECT_NE(twice.err.find("would both be written"), std::string::npos) << twice.err;
}

TEST(AfxBatch, ExistingOutputsNeedOverwrite) {
    ScratchFolder folder;
    writeFloatWav(folder.file("a.wav"), 2, kRate, noise(1000, 2, 15));
    writeFloatWav(folder.file("b.wav"), 2, kRate, noise(1000, 2, 16));
    const std::string out = folder.file("out");
    ASSERT_EQ(::mkdir(out.c_str(), 0755), 0);
    std::ofstream(out + "/b.wav") << "keep me";
    const std::vector<std::string> batch = {"render", folder.file("a.wav"), folder.file("b.wav"), "-o", out, "-q", "-e",
                                            "invert"};
    const Outcome refused = runAfx(batch);
    EXPECT_EQ(refused.exitStatus, 2);
    EXPECT_NE(refused.err.find("exists; add -y to overwrite it"), std::string::npos) << refused.err;
    EXPECT_EQ(readText(out + "/b.wav"), "keep me");
    EXPECT_FALSE(exists(out + "/a.wav"));
    const Outcome replaced = runAfx(withOptions(batch, {"-y"}));
    ASSERT_EQ(replaced.exitStatus, 0) << replaced.err;
    ASSERT_EQ(runAfx({"render", folder.file("b.wav"), folder.file("single.wav"), "-q", "-e", "invert"}).exitStatus, 0);
    expectSameFile(out + "/b.wav", folder.file("single.wav"));
    // An output that is an input is refused even with -y.
    const Outcome onItself = runAfx({"render", folder.file("a.wav"), "-o", folder.path(), "-y", "-e", "invert"});
    EXPECT_EQ(onItself.exitStatus, 2);
    EXPECT_NE(onItself.err.find("same file"), std::string::npos) << onItself.err;
    // One input's output is another input of the batch.
    writeFloatWav(folder.file("a-x.wav"), 2, kRate, noise(1000, 2, 17));
    const Outcome chained = runAfx({"render", folder.file("a.wav"), folder.file("a-x.wav"), "-o", folder.path(),
                                    "--suffix", "-x", "-y", "-e", "invert"});
    EXPECT_EQ(chained.exitStatus, 2);
    EXPECT_NE(chained.err.find("is the input '" + folder.file("a-x.wav") + "'"), std::string::npos) << chained.err;
}

TEST(AfxBatch, BatchOptionsAndFolderAreChecked) {
    ScratchFolder folder;
    writeFloatWav(folder.file("a.wav"), 2, kRate, noise(100, 2, 18));
    const struct {
        std::vector<std::string> arguments;
        const char* says;
    } kCases[] = {
        {{"render", folder.file("a.wav"), folder.file("b.wav"), "-j", "2", "-e", "invert"}, "add -o DIR"},
        {{"render", folder.file("a.wav"), folder.file("b.wav"), "--suffix", "-x", "-e", "invert"}, "add -o DIR"},
        {{"render", folder.file("a.wav"), "-o", folder.file("a.wav"), "-e", "invert"}, "is not one"},
        {{"render", folder.file("a.wav"), "-o", folder.file("nowhere"), "-e", "invert"}, "cannot use the folder"},
        {{"render", "-", "-o", folder.path(), "-e", "invert"}, "standard input"},
        {{"render", "-o", folder.path(), "-e", "invert"}, "at least one INPUT"},
        {{"render", folder.file("a.wav"), "-o", folder.path(), "-j", "0", "-e", "invert"}, "from 1 to 1024"},
        {{"render", folder.file("a.wav"), "-o", folder.path()}, "at least one -e EFFECT"},
        {{"render", folder.file("a.wav"), folder.file("b.wav"), folder.file("c.wav"), "-e", "invert"},
         "several INPUTs need -o DIR"},
    };
    for (const auto& bad : kCases) {
        const Outcome outcome = runAfx(bad.arguments);
        EXPECT_EQ(outcome.exitStatus, 2) << bad.says << ": " << outcome.err;
        EXPECT_NE(outcome.err.find(bad.says), std::string::npos) << outcome.err;
    }
    EXPECT_EQ(folder.entries(), std::vector<std::string>{"a.wav"});
}

}  // namespace
}  // namespace afxtest
