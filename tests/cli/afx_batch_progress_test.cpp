// The batch's progress on a terminal, through the real binary on a pseudo-
// terminal: one status line, redrawn in place, erased before the summary.
// The batch is made to last past the line's first second by an input that is
// a named pipe, which the test fills only after 1.3 s.
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "AfxRunner.h"
#include "TestSignals.h"
#include "WavFiles.h"

namespace afxtest {
namespace {

constexpr int kRate = 48000;

struct TerminalOutcome {
    int exitStatus = -1;
    std::string text;  // all afx wrote to the terminal, stdout and stderr alike
};

// Runs afx with its standard input, output and error on a new pseudo-terminal.
TerminalOutcome runAfxOnTerminal(const std::vector<std::string>& arguments) {
    AfxCommandLine command(arguments);
    TerminalOutcome outcome;
    int terminal = -1;
    const pid_t child = ::forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child < 0) return outcome;
    if (child == 0) {
        ::execv(kAfx.c_str(), command.argv.data());
        ::_exit(127);
    }
    char buffer[4096];
    for (;;) {
        const ssize_t got = ::read(terminal, buffer, sizeof buffer);
        if (got > 0) {
            outcome.text.append(buffer, static_cast<std::size_t>(got));
        } else if (got < 0 && errno == EINTR) {
            continue;
        } else {
            break;  // EIO once afx has exited and the terminal has no writer left
        }
    }
    ::close(terminal);
    int status = 0;
    if (::waitpid(child, &status, 0) == child && WIFEXITED(status)) outcome.exitStatus = WEXITSTATUS(status);
    return outcome;
}

TEST(AfxBatchProgress, OneStatusLineRedrawnInPlaceThenTheSummary) {
    ScratchFolder folder;
    for (const char* name : {"a.wav", "c.wav", "d.wav"}) writeFloatWav(folder.file(name), 2, kRate, noise(4000, 2, 5));
    ASSERT_EQ(::mkfifo(folder.file("b.wav").c_str(), 0600), 0);
    const std::string out = folder.file("out");
    ASSERT_EQ(::mkdir(out.c_str(), 0755), 0);
    // The pipe gets its file once the batch has been running for more than
    // the second the status line waits before it shows.
    std::thread writer([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(1300));
        writeFloatWav(folder.file("b.wav"), 2, kRate, noise(4000, 2, 6));
    });
    const TerminalOutcome outcome =
        runAfxOnTerminal({"render", folder.file("a.wav"), folder.file("b.wav"), folder.file("c.wav"),
                          folder.file("d.wav"), "-o", out, "-j", "1", "-e", "invert"});
    writer.join();
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.text;
    EXPECT_EQ(entriesOf(out), (std::vector<std::string>{"a.wav", "b.wav", "c.wav", "d.wav"}));

    const std::string& text = outcome.text;
    // The first drawing, when the pipe's file finished: two of four done.
    const std::size_t first = text.find("\r2/4 files, 0 failed");
    ASSERT_NE(first, std::string::npos) << text;
    EXPECT_NE(text.find("files/s", first), std::string::npos) << text;
    // Erased ("\r", then clear to the end of the line) before the summary.
    const std::size_t summary = text.find("afx: 4 files into " + out + ": 4 done, 0 failed");
    ASSERT_NE(summary, std::string::npos) << text;
    ASSERT_GE(summary, 4u);
    EXPECT_EQ(text.substr(summary - 4, 4), "\r\033[K") << text;
    // Between the first drawing and the erasing the cursor never left the
    // line: redrawn in place, never a line per file.
    EXPECT_EQ(text.find('\n', first), text.find('\n', summary)) << text;
    // Nothing before the first drawing: the line waits its second, so the
    // quick first file drew nothing.
    EXPECT_EQ(first, 0u) << text;
}

}  // namespace
}  // namespace afxtest
