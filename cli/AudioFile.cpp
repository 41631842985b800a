#include "AudioFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <sstream>

#include "Errors.h"

namespace afx {
namespace {

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

// libsndfile reads a file whose header promises more than the file holds up
// to where it ends, and notes each size it corrected in its log as
// "NAME : STATED (should be ACTUAL)". A smaller actual size means a cut-off file.
bool logShowsCutOff(SNDFILE* file) {
    char log[8192] = {};
    ::sf_command(file, SFC_GET_LOG_INFO, log, sizeof log);
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t colon = line.find(" : ");
        const std::size_t should = line.find("(should be ");
        if (colon == std::string::npos || should == std::string::npos || should < colon) continue;
        const long long stated = std::strtoll(line.c_str() + colon + 3, nullptr, 10);
        const long long actual = std::strtoll(line.c_str() + should + 11, nullptr, 10);
        if (actual < stated) return true;
    }
    return false;
}

constexpr int kTagIds[] = {SF_STR_TITLE,   SF_STR_COPYRIGHT, SF_STR_SOFTWARE,    SF_STR_ARTIST,
                           SF_STR_COMMENT, SF_STR_DATE,      SF_STR_ALBUM,       SF_STR_LICENSE,
                           SF_STR_TRACKNUMBER, SF_STR_GENRE};

// libsndfile keeps the reason a file did not open in one place for the whole
// process: renders running side by side (a batch) open their files in turn,
// so that each reads its own reason.
std::mutex gOpening;

}  // namespace

InputFile::InputFile(const std::string& path) : path_(path) {
    std::unique_lock<std::mutex> opening(gOpening);
    file_ = path == "-" ? ::sf_open_fd(STDIN_FILENO, SFM_READ, &info_, SF_FALSE)
                        : ::sf_open(path.c_str(), SFM_READ, &info_);
    if (file_ == nullptr)
        throw RunError("cannot read input '" + path + "': " + ::sf_strerror(nullptr));
    opening.unlock();
    if (info_.channels <= 0) throw RunError("input '" + path + "' has no channels");
    // A stream does not say how long it is.
    frames_ = info_.frames > 0 && info_.frames < SF_COUNT_MAX ? info_.frames : 0;
    cutOff_ = logShowsCutOff(file_);
    for (int id : kTagIds)
        if (const char* text = ::sf_get_string(file_, id)) tags_.emplace_back(id, text);
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

namespace {

// A stream's file is made where temporary files go; a file's beside it, so
// that it can be renamed into place.
std::string temporaryFolder(const OutputTarget& target) {
    if (target.kind != OutputKind::Stream) return target.folder();
    const char* folder = std::getenv("TMPDIR");
    return folder != nullptr && folder[0] != '\0' ? folder : "/tmp";
}

}  // namespace

OutputFile::OutputFile(const OutputTarget& target, int format, unsigned channels, int sampleRate,
                       std::int64_t maxFrames, const Tags& tags, bool syncToDisk)
    : target_(target), temporary_(temporaryFolder(target)), channels_(channels),
      syncToDisk_(syncToDisk && target.kind != OutputKind::Stream) {
    SF_INFO info{};
    info.format = format;
    info.channels = static_cast<int>(channels);
    info.samplerate = sampleRate;
    // afx keeps the descriptor: it is flushed to the disk after libsndfile's
    // last header update, before the rename.
    std::unique_lock<std::mutex> opening(gOpening);
    file_ = ::sf_open_fd(temporary_.descriptor(), SFM_WRITE, &info, SF_FALSE);
    if (file_ == nullptr) throw RunError("cannot write output '" + target.typed + "': " + ::sf_strerror(nullptr));
    opening.unlock();
    for (const auto& [id, text] : tags) ::sf_set_string(file_, id, text.c_str());
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
    framesWritten_ += written;
    if (written != frames) throw RunError("cannot write output '" + target_.typed + "': " + ::sf_strerror(file_));
    // Start the disk writes of what has piled up, without waiting for them:
    // the flush before the rename then has only the last stretch to wait for.
    unsyncedBytes_ += static_cast<std::int64_t>(count * sizeof(float));
    if (syncToDisk_ && unsyncedBytes_ >= kWritebackBytes) {
        ::sync_file_range(temporary_.descriptor(), 0, 0, SYNC_FILE_RANGE_WRITE);
        unsyncedBytes_ = 0;
    }
}

void OutputFile::keepModeAndOwner() {
    const struct stat& old = target_.replaced;
    struct stat now {};
    if (::fstat(temporary_.descriptor(), &now) != 0) return;
    if ((now.st_uid != old.st_uid || now.st_gid != old.st_gid) &&
        ::fchown(temporary_.descriptor(), old.st_uid, old.st_gid) != 0)
        ownerWarning_ = "'" + target_.typed + "' was replaced by a file of yours: its owner (user " +
                        std::to_string(old.st_uid) + ", group " + std::to_string(old.st_gid) +
                        ") cannot be kept (" + systemReason() + ")";
    // After the owner: changing it clears the set-id bits.
    ::fchmod(temporary_.descriptor(), old.st_mode & 07777);
}

void OutputFile::copyIntoStream() {
    const int source = temporary_.descriptor();
    if (::lseek(source, 0, SEEK_SET) != 0) throw RunError("cannot read back the output: " + systemReason());
    const bool standardOutput = target_.isStandardOutput();
    const int stream = standardOutput ? STDOUT_FILENO : ::open(target_.path.c_str(), O_WRONLY | O_CLOEXEC);
    if (stream < 0) throw RunError("cannot write output '" + target_.typed + "': " + systemReason());
    char buffer[1 << 16];
    std::string failure;
    for (;;) {
        const ssize_t got = ::read(source, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) failure = "cannot read back the output: " + systemReason();
        if (got <= 0) break;
        for (ssize_t sent = 0; sent < got && failure.empty();) {
            const ssize_t put = ::write(stream, buffer + sent, static_cast<std::size_t>(got - sent));
            if (put < 0 && errno == EINTR) continue;
            if (put < 0) failure = "cannot write output '" + target_.typed + "': " + systemReason();
            else sent += put;
        }
        if (!failure.empty()) break;
    }
    if (!standardOutput) ::close(stream);
    if (!failure.empty()) throw RunError(failure);
}

void OutputFile::commit() {
    // The FLAC encoder starts with the first samples; an empty input still
    // needs a file that reads back.
    if (framesWritten_ == 0) ::sf_command(file_, SFC_UPDATE_HEADER_NOW, nullptr, 0);
    const int closed = ::sf_close(file_);
    file_ = nullptr;
    if (closed != 0) throw RunError("cannot finish output '" + target_.typed + "': " + ::sf_error_number(closed));
    struct stat written {};
    if (::fstat(temporary_.descriptor(), &written) == 0 && written.st_size == 0)
        throw RunError("libsndfile wrote nothing for '" + target_.typed +
                       "' (an empty input in a format that cannot be empty); choose another OUTPUT extension");
    if (target_.kind == OutputKind::Stream) {
        copyIntoStream();
        return;
    }
    if (target_.kind == OutputKind::ReplacedFile) keepModeAndOwner();
    if (syncToDisk_ && ::fsync(temporary_.descriptor()) != 0)
        throw RunError("cannot finish output '" + target_.typed + "': " + systemReason());
    temporary_.placeAt(target_.path);
}

}  // namespace afx
