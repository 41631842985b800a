// OUTPUT's format through the real binary: every extension libsndfile writes
// here with every sample choice, read back through libsndfile itself; the
// defaults where the input's samples do not fit; tags; "-" for standard
// input and output. The expected formats come from libsndfile's own tables,
// asked here, not from afx.
#include <gtest/gtest.h>
#include <sndfile.h>

#include <cmath>
#include <cstdint>
#include <map>

#include "AfxRunner.h"
#include "WavFiles.h"

namespace afxtest {
namespace {

constexpr int kRate = 48000;
constexpr int kFrames = 2400;

// Stereo samples that every integer size holds exactly: multiples of 1/128.
std::vector<float> exactSignal() {
    std::vector<float> samples;
    for (int i = 0; i < kFrames; ++i) {
        samples.push_back(static_cast<float>((i * 7) % 255 - 127) / 128.0f);
        samples.push_back(static_cast<float>((i * 3) % 200 - 100) / 128.0f);
    }
    return samples;
}

// The stand-in at unity gain: its output is its input.
std::vector<std::string> unityRender(const std::string& input, const std::string& output,
                                     std::vector<std::string> more = {}) {
    std::vector<std::string> arguments = {"render", input, output, "-e", "test gain stereo", "--set", "0=0.5",
                                          "--quiet", "--module", kFakeModule};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

bool canWrite(int format, int channels) {
    SF_INFO probe{};
    probe.format = format;
    probe.channels = channels;
    probe.samplerate = kRate;
    return sf_format_check(&probe) != 0;
}

struct ReadBack {
    bool opened = false;
    SF_INFO info{};
    std::vector<float> samples;
    std::map<int, std::string> tags;
};

ReadBack readBack(const std::string& path) {
    ReadBack result;
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &result.info);
    if (file == nullptr) return result;
    result.opened = true;
    for (int id : {SF_STR_TITLE, SF_STR_ARTIST})
        if (const char* text = sf_get_string(file, id)) result.tags[id] = text;
    std::vector<float> block(4096 * static_cast<std::size_t>(result.info.channels));
    for (sf_count_t got; (got = sf_readf_float(file, block.data(), 4096)) > 0;)
        result.samples.insert(result.samples.end(), block.begin(), block.begin() + got * result.info.channels);
    sf_close(file);
    return result;
}

// libsndfile's containers that write anything, first of each extension.
std::vector<std::pair<std::string, int>> writableContainers() {
    std::vector<std::pair<std::string, int>> list;
    int majors = 0;
    sf_command(nullptr, SFC_GET_FORMAT_MAJOR_COUNT, &majors, sizeof majors);
    int subtypes = 0;
    sf_command(nullptr, SFC_GET_FORMAT_SUBTYPE_COUNT, &subtypes, sizeof subtypes);
    for (int m = 0; m < majors; ++m) {
        SF_FORMAT_INFO major{};
        major.format = m;
        sf_command(nullptr, SFC_GET_FORMAT_MAJOR, &major, sizeof major);
        bool seen = false;
        for (const auto& known : list) seen |= known.first == major.extension;
        bool writes = false;
        for (int s = 0; s < subtypes; ++s) {
            SF_FORMAT_INFO subtype{};
            subtype.format = s;
            sf_command(nullptr, SFC_GET_FORMAT_SUBTYPE, &subtype, sizeof subtype);
            writes |= canWrite(major.format | subtype.format, 1);
        }
        if (!seen && writes) list.emplace_back(major.extension, major.format);
    }
    return list;
}

bool isCodecContainer(int container) { return container == SF_FORMAT_OGG || container == SF_FORMAT_MPEG; }

// Every container libsndfile writes, with every sample choice: where
// libsndfile says the container holds the samples (in stereo), afx writes
// them and they read back exactly (raw files have no header to read back);
// elsewhere afx refuses with a usage error before writing anything.
TEST(AfxFormats, RoundTripTable) {
    ScratchFolder folder;
    const std::vector<float> input = exactSignal();
    writeFloatWav(folder.file("in.wav"), 2, kRate, input);
    const struct {
        const char* option;
        const char* value;
        std::vector<int> subtypes;  // libsndfile's, the first the container holds wins
    } kChoices[] = {{"--bits", "8", {SF_FORMAT_PCM_S8, SF_FORMAT_PCM_U8}},
                    {"--bits", "16", {SF_FORMAT_PCM_16}},
                    {"--bits", "24", {SF_FORMAT_PCM_24}},
                    {"--bits", "32", {SF_FORMAT_PCM_32}},
                    {"--float", nullptr, {SF_FORMAT_FLOAT}},
                    {"--double", nullptr, {SF_FORMAT_DOUBLE}}};
    int written = 0;
    int refused = 0;
    const auto containers = writableContainers();
    ASSERT_GE(containers.size(), 10u);
    for (const auto& [extension, container] : containers) {
        if (isCodecContainer(container)) continue;  // below
        // libsndfile writes Sound Designer II only to a named file (its
        // resource fork), never to a file afx hands it; afx refuses it.
        if (container == SF_FORMAT_SD2) {
            const Outcome outcome = runAfx(unityRender(folder.file("in.wav"), folder.file("out.sd2")));
            EXPECT_EQ(outcome.exitStatus, 2) << outcome.err;
            continue;
        }
        for (const auto& choice : kChoices) {
            int expected = 0;
            for (int subtype : choice.subtypes)
                if (expected == 0 && canWrite(container | subtype, 2)) expected = container | subtype;
            const std::string output = folder.file("out." + extension);
            std::vector<std::string> more = {choice.option};
            if (choice.value != nullptr) more.push_back(choice.value);
            const Outcome outcome = runAfx(unityRender(folder.file("in.wav"), output, more));
            const std::string what = extension + " " + choice.option + " " + (choice.value ? choice.value : "");
            if (expected == 0) {
                EXPECT_EQ(outcome.exitStatus, 2) << what << ": " << outcome.err;
                EXPECT_NE(outcome.err.find("cannot hold"), std::string::npos) << what << ": " << outcome.err;
                EXPECT_FALSE(exists(output)) << what;
                ++refused;
                continue;
            }
            ASSERT_EQ(outcome.exitStatus, 0) << what << ": " << outcome.err;
            ++written;
            if (container == SF_FORMAT_RAW) {
                const std::size_t bytes = readText(output).size();
                EXPECT_EQ(bytes % (2u * kFrames), 0u) << what;
            } else {
                const ReadBack back = readBack(output);
                ASSERT_TRUE(back.opened) << what;
                constexpr int kFormatBits = SF_FORMAT_TYPEMASK | SF_FORMAT_SUBMASK;  // not the byte order
                EXPECT_EQ(back.info.format & kFormatBits, expected) << what << std::hex << " got " << back.info.format;
                EXPECT_EQ(back.info.channels, 2) << what;
                // VOC's 8-bit blocks keep the rate as a one-byte time code: near, not exact.
                if (container == SF_FORMAT_VOC) {
                    EXPECT_NEAR(back.info.samplerate, kRate, kRate / 1000) << what;
                } else {
                    EXPECT_EQ(back.info.samplerate, kRate) << what;
                }
                EXPECT_EQ(back.samples, input) << what;
            }
            ::unlink(output.c_str());
        }
    }
    EXPECT_GT(written, 40);
    EXPECT_GT(refused, 5);
    EXPECT_EQ(folder.entries(), (std::vector<std::string>{"in.wav"}));
}

// The lossy codecs read back as the codec, about as long as the input
// (encoders pad) and close to it.
TEST(AfxFormats, LossyCodecsWhereInstalled) {
    ScratchFolder folder;
    std::vector<float> tone;
    for (int i = 0; i < kRate; ++i) {
        const float value = static_cast<float>(0.5 * std::sin(2.0 * M_PI * 440.0 * i / kRate));
        tone.push_back(value);
        tone.push_back(value);
    }
    writeFloatWav(folder.file("in.wav"), 2, kRate, tone);
    const struct {
        const char* extension;
        int format;
    } kCodecs[] = {{"ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS},
                   {"opus", SF_FORMAT_OGG | SF_FORMAT_OPUS},
                   {"mp3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III}};
    for (const auto& codec : kCodecs) {
        const std::string output = folder.file(std::string("out.") + codec.extension);
        const Outcome outcome = runAfx(unityRender(folder.file("in.wav"), output));
        if (!canWrite(codec.format, 2)) {
            EXPECT_EQ(outcome.exitStatus, 2) << codec.extension;
            continue;
        }
        ASSERT_EQ(outcome.exitStatus, 0) << codec.extension << ": " << outcome.err;
        const ReadBack back = readBack(output);
        ASSERT_TRUE(back.opened) << codec.extension;
        EXPECT_EQ(back.info.format & SF_FORMAT_TYPEMASK, codec.format & SF_FORMAT_TYPEMASK) << codec.extension;
        EXPECT_GE(back.samples.size(), tone.size() * 9 / 10) << codec.extension;
        double largest = 0.0;
        for (float sample : back.samples) largest = std::max(largest, std::fabs(static_cast<double>(sample)));
        EXPECT_NEAR(largest, 0.5, 0.15) << codec.extension;
        // Asking for sample sizes of a codec is a usage error.
        const Outcome bits = runAfx(unityRender(folder.file("in.wav"), output, {"-y", "--bits", "16"}));
        EXPECT_EQ(bits.exitStatus, 2) << codec.extension;
        EXPECT_NE(bits.err.find("lossy codec"), std::string::npos) << bits.err;
    }
}

TEST(AfxFormats, UnknownOrMissingExtensionIsRefused) {
    ScratchFolder folder;
    writeFloatWav(folder.file("in.wav"), 2, kRate, exactSignal());
    for (const char* name : {"out.xyz", "out", "out."}) {
        const Outcome outcome = runAfx(unityRender(folder.file("in.wav"), folder.file(name)));
        EXPECT_EQ(outcome.exitStatus, 2) << name;
        EXPECT_NE(outcome.err.find("afx writes"), std::string::npos) << outcome.err;
        EXPECT_NE(outcome.err.find(" flac "), std::string::npos) << outcome.err;
    }
    EXPECT_EQ(folder.entries(), (std::vector<std::string>{"in.wav"}));
}

// Without a choice the input's samples are kept where the container holds
// them, else the nearest it does, and the summary says so.
TEST(AfxFormats, NearestSamplesWhenTheInputsDoNotFit) {
    ScratchFolder folder;
    const std::vector<float> input = exactSignal();
    writeFloatWav(folder.file("float.wav"), 2, kRate, input);
    std::vector<double> doubles(input.begin(), input.end());
    detail::writeWav(folder.file("double.wav"), 3, 2, kRate, 64, doubles.data(), doubles.size() * 8);
    for (const char* source : {"float.wav", "double.wav"}) {
        std::vector<std::string> arguments = unityRender(folder.file(source), folder.file("out.flac"), {"-y"});
        arguments.erase(std::find(arguments.begin(), arguments.end(), "--quiet"));
        const Outcome outcome = runAfx(arguments);
        ASSERT_EQ(outcome.exitStatus, 0) << source << ": " << outcome.err;
        EXPECT_NE(outcome.out.find("written as Signed 24 bit PCM in FLAC"), std::string::npos) << outcome.out;
        const ReadBack back = readBack(folder.file("out.flac"));
        EXPECT_EQ(back.info.format, SF_FORMAT_FLAC | SF_FORMAT_PCM_24);
        EXPECT_EQ(back.samples, input);
    }
    // A lossy input into WAV: 16-bit samples.
    ASSERT_EQ(runAfx(unityRender(folder.file("float.wav"), folder.file("in.ogg"))).exitStatus, 0);
    const Outcome fromOgg = runAfx(unityRender(folder.file("in.ogg"), folder.file("from-ogg.wav")));
    ASSERT_EQ(fromOgg.exitStatus, 0) << fromOgg.err;
    EXPECT_EQ(readBack(folder.file("from-ogg.wav")).info.format, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
}

TEST(AfxFormats, EmptyInputGivesAReadableFile) {
    ScratchFolder folder;
    writeFloatWav(folder.file("empty.wav"), 2, kRate, {});
    for (const char* name : {"out.flac", "out.wav", "out.aiff", "out.caf"}) {
        const Outcome outcome = runAfx(unityRender(folder.file("empty.wav"), folder.file(name), {"--bits", "16"}));
        ASSERT_EQ(outcome.exitStatus, 0) << name << ": " << outcome.err;
        const ReadBack back = readBack(folder.file(name));
        EXPECT_TRUE(back.opened) << name;
        EXPECT_TRUE(back.samples.empty()) << name;
        const Outcome again = runAfx(unityRender(folder.file(name), folder.file("again.wav"), {"-y"}));
        EXPECT_EQ(again.exitStatus, 0) << name << ": " << again.err;
    }
}

TEST(AfxFormats, TagsAreCarriedOver) {
    ScratchFolder folder;
    SF_INFO info{};
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    info.channels = 2;
    info.samplerate = kRate;
    SNDFILE* file = sf_open(folder.file("tagged.wav").c_str(), SFM_WRITE, &info);
    ASSERT_NE(file, nullptr);
    sf_set_string(file, SF_STR_TITLE, "Morning Take");
    sf_set_string(file, SF_STR_ARTIST, "The Testers");
    const std::vector<float> input = exactSignal();
    sf_writef_float(file, input.data(), kFrames);
    sf_close(file);
    for (const char* name : {"out.flac", "out.wav", "out.ogg"}) {
        const Outcome outcome = runAfx(unityRender(folder.file("tagged.wav"), folder.file(name)));
        ASSERT_EQ(outcome.exitStatus, 0) << name << ": " << outcome.err;
        ReadBack back = readBack(folder.file(name));
        EXPECT_EQ(back.tags[SF_STR_TITLE], "Morning Take") << name;
        EXPECT_EQ(back.tags[SF_STR_ARTIST], "The Testers") << name;
    }
}

// "-" is standard input or output, as for other audio tools; "--" makes a
// name that starts with '-' a file name.
TEST(AfxFormats, DashIsStandardInputAndOutput) {
    ScratchFolder folder;
    const std::vector<float> input = exactSignal();
    writeFloatWav(folder.file("in.wav"), 2, kRate, input);
    const std::string logs = folder.path() + "-pipe";
    // Standard output: a shell redirection, so the bytes land in a file.
    const int status = std::system(("'" + kAfx + "' render '" + folder.file("in.wav") +
                                    "' - -e 'test gain stereo' --set 0=0.5 --module '" + kFakeModule + "' > '" +
                                    folder.file("stdout.wav") + "' 2> '" + logs + "'")
                                       .c_str());
    EXPECT_EQ(status, 0) << readText(logs);
    // The summary goes to stderr, out of the audio's way.
    EXPECT_NE(readText(logs).find("afx: -: 2400 frames"), std::string::npos) << readText(logs);
    WavData wav;
    ASSERT_TRUE(readWav(folder.file("stdout.wav"), wav));
    EXPECT_EQ(wav.floats(), input);
    // Standard input.
    const int fromStdin = std::system(("'" + kAfx + "' render - '" + folder.file("stdin.wav") +
                                       "' -e 'test gain stereo' --set 0=0.5 --quiet --module '" + kFakeModule +
                                       "' < '" + folder.file("in.wav") + "'")
                                          .c_str());
    EXPECT_EQ(fromStdin, 0);
    ASSERT_TRUE(readWav(folder.file("stdin.wav"), wav));
    EXPECT_EQ(wav.floats(), input);
    // /dev/stdout into a pipe: a stream, written into (the container is INPUT's).
    const int piped = std::system(("'" + kAfx + "' render '" + folder.file("in.wav") +
                                   "' /dev/stdout -q -e 'test gain stereo' --set 0=0.5 --module '" + kFakeModule +
                                   "' | cat > '" + folder.file("piped.wav") + "'")
                                      .c_str());
    EXPECT_EQ(piped, 0);
    ASSERT_TRUE(readWav(folder.file("piped.wav"), wav));
    EXPECT_EQ(wav.floats(), input);
    // A file named "-x.wav" after "--".
    const Outcome dashed = runAfx({"render", "--module", kFakeModule, "-e", "test gain stereo", "--quiet", "--",
                                   folder.file("in.wav"), folder.path() + "/-x.wav"});
    EXPECT_EQ(dashed.exitStatus, 0) << dashed.err;
    EXPECT_TRUE(exists(folder.path() + "/-x.wav"));
    ::unlink(logs.c_str());
}

}  // namespace
}  // namespace afxtest
