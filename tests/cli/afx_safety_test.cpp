// What afx does to the files around it: devices, FIFOs, links, modes and
// owners of OUTPUT; what a killed render leaves; names at the length limit;
// empty names, cut-off inputs, and block and chunk sizes checked before any
// memory is taken. Through the real binary on the stand-in module.
#include <gtest/gtest.h>
#include <sys/sysmacros.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <thread>

#include "AfxRunner.h"
#include "WavFiles.h"

namespace afxtest {
namespace {

std::vector<std::string> gainRender(const std::string& input, const std::string& output,
                                    std::vector<std::string> more = {}) {
    std::vector<std::string> arguments = {"render", input, output, "-e", "test gain stereo", "--set", "0=0.5",
                                          "--module", kFakeModule};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

std::vector<float> ramp(int frames) {
    std::vector<float> samples;
    for (int i = 0; i < 2 * frames; ++i) samples.push_back(static_cast<float>(i % 1000) / 1000.0f - 0.5f);
    return samples;
}

struct stat statusOf(const std::string& path, bool followLink = true) {
    struct stat status {};
    if (followLink) ::stat(path.c_str(), &status);
    else ::lstat(path.c_str(), &status);
    return status;
}

bool isRoot() { return ::geteuid() == 0; }

// A character device OUTPUT (the null device's numbers, made in a private
// folder) is written into and stays a device, with and without -y.
TEST(AfxOutputSafety, CharacterDeviceIsWrittenIntoNeverReplaced) {
    if (!isRoot()) GTEST_SKIP() << "mknod needs root";
    ScratchFolder folder;
    writeFloatWav(folder.file("in.wav"), 2, 48000, ramp(1000));
    const std::string device = folder.file("nulldev");
    if (::mknod(device.c_str(), S_IFCHR | 0666, ::makedev(1, 3)) != 0)
        GTEST_SKIP() << "mknod refused here (a container without the capability?)";
    for (const bool overwrite : {false, true}) {
        const Outcome outcome =
            runAfx(gainRender(folder.file("in.wav"), device, overwrite ? std::vector<std::string>{"-y"}
                                                                       : std::vector<std::string>{}));
        EXPECT_EQ(outcome.exitStatus, 0) << outcome.err;
        const struct stat status = statusOf(device);
        EXPECT_TRUE(S_ISCHR(status.st_mode));
        EXPECT_EQ(status.st_rdev, ::makedev(1, 3));
        EXPECT_EQ(folder.entries(), (std::vector<std::string>{"in.wav", "nulldev"}));
    }
}

TEST(AfxOutputSafety, BlockDeviceIsRefused) {
    if (!isRoot()) GTEST_SKIP() << "mknod needs root";
    ScratchFolder folder;
    writeFloatWav(folder.file("in.wav"), 2, 48000, ramp(100));
    const std::string device = folder.file("disk");
    // A loop device's numbers; afx must not even open it.
    if (::mknod(device.c_str(), S_IFBLK | 0600, ::makedev(7, 200)) != 0)
        GTEST_SKIP() << "mknod refused here (a container without the capability?)";
    const Outcome outcome = runAfx(gainRender(folder.file("in.wav"), device, {"-y"}));
    EXPECT_EQ(outcome.exitStatus, 2);
    EXPECT_NE(outcome.err.find("block device"), std::string::npos) << outcome.err;
    EXPECT_TRUE(S_ISBLK(statusOf(device).st_mode));
}

// A FIFO's reader gets the whole file, and the FIFO stays a FIFO.
TEST(AfxOutputSafety, FifoReaderGetsTheFile) {
    ScratchFolder folder;
    const std::vector<float> input = ramp(3000);
    writeFloatWav(folder.file("in.wav"), 2, 48000, input);
    const std::string fifo = folder.file("pipe.wav");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0644), 0);
    std::string received;
    std::thread reader([&] { received = readText(fifo); });
    const Outcome outcome = runAfx(gainRender(folder.file("in.wav"), fifo, {"-y", "--quiet"}));
    reader.join();
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.err;
    EXPECT_TRUE(S_ISFIFO(statusOf(fifo).st_mode));
    std::ofstream(folder.file("received.wav"), std::ios::binary) << received;
    WavData wav;
    ASSERT_TRUE(readWav(folder.file("received.wav"), wav)) << received.size() << " bytes";
    EXPECT_EQ(wav.floats(), input);  // gain 2 x 0.5 = 1: the samples themselves
}

TEST(AfxOutputSafety, ReplacedFileKeepsModeAndOwner) {
    ScratchFolder folder;
    writeFloatWav(folder.file("in.wav"), 2, 48000, ramp(500));
    const std::string output = folder.file("out.wav");
    std::ofstream(output) << "old";
    ASSERT_EQ(::chmod(output.c_str(), 0640), 0);
    const uid_t owner = isRoot() ? 4321 : ::geteuid();
    const gid_t group = isRoot() ? 5432 : ::getegid();
    if (isRoot()) {
        ASSERT_EQ(::chown(output.c_str(), owner, group), 0);
    }
    const Outcome outcome = runAfx(gainRender(folder.file("in.wav"), output, {"-y"}));
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    const struct stat status = statusOf(output);
    EXPECT_TRUE(S_ISREG(status.st_mode));
    EXPECT_EQ(status.st_mode & 07777, 0640u);
    EXPECT_EQ(status.st_uid, owner);
    EXPECT_EQ(status.st_gid, group);
    WavData wav;
    EXPECT_TRUE(readWav(output, wav));
}

// A link OUTPUT stays a link; the file it names is replaced (or made, when
// the link dangles).
TEST(AfxOutputSafety, LinkIsKeptAndItsFileReplaced) {
    ScratchFolder folder;
    writeFloatWav(folder.file("in.wav"), 2, 48000, ramp(500));
    ASSERT_EQ(::mkdir(folder.file("takes").c_str(), 0755), 0);
    std::ofstream(folder.file("takes/old.wav")) << "old";
    ASSERT_EQ(::symlink("takes/old.wav", folder.file("current.wav").c_str()), 0);
    ASSERT_EQ(::symlink("takes/new.wav", folder.file("next.wav").c_str()), 0);
    for (const char* link : {"current.wav", "next.wav"}) {
        const Outcome outcome = runAfx(gainRender(folder.file("in.wav"), folder.file(link), {"-y"}));
        EXPECT_EQ(outcome.exitStatus, 0) << link << ": " << outcome.err;
        EXPECT_TRUE(S_ISLNK(statusOf(folder.file(link), false).st_mode)) << link;
    }
    WavData wav;
    EXPECT_TRUE(readWav(folder.file("takes/old.wav"), wav));
    EXPECT_TRUE(readWav(folder.file("takes/new.wav"), wav));
    EXPECT_EQ(folder.entries(), (std::vector<std::string>{"current.wav", "in.wav", "next.wav", "takes"}));
}

// A hidden file of a render that no longer runs is removed by the next
// render in its folder; one of a running process is left alone.
TEST(AfxOutputSafety, StaleTemporaryFilesAreRemoved) {
    ScratchFolder folder;
    writeFloatWav(folder.file("in.wav"), 2, 48000, ramp(100));
    // Above the largest process number Linux allows (2^22), so no process has it.
    std::ofstream(folder.file(".afx-4194400-a1b2c3")) << "stale";
    const std::string running = ".afx-" + std::to_string(::getpid()) + "-d4e5f6";
    std::ofstream(folder.file(running)) << "in use";
    std::ofstream(folder.file(".afx-notes")) << "not ours";
    const Outcome outcome = runAfx(gainRender(folder.file("in.wav"), folder.file("out.wav")));
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.err;
    EXPECT_EQ(folder.entries(), (std::vector<std::string>{running, ".afx-notes", "in.wav", "out.wav"}));
}

// The dynamic loader, asked to say where it looks (LD_DEBUG=libs), never
// looks in the current folder while afx starts, loads the module and opens
// libsndfile: a search path with an empty entry would let a library lying
// beside the user's audio files be loaded in place of the real one.
TEST(AfxOutputSafety, LibrariesAreNeverSearchedForInTheCurrentFolder) {
    ScratchFolder folder;
    writeFloatWav(folder.file("in.wav"), 2, 48000, ramp(100));
    ::setenv("LD_DEBUG", "libs", 1);
    const Outcome outcome = runAfx(gainRender(folder.file("in.wav"), folder.file("out.wav")));
    ::unsetenv("LD_DEBUG");
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.err;
    std::istringstream text(outcome.err);
    std::size_t tried = 0;
    for (std::string line; std::getline(text, line);) {
        const std::size_t at = line.find("trying file=");
        if (at == std::string::npos) continue;
        ++tried;
        EXPECT_EQ(line.compare(at + 12, 1, "/"), 0) << line;
    }
    EXPECT_GT(tried, 0u) << "the loader said nothing: " << outcome.err;
}

// The longest name a Linux file system takes (255 bytes) works as OUTPUT.
TEST(AfxOutputSafety, LongestNameWorks) {
    ScratchFolder folder;
    writeFloatWav(folder.file("in.wav"), 2, 48000, ramp(100));
    const std::string name = std::string(251, 'n') + ".wav";
    ASSERT_EQ(name.size(), 255u);
    const Outcome outcome = runAfx(gainRender(folder.file("in.wav"), folder.file(name)));
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.err;
    EXPECT_EQ(folder.entries(), (std::vector<std::string>{"in.wav", name}));
}

TEST(AfxOutputSafety, EmptyOutputNameIsRefusedFirst) {
    ScratchFolder folder;
    writeFloatWav(folder.file("in.wav"), 2, 48000, ramp(100));
    const Outcome outcome = runAfx(gainRender(folder.file("in.wav"), ""));
    EXPECT_EQ(outcome.exitStatus, 2);
    EXPECT_NE(outcome.err.find("empty"), std::string::npos) << outcome.err;
    EXPECT_EQ(outcome.out, "");  // nothing rendered
}

// A WAV file whose header promises 4000 frames but which holds 1500.
void writeCutOffWav(const std::string& path, const std::vector<float>& whole, std::size_t keptFrames) {
    detail::writeWav(path, 3, 2, 48000, 32, whole.data(), whole.size() * 4);
    const std::string text = readText(path);
    const std::size_t header = text.size() - whole.size() * 4;
    std::ofstream(path, std::ios::binary) << text.substr(0, header + keptFrames * 2 * 4);
}

TEST(AfxOutputSafety, CutOffInputWarnsAndStrictRefuses) {
    ScratchFolder folder;
    const std::vector<float> whole = ramp(4000);
    writeCutOffWav(folder.file("cut.wav"), whole, 1500);
    const Outcome warned = runAfx(gainRender(folder.file("cut.wav"), folder.file("out.wav")));
    EXPECT_EQ(warned.exitStatus, 0) << warned.err;
    EXPECT_NE(warned.err.find("warning: input '" + folder.file("cut.wav") + "' is cut off"), std::string::npos)
        << warned.err;
    EXPECT_NE(warned.err.find("1500 frames"), std::string::npos) << warned.err;
    WavData wav;
    ASSERT_TRUE(readWav(folder.file("out.wav"), wav));
    EXPECT_EQ(wav.floats(), std::vector<float>(whole.begin(), whole.begin() + 3000));

    const Outcome refused = runAfx(gainRender(folder.file("cut.wav"), folder.file("strict.wav"), {"--strict"}));
    EXPECT_EQ(refused.exitStatus, 1);
    EXPECT_NE(refused.err.find("cut off"), std::string::npos) << refused.err;
    EXPECT_EQ(folder.entries(), (std::vector<std::string>{"cut.wav", "out.wav"}));
}

// Sizes are checked before any buffer is made: a refusal is immediate and
// names the limit, whatever the number typed.
TEST(AfxOutputSafety, BlockAndChunkLimitsAreStated) {
    ScratchFolder folder;
    writeFloatWav(folder.file("in.wav"), 2, 48000, ramp(100));
    const struct {
        const char* option;
        const char* value;
        const char* says;
    } kCases[] = {{"--block", "1000000000", "from 1 to 1048576, not 1000000000"},
                  {"--block", "2147483648", "from 1 to 1048576, not 2147483648"},
                  {"--block", "99999999999999999999999", "from 1 to 1048576"},
                  {"--block", "0", "from 1 to 1048576, not 0"},
                  {"--chunk", "16777217", "from 1 to 16777216"}};
    for (const auto& bad : kCases) {
        const Outcome outcome = runAfx(gainRender(folder.file("in.wav"), folder.file("out.wav"), {bad.option, bad.value}));
        EXPECT_EQ(outcome.exitStatus, 2) << bad.value;
        EXPECT_NE(outcome.err.find(bad.says), std::string::npos) << outcome.err;
    }
    // 64 channels in blocks of 2^20 frames would need 1.8 GB of buffers.
    std::vector<float> wide(64 * 10, 0.25f);
    detail::writeWav(folder.file("wide.wav"), 3, 64, 48000, 32, wide.data(), wide.size() * 4);
    const Outcome outcome = runAfx(gainRender(folder.file("wide.wav"), folder.file("out.wav"), {"--block", "1048576"}));
    EXPECT_EQ(outcome.exitStatus, 2);
    EXPECT_NE(outcome.err.find("more than afx allows (1024 MB)"), std::string::npos) << outcome.err;
    EXPECT_EQ(folder.entries(), (std::vector<std::string>{"in.wav", "wide.wav"}));
}

}  // namespace
}  // namespace afxtest
