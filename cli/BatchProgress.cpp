#include "BatchProgress.h"

#include "Progress.h"

#include <cstdio>

namespace afx {
namespace {

constexpr double kQuietSeconds = 1.0;   // no line for batches shorter than this
constexpr double kRedrawSeconds = 0.1;  // at most ten redraws a second

double secondsBetween(std::chrono::steady_clock::time_point from, std::chrono::steady_clock::time_point to) {
    return std::chrono::duration<double>(to - from).count();
}

}  // namespace

BatchProgress::BatchProgress(std::size_t files, bool enabled)
    : files_(files), enabled_(enabled), start_(Clock::now()), lastDrawn_(start_) {}

void BatchProgress::fileFinished(bool failed, double audioSeconds) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (failed)
        ++failed_;
    else
        ++done_;
    audioSeconds_ += audioSeconds;
    const Clock::time_point now = Clock::now();
    if (secondsBetween(start_, now) >= kQuietSeconds && secondsBetween(lastDrawn_, now) >= kRedrawSeconds)
        drawLocked(now);
}

void BatchProgress::say(const std::string& line) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const bool wasShown = shown_;
    clearLocked();
    std::fprintf(stderr, "%s\n", line.c_str());
    if (wasShown) drawLocked(Clock::now());
}

void BatchProgress::clear() {
    const std::lock_guard<std::mutex> lock(mutex_);
    clearLocked();
}

void BatchProgress::drawLocked(Clock::time_point now) {
    if (!enabled_) return;
    lastDrawn_ = now;
    const double elapsed = secondsBetween(start_, now);
    const std::size_t finished = done_ + failed_;
    std::fprintf(stderr, "\r%zu/%zu files, %zu failed  %.1f files/s  %.1fx real time\033[K", finished, files_, failed_,
                 elapsed > 0.0 ? static_cast<double>(finished) / elapsed : 0.0,
                 elapsed > 0.0 ? audioSeconds_ / elapsed : 0.0);
    std::fflush(stderr);
    shown_ = true;
}

void BatchProgress::clearLocked() { eraseStatusLine(shown_); }

std::size_t BatchProgress::done() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return done_;
}

std::size_t BatchProgress::failed() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return failed_;
}

double BatchProgress::audioSeconds() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return audioSeconds_;
}

double BatchProgress::elapsedSeconds() const { return secondsBetween(start_, Clock::now()); }

}  // namespace afx
