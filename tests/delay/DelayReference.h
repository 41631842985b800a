#pragma once
// Independent per-frame models of the single-tap and the four-tap delay,
// written from the behaviour description, step by step, with their own line
// storage, their own rounding and integer helpers and their own position
// arithmetic (64-bit integers reduced modulo 2^32). The tests drive a model
// and an effect through the same calls and compare the outputs bit for bit.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

namespace delay_reference {

// Round a double to the nearest single-precision value.
inline float single(double value) {
    volatile float rounded = static_cast<float>(value);
    return rounded;
}

// Truncate toward zero and saturate to signed 32 bits; NaN gives 0.
inline std::int64_t truncSigned32(double value) {
    if (std::isnan(value)) return 0;
    if (value >= 2147483647.0) return 2147483647;
    if (value <= -2147483648.0) return -2147483648LL;
    return static_cast<std::int64_t>(std::trunc(value));
}

// Truncate toward zero and saturate to unsigned 32 bits; NaN and negatives give 0.
inline std::int64_t truncUnsigned32(double value) {
    if (std::isnan(value) || value <= 0.0) return 0;
    if (value >= 4294967295.0) return 4294967295LL;
    return static_cast<std::int64_t>(std::trunc(value));
}

constexpr std::int64_t kTwoTo32 = 4294967296LL;

// x modulo 2^32, in 0 .. 2^32 - 1.
inline std::int64_t mod32(std::int64_t x) { return ((x % kTwoTo32) + kTwoTo32) % kTwoTo32; }

// A 32-bit pattern read as a signed value.
inline std::int64_t asSigned32(std::int64_t pattern) { return pattern >= 2147483648LL ? pattern - kTwoTo32 : pattern; }

inline float floatFromBits(std::uint32_t bits) {
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

// The eight-entry anti-denormal table: +n, -n, +n, -n, -n, +n, +n, -n with n = 1e-25f.
inline float noiseEntry(int entry) {
    const std::uint32_t plus = 0x15F79688u;
    const std::uint32_t minus = 0x95F79688u;
    const std::uint32_t table[8] = {plus, minus, plus, minus, minus, plus, plus, minus};
    return floatFromBits(table[entry]);
}

// Noise of frame i in a call of `frames` frames: entry (frames - 1 - i) AND 7.
inline float noiseForFrame(int frames, int i) { return noiseEntry((frames - 1 - i) & 7); }

// One float line per channel with L + 1 slots; any position >= L lands on slot L.
struct ModelLine {
    std::int64_t length = 0;  // L
    std::vector<std::vector<float>> samples;

    void allocate(int channels, std::int64_t frames) {
        length = frames > 0 ? frames : 0;
        samples.assign(static_cast<std::size_t>(channels), std::vector<float>(static_cast<std::size_t>(length + 1), 0.0f));
    }
    void zero() {
        for (auto& channel : samples) std::fill(channel.begin(), channel.end(), 0.0f);
    }
    float& at(int channel, std::int64_t position) {
        const std::int64_t index = position < length ? position : length;
        return samples[static_cast<std::size_t>(channel)][static_cast<std::size_t>(index)];
    }
    // Position + 1, then 0 when it has reached L.
    std::int64_t next(std::int64_t position) const {
        std::int64_t moved = mod32(position + 1);
        if (moved >= length) moved = 0;
        return moved;
    }
    // (position - frames) modulo 2^32, plus L when negative as a signed value.
    std::int64_t behind(std::int64_t position, std::int64_t frames) const {
        std::int64_t difference = mod32(position - frames);
        if (asSigned32(difference) < 0) difference = mod32(difference + length);
        return difference;
    }
};

// ---------------------------------------------------------------- single tap

class DelayModel {
public:
    explicit DelayModel(int channels) : channels_(channels) {
        line_.allocate(channels_, truncSigned32(2.0 * rate_));  // twice the rate, no extra frame
        reset();
    }

    void setParameter(int index, float value) {
        if (index == 0) delayTime_ = single(static_cast<double>(value) + static_cast<double>(value));
        if (index == 1) feedback_ = value;
        if (index == 2) mix_ = value;
    }

    void setSampleRate(float rate) {
        if (rate == rate_) return;
        rate_ = rate;
        line_.allocate(channels_, truncSigned32(2.0 * static_cast<double>(rate) + 1.0));  // one extra frame
        reset();
    }

    void suspend() { reset(); }

    void processReplacing(float** in, float** out, int frames) { run(in, out, frames, false); }
    void process(float** in, float** out, int frames) { run(in, out, frames, true); }

    std::int64_t lineLength() const { return line_.length; }

private:
    void reset() {
        readPos_ = 0;
        writePos_ = truncUnsigned32(static_cast<double>(rate_) * static_cast<double>(delayTime_));
        line_.zero();
    }

    void check() {
        const bool differs = appliedDelayTime_ != delayTime_ || appliedFeedback_ != feedback_ || wetGain_ != mix_;
        if (!differs) return;
        appliedDelayTime_ = delayTime_;
        appliedFeedback_ = feedback_;
        wetGain_ = mix_;
        dryGain_ = single(1.0 - static_cast<double>(mix_));
        const std::int64_t d = truncSigned32(static_cast<double>(rate_) * static_cast<double>(appliedDelayTime_));
        readPos_ = line_.behind(writePos_, d);
    }

    // Steps 1 and 2 for channel c.
    void feed(int c, float input, float noise) {
        const double fedBack = static_cast<double>(line_.at(c, readPos_)) * static_cast<double>(appliedFeedback_);
        const double s = fedBack + static_cast<double>(input) + static_cast<double>(noise);
        line_.at(c, writePos_) = single(s);
    }

    void step(float** in, float** out, int c, int i, int frames, bool accumulate) {
        const float input = in[c][i];
        feed(c, input, noiseForFrame(frames, i));
        const double heard = static_cast<double>(line_.at(c, readPos_)) * static_cast<double>(wetGain_);
        if (accumulate)
            out[c][i] = single(heard + static_cast<double>(out[c][i]));
        else
            out[c][i] = single(heard + static_cast<double>(input) * static_cast<double>(dryGain_));
    }

    void advance() {
        writePos_ = line_.next(writePos_);
        readPos_ = line_.next(readPos_);
    }

    void run(float** in, float** out, int frames, bool accumulate) {
        if (channels_ == 16) {
            const std::int64_t savedWrite = writePos_;
            const std::int64_t savedRead = readPos_;
            for (int c = 0; c < 16; ++c) {
                check();
                writePos_ = savedWrite;
                readPos_ = savedRead;
                for (int i = 0; i < frames; ++i) {
                    step(in, out, c, i, frames, accumulate);
                    advance();
                }
            }
            return;
        }
        check();
        for (int i = 0; i < frames; ++i) {
            if (channels_ == 2 && accumulate) {
                // Left line fed; left output hears the right line before its write.
                feed(0, in[0][i], noiseForFrame(frames, i));
                const double crossed = static_cast<double>(line_.at(1, readPos_)) * static_cast<double>(wetGain_);
                out[0][i] = single(crossed + static_cast<double>(out[0][i]));
                feed(1, in[1][i], noiseForFrame(frames, i));
                const double right = static_cast<double>(line_.at(1, readPos_)) * static_cast<double>(wetGain_);
                out[1][i] = single(right + static_cast<double>(out[1][i]));
            } else {
                for (int c = 0; c < channels_; ++c) step(in, out, c, i, frames, accumulate);
            }
            advance();
        }
    }

    int channels_;
    float rate_ = 44100.0f;
    ModelLine line_;
    std::int64_t writePos_ = 0;
    std::int64_t readPos_ = 0;
    float appliedDelayTime_ = -1.0f;
    float delayTime_ = 1.0f;
    float appliedFeedback_ = 0.0f;
    float feedback_ = 0.0f;
    float wetGain_ = 1.0f;
    float dryGain_ = 0.0f;
    float mix_ = 0.5f;
};

// ------------------------------------------------------------------ four taps

class MultitapModel {
public:
    explicit MultitapModel(int channels) : channels_(channels) {
        line_.allocate(channels_, truncSigned32(2.0 * rate_ + 1.0));  // the extra frame here
        reset();
    }

    // Index 3k + 0/1/2 for tap k, 12 for the mix.
    void setParameter(int index, float value) {
        if (index < 0 || index > 12) return;
        if (index == 12) {
            mix_ = value;
            return;
        }
        const int tap = index / 3;
        if (index % 3 == 0) delayTime_[tap] = single(static_cast<double>(value) + static_cast<double>(value));
        if (index % 3 == 1) feedback_[tap] = value;
        if (index % 3 == 2) level_[tap] = value;
    }

    void setSampleRate(float rate) {
        if (rate == rate_) return;
        rate_ = rate;
        line_.allocate(channels_, truncSigned32(2.0 * static_cast<double>(rate)));  // no extra frame here
        reset();
    }

    void suspend() { reset(); }

    void processReplacing(float** in, float** out, int frames) { run(in, out, frames, false); }
    void process(float** in, float** out, int frames) { run(in, out, frames, true); }

    std::int64_t lineLength() const { return line_.length; }

private:
    void reset() {
        for (int k = 0; k < 4; ++k) {
            const std::int64_t d = truncSigned32(static_cast<double>(rate_) * static_cast<double>(delayTime_[k]));
            tapPos_[k] = mod32(line_.length - d);
        }
        writePos_ = 0;
        line_.zero();
    }

    void check() {
        bool differs = false;
        for (int k = 0; k < 4; ++k) {
            if (appliedDelayTime_[k] != delayTime_[k]) differs = true;
            if (appliedFeedback_[k] != feedback_[k]) differs = true;
            if (appliedLevel_[k] != level_[k]) differs = true;
        }
        if (wetGain_ != mix_) differs = true;
        if (!differs) return;
        wetGain_ = mix_;
        dryGain_ = single(1.0 - static_cast<double>(mix_));
        for (int k = 0; k < 4; ++k) {
            appliedDelayTime_[k] = delayTime_[k];
            appliedFeedback_[k] = feedback_[k];
            appliedLevel_[k] = level_[k];
            const std::int64_t d = truncSigned32(static_cast<double>(rate_) * static_cast<double>(appliedDelayTime_[k]));
            tapPos_[k] = line_.behind(writePos_, d);
        }
    }

    double tap(int c, int k) { return static_cast<double>(line_.at(c, tapPos_[k])); }

    void step(float** in, float** out, int c, int i, int frames, bool accumulate) {
        const float input = in[c][i];
        double s = tap(c, 0) * static_cast<double>(appliedFeedback_[0]);
        s = s + static_cast<double>(input);
        s = s + tap(c, 1) * static_cast<double>(appliedFeedback_[1]);
        s = s + tap(c, 2) * static_cast<double>(appliedFeedback_[2]);
        s = s + tap(c, 3) * static_cast<double>(appliedFeedback_[3]);
        s = s + static_cast<double>(noiseForFrame(frames, i));
        line_.at(c, writePos_) = single(s);
        double w = tap(c, 0) * static_cast<double>(appliedLevel_[0]);
        w = w + tap(c, 1) * static_cast<double>(appliedLevel_[1]);
        w = w + tap(c, 2) * static_cast<double>(appliedLevel_[2]);
        w = w + tap(c, 3) * static_cast<double>(appliedLevel_[3]);
        if (accumulate)
            out[c][i] = single(w * static_cast<double>(wetGain_) + static_cast<double>(out[c][i]));
        else
            out[c][i] = single(w * static_cast<double>(wetGain_) + static_cast<double>(input) * static_cast<double>(dryGain_));
    }

    void advance() {
        writePos_ = line_.next(writePos_);
        for (int k = 0; k < 4; ++k) tapPos_[k] = line_.next(tapPos_[k]);
    }

    void run(float** in, float** out, int frames, bool accumulate) {
        if (channels_ == 16) {
            const std::int64_t savedWrite = writePos_;
            std::int64_t savedTaps[4];
            for (int k = 0; k < 4; ++k) savedTaps[k] = tapPos_[k];
            for (int c = 0; c < 16; ++c) {
                check();
                writePos_ = savedWrite;
                for (int k = 0; k < 4; ++k) tapPos_[k] = savedTaps[k];
                for (int i = 0; i < frames; ++i) {
                    step(in, out, c, i, frames, accumulate);
                    advance();
                }
            }
            return;
        }
        check();
        for (int i = 0; i < frames; ++i) {
            for (int c = 0; c < channels_; ++c) step(in, out, c, i, frames, accumulate);
            advance();
        }
    }

    int channels_;
    float rate_ = 44100.0f;
    ModelLine line_;
    std::int64_t writePos_ = 0;
    std::int64_t tapPos_[4] = {};
    float appliedDelayTime_[4] = {-1.0f, -1.0f, -1.0f, -1.0f};
    float delayTime_[4] = {0.5f, 0.8f, 1.2f, 1.5f};
    float appliedFeedback_[4] = {};
    float feedback_[4] = {};
    float appliedLevel_[4] = {};
    float level_[4] = {0.5f, 0.5f, 0.5f, 0.5f};
    float wetGain_ = 1.0f;
    float dryGain_ = 0.0f;
    float mix_ = 0.5f;
};

}  // namespace delay_reference
