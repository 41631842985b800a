#pragma once
// The render's progress bar (stderr, only on a terminal and only once a render
// has run for about a second) and its closing summary.
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace afx {

class Progress {
public:
    Progress(std::int64_t totalFrames, int sampleRate, bool enabled);
    void update(std::int64_t framesDone);
    void clear();
    double elapsedSeconds() const;

private:
    using Clock = std::chrono::steady_clock;
    std::int64_t totalFrames_;
    int sampleRate_;
    bool enabled_;
    bool shown_ = false;
    Clock::time_point start_;
    Clock::time_point lastDrawn_;
};

// Peak magnitude and the count of NaN and infinite samples per channel,
// kept while samples pass. A non-finite sample never counts as a peak.
class PeakMeter {
public:
    explicit PeakMeter(unsigned channels) : peaks_(channels, 0.0f), nonFinite_(channels, 0) {}
    void take(const float* const* channels, std::int64_t frames);
    const std::vector<float>& peaks() const { return peaks_; }
    const std::vector<std::uint64_t>& nonFinite() const { return nonFinite_; }
    std::uint64_t nonFiniteTotal() const;

private:
    std::vector<float> peaks_;
    std::vector<std::uint64_t> nonFinite_;
};

// Erases the status line drawn on stderr when one is shown, and marks it gone.
void eraseStatusLine(bool& shown);

// "-4.52" or "-inf" (silence).
std::string decibelsFullScale(float peak);

}  // namespace afx
