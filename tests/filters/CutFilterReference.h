#pragma once
// An independent transcription of the high-pass, low-pass, band-pass and notch
// arithmetic, written from the filter descriptions one step per line, with its
// own rounding helper and its own constants (the float constants spelled as the
// doubles they round to). Tests compare the module's output bit for bit
// against it, so it must not share code with the module.
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

namespace cutref {

// Rounds a double to float: the only narrowing in this file.
inline float f32(double v) { return static_cast<float>(v); }

constexpr double kPiAsFloat = 3.1415927410125732;        // the host's float pi
constexpr double kRootHalf = 0.7071067811865476;         // sqrt(2)/2, a double
constexpr double kSpan099Float = 0.9900000095367432;     // 0.99f
constexpr double kFloorDouble = 0.000416666;             // 0.000416666 as a double
constexpr double kFloorFloat = 0.00041666600736789405;   // 0.000416666f
constexpr double kMaxFractionFloat = 0.9904166460037231; // 0.99041665f
constexpr double kTiny = 1.0000000195414814e-25;         // 1e-25f
constexpr double kQSpanFloat = 9.899999618530273;        // 9.9f
constexpr double kQFloorFloat = 0.10000000149011612;     // 0.1f

// The spelled-out doubles are exactly the float constants they stand for.
static_assert(kSpan099Float == static_cast<double>(0.99f));
static_assert(kFloorFloat == static_cast<double>(0.000416666f));
static_assert(kMaxFractionFloat == static_cast<double>(0.99041665f));
static_assert(kTiny == static_cast<double>(1e-25f));
static_assert(kQSpanFloat == static_cast<double>(9.9f));
static_assert(kQFloorFloat == static_cast<double>(0.1f));
static_assert(kPiAsFloat == static_cast<double>(3.14159265358979323846f));

enum class Kind { Highpass, Lowpass, Bandpass, Notch };

constexpr bool isCascade(Kind k) { return k == Kind::Highpass || k == Kind::Lowpass; }
constexpr int parameterCount(Kind k) { return isCascade(k) ? 1 : 2; }

// ---- frequency and Q mappings ----
inline float forwardHz(float p, float rate) {
    double v = static_cast<double>(p) * static_cast<double>(p);
    v = v * kSpan099Float;
    v = v + kFloorDouble;
    v = v * static_cast<double>(rate);
    v = v * 0.5;
    return f32(v);
}

inline float inverseHz(float hz, float rate) {
    float r = f32(2.0 * static_cast<double>(hz) / static_cast<double>(rate));
    r = f32(static_cast<double>(r) - kFloorFloat);
    float t = f32(static_cast<double>(r) / kSpan099Float);
    if (t < 0.0f) t = 0.0f;
    if (t > 1.0f) t = 1.0f;
    return f32(std::sqrt(static_cast<double>(t)));
}

inline float maxHz(float rate) { return f32(static_cast<double>(rate) * 0.5 * kMaxFractionFloat); }
inline float minHz(float rate) { return f32(static_cast<double>(rate) * 0.5 * kFloorFloat); }

inline float shownQ(float q) { return f32(static_cast<double>(q) * static_cast<double>(q) * 9.9 + 0.1); }
inline float qParameter(float shown) {
    const float fraction = f32((static_cast<double>(shown) - kQFloorFloat) / kQSpanFloat);
    return f32(std::sqrt(static_cast<double>(fraction)));
}

// ---- coefficients ----
struct Coefficients {
    // two-section filters
    float gain = 0.0f, feedback1 = 0.0f, feedback2 = 0.0f;
    // one-section filters
    float b0 = 0.0f, a1 = 0.0f, a2 = 0.0f;
};

inline Coefficients cascadeCoefficients(Kind kind, float p) {
    Coefficients c;
    const double pp = static_cast<double>(p) * static_cast<double>(p);
    const float w = f32((pp * kSpan099Float + kFloorDouble) * kPiAsFloat);
    const float sinW = f32(std::sin(static_cast<double>(w)));
    const float a = f32(static_cast<double>(sinW) * kRootHalf);
    c.feedback2 = f32((1.0 - a) / (1.0 + a));
    const double k = 1.0 + static_cast<double>(c.feedback2);
    const float cosW = f32(std::cos(static_cast<double>(w)));
    c.feedback1 = f32(static_cast<double>(cosW) * k);
    if (kind == Kind::Highpass) c.gain = f32((k + c.feedback1) * 0.25);
    else c.gain = f32((k - c.feedback1) * 0.25);
    return c;
}

inline Coefficients sectionCoefficients(Kind kind, float center, float q) {
    Coefficients c;
    const double cc = static_cast<double>(center) * static_cast<double>(center);
    const float w = f32((cc * kSpan099Float + kFloorFloat) * kPiAsFloat);
    const double bigQ = static_cast<double>(q) * static_cast<double>(q) * kQSpanFloat + kQFloorFloat;
    const float sinW = f32(std::sin(static_cast<double>(w)));
    const float alpha = f32(static_cast<double>(sinW) / (2.0 * bigQ));
    if (kind == Kind::Bandpass) c.b0 = f32(static_cast<double>(alpha) / (1.0 + alpha));
    else c.b0 = f32(1.0 / (1.0 + static_cast<double>(alpha)));
    const float cosW = f32(std::cos(static_cast<double>(w)));
    const float minus2Cos = f32(static_cast<double>(cosW) * -2.0);
    c.a1 = f32(static_cast<double>(minus2Cos) / (1.0 + alpha));
    c.a2 = f32((1.0 - alpha) / (1.0 + alpha));
    return c;
}

// ---- per-sample recursions; memory holds x1 x2 s1 s2 y1 y2 (or x1 x2 y1 y2) ----
using Memory = std::array<float, 6>;

inline double offsetFor(Kind kind, int frames, int n) {
    const int left = frames - 1 - n;
    if (kind == Kind::Highpass) return left % 2 == 0 ? kTiny : 0.0;
    if (kind == Kind::Bandpass) return left % 4 == 0 ? kTiny : 0.0;
    return kTiny;
}

inline float cascadeSample(Kind kind, const Coefficients& c, Memory& m, float x, double d) {
    float& x1 = m[0]; float& x2 = m[1]; float& s1 = m[2]; float& s2 = m[3]; float& y1 = m[4]; float& y2 = m[5];
    double s;
    if (kind == Kind::Highpass) {
        s = static_cast<double>(x) - 2.0 * x1;
        s = s + x2;
    } else {
        s = 2.0 * x1 + static_cast<double>(x);
        s = s + x2;
    }
    s = s * c.gain;
    s = s + static_cast<double>(c.feedback1) * s1;
    s = s - static_cast<double>(c.feedback2) * s2;
    s = s + d;
    const float sf = f32(s);
    double y;
    if (kind == Kind::Highpass) {
        y = static_cast<double>(sf) - 2.0 * s1;
        y = y + s2;
    } else {
        y = 2.0 * s1 + static_cast<double>(sf);
        y = y + s2;
    }
    y = y * c.gain;
    y = y + static_cast<double>(c.feedback1) * y1;
    y = y - static_cast<double>(c.feedback2) * y2;
    const float yf = f32(y);
    y2 = y1; y1 = yf; s2 = s1; s1 = sf; x2 = x1; x1 = x;
    return yf;
}

inline float sectionSample(Kind kind, const Coefficients& c, Memory& m, float x, double d) {
    float& x1 = m[0]; float& x2 = m[1]; float& y1 = m[2]; float& y2 = m[3];
    double y;
    if (kind == Kind::Bandpass) {
        y = static_cast<double>(x) - x2;
        y = y * c.b0;
        y = y - static_cast<double>(c.a1) * y1;
        y = y - static_cast<double>(c.a2) * y2;
        y = y + d;
    } else {
        y = static_cast<double>(x1) - y1;
        y = y * c.a1;
        y = y + (static_cast<double>(x) + x2) * c.b0;
        y = y - static_cast<double>(c.a2) * y2;
        y = y + d;
    }
    const float yf = f32(y);
    y2 = y1; y1 = yf; x2 = x1; x1 = x;
    return yf;
}

// ---- a whole effect instance: parameters, lazy refresh, memory ----
struct Model {
    Kind kind;
    unsigned channels;
    float rate = 44100.0f;
    float params[2] = {0.25f, 0.5f};
    float applied[2] = {-1.0f, -1.0f};
    Coefficients coefficients{};  // zero until first computed
    std::vector<Memory> memory;

    Model(Kind k, unsigned c) : kind(k), channels(c), memory(c, Memory{}) {}

    void setParameter(int index, float value) {
        if (index >= 0 && index < parameterCount(kind)) params[index] = value;
    }
    void setProgram() {
        setParameter(0, 0.25f);
        setParameter(1, 0.5f);
    }
    void suspend() {
        applied[0] = -1.0f;
        applied[1] = -1.0f;
        for (Memory& m : memory) m = Memory{};
    }
    void setSampleRate(float r) {
        if (r == rate) return;
        rate = r;
        suspend();
    }
    void refresh() {
        bool changed = params[0] != applied[0];
        if (!isCascade(kind) && !changed) changed = params[1] != applied[1];
        if (!changed) return;
        applied[0] = params[0];
        applied[1] = params[1];
        if (isCascade(kind)) coefficients = cascadeCoefficients(kind, params[0]);
        else coefficients = sectionCoefficients(kind, params[0], params[1]);
    }
    // Every channel is independent, so a channel-by-channel walk gives what the
    // effect's own order gives; the refresh runs once per channel pass for 16.
    void run(float** in, float** out, int frames, bool accumulate) {
        if (channels != 16) refresh();
        for (unsigned c = 0; c < channels; ++c) {
            if (channels == 16) refresh();
            for (int n = 0; n < frames; ++n) {
                const float x = in[c][n];
                const double d = offsetFor(kind, frames, n);
                const float y = isCascade(kind) ? cascadeSample(kind, coefficients, memory[c], x, d)
                                                : sectionSample(kind, coefficients, memory[c], x, d);
                out[c][n] = accumulate ? f32(static_cast<double>(out[c][n]) + static_cast<double>(y)) : y;
            }
        }
    }
    int memorySize() const { return isCascade(kind) ? 6 : 4; }
};

}  // namespace cutref
