#pragma once
// An independent transcription of the number texts and of every family's
// display mapping, written from their definitions with the C library's double
// functions. Nothing here calls the module: the randomised display test
// compares the module's answers with these.
//
// Number texts: at most eight characters, the point and a minus sign counting
// as one each; the integer digits right to left (the last always, more while
// the remaining integer part is at least 1 and the count is under eight); the
// fraction fmod(v, 1) * 10^remaining supplies the rest, right to left, each
// digit the truncation of fmod(m, 10), '0' where m is not above 0 (and for a
// NaN). A value too large to show leaves the caller's text as it was.
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>

#include "tests/filters/CutFilterReference.h"

namespace displayref {

inline constexpr float kSilenceDb = -999.0f;

inline char digitFrom(double x) {
    const double r = std::fmod(x, 10.0);
    if (std::isnan(r)) return '0';
    return static_cast<char>('0' + static_cast<int>(r));  // r is in [0, 10) here
}

// The visible text for a limit of maxLen characters; nullopt: text untouched.
inline std::optional<std::string> float2string(float value, int maxLen = 8) {
    double v = value;
    const bool negative = v < 0.0;
    int used = 0;
    if (negative) {
        v = -v;
        used = 1;
    }
    if (negative ? v > 9999999.0 : v > 99999999.0) return std::nullopt;
    std::string integer;
    double whole = std::floor(v);
    used += 2;  // the point and the last integer digit
    integer.insert(integer.begin(), digitFrom(whole));
    for (whole /= 10.0; whole >= 1.0 && used < 8; whole /= 10.0, ++used)
        integer.insert(integer.begin(), digitFrom(whole));
    std::string text = (negative ? "-" : "") + integer + ".";
    if (used < 8) {
        const int left = 8 - used;
        std::string fraction(static_cast<std::size_t>(left), '0');
        double m = std::fmod(v, 1.0) * std::pow(10.0, left);
        for (int i = left - 1; i >= 0; --i, m /= 10.0) fraction[static_cast<std::size_t>(i)] = m > 0.0 ? digitFrom(m) : '0';
        text += fraction;
    }
    return text.substr(0, static_cast<std::size_t>(maxLen));
}

// 20 log10(value): the logarithm in double, rounded to float, times 20,
// rounded to float again; "-oo" at or below zero.
inline std::optional<std::string> dB2string(float value, int maxLen = 8) {
    if (value <= 0.0f) return std::string("-oo").substr(0, static_cast<std::size_t>(maxLen));
    const float logarithm = static_cast<float>(std::log10(static_cast<double>(value)));
    return float2string(static_cast<float>(20.0 * static_cast<double>(logarithm)), maxLen);
}

// The frequency whose period is `samples` frames (a float quotient).
inline std::optional<std::string> Hz2string(float samples, float sampleRate, int maxLen = 8) {
    if (samples == 0.0f) return float2string(0.0f, maxLen);
    return float2string(sampleRate / samples, maxLen);
}

// `samples` frames in milliseconds, in double, rounded to float.
inline std::optional<std::string> ms2string(float samples, float sampleRate, int maxLen = 8) {
    return float2string(static_cast<float>(static_cast<double>(samples) * 1000.0 / static_cast<double>(sampleRate)),
                        maxLen);
}

// One parameter's mapping: what getParameterDisplay shows for a stored
// normalised value, and the two conversions of the property interface.
struct Mapping {
    std::optional<std::string> (*display)(float p, float sampleRate);
    float (*toDisplay)(float p, float sampleRate);
    float (*toParameter)(float d, float sampleRate);
};

inline float f(double x) { return static_cast<float>(x); }

// ---- level: Volume (stores 2p), Channel Volume, Multitap Delay levels
inline const Mapping kVolumeLevel{
    [](float p, float) { return dB2string(p + p); },
    [](float p, float) {
        if (p == 0.0f) return kSilenceDb;
        return f(20.0 * static_cast<double>(f(std::log10(static_cast<double>(p + p)))));
    },
    [](float d, float) {
        if (d == kSilenceDb) return 0.0f;
        return f(std::pow(10.0, static_cast<double>(f(static_cast<double>(d) / 20.0)))) * 0.5f;
    }};

inline const Mapping kChannelLevel{
    [](float p, float) { return dB2string(2.0f * p); },
    [](float p, float) { return p == 0.0f ? kSilenceDb : f(20.0 * std::log10(2.0 * static_cast<double>(p))); },
    [](float d, float) { return d == kSilenceDb ? 0.0f : f(0.5 * std::pow(10.0, static_cast<double>(d) / 20.0)); }};

inline const Mapping kTapLevel{
    [](float p, float) { return dB2string(p); },
    [](float p, float) {
        if (p == 0.0f) return kSilenceDb;
        return f(20.0 * static_cast<double>(f(std::log10(static_cast<double>(p)))));
    },
    [](float d, float) {
        if (d == kSilenceDb) return 0.0f;
        return f(std::pow(10.0, static_cast<double>(f(static_cast<double>(d) / 20.0))));
    }};

// ---- plain numbers
inline const Mapping kBalance{
    [](float p, float) { return float2string(f(static_cast<double>(p) * 200.0 - 100.0)); },
    [](float p, float) { return f(static_cast<double>(p) * 200.0 - 100.0); },
    [](float d, float) { return f((static_cast<double>(d) + 100.0) / 200.0); }};

inline const Mapping kMuteSwitch{[](float p, float) { return float2string(p); }, [](float p, float) { return p; },
                                 [](float d, float) { return d; }};

inline const Mapping kBoostDb{
    [](float p, float) { return float2string(f((static_cast<double>(p) - 0.5) * 48.0)); },
    [](float p, float) { return f((static_cast<double>(p) - 0.5) * 48.0); },
    [](float d, float) { return f(static_cast<double>(d) / 48.0 + 0.5); }};

inline const Mapping kSeconds{[](float p, float) { return float2string(p + p); },
                              [](float p, float) { return f(static_cast<double>(p) + static_cast<double>(p)); },
                              [](float d, float) { return f(static_cast<double>(d) * 0.5); }};

inline const Mapping kPercent{[](float p, float) { return float2string(f(static_cast<double>(p) * 100.0)); },
                              [](float p, float) { return f(static_cast<double>(p) * 100.0); },
                              [](float d, float) { return f(static_cast<double>(d) / 100.0); }};

// ---- filters: the cutoff and Q mappings of the filters' own transcription;
// the Parametric EQ's constants are its doubles as written.
inline constexpr double kFloorDouble = 0.000416666;

inline const Mapping kCutoff{[](float p, float rate) { return float2string(cutref::forwardHz(p, rate)); },
                             cutref::forwardHz, cutref::inverseHz};

inline const Mapping kSectionQ{[](float q, float) { return float2string(cutref::shownQ(q)); },
                               [](float q, float) { return cutref::shownQ(q); },
                               [](float d, float) { return cutref::qParameter(d); }};

inline float eqCenterHz(float p, float rate) {
    const double pd = p;
    return f(static_cast<double>(rate) * (0.99 * (pd * pd) + kFloorDouble) * 0.5);
}

inline const Mapping kEqCenter{[](float p, float rate) { return float2string(eqCenterHz(p, rate)); }, eqCenterHz,
                               [](float v, float rate) {
                                   double t = (2.0 * static_cast<double>(v) / static_cast<double>(rate) - kFloorDouble) / 0.99;
                                   if (t < 0.0) t = 0.0;
                                   if (t > 1.0) t = 1.0;
                                   return f(std::sqrt(t));
                               }};

inline const Mapping kEqWidth{
    [](float p, float) {
        const double pd = p;
        return float2string(f(19.9 * (pd * pd) + 0.1));
    },
    [](float p, float) { return f(19.9 * static_cast<double>(p) + 0.1); },
    [](float d, float) { return f((static_cast<double>(d) - 0.1) / 19.9); }};

}  // namespace displayref
