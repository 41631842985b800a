#pragma once
// Where a render's OUTPUT really goes. A link is followed to the file it
// names, so that file is replaced and the link kept. A regular file (new or
// replaced) is put in place whole, only once complete. A character device or
// a FIFO (and "-", standard output) is never replaced: it is a stream that
// receives the finished file. Everything that would lose data is refused here,
// before anything is loaded or written.
#include <sys/stat.h>

#include <string>

namespace afx {

enum class OutputKind { NewFile, ReplacedFile, Stream };

struct OutputTarget {
    std::string typed;  // OUTPUT as the user gave it
    std::string path;   // the file afx writes: a link's final target; "" for standard output
    OutputKind kind = OutputKind::NewFile;
    struct stat replaced {};  // the replaced file's mode and owner, to be kept

    bool isStandardOutput() const { return kind == OutputKind::Stream && path.empty(); }
    // The folder that receives the new file (regular files only).
    std::string folder() const;
};

// `input` is INPUT's status when it is a file (null for standard input).
// UsageError for an empty name, a folder, a block device or socket, INPUT
// itself, or an existing file without `overwrite`.
OutputTarget resolveOutput(const std::string& typed, bool overwrite, const struct stat* input);

}  // namespace afx
