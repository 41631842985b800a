#include "TemporaryFile.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "Errors.h"

namespace afx {
namespace {

constexpr const char* kPrefix = ".afx-";

// The named file for the signal handler: fixed storage, since a handler may
// only call async-signal-safe functions (unlink, signal, raise).
char gNamedPath[PATH_MAX + 32] = {};

extern "C" void removeNamedAndDie(int signalNumber) {
    if (gNamedPath[0] != '\0') ::unlink(gNamedPath);
    std::signal(signalNumber, SIG_DFL);
    std::raise(signalNumber);
}

void installCleanupHandlers() {
    for (int signalNumber : {SIGINT, SIGTERM, SIGHUP}) std::signal(signalNumber, removeNamedAndDie);
}

std::string systemReason() { return std::strerror(errno); }

// "<folder>/.afx-<pid>-XXXXXX", the pattern of mkstemp.
std::string namePattern(const std::string& folder) {
    return folder + "/" + kPrefix + std::to_string(::getpid()) + "-XXXXXX";
}

// Makes a fresh name in gNamedPath and returns the open file; -1 on failure.
int makeNamed(const std::string& folder) {
    const std::string pattern = namePattern(folder);
    if (pattern.size() >= sizeof gNamedPath) {
        errno = ENAMETOOLONG;
        return -1;
    }
    std::memcpy(gNamedPath, pattern.c_str(), pattern.size() + 1);
    const int descriptor = ::mkstemp(gNamedPath);
    if (descriptor < 0) {
        gNamedPath[0] = '\0';
        return -1;
    }
    // mkstemp makes the file private; give it the permissions a new file gets.
    const mode_t mask = ::umask(0);
    ::umask(mask);
    ::fchmod(descriptor, 0666 & ~mask);
    return descriptor;
}

// The process number in ".afx-<pid>-XXXXXX", or 0 when the name is not ours.
long processOf(const char* name) {
    if (std::strncmp(name, kPrefix, std::strlen(kPrefix)) != 0) return 0;
    char* end = nullptr;
    const long pid = std::strtol(name + std::strlen(kPrefix), &end, 10);
    if (pid <= 0 || *end != '-' || std::strlen(end + 1) != 6) return 0;
    return pid;
}

}  // namespace

void removeStaleTemporaries(const std::string& folder) {
    DIR* listing = ::opendir(folder.c_str());
    if (listing == nullptr) return;
    while (const dirent* entry = ::readdir(listing)) {
        const long pid = processOf(entry->d_name);
        if (pid == 0 || pid == ::getpid()) continue;
        if (::kill(static_cast<pid_t>(pid), 0) == 0 || errno != ESRCH) continue;
        struct stat status {};
        if (::fstatat(::dirfd(listing), entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(status.st_mode))
            ::unlinkat(::dirfd(listing), entry->d_name, 0);
    }
    ::closedir(listing);
}

TemporaryFile::TemporaryFile(const std::string& folder) : folder_(folder) {
    installCleanupHandlers();
    removeStaleTemporaries(folder);
    // An unnamed file can be named later only through /proc (without privileges).
    if (::access("/proc/self/fd", X_OK) == 0) {
        descriptor_ = ::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
        unnamed_ = descriptor_ >= 0;
    }
    if (descriptor_ < 0) descriptor_ = makeNamed(folder);
    if (descriptor_ < 0) throw RunError("cannot write in folder '" + folder + "': " + systemReason());
}

TemporaryFile::~TemporaryFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
    if (!placed_ && gNamedPath[0] != '\0') ::unlink(gNamedPath);
    gNamedPath[0] = '\0';
}

void TemporaryFile::placeAt(const std::string& path) {
    if (unnamed_) {
        // A name of its own first (link refuses to replace), then the rename
        // replaces OUTPUT in one step. Between the two, the name is a hidden
        // one that the signal handler and the next render clean up.
        const std::string self = "/proc/self/fd/" + std::to_string(descriptor_);
        for (int attempt = 0;; ++attempt) {
            const std::string pattern = namePattern(folder_);
            std::memcpy(gNamedPath, pattern.c_str(), pattern.size() + 1);
            // A fresh name: mkstemp's, given up at once so link can take it.
            const int probe = ::mkstemp(gNamedPath);
            if (probe < 0) {
                gNamedPath[0] = '\0';
                break;
            }
            ::close(probe);
            ::unlink(gNamedPath);
            if (::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, gNamedPath, AT_SYMLINK_FOLLOW) == 0) break;
            if (errno != EEXIST || attempt > 100) {
                const std::string reason = systemReason();
                gNamedPath[0] = '\0';
                throw RunError("cannot name the finished output in '" + folder_ + "': " + reason);
            }
        }
    }
    if (gNamedPath[0] == '\0') throw RunError("cannot name the finished output in '" + folder_ + "'");
    if (::rename(gNamedPath, path.c_str()) != 0) {
        const std::string reason = systemReason();
        ::unlink(gNamedPath);
        gNamedPath[0] = '\0';
        throw RunError("cannot move the finished output to '" + path + "': " + reason);
    }
    placed_ = true;
    gNamedPath[0] = '\0';
    const int descriptor = descriptor_;
    descriptor_ = -1;
    if (::close(descriptor) != 0) throw RunError("cannot finish output '" + path + "': " + systemReason());
}

}  // namespace afx
