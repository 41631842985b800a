#pragma once
// A batch's one progress line (stderr, only on a terminal and only once the
// batch has run for about a second): files done of all, failures, and the
// pace. Workers report to it from their own threads; messages printed through
// it clear the line first, so the two never mix.
#include <chrono>
#include <cstddef>
#include <mutex>
#include <string>

namespace afx {

class BatchProgress {
public:
    BatchProgress(std::size_t files, bool enabled);

    // A file has finished, rendered (`failed` false) or not, with `audioSeconds` of output.
    void fileFinished(bool failed, double audioSeconds);
    // One line on stderr, above the progress line.
    void say(const std::string& line);
    // Removes the line for good (before the summary).
    void clear();

    std::size_t done() const;
    std::size_t failed() const;
    double audioSeconds() const;
    double elapsedSeconds() const;

private:
    using Clock = std::chrono::steady_clock;
    void drawLocked(Clock::time_point now);
    void clearLocked();

    const std::size_t files_;
    const bool enabled_;
    const Clock::time_point start_;
    mutable std::mutex mutex_;
    std::size_t done_ = 0;
    std::size_t failed_ = 0;
    double audioSeconds_ = 0.0;
    bool shown_ = false;
    Clock::time_point lastDrawn_;
};

}  // namespace afx
