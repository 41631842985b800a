// afx's numbers and conventions through the real binary on the stand-in
// module: NaN and infinity counted and warned about, decimal values only,
// the chain printed as set, GNU-style options and help.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "AfxRunner.h"
#include "WavFiles.h"

namespace afxtest {
namespace {

std::vector<float> steadySignal(int frames) {
    std::vector<float> samples;
    for (int i = 0; i < frames; ++i) {
        samples.push_back(0.25f);
        samples.push_back(-0.5f);
    }
    return samples;
}

std::vector<std::string> gain(const std::string& input, const std::string& output, std::vector<std::string> more) {
    std::vector<std::string> arguments = {"render", input, output, "-e", "test gain stereo", "--module", kFakeModule};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

// A gain of NaN makes every output sample NaN: the summary counts them per
// channel, a warning says so, and --strict refuses to write the file.
TEST(AfxNumbers, NonFiniteOutputIsCountedAndWarned) {
    ScratchFolder folder;
    writeFloatWav(folder.file("in.wav"), 2, 48000, steadySignal(1000));
    const Outcome warned = runAfx(gain(folder.file("in.wav"), folder.file("out.wav"), {"--set", "0=nan"}));
    EXPECT_EQ(warned.exitStatus, 0) << warned.err;
    EXPECT_NE(warned.out.find("NaN or infinite samples in [0 0] out [1000 1000]"), std::string::npos) << warned.out;
    EXPECT_NE(warned.err.find("warning: 2000 output samples are NaN or infinite (per channel [1000 1000])"),
              std::string::npos)
        << warned.err;
    const Outcome strict =
        runAfx(gain(folder.file("in.wav"), folder.file("strict.wav"), {"--set", "0=inf", "--strict"}));
    EXPECT_EQ(strict.exitStatus, 1);
    EXPECT_NE(strict.err.find("2000 output samples are NaN or infinite"), std::string::npos) << strict.err;
    EXPECT_EQ(folder.entries(), (std::vector<std::string>{"in.wav", "out.wav"}));
}

// One NaN in the input is counted on its channel, in and out.
TEST(AfxNumbers, NonFiniteInputIsCounted) {
    ScratchFolder folder;
    std::vector<float> input = steadySignal(1000);
    input[2 * 500 + 1] = std::numeric_limits<float>::quiet_NaN();
    writeFloatWav(folder.file("in.wav"), 2, 48000, input);
    const Outcome outcome = runAfx(gain(folder.file("in.wav"), folder.file("out.wav"), {"--set", "0=0.5"}));
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("NaN or infinite samples in [0 1] out [0 1]"), std::string::npos) << outcome.out;
    // The peak is the finite level, 0.5 = -6.02 dBFS, not NaN.
    EXPECT_NE(outcome.out.find("out [-12.04 -6.02]"), std::string::npos) << outcome.out;
}

TEST(AfxNumbers, DisplayValuesAreDecimalOnly) {
    ScratchFolder folder;
    writeFloatWav(folder.file("in.wav"), 2, 48000, steadySignal(10));
    for (const char* value : {"0x1", "inf", "nan", "1e", "1,5"}) {
        const Outcome outcome =
            runAfx(gain(folder.file("in.wav"), folder.file("out.wav"), {"-p", std::string("gain=") + value}));
        EXPECT_EQ(outcome.exitStatus, 2) << value;
        EXPECT_NE(outcome.err.find("must be a number"), std::string::npos) << value << ": " << outcome.err;
    }
    EXPECT_EQ(folder.entries(), (std::vector<std::string>{"in.wav"}));
}

// render shows what each -p set, as the effect displays it.
TEST(AfxNumbers, RenderPrintsTheChainAsSet) {
    ScratchFolder folder;
    writeFloatWav(folder.file("in.wav"), 2, 48000, steadySignal(10));
    const Outcome outcome = runAfx(gain(folder.file("in.wav"), folder.file("out.wav"), {"-p", "gain=1.5"}));
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
    EXPECT_EQ(lines(outcome.out).at(0), "  1. Test Gain Stereo: Gain = 1.500000 x");
    const Outcome quiet = runAfx(gain(folder.file("in.wav"), folder.file("quiet.wav"), {"-p", "gain=1.5", "-q"}));
    EXPECT_EQ(quiet.out, "");
}

// Short options bundle and take their values attached; "--" ends options.
TEST(AfxConventions, GnuStyleOptions) {
    ScratchFolder folder;
    writeFloatWav(folder.file("in.wav"), 2, 48000, steadySignal(10));
    std::ofstream(folder.file("out.wav")) << "old";
    const Outcome bundled = runAfx({"render", folder.file("in.wav"), folder.file("out.wav"), "-etest gain stereo",
                                    "-pgain=2", "-yq", "--module", kFakeModule});
    EXPECT_EQ(bundled.exitStatus, 0) << bundled.err;
    EXPECT_EQ(bundled.out, "");
    WavData wav;
    ASSERT_TRUE(readWav(folder.file("out.wav"), wav));
    EXPECT_EQ(wav.floats().at(0), 0.5f);  // 0.25 x 2
    const Outcome unknownBundle = runAfx({"render", folder.file("in.wav"), folder.file("x.wav"), "-yz"});
    EXPECT_EQ(unknownBundle.exitStatus, 2);
    EXPECT_NE(unknownBundle.err.find("unknown option '-yz'"), std::string::npos) << unknownBundle.err;
}

TEST(AfxConventions, HelpForEachCommand) {
    for (const char* command : {"list", "info", "render", "demo"}) {
        const Outcome viaHelp = runAfx({"help", command});
        const Outcome viaOption = runAfx({command, "--help"});
        EXPECT_EQ(viaHelp.exitStatus, 0) << command;
        EXPECT_EQ(viaHelp.out, viaOption.out) << command;
        EXPECT_NE(viaHelp.out.find(std::string("usage: afx ") + command), std::string::npos) << viaHelp.out;
    }
    const Outcome bare = runAfx({});
    EXPECT_EQ(bare.exitStatus, 2);
    EXPECT_NE(bare.err.find("list, info, render, demo and validate"), std::string::npos) << bare.err;
}

// validate speaks as the other commands do and takes family names.
TEST(AfxConventions, ValidateLikeTheOtherCommands) {
    struct Bad {
        std::vector<std::string> arguments;
        int exitStatus;
        const char* says;
    };
    for (const Bad& bad : {Bad{{"validate", "--level", "0"}, 2, "--level needs a whole number from 1 to 10"},
                           Bad{{"validate", "--fast"}, 2, "unknown option '--fast'"},
                           Bad{{"validate", "reverb", "--module", kFakeModule}, 2, "no registered effect is called"},
                           Bad{{"validate", "--module", "/no/such/module.so"}, 1, "cannot load"}}) {
        const Outcome outcome = runAfx(bad.arguments);
        EXPECT_EQ(outcome.exitStatus, bad.exitStatus) << bad.says;
        ASSERT_EQ(lines(outcome.err).size(), 1u) << outcome.err;
        EXPECT_EQ(outcome.err.rfind("afx: error: ", 0), 0u) << outcome.err;
        EXPECT_NE(outcome.err.find(bad.says), std::string::npos) << outcome.err;
    }
    EXPECT_NE(runAfx({"help", "validate"}).out.find("usage: afx validate"), std::string::npos);
    // A family name (any case) means every variant of it.
    const Outcome family = runAfx({"validate", "INVERT", "--level", "1"});
    EXPECT_EQ(family.exitStatus, 0) << family.out << family.err;
    for (const char* variant : {"Internal Invert Mono", "Internal Invert Stereo", "Internal Invert 5.1",
                                "Internal Invert 16 Channel"})
        EXPECT_NE(family.out.find(variant), std::string::npos) << variant;
}

}  // namespace
}  // namespace afxtest
