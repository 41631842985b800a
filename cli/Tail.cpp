#include "Tail.h"

#include <cmath>

namespace afx {

TailPlan planTail(double requestedSeconds, const Chain& chain, int sampleRate) {
    TailPlan plan;
    if (requestedSeconds >= 0.0) {
        plan.maxFrames = std::llround(requestedSeconds * sampleRate);
        return plan;
    }
    bool echoes = false;
    for (std::size_t link = 0; link < chain.size(); ++link) {
        if (chain.identifier(link).find("Delay") != std::string::npos) echoes = true;
    }
    if (!echoes) return plan;
    plan.maxFrames = std::llround(kLongestTailSeconds * sampleRate);
    plan.untilQuiet = true;
    plan.quietFrames = std::llround(kQuietWindowSeconds * sampleRate);
    return plan;
}

void TailWatch::take(float* const* planes, unsigned channels, std::int64_t start, int frames) {
    if (!plan_.untilQuiet || finished()) return;
    const std::int64_t inputFrames = inputFrames_.load();
    if (inputFrames == kOpen || start + frames <= inputFrames) return;
    if (lastLoud_ < inputFrames - 1) lastLoud_ = inputFrames - 1;
    for (int i = 0; i < frames; ++i) {
        const std::int64_t frame = start + i;
        if (frame < inputFrames) continue;
        for (unsigned c = 0; c < channels; ++c) {
            if (!(std::fabs(planes[c][i]) < kQuietPeak)) lastLoud_ = frame;
        }
        if (frame - lastLoud_ >= plan_.quietFrames) {
            end_.store(frame + 1);
            return;
        }
    }
}

}  // namespace afx
