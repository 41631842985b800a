#pragma once
// The file a render writes before it is complete. Where the file system has
// them it is an unnamed file (O_TMPFILE) in OUTPUT's folder, which the kernel
// drops with the last descriptor however the process ends, even by SIGKILL;
// it gets a name only when complete. Elsewhere it is a hidden file
// ".afx-PID-XXXXXX", removed on failure and on SIGINT, SIGTERM and SIGHUP;
// one left by a killed render is removed by the next render in that folder,
// once no process of that number runs. The names are short, whatever
// OUTPUT's length. Several may be under way at once, on several threads (a
// batch).
#include <climits>
#include <string>

namespace afx {

class TemporaryFile {
public:
    // In `folder`; RunError when it cannot be made there.
    explicit TemporaryFile(const std::string& folder);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    int descriptor() const { return descriptor_; }
    bool isUnnamed() const { return unnamed_; }

    // Renames the finished file to `path`, replacing what is there at once,
    // and closes it. RunError when the file system refuses.
    void placeAt(const std::string& path);

private:
    // The hidden name while the file has one ("" otherwise): a slot the
    // signal handler sees, or this file's own storage when every slot is taken
    // (then a signal leaves it for the next render to remove).
    char* named();
    void forgetName();

    std::string folder_;
    int descriptor_ = -1;
    bool unnamed_ = false;
    bool placed_ = false;
    int slot_ = -1;
    char ownName_[PATH_MAX + 32] = {};
};

// Removes ".afx-PID-XXXXXX" files of `folder` whose process no longer runs;
// once per folder in a run (later calls for the same folder do nothing).
void removeStaleTemporaries(const std::string& folder);

}  // namespace afx
