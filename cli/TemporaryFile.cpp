#include "TemporaryFile.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <set>

#include "Errors.h"

namespace afx {
namespace {

constexpr const char* kPrefix = ".afx-";

// The named files for the signal handler, one slot per file under way:
// fixed storage, since a handler may only call async-signal-safe functions
// (unlink, signal, raise) and read lock-free atomics.
constexpr int kNamedSlots = 64;
struct NamedSlot {
    std::atomic<bool> taken{false};
    char path[PATH_MAX + 32] = {};
};
NamedSlot gNamed[kNamedSlots];

extern "C" void removeNamedAndDie(int signalNumber) {
    for (NamedSlot& slot : gNamed)
        if (slot.taken.load() && slot.path[0] != '\0') ::unlink(slot.path);
    std::signal(signalNumber, SIG_DFL);
    std::raise(signalNumber);
}

// A free slot, or -1 when all are taken.
int takeSlot() {
    for (int index = 0; index < kNamedSlots; ++index) {
        bool expected = false;
        if (gNamed[index].taken.compare_exchange_strong(expected, true)) {
            gNamed[index].path[0] = '\0';
            return index;
        }
    }
    return -1;
}

// The process's file mode mask, read without changing it (umask() would, for
// a moment, for every thread's new files); the kernel shows it since Linux 4.7.
mode_t currentUmask() {
    if (FILE* status = std::fopen("/proc/self/status", "r")) {
        char line[256];
        unsigned mask = 0;
        bool found = false;
        while (!found && std::fgets(line, sizeof line, status) != nullptr)
            found = std::sscanf(line, "Umask: %o", &mask) == 1;
        std::fclose(status);
        if (found) return static_cast<mode_t>(mask);
    }
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return mask;
}

void installCleanupHandlers() {
    for (int signalNumber : {SIGINT, SIGTERM, SIGHUP}) std::signal(signalNumber, removeNamedAndDie);
}

std::string systemReason() { return std::strerror(errno); }

// "<folder>/.afx-<pid>-XXXXXX", the pattern of mkstemp.
std::string namePattern(const std::string& folder) {
    return folder + "/" + kPrefix + std::to_string(::getpid()) + "-XXXXXX";
}

// Makes a fresh name in `named` (PATH_MAX + 32 chars) and returns the open file; -1 on failure.
int makeNamed(const std::string& folder, char* named) {
    const std::string pattern = namePattern(folder);
    if (pattern.size() >= PATH_MAX + 32) {
        errno = ENAMETOOLONG;
        return -1;
    }
    std::memcpy(named, pattern.c_str(), pattern.size() + 1);
    const int descriptor = ::mkstemp(named);
    if (descriptor < 0) {
        named[0] = '\0';
        return -1;
    }
    // mkstemp makes the file private; give it the permissions a new file gets.
    ::fchmod(descriptor, 0666 & ~currentUmask());
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
    // A folder is swept once per run: a batch writing a thousand files into
    // it would otherwise list it a thousand times. (Temporaries left since by
    // a process that died meanwhile wait for the next run.)
    {
        static std::mutex sweptMutex;
        static std::set<std::string> swept;
        const std::lock_guard<std::mutex> lock(sweptMutex);
        if (!swept.insert(folder).second) return;
    }
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

char* TemporaryFile::named() { return slot_ >= 0 ? gNamed[slot_].path : ownName_; }

void TemporaryFile::forgetName() { named()[0] = '\0'; }

TemporaryFile::TemporaryFile(const std::string& folder) : folder_(folder), slot_(takeSlot()) {
    installCleanupHandlers();
    removeStaleTemporaries(folder);
    // An unnamed file can be named later only through /proc (without privileges).
    if (::access("/proc/self/fd", X_OK) == 0) {
        descriptor_ = ::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
        unnamed_ = descriptor_ >= 0;
    }
    if (descriptor_ < 0) descriptor_ = makeNamed(folder, named());
    if (descriptor_ < 0) {
        const std::string reason = systemReason();
        if (slot_ >= 0) gNamed[slot_].taken.store(false);
        throw RunError("cannot write in folder '" + folder + "': " + reason);
    }
}

TemporaryFile::~TemporaryFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
    if (!placed_ && named()[0] != '\0') ::unlink(named());
    forgetName();
    if (slot_ >= 0) gNamed[slot_].taken.store(false);
}

void TemporaryFile::placeAt(const std::string& path) {
    if (unnamed_) {
        // A name of its own first (link refuses to replace), then the rename
        // replaces OUTPUT in one step. Between the two, the name is a hidden
        // one that the signal handler and the next render clean up.
        const std::string self = "/proc/self/fd/" + std::to_string(descriptor_);
        for (int attempt = 0;; ++attempt) {
            const std::string pattern = namePattern(folder_);
            std::memcpy(named(), pattern.c_str(), pattern.size() + 1);
            // A fresh name: mkstemp's, given up at once so link can take it.
            const int probe = ::mkstemp(named());
            if (probe < 0) {
                forgetName();
                break;
            }
            ::close(probe);
            ::unlink(named());
            if (::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, named(), AT_SYMLINK_FOLLOW) == 0) break;
            if (errno != EEXIST || attempt > 100) {
                const std::string reason = systemReason();
                forgetName();
                throw RunError("cannot name the finished output in '" + folder_ + "': " + reason);
            }
        }
    }
    if (named()[0] == '\0') throw RunError("cannot name the finished output in '" + folder_ + "'");
    if (::rename(named(), path.c_str()) != 0) {
        const std::string reason = systemReason();
        ::unlink(named());
        forgetName();
        throw RunError("cannot move the finished output to '" + path + "': " + reason);
    }
    placed_ = true;
    forgetName();
    const int descriptor = descriptor_;
    descriptor_ = -1;
    if (::close(descriptor) != 0) throw RunError("cannot finish output '" + path + "': " + systemReason());
}

}  // namespace afx
