#include "Progress.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace afx {
namespace {

constexpr double kQuietSeconds = 1.0;    // no bar for renders shorter than this
constexpr double kRedrawSeconds = 0.1;   // at most ten redraws a second
constexpr int kBarWidth = 30;

}  // namespace

Progress::Progress(std::int64_t totalFrames, int sampleRate, bool enabled)
    : totalFrames_(totalFrames), sampleRate_(sampleRate), enabled_(enabled), start_(Clock::now()),
      lastDrawn_(start_) {}

double Progress::elapsedSeconds() const {
    return std::chrono::duration<double>(Clock::now() - start_).count();
}

void Progress::update(std::int64_t framesDone) {
    if (!enabled_) return;
    const Clock::time_point now = Clock::now();
    const double elapsed = std::chrono::duration<double>(now - start_).count();
    if (elapsed < kQuietSeconds || std::chrono::duration<double>(now - lastDrawn_).count() < kRedrawSeconds) return;
    lastDrawn_ = now;
    const double fraction =
        totalFrames_ > 0 ? std::min(1.0, static_cast<double>(framesDone) / static_cast<double>(totalFrames_)) : 0.0;
    const int filled = static_cast<int>(fraction * kBarWidth);
    char bar[kBarWidth + 1];
    for (int i = 0; i < kBarWidth; ++i) bar[i] = i < filled ? '#' : '.';
    bar[kBarWidth] = '\0';
    const double audioSeconds = static_cast<double>(framesDone) / sampleRate_;
    const int minutes = static_cast<int>(elapsed) / 60;
    const double seconds = elapsed - minutes * 60.0;
    // What is left, at the pace so far; unknown for a stream of unknown length.
    char left[32] = "?";
    if (fraction > 0.0 && totalFrames_ > 0) {
        const double remaining = elapsed * (1.0 - fraction) / fraction;
        const int leftMinutes = static_cast<int>(remaining) / 60;
        std::snprintf(left, sizeof left, "%d:%04.1f", leftMinutes, remaining - leftMinutes * 60.0);
    }
    std::fprintf(stderr, "\r[%s] %5.1f%%  %d:%04.1f elapsed, %s left  %.1fx real time\033[K", bar, fraction * 100.0,
                 minutes, seconds, left, elapsed > 0.0 ? audioSeconds / elapsed : 0.0);
    std::fflush(stderr);
    shown_ = true;
}

void eraseStatusLine(bool& shown) {
    if (!shown) return;
    std::fprintf(stderr, "\r\033[K");
    std::fflush(stderr);
    shown = false;
}

void Progress::clear() { eraseStatusLine(shown_); }

namespace {

// A float whose magnitude bits lie above the largest finite one is NaN or infinite.
constexpr std::uint32_t kLargestFiniteBits = 0x7F7FFFFF;
constexpr std::uint32_t kMagnitudeBits = 0x7FFFFFFF;

// The largest finite magnitude of `samples` and `peak`, and the count of
// non-finite samples added to `nonFinite`. MAXPS keeps its second operand
// unless the first is greater, which is exactly "take the magnitude if it is
// greater" (a NaN never is): four lanes keep their own peaks and the largest
// of them is the largest of all, in any order. An infinity is counted and
// then left out, so a peak is always a finite level.
float peakOf(const float* samples, std::int64_t frames, float peak, std::uint64_t& nonFinite) {
    std::int64_t i = 0;
#if defined(__SSE2__)
    if (frames >= 8) {
        const __m128i magnitudeMask = _mm_set1_epi32(static_cast<int>(kMagnitudeBits));
        const __m128i largestFinite = _mm_set1_epi32(static_cast<int>(kLargestFiniteBits));
        __m128 lanesA = _mm_set1_ps(peak);
        __m128 lanesB = lanesA;
        __m128i countA = _mm_setzero_si128();
        __m128i countB = _mm_setzero_si128();
        for (; i + 8 <= frames; i += 8) {
            const __m128i bitsA = _mm_and_si128(_mm_castps_si128(_mm_loadu_ps(samples + i)), magnitudeMask);
            const __m128i bitsB = _mm_and_si128(_mm_castps_si128(_mm_loadu_ps(samples + i + 4)), magnitudeMask);
            const __m128i wrongA = _mm_cmpgt_epi32(bitsA, largestFinite);
            const __m128i wrongB = _mm_cmpgt_epi32(bitsB, largestFinite);
            countA = _mm_sub_epi32(countA, wrongA);
            countB = _mm_sub_epi32(countB, wrongB);
            lanesA = _mm_max_ps(_mm_castsi128_ps(_mm_andnot_si128(wrongA, bitsA)), lanesA);
            lanesB = _mm_max_ps(_mm_castsi128_ps(_mm_andnot_si128(wrongB, bitsB)), lanesB);
        }
        alignas(16) float lanes[8];
        _mm_store_ps(lanes, lanesA);
        _mm_store_ps(lanes + 4, lanesB);
        for (float lane : lanes)
            if (lane > peak) peak = lane;
        alignas(16) std::uint32_t counts[8];
        _mm_store_si128(reinterpret_cast<__m128i*>(counts), countA);
        _mm_store_si128(reinterpret_cast<__m128i*>(counts + 4), countB);
        for (std::uint32_t count : counts) nonFinite += count;
    }
#endif
    for (; i < frames; ++i) {
        if (!std::isfinite(samples[i])) {
            ++nonFinite;
            continue;
        }
        const float magnitude = std::fabs(samples[i]);
        if (magnitude > peak) peak = magnitude;
    }
    return peak;
}

}  // namespace

void PeakMeter::take(const float* const* channels, std::int64_t frames) {
    for (std::size_t c = 0; c < peaks_.size(); ++c) peaks_[c] = peakOf(channels[c], frames, peaks_[c], nonFinite_[c]);
}

std::uint64_t PeakMeter::nonFiniteTotal() const {
    std::uint64_t total = 0;
    for (std::uint64_t count : nonFinite_) total += count;
    return total;
}

std::string decibelsFullScale(float peak) {
    if (!(peak > 0.0f)) return "-inf";
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", 20.0 * std::log10(static_cast<double>(peak)));
    return text;
}

}  // namespace afx
