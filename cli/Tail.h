#pragma once
// What a render plays after its input ends. Echoes outlive the input: a chain
// with a delay keeps running on silence until its output has stayed below
// -120 dBFS for as long as the longest echo takes to come back (or a
// maximum); `--tail SECONDS` asks for an exact length instead, and 0 keeps
// the input's length.
#include <atomic>
#include <cstdint>
#include <limits>

#include "Chain.h"

namespace afx {

// Below this peak (-120 dBFS) the output counts as silent.
inline constexpr float kQuietPeak = 1.0e-6f;
// Silence this long ends an automatic tail: the longest delay time the delays take.
inline constexpr double kQuietWindowSeconds = 2.0;
// The longest automatic tail (feedback at 100 % never dies away).
inline constexpr double kLongestTailSeconds = 30.0;

struct TailPlan {
    std::int64_t maxFrames = 0;  // silence fed after the input, at most
    bool untilQuiet = false;     // stop early once the output has been quiet for quietFrames
    std::int64_t quietFrames = 0;
};

// requestedSeconds < 0: the default for `chain` (a tail only when it holds a delay).
TailPlan planTail(double requestedSeconds, const Chain& chain, int sampleRate);

// Follows the output on the effects' thread and says where the render ends.
class TailWatch {
public:
    explicit TailWatch(const TailPlan& plan) : plan_(plan) {}

    // On the reading thread, once: the input had `frames` frames.
    void inputEnded(std::int64_t frames) { inputFrames_.store(frames); }
    // On the effects' thread: a processed block starting at frame `start`.
    void take(float* const* planes, unsigned channels, std::int64_t start, int frames);
    bool finished() const { return end_.load() != kOpen; }
    // Frames the output keeps: everything until the watch has finished.
    std::int64_t endFrame() const { return end_.load(); }

private:
    static constexpr std::int64_t kOpen = std::numeric_limits<std::int64_t>::max();
    TailPlan plan_;
    std::atomic<std::int64_t> inputFrames_{kOpen};
    std::atomic<std::int64_t> end_{kOpen};
    std::int64_t lastLoud_ = -1;  // the last frame at or above kQuietPeak after the input's end
};

}  // namespace afx
