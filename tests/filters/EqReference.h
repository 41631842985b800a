#pragma once
// An independent transcription of the equalisers' coefficient steps and
// per-sample recursions (Parametric EQ, Bass, Treble), one line per step, with
// its own rounding helper, and a reference effect that follows the families'
// life cycle (stale markers, refresh per call, suspend, sample-rate change).
// Nothing here calls the code under test.
#include <cmath>
#include <cstdint>
#include <vector>

#include "MF/Constants.h"

namespace eqref {

// Rounds to single precision: the only narrowing in this file.
inline float single(double value) { return static_cast<float>(value); }
inline double wide(float value) { return value; }

constexpr float kBias = 1e-25f;  // the anti-denormal offset, a float

// ---- Parametric EQ ----------------------------------------------------------

struct Peaking {
    float c0 = 0.0f, c1 = 0.0f, c2 = 0.0f, c3 = 0.0f;
};

inline Peaking peakingCoefficients(float center, float q, float boost) {
    const double centerSquared = wide(center) * wide(center);
    const float w = single((0.99 * centerSquared + 0.000416666) * wide(MF::kPi));
    const float s = single(std::sin(wide(w)));
    const double qSquared = wide(q) * wide(q);
    const double Q = 19.9 * qSquared + 0.1;
    const float alpha = single(wide(s) * 2.0 * Q);
    const double G = (wide(boost) - 0.5) * 48.0;
    const float A = single(std::pow(10.0, G * 0.025));
    const float n = single(1.0 / (1.0 + wide(alpha) / wide(A)));
    const float cosW = single(std::cos(wide(w)));
    Peaking c;
    c.c0 = single((1.0 + wide(alpha) * wide(A)) * wide(n));
    c.c1 = single(-2.0 * wide(cosW) * wide(n));
    c.c2 = single((1.0 - wide(alpha) * wide(A)) * wide(n));
    c.c3 = single(-(1.0 - wide(alpha) / wide(A)) * wide(n));
    return c;
}

// ---- Bass and Treble --------------------------------------------------------

struct Shelf {
    float c0 = 0.0f, c1 = 0.0f, c2 = 0.0f, c3 = 0.0f, c4 = 0.0f;
};

struct ShelfAngles {
    float w, beta, s, k;
};

inline ShelfAngles shelfAngles(double K, double C, float fs) {
    const float w = single(wide(MF::kPi) * K / wide(fs));
    const double wSquared = wide(w) * wide(w);
    const double wLessOne = wide(w) - 1.0;
    const float beta = single(std::sqrt((wSquared + 1.0) * C - wLessOne * wLessOne));
    const float s = single(std::sin(wide(w)));
    const float k = single(std::cos(wide(w)));
    return {w, beta, s, k};
}

inline float shelfAmplitude(float boost) { return single(std::pow(10.0, ((wide(boost) - 0.5) * 48.0) * 0.025)); }

// The low-shelf table, written out as it stands.
inline Shelf bassCoefficients(float fs, float boost) {
    const ShelfAngles g = shelfAngles(400.0, 1.5, fs);
    const double A = shelfAmplitude(boost), k = g.k, b = g.beta, s = g.s;
    const float a0 = single((A + 1) + (A - 1) * k + b * s);
    const double d = a0;
    Shelf c;
    c.c0 = single(A * ((A + 1) - (A - 1) * k + b * s) / d);
    c.c1 = single(2 * A * ((A - 1) - (A + 1) * k) / d);
    c.c2 = single(A * ((A + 1) - (A - 1) * k - b * s) / d);
    c.c3 = single(2 * ((A - 1) + (A + 1) * k) / d);
    c.c4 = single(-((A + 1) + (A - 1) * k - b * s) / d);
    return c;
}

// The high-shelf table, written out as it stands.
inline Shelf trebleCoefficients(float fs, float boost) {
    const ShelfAngles g = shelfAngles(8000.0, 5.0, fs);
    const double A = shelfAmplitude(boost), k = g.k, b = g.beta, s = g.s;
    const float a0 = single((A + 1) - (A - 1) * k + b * s);
    const double d = a0;
    Shelf c;
    c.c0 = single(A * ((A + 1) + (A - 1) * k + b * s) / d);
    c.c1 = single(-2 * A * ((A - 1) + (A + 1) * k) / d);
    c.c2 = single(A * ((A + 1) + (A - 1) * k - b * s) / d);
    c.c3 = single(-2 * ((A - 1) - (A + 1) * k) / d);
    c.c4 = single(-((A + 1) - (A - 1) * k - b * s) / d);
    return c;
}

// ---- Recursions -------------------------------------------------------------

struct Memory {
    float x1 = 0.0f, x2 = 0.0f, y1 = 0.0f, y2 = 0.0f;
};

inline float peakingSample(const Peaking& c, Memory& m, float x) {
    const double feedback = wide(c.c1) * (wide(m.x1) - wide(m.y1));
    const double withInput = feedback + wide(c.c0) * wide(x);
    const double withX2 = withInput + wide(c.c2) * wide(m.x2);
    const double withY2 = withX2 + wide(c.c3) * wide(m.y2);
    const float y = single(withY2 + wide(kBias));
    m = Memory{x, m.x1, y, m.y1};
    return y;
}

inline float shelfSample(const Shelf& c, Memory& m, float x) {
    const double first = wide(c.c1) * wide(m.x1) + wide(c.c0) * wide(x);
    const double withY1 = first + wide(c.c3) * wide(m.y1);
    const double withX2 = withY1 + wide(c.c2) * wide(m.x2);
    const double withY2 = withX2 + wide(c.c4) * wide(m.y2);
    const float y = single(withY2 + wide(kBias));
    m = Memory{x, m.x1, y, m.y1};
    return y;
}

// ---- The reference effect ---------------------------------------------------

enum class Family { parametricEq, bass, treble };

class Model {
public:
    Model(Family family, unsigned channels) : family_(family), memory_(channels) {}

    void setParameter(int index, float value) {
        if (index >= 0 && index < parameterCount()) parameters_[index] = value;
    }
    // A program selection: defaults back, history kept.
    void selectProgram() {
        if (family_ == Family::parametricEq) {
            parameters_[0] = 0.25f;
            parameters_[1] = 0.5f;
            parameters_[2] = 0.5f;
        } else {
            parameters_[0] = 0.5f;
        }
    }
    void setSampleRate(float rate) {
        if (rate == fs_) return;
        fs_ = rate;
        forget();
    }
    void suspend() { forget(); }

    // One call: the refresh test (even for no frames), then every sample.
    void run(const std::vector<std::vector<float>>& in, std::vector<std::vector<float>>& out, int offset, int frames,
             bool accumulate) {
        refresh();
        for (std::size_t ch = 0; ch < memory_.size(); ++ch) {
            for (int i = 0; i < frames; ++i) {
                const float x = in[ch][offset + i];
                const float y = family_ == Family::parametricEq ? peakingSample(peaking_, memory_[ch], x)
                                                                : shelfSample(shelf_, memory_[ch], x);
                float& target = out[ch][offset + i];
                target = accumulate ? single(wide(target) + wide(y)) : y;
            }
        }
    }

    int parameterCount() const { return family_ == Family::parametricEq ? 3 : 1; }

private:
    void forget() {
        if (family_ == Family::parametricEq) {
            last_[0] = -1.0f;
            last_[1] = -1.0f;
            last_[2] = 0.0f;
        } else {
            last_[0] = -1.0f;
        }
        for (Memory& m : memory_) m = Memory{};
    }
    void refresh() {
        bool changed = false;
        for (int i = 0; i < parameterCount(); ++i) changed = changed || !(parameters_[i] == last_[i]);
        if (!changed) return;
        for (int i = 0; i < parameterCount(); ++i) last_[i] = parameters_[i];
        if (family_ == Family::parametricEq) peaking_ = peakingCoefficients(parameters_[0], parameters_[1], parameters_[2]);
        else if (family_ == Family::bass) shelf_ = bassCoefficients(fs_, parameters_[0]);
        else shelf_ = trebleCoefficients(fs_, parameters_[0]);
    }

    Family family_;
    float fs_ = 44100.0f;
    float parameters_[3] = {1.0f, 0.5f, 0.5f};  // Parametric EQ: centre, width, boost
    float last_[3] = {-1.0f, -1.0f, 0.0f};
    Peaking peaking_{};
    Shelf shelf_{};
    std::vector<Memory> memory_;

public:
    // The shelves start with boost 0.5 and a stale marker of -1.
    static Model make(Family family, unsigned channels) {
        Model model(family, channels);
        if (family != Family::parametricEq) {
            model.parameters_[0] = 0.5f;
            model.last_[0] = -1.0f;
        }
        return model;
    }
};

}  // namespace eqref
