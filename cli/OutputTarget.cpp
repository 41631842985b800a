#include "OutputTarget.h"

#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>

#include "Errors.h"

namespace afx {
namespace {

// As many links as the kernel follows before it gives up (ELOOP).
constexpr int kMostLinks = 40;

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return path.substr(0, slash == 0 ? 1 : slash);
}

// Follows `path` through links to the name that is not a link (which may not
// exist yet: a dangling link names the file to create).
std::string followLinks(const std::string& typed) {
    std::string path = typed;
    for (int hops = 0; hops < kMostLinks; ++hops) {
        struct stat status {};
        if (::lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return path;
        char target[PATH_MAX] = {};
        const ssize_t length = ::readlink(path.c_str(), target, sizeof target - 1);
        if (length <= 0) throw RunError("cannot read the link '" + path + "': " + std::strerror(errno));
        const std::string next(target, static_cast<std::size_t>(length));
        path = next[0] == '/' ? next : folderOf(path) + "/" + next;
    }
    throw UsageError("OUTPUT '" + typed + "' is a loop of links");
}

}  // namespace

std::string OutputTarget::folder() const { return folderOf(path); }

OutputTarget resolveOutput(const std::string& typed, bool overwrite, const struct stat* input) {
    OutputTarget target;
    target.typed = typed;
    if (typed.empty()) throw UsageError("OUTPUT is an empty name; name a file, or '-' for standard output");
    if (typed == "-") {
        target.kind = OutputKind::Stream;
        return target;
    }
    if (typed.back() == '/') throw UsageError("OUTPUT '" + typed + "' names a folder; name a file");
    struct stat status {};
    // What the name reaches, links followed by the kernel (which also knows
    // /dev/stdout and the other links of /proc that name no file).
    if (::stat(typed.c_str(), &status) == 0 && (S_ISCHR(status.st_mode) || S_ISFIFO(status.st_mode))) {
        // Written into, never replaced: -y is not needed and changes nothing.
        target.kind = OutputKind::Stream;
        target.path = typed;
        return target;
    }
    target.path = followLinks(typed);
    if (::stat(target.path.c_str(), &status) != 0) {
        if (errno != ENOENT) throw RunError("cannot use OUTPUT '" + typed + "': " + std::strerror(errno));
        return target;
    }
    if (input != nullptr && status.st_dev == input->st_dev && status.st_ino == input->st_ino)
        throw UsageError("INPUT and OUTPUT are the same file '" + typed +
                         "'; write to another file and rename it afterwards");
    if (S_ISDIR(status.st_mode)) throw UsageError("OUTPUT '" + typed + "' is a folder; name a file");
    if (!S_ISREG(status.st_mode))
        throw UsageError("OUTPUT '" + typed + "' is a " + (S_ISBLK(status.st_mode) ? "block device" : "socket") +
                         "; afx writes files, character devices and FIFOs");
    if (!overwrite) throw UsageError("OUTPUT '" + typed + "' exists; add -y to overwrite it");
    target.kind = OutputKind::ReplacedFile;
    target.replaced = status;
    return target;
}

}  // namespace afx
