#pragma once
// The random inputs and tallies of the display-text checks: a seeded source
// of floats of four kinds (random bit patterns over the whole float range,
// subnormal patterns, bit patterns between 0 and 1, values spread evenly over
// a range), sample rates, and a count of each check's comparisons with its
// first failure. AF_DISPLAY_SEED=<number> in the environment replaces the
// default seed.
#include <gtest/gtest.h>

#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <random>
#include <string>

namespace displaytest {


inline constexpr std::uint64_t kDefaultSeed = 20261122;
inline const char* const kUntouched = "untouched";

inline std::uint64_t testSeed() {
    const char* text = std::getenv("AF_DISPLAY_SEED");
    return text != nullptr && *text != '\0' ? std::strtoull(text, nullptr, 0) : kDefaultSeed;
}

inline std::string describe(float value) {
    std::uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    char text[64];
    std::snprintf(text, sizeof text, "%.9g (0x%08" PRIx32 ")", static_cast<double>(value), bits);
    return text;
}

inline std::string describe(const std::optional<std::string>& text) { return text ? '"' + *text + '"' : "(untouched)"; }

inline bool sameFloat(float a, float b) {
    if (std::isnan(a) && std::isnan(b)) return true;  // which NaN payload survives is not promised
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// Random inputs of the four kinds, in turn.
class Inputs {
public:
    explicit Inputs(std::uint64_t seed) : rng_(seed) {}

    float next(float lo, float hi) {
        switch (turn_++ % 4) {
            case 0: return fromBits(static_cast<std::uint32_t>(rng_()));
            case 1: return fromBits((static_cast<std::uint32_t>(rng_()) & 0x807FFFFFu) | 0x1u);  // subnormal
            case 2: return fromBits(static_cast<std::uint32_t>(rng_() % 0x3F800001u));           // a float in [0, 1]
            default: {
                const double u = std::uniform_real_distribution<double>(0.0, 1.0)(rng_);
                return static_cast<float>(static_cast<double>(lo) + (static_cast<double>(hi) - lo) * u);
            }
        }
    }
    float sampleRate() {
        static constexpr float kRates[] = {8000.0f, 11025.0f, 22050.0f, 44100.0f, 48000.0f,
                                           88200.0f, 96000.0f, 192000.0f, 384000.0f};
        const std::uint64_t pick = rng_() % (std::size(kRates) + 1);
        if (pick < std::size(kRates)) return kRates[pick];
        return static_cast<float>(std::uniform_real_distribution<double>(1000.0, 400000.0)(rng_));
    }
    std::uint64_t word() { return rng_(); }

private:
    static float fromBits(std::uint32_t bits) {
        float value;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }
    std::mt19937_64 rng_;
    unsigned turn_ = 0;
};

// Counts the comparisons of one check and keeps its first failure.
struct Tally {
    explicit Tally(std::string checkName) : name(std::move(checkName)) {}
    std::string name;
    long checked = 0;
    long failed = 0;
    std::string first;

    void record(bool ok, const std::string& what) {
        ++checked;
        if (!ok && failed++ == 0) first = what;
    }
    void report(std::uint64_t seed) const {
        EXPECT_EQ(failed, 0) << name << ": " << failed << " of " << checked << " inputs differ (seed " << seed
                             << "); first: " << first;
    }
};

// The text a tool writes into a buffer that held kUntouched.
template <class Tool>
inline std::string written(Tool tool) {
    char buffer[64] = {};
    std::strcpy(buffer, kUntouched);
    tool(buffer);
    buffer[sizeof buffer - 1] = 0;
    return buffer;
}

inline std::string expectedText(const std::optional<std::string>& text) { return text ? *text : kUntouched; }

}  // namespace displaytest
