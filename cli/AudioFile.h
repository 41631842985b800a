#pragma once
// Audio files through libsndfile. Samples travel as 32-bit floats: a float
// file is read and written untouched (libsndfile does not scale floats);
// integer files are read normalised (a 16-bit sample s becomes s / 32768) and
// written back by the exact inverse, rounding to the nearest step and
// clipping at full scale, so an unchanged sample comes back bit for bit.
#include <sndfile.h>

#include <cstdint>
#include <string>
#include <vector>

namespace afx {

class InputFile {
public:
    explicit InputFile(const std::string& path);  // RunError when unreadable
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    unsigned channels() const { return static_cast<unsigned>(info_.channels); }
    int sampleRate() const { return info_.samplerate; }
    std::int64_t frames() const { return info_.frames; }
    int format() const { return info_.format; }
    const std::string& path() const { return path_; }

    // Reads up to `frames` interleaved frames; returns how many came. RunError on a read failure.
    std::int64_t read(float* interleaved, std::int64_t frames);

private:
    std::string path_;
    SF_INFO info_{};
    SNDFILE* file_ = nullptr;
};

// The output is written to a hidden temporary file beside OUTPUT and renamed
// over it only by commit(); until then OUTPUT is never touched. The temporary
// file is removed by the destructor and by SIGINT, SIGTERM or SIGHUP.
class OutputFile {
public:
    // `maxFrames`: the most frames one write() passes (its buffers are made once).
    // `syncToDisk`: commit() renames only once the contents are on the disk,
    // so that a crash soon after cannot leave OUTPUT empty or partial; the
    // disk writes start while the render runs, so little is left to wait for.
    OutputFile(const std::string& path, int format, unsigned channels, int sampleRate, std::int64_t maxFrames,
               bool syncToDisk = true);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void write(const float* interleaved, std::int64_t frames);
    // Closes the file and renames it over OUTPUT.
    void commit();

    bool isInteger() const { return integerBits_ > 0; }
    std::uint64_t clippedSamples() const { return clipped_; }

private:
    std::string path_;
    unsigned channels_;
    int integerBits_ = 0;          // bits of an integer sample format, 0 for floats and codecs
    bool countsFullScale_ = false;  // codecs clipped by libsndfile: count |x| > 1 ourselves
    int descriptor_ = -1;
    bool syncToDisk_;
    std::int64_t unsyncedBytes_ = 0;  // written since the disk writes were last started
    SNDFILE* file_ = nullptr;
    std::vector<int> integers_;
    std::uint64_t clipped_ = 0;
    bool committed_ = false;
};

// The container and sample format for OUTPUT: the container follows OUTPUT's
// extension when afx knows it (else the input's), the samples follow the input
// unless `asFloat`. UsageError when libsndfile cannot write that combination.
int outputFormat(const std::string& outputPath, int inputFormat, bool asFloat);

std::string describeFormat(int format);

}  // namespace afx
