// The base effect's text tools. Numbers are written with at most eight
// characters and no exponent; digits beyond the eighth are dropped, not rounded.
#include "Math.h"
#include <cstdint>
#include <cstring>

#include "AudioEffect.h"
#include "Numeric.h"

char* vst_strncpy(char* dst, const char* src, VstInt32 maxLen) {
    if (dst == nullptr || src == nullptr || maxLen < 0) return dst;
    std::strncpy(dst, src, static_cast<std::size_t>(maxLen));
    dst[maxLen] = 0;  // the terminating zero is forced at the limit
    return dst;
}

// The append is bounded by the room left before index maxLen, so nothing is
// written past dst[maxLen]: the visible text is the same as appending up to
// maxLen characters and then cutting at the limit.
char* vst_strncat(char* dst, const char* src, VstInt32 maxLen) {
    if (dst == nullptr || src == nullptr || maxLen < 0) return dst;
    const std::size_t limit = static_cast<std::size_t>(maxLen);
    const void* end = std::memchr(dst, 0, limit);
    if (end != nullptr) {
        const std::size_t length = static_cast<std::size_t>(static_cast<const char*>(end) - dst);
        std::strncat(dst, src, limit - length);
    }
    dst[maxLen] = 0;
    return dst;
}

namespace {

constexpr int kSignificantCharacters = 8;
constexpr double kLargestPositive = 99999999.0;
constexpr double kLargestNegativeMagnitude = 9999999.0;

// One decimal digit: the truncation of fmod(x, 10). A NaN gives '0', which is
// what converting NaN to an integer and keeping the low byte gives on x86.
char digitOf(double x) {
    const double remainder = AF::math::fmod(x, 10.0);
    if (std::isnan(remainder)) return '0';
    return static_cast<char>('0' + AF::truncateToInt32(remainder));
}

}  // namespace

void AudioEffect::float2string(float value, char* text, VstInt32 maxLen) {
    double magnitude = value;
    int counted = 0;
    const bool negative = magnitude < 0;
    if (negative) {
        magnitude = -magnitude;
        ++counted;  // the sign takes one of the eight characters
    }
    if ((negative && magnitude > kLargestNegativeMagnitude) || (!negative && magnitude > kLargestPositive)) {
        char scratch[8];
        vst_strncpy(scratch, "Huge!", 7);  // the caller's text keeps its earlier contents
        (void)scratch;
        return;
    }

    // Integer part, right to left, behind the point.
    char integerText[16];
    char* cursor = integerText + sizeof(integerText);
    *--cursor = 0;
    *--cursor = '.';
    ++counted;
    double integerPart = AF::math::floor(magnitude);
    *--cursor = digitOf(integerPart);  // the last integer digit is always written
    ++counted;
    integerPart /= 10.0;
    while (integerPart >= 1.0 && counted < kSignificantCharacters) {
        *--cursor = digitOf(integerPart);
        ++counted;
        integerPart /= 10.0;
    }
    if (negative) *--cursor = '-';
    vst_strncpy(text, cursor, maxLen);

    // The fraction supplies the remaining digits, right to left.
    if (counted < kSignificantCharacters) {
        const int remaining = kSignificantCharacters - counted;
        char fractionText[kSignificantCharacters + 1];
        fractionText[remaining] = 0;
        double mantissa = AF::math::fmod(magnitude, 1.0) * AF::math::pow(10.0, remaining);
        for (int i = remaining - 1; i >= 0; --i) {
            fractionText[i] = mantissa > 0 ? digitOf(mantissa) : '0';
            mantissa /= 10.0;
        }
        vst_strncat(text, fractionText, maxLen);
    }
}

void AudioEffect::int2string(VstInt32 value, char* text, VstInt32 maxLen) {
    if (value >= 100000000) {
        vst_strncpy(text, "Huge!", maxLen);
        return;
    }
    // Widened so that negating the most negative value is defined.
    std::int64_t remaining = value;
    if (remaining < 0) {
        vst_strncpy(text, "-", maxLen);
        remaining = -remaining;
    } else {
        vst_strncpy(text, "", maxLen);
    }
    bool started = false;
    for (std::int64_t divisor = 100000000; divisor >= 1; divisor /= 10) {
        const std::int64_t quotient = remaining / divisor;
        remaining -= quotient * divisor;
        if (quotient != 0) started = true;
        if (started) {
            // A magnitude of 1e9 or more gives a first "digit" past '9', as the
            // character arithmetic goes.
            const char digit[2] = {static_cast<char>('0' + quotient), 0};
            vst_strncat(text, digit, maxLen);
        }
    }
}

void AudioEffect::dB2string(float value, char* text, VstInt32 maxLen) {
    if (value <= 0) {
        vst_strncpy(text, "-oo", maxLen);
        return;
    }
    const float logarithm = AF::toFloat(AF::math::log10(value));
    float2string(AF::toFloat(20.0 * logarithm), text, maxLen);
}

void AudioEffect::Hz2string(float samples, char* text, VstInt32 maxLen) {
    const float rate = getSampleRate();
    if (samples == 0) {
        float2string(0.0f, text, maxLen);
        return;
    }
    float2string(AF::toFloat(static_cast<double>(rate) / samples), text, maxLen);
}

void AudioEffect::ms2string(float samples, char* text, VstInt32 maxLen) {
    float2string(AF::toFloat(static_cast<double>(samples) * 1000.0 / getSampleRate()), text, maxLen);
}
