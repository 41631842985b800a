#include "AudioFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cmath>
#include <csignal>
#include <cstring>

#include "CommandLine.h"
#include "Errors.h"

namespace afx {
namespace {

// The temporary file's name for the signal handler: fixed storage, since a
// handler may only call async-signal-safe functions (unlink, signal, raise).
char gTemporaryPath[PATH_MAX + 32] = {};

extern "C" void removeTemporaryAndDie(int signalNumber) {
    if (gTemporaryPath[0] != '\0') ::unlink(gTemporaryPath);
    std::signal(signalNumber, SIG_DFL);
    std::raise(signalNumber);
}

void installCleanupHandlers() {
    for (int signalNumber : {SIGINT, SIGTERM, SIGHUP}) std::signal(signalNumber, removeTemporaryAndDie);
}

std::string systemReason() { return std::strerror(errno); }

constexpr std::int64_t kWritebackBytes = 2 << 20;  // the most left for the final flush

// Bits per sample of the subtypes afx converts to integers itself.
int integerBitsOf(int subtype) {
    switch (subtype) {
        case SF_FORMAT_PCM_S8:
        case SF_FORMAT_PCM_U8:
            return 8;
        case SF_FORMAT_PCM_16:
        case SF_FORMAT_ALAC_16:
            return 16;
        case SF_FORMAT_ALAC_20:
            return 20;
        case SF_FORMAT_PCM_24:
        case SF_FORMAT_ALAC_24:
            return 24;
        case SF_FORMAT_PCM_32:
        case SF_FORMAT_ALAC_32:
            return 32;
        default:
            return 0;
    }
}

bool isFloatSubtype(int subtype) { return subtype == SF_FORMAT_FLOAT || subtype == SF_FORMAT_DOUBLE; }

std::string extensionOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    const std::size_t dot = path.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return {};
    return toLower(path.substr(dot + 1));
}

}  // namespace

InputFile::InputFile(const std::string& path) : path_(path) {
    file_ = ::sf_open(path.c_str(), SFM_READ, &info_);
    if (file_ == nullptr)
        throw RunError("cannot read input '" + path + "': " + ::sf_strerror(nullptr));
    if (info_.channels <= 0) throw RunError("input '" + path + "' has no channels");
}

InputFile::~InputFile() {
    if (file_ != nullptr) ::sf_close(file_);
}

std::int64_t InputFile::read(float* interleaved, std::int64_t frames) {
    const sf_count_t got = ::sf_readf_float(file_, interleaved, frames);
    if (got < 0 || ::sf_error(file_) != SF_ERR_NO_ERROR)
        throw RunError("cannot read input '" + path_ + "': " + ::sf_strerror(file_));
    return got;
}

int outputFormat(const std::string& outputPath, int inputFormat, bool asFloat) {
    static const struct {
        const char* extension;
        int container;
    } kContainers[] = {{"wav", SF_FORMAT_WAV},   {"wave", SF_FORMAT_WAV},  {"w64", SF_FORMAT_W64},
                       {"rf64", SF_FORMAT_RF64}, {"aif", SF_FORMAT_AIFF},  {"aiff", SF_FORMAT_AIFF},
                       {"aifc", SF_FORMAT_AIFF}, {"au", SF_FORMAT_AU},     {"snd", SF_FORMAT_AU},
                       {"caf", SF_FORMAT_CAF},   {"flac", SF_FORMAT_FLAC}, {"ogg", SF_FORMAT_OGG}};
    int container = inputFormat & SF_FORMAT_TYPEMASK;
    const std::string extension = extensionOf(outputPath);
    for (const auto& known : kContainers)
        if (extension == known.extension) container = known.container;
    int subtype = asFloat ? SF_FORMAT_FLOAT : (inputFormat & SF_FORMAT_SUBMASK);
    // An .ogg name asks for the Vorbis codec, whatever the input held.
    if (container == SF_FORMAT_OGG && subtype != SF_FORMAT_VORBIS && subtype != SF_FORMAT_OPUS)
        subtype = SF_FORMAT_VORBIS;
    const int format = container | subtype;
    SF_INFO probe{};
    probe.format = format;
    probe.channels = 1;
    probe.samplerate = 48000;
    if (!::sf_format_check(&probe))
        throw UsageError("cannot write " + describeFormat(format) + " to '" + outputPath +
                         "': choose another OUTPUT extension (e.g. .wav)" +
                         (asFloat || subtype == SF_FORMAT_FLOAT ? "" : " or add --float"));
    return format;
}

std::string describeFormat(int format) {
    SF_FORMAT_INFO container{};
    container.format = format & SF_FORMAT_TYPEMASK;
    SF_FORMAT_INFO subtype{};
    subtype.format = format & SF_FORMAT_SUBMASK;
    const bool knownContainer = ::sf_command(nullptr, SFC_GET_FORMAT_INFO, &container, sizeof container) == 0;
    const bool knownSubtype = ::sf_command(nullptr, SFC_GET_FORMAT_INFO, &subtype, sizeof subtype) == 0;
    return std::string(knownSubtype ? subtype.name : "unknown samples") + " in " +
           (knownContainer ? container.name : "an unknown container");
}

OutputFile::OutputFile(const std::string& path, int format, unsigned channels, int sampleRate,
                       std::int64_t maxFrames, bool syncToDisk)
    : path_(path), channels_(channels), syncToDisk_(syncToDisk) {
    const std::size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash == 0 ? 1 : slash);
    const std::string base = slash == std::string::npos ? path : path.substr(slash + 1);
    const std::string pattern = folder + "/." + base + ".afx-XXXXXX";
    if (pattern.size() >= sizeof gTemporaryPath)
        throw RunError("output path '" + path + "' is too long");

    installCleanupHandlers();
    std::memcpy(gTemporaryPath, pattern.c_str(), pattern.size() + 1);
    const int descriptor = ::mkstemp(gTemporaryPath);
    if (descriptor < 0) {
        const std::string reason = systemReason();
        gTemporaryPath[0] = '\0';
        throw RunError("cannot write in folder '" + folder + "': " + reason);
    }
    // mkstemp makes the file private; give it the permissions a new file gets.
    const mode_t mask = ::umask(0);
    ::umask(mask);
    ::fchmod(descriptor, 0666 & ~mask);

    SF_INFO info{};
    info.format = format;
    info.channels = static_cast<int>(channels);
    info.samplerate = sampleRate;
    // afx keeps the descriptor: it is flushed to the disk after libsndfile's
    // last header update, before the rename.
    descriptor_ = descriptor;
    file_ = ::sf_open_fd(descriptor, SFM_WRITE, &info, SF_FALSE);
    if (file_ == nullptr) {
        descriptor_ = -1;
        ::close(descriptor);
        ::unlink(gTemporaryPath);
        gTemporaryPath[0] = '\0';
        throw RunError("cannot write output '" + path + "': " + ::sf_strerror(nullptr));
    }
    const int subtype = format & SF_FORMAT_SUBMASK;
    integerBits_ = integerBitsOf(subtype);
    countsFullScale_ = integerBits_ == 0 && !isFloatSubtype(subtype);
    // Codecs that take floats clip at full scale instead of wrapping around.
    if (countsFullScale_) ::sf_command(file_, SFC_SET_CLIPPING, nullptr, SF_TRUE);
    // No PEAK chunk in float files: building it scans every sample on the
    // writing thread, the busiest of a render, and players and editors do not
    // need it (SoX and FFmpeg write none); afx prints the peaks itself.
    if (isFloatSubtype(subtype)) ::sf_command(file_, SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
    if (integerBits_ > 0) integers_.resize(static_cast<std::size_t>(maxFrames) * channels);
}

OutputFile::~OutputFile() {
    if (file_ != nullptr) ::sf_close(file_);
    if (descriptor_ >= 0) ::close(descriptor_);
    if (!committed_ && gTemporaryPath[0] != '\0') ::unlink(gTemporaryPath);
    gTemporaryPath[0] = '\0';
}

void OutputFile::write(const float* interleaved, std::int64_t frames) {
    const std::size_t count = static_cast<std::size_t>(frames) * channels_;
    sf_count_t written = 0;
    if (integerBits_ > 0) {
        // libsndfile keeps the top bits of a 32-bit integer: round to the
        // file's step here, clip at full scale, then move into the top bits.
        if (integers_.size() < count) throw RunError("internal error: a block larger than announced");
        const double scale = std::ldexp(1.0, integerBits_ - 1);
        const double highest = scale - 1.0;
        const double lowest = -scale;
        const int shift = 32 - integerBits_;
        for (std::size_t i = 0; i < count; ++i) {
            double step = std::nearbyint(static_cast<double>(interleaved[i]) * scale);
            if (std::isnan(step)) step = 0.0;
            if (step > highest) {
                step = highest;
                ++clipped_;
            } else if (step < lowest) {
                step = lowest;
                ++clipped_;
            }
            const auto value = static_cast<std::int64_t>(step) * (std::int64_t{1} << shift);
            integers_[i] = static_cast<int>(value);
        }
        written = ::sf_writef_int(file_, integers_.data(), frames);
    } else {
        if (countsFullScale_)
            for (std::size_t i = 0; i < count; ++i)
                if (std::fabs(interleaved[i]) > 1.0f) ++clipped_;
        written = ::sf_writef_float(file_, interleaved, frames);
    }
    if (written != frames) throw RunError("cannot write output '" + path_ + "': " + ::sf_strerror(file_));
    // Start the disk writes of what has piled up, without waiting for them:
    // the flush before the rename then has only the last stretch to wait for.
    unsyncedBytes_ += static_cast<std::int64_t>(count * sizeof(float));
    if (syncToDisk_ && unsyncedBytes_ >= kWritebackBytes) {
        ::sync_file_range(descriptor_, 0, 0, SYNC_FILE_RANGE_WRITE);
        unsyncedBytes_ = 0;
    }
}

void OutputFile::commit() {
    const int closed = ::sf_close(file_);
    file_ = nullptr;
    if (closed != 0) throw RunError("cannot finish output '" + path_ + "': " + ::sf_error_number(closed));
    if (syncToDisk_ && ::fsync(descriptor_) != 0)
        throw RunError("cannot finish output '" + path_ + "': " + systemReason());
    const int descriptor = descriptor_;
    descriptor_ = -1;
    if (::close(descriptor) != 0) throw RunError("cannot finish output '" + path_ + "': " + systemReason());
    if (::rename(gTemporaryPath, path_.c_str()) != 0)
        throw RunError("cannot move the finished output to '" + path_ + "': " + systemReason());
    committed_ = true;
    gTemporaryPath[0] = '\0';
}

}  // namespace afx
