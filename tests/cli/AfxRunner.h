#pragma once
// Runs the built afx as a separate process, the way a user does, and keeps
// what it printed; plus a scratch folder that cleans up after itself.
#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

extern char** environ;

namespace afxtest {

inline const std::string kAfx = AF_BINARY_DIR "/afx";
inline const std::string kFakeModule = AF_BINARY_DIR "/libafx_fake_module.so";

// The names in `folder`, hidden ones included, sorted.
inline std::vector<std::string> entriesOf(const std::string& folder) {
    std::vector<std::string> names;
    if (DIR* listing = ::opendir(folder.c_str())) {
        while (const dirent* entry = ::readdir(listing)) {
            const std::string name = entry->d_name;
            if (name != "." && name != "..") names.push_back(name);
        }
        ::closedir(listing);
    }
    std::sort(names.begin(), names.end());
    return names;
}

class ScratchFolder {
public:
    ScratchFolder() {
        char pattern[] = "/tmp/afx-test-XXXXXX";
        const char* made = ::mkdtemp(pattern);
        path_ = made ? made : "";
    }
    ~ScratchFolder() {
        if (!path_.empty()) std::system(("rm -rf '" + path_ + "'").c_str());
    }
    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }
    // Every entry, hidden ones included, sorted.
    std::vector<std::string> entries() const { return entriesOf(path_); }

private:
    std::string path_;
};

inline std::string readText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

inline bool exists(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0;
}

struct Outcome {
    int exitStatus = -1;  // the exit status, or -1 when a signal ended it
    int signal = 0;       // the signal that ended it
    std::string out;
    std::string err;
};

// afx's command line as exec takes it: the words, and pointers to them ending in null.
struct AfxCommandLine {
    std::vector<std::string> words;
    std::vector<char*> argv;
    explicit AfxCommandLine(const std::vector<std::string>& arguments) : words{kAfx} {
        words.insert(words.end(), arguments.begin(), arguments.end());
        for (std::string& word : words) argv.push_back(word.data());
        argv.push_back(nullptr);
    }
};

// Starts afx with `arguments`, stdout and stderr into files of `logs`.
inline pid_t startAfx(const std::vector<std::string>& arguments, const std::string& logs) {
    AfxCommandLine command(arguments);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, (logs + ".out").c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0644);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, (logs + ".err").c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0644);
    // afx starts as from an interactive shell: no signal blocked, the stop
    // signals at their defaults even where this test runs as a background job
    // (whose shell leaves SIGINT and SIGQUIT ignored, and exec keeps that).
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigset_t stopSignals;
    sigemptyset(&none);
    sigemptyset(&stopSignals);
    for (int signalNumber : {SIGINT, SIGQUIT, SIGTERM, SIGHUP}) sigaddset(&stopSignals, signalNumber);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &stopSignals);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    pid_t child = -1;
    if (posix_spawn(&child, kAfx.c_str(), &actions, &attributes, command.argv.data(), environ) != 0) child = -1;
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return child;
}

inline Outcome finishAfx(pid_t child, const std::string& logs) {
    Outcome outcome;
    int status = 0;
    if (child > 0 && ::waitpid(child, &status, 0) == child) {
        if (WIFEXITED(status)) outcome.exitStatus = WEXITSTATUS(status);
        if (WIFSIGNALED(status)) outcome.signal = WTERMSIG(status);
    }
    outcome.out = readText(logs + ".out");
    outcome.err = readText(logs + ".err");
    ::unlink((logs + ".out").c_str());
    ::unlink((logs + ".err").c_str());
    return outcome;
}

// The logs live outside the scratch folder so that its listing shows only
// what afx itself left there.
inline Outcome runAfx(const std::vector<std::string>& arguments) {
    char pattern[] = "/tmp/afx-log-XXXXXX";
    const int descriptor = ::mkstemp(pattern);
    if (descriptor >= 0) ::close(descriptor);
    const std::string logs = pattern;
    Outcome outcome = finishAfx(startAfx(arguments, logs), logs);
    ::unlink(logs.c_str());
    return outcome;
}

// Whether `child` has a file open in `folder` other than `except` (a name in
// that folder; none when empty). An unnamed output shows as "#inode (deleted)".
inline bool holdsFileIn(pid_t child, const std::string& folder, const std::string& except = "") {
    const std::string descriptors = "/proc/" + std::to_string(child) + "/fd";
    bool found = false;
    if (DIR* listing = ::opendir(descriptors.c_str())) {
        while (const dirent* entry = ::readdir(listing)) {
            char target[4096] = {};
            const std::string link = descriptors + "/" + entry->d_name;
            const ssize_t length = ::readlink(link.c_str(), target, sizeof target - 1);
            const std::string path(target, static_cast<std::size_t>(length > 0 ? length : 0));
            if (path.rfind(folder + "/", 0) == 0 && (except.empty() || path != folder + "/" + except)) found = true;
        }
        ::closedir(listing);
    }
    return found;
}

inline std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> result;
    std::stringstream stream(text);
    for (std::string line; std::getline(stream, line);) result.push_back(line);
    return result;
}

// Words separated by two or more blanks (afx's table columns).
inline std::vector<std::string> columns(const std::string& line) {
    std::vector<std::string> result;
    std::size_t at = 0;
    while (at < line.size()) {
        const std::size_t gap = line.find("  ", at);
        const std::string cell = line.substr(at, gap == std::string::npos ? std::string::npos : gap - at);
        if (!cell.empty()) result.push_back(cell);
        if (gap == std::string::npos) break;
        at = line.find_first_not_of(' ', gap);
        if (at == std::string::npos) break;
    }
    return result;
}

}  // namespace afxtest
