#pragma once
// Audio files through libsndfile. Samples travel as 32-bit floats: a float
// file is read and written untouched (libsndfile does not scale floats);
// integer files are read normalised (a 16-bit sample s becomes s / 32768) and
// written back by the exact inverse, rounding to the nearest step and
// clipping at full scale, so an unchanged sample comes back bit for bit.
#include <sndfile.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "OutputTarget.h"
#include "TemporaryFile.h"

namespace afx {

// Title, artist and the other texts a file carries: (libsndfile's string id, text).
using Tags = std::vector<std::pair<int, std::string>>;

class InputFile {
public:
    // "-" reads standard input. RunError when unreadable.
    explicit InputFile(const std::string& path);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    unsigned channels() const { return static_cast<unsigned>(info_.channels); }
    int sampleRate() const { return info_.samplerate; }
    // 0 when unknown (a stream).
    std::int64_t frames() const { return frames_; }
    int format() const { return info_.format; }
    const std::string& path() const { return path_; }
    const Tags& tags() const { return tags_; }
    // True when the header promises more than the file holds (a cut-off
    // file, which libsndfile reads up to where it ends).
    bool isCutOff() const { return cutOff_; }

    // Reads up to `frames` interleaved frames; returns how many came. RunError on a read failure.
    std::int64_t read(float* interleaved, std::int64_t frames);

private:
    std::string path_;
    SF_INFO info_{};
    SNDFILE* file_ = nullptr;
    std::int64_t frames_ = 0;
    bool cutOff_ = false;
    Tags tags_;
};

// The output goes to a temporary file (see TemporaryFile) and reaches
// OUTPUT only by commit(); until then OUTPUT is never touched. A stream
// OUTPUT (a device, a FIFO, standard output) receives the finished file.
class OutputFile {
public:
    // `maxFrames`: the most frames one write() passes (its buffers are made once).
    // `syncToDisk`: commit() renames only once the contents are on the disk,
    // so that a crash soon after cannot leave OUTPUT empty or partial; the
    // disk writes start while the render runs, so little is left to wait for.
    OutputFile(const OutputTarget& target, int format, unsigned channels, int sampleRate, std::int64_t maxFrames,
               const Tags& tags, bool syncToDisk = true);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void write(const float* interleaved, std::int64_t frames);
    // Finishes the file and puts it in place (or into the stream).
    void commit();

    bool isInteger() const { return integerBits_ > 0; }
    std::uint64_t clippedSamples() const { return clipped_; }
    // Set by commit() when a replaced file could not keep its owner.
    const std::string& ownerWarning() const { return ownerWarning_; }

private:
    void keepModeAndOwner();
    void copyIntoStream();

    OutputTarget target_;
    TemporaryFile temporary_;
    unsigned channels_;
    int integerBits_ = 0;          // bits of an integer sample format, 0 for floats and codecs
    bool countsFullScale_ = false;  // codecs clipped by libsndfile: count |x| > 1 ourselves
    bool syncToDisk_;
    std::int64_t unsyncedBytes_ = 0;  // written since the disk writes were last started
    std::int64_t framesWritten_ = 0;
    SNDFILE* file_ = nullptr;
    std::vector<int> integers_;
    std::uint64_t clipped_ = 0;
    std::string ownerWarning_;
};

}  // namespace afx
