// The base effect's text tools: bounded copy and append, and the number
// formatters with their eight-character rule. Every expected text below is
// worked out by hand from the digit rules, never produced by the code under
// test:
//   - the point counts as one character, a minus sign as another;
//   - integer digits are taken right to left (the last one always), while the
//     remaining integer part is at least 1 and fewer than 8 characters are
//     counted, so an integer part with too many digits loses its LEADING ones;
//   - the fraction fmod(v, 1) * 10^remaining supplies the remaining digits,
//     right to left, each the truncation of fmod(m, 10), then m /= 10; a '0'
//     wherever m is not above 0.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>

#include "tests/frame/RecordingEffect.h"

using namespace frame_test;

namespace {

constexpr char kGuard = static_cast<char>(0xA5);
constexpr std::size_t kBufferBytes = 48;
constexpr std::size_t kLead = 8;  // guard bytes before the text

// A text buffer with guard bytes around the part a call may write.
struct GuardedText {
    std::array<char, kBufferBytes> bytes;
    GuardedText() { bytes.fill(kGuard); }
    char* text() { return bytes.data() + kLead; }
    std::string str() const { return std::string(bytes.data() + kLead); }
    // No byte before the text, and none after index maxLen, was written.
    bool guardsIntact(VstInt32 maxLen) const {
        for (std::size_t i = 0; i < kLead; ++i)
            if (bytes[i] != kGuard) return false;
        for (std::size_t i = kLead + static_cast<std::size_t>(maxLen) + 1; i < kBufferBytes; ++i)
            if (bytes[i] != kGuard) return false;
        return true;
    }
};

// The tools are virtual members of the effect; a plain effect keeps them.
std::string formatFloat(float value, VstInt32 maxLen = 16) {
    PlainEffect effect;
    GuardedText out;
    effect.float2string(value, out.text(), maxLen);
    EXPECT_TRUE(out.guardsIntact(maxLen)) << "float2string(" << value << ")";
    return out.str();
}

std::string formatInt(VstInt32 value, VstInt32 maxLen = 16) {
    PlainEffect effect;
    GuardedText out;
    effect.int2string(value, out.text(), maxLen);
    EXPECT_TRUE(out.guardsIntact(maxLen)) << "int2string(" << value << ")";
    return out.str();
}

std::string formatDb(float value, VstInt32 maxLen = 16) {
    PlainEffect effect;
    GuardedText out;
    effect.dB2string(value, out.text(), maxLen);
    EXPECT_TRUE(out.guardsIntact(maxLen)) << "dB2string(" << value << ")";
    return out.str();
}

std::string formatHz(float samples, float sampleRate = 44100.0f, VstInt32 maxLen = 16) {
    PlainEffect effect;
    effect.setSampleRate(sampleRate);
    GuardedText out;
    effect.Hz2string(samples, out.text(), maxLen);
    EXPECT_TRUE(out.guardsIntact(maxLen)) << "Hz2string(" << samples << ")";
    return out.str();
}

std::string formatMs(float samples, float sampleRate = 44100.0f, VstInt32 maxLen = 16) {
    PlainEffect effect;
    effect.setSampleRate(sampleRate);
    GuardedText out;
    effect.ms2string(samples, out.text(), maxLen);
    EXPECT_TRUE(out.guardsIntact(maxLen)) << "ms2string(" << samples << ")";
    return out.str();
}

// A formatter that must leave the caller's text exactly as it was.
template <class Format>
void expectUntouched(Format format) {
    GuardedText out;
    std::strcpy(out.text(), "previous");
    format(out.text());
    EXPECT_EQ(out.str(), "previous");
    EXPECT_TRUE(out.guardsIntact(8));
}

// ---------------------------------------------------------------------------
// vst_strncpy / vst_strncat

TEST(FrameStringTools, CopyWritesTheZeroAtMaxLen) {
    GuardedText out;
    vst_strncpy(out.text(), "abcdef", 3);
    EXPECT_EQ(out.str(), "abc");
    EXPECT_EQ(out.text()[3], '\0');
    EXPECT_TRUE(out.guardsIntact(3));
}

TEST(FrameStringTools, ShortCopyIsPaddedUpToMaxLen) {
    // The bounded copy pads with zeros; the forced zero lands at index maxLen.
    GuardedText out;
    vst_strncpy(out.text(), "ab", 5);
    EXPECT_EQ(out.str(), "ab");
    for (int i = 2; i <= 5; ++i) EXPECT_EQ(out.text()[i], '\0') << i;
    EXPECT_TRUE(out.guardsIntact(5));
}

TEST(FrameStringTools, CopyWithMaxLenZeroWritesOnlyTheZero) {
    GuardedText out;
    vst_strncpy(out.text(), "abc", 0);
    EXPECT_EQ(out.text()[0], '\0');
    EXPECT_TRUE(out.guardsIntact(0));
}

TEST(FrameStringTools, AppendWritesTheZeroAtMaxLen) {
    GuardedText out;
    vst_strncpy(out.text(), "ab", 5);
    vst_strncat(out.text(), "cdefgh", 5);
    EXPECT_EQ(out.str(), "abcde");
    EXPECT_EQ(out.text()[5], '\0');
    EXPECT_TRUE(out.guardsIntact(5));
}

TEST(FrameStringTools, AppendToAFullTextWritesNothingPastTheLimit) {
    GuardedText out;
    vst_strncpy(out.text(), "abcde", 5);
    vst_strncat(out.text(), "f", 5);
    EXPECT_EQ(out.str(), "abcde");
    EXPECT_TRUE(out.guardsIntact(5));
    vst_strncat(out.text(), "ghijklmnop", 5);
    EXPECT_EQ(out.str(), "abcde");
    EXPECT_TRUE(out.guardsIntact(5));
}

TEST(FrameStringTools, ShortAppend) {
    GuardedText out;
    vst_strncpy(out.text(), "ab", 8);
    vst_strncat(out.text(), "c", 8);
    EXPECT_EQ(out.str(), "abc");
    EXPECT_EQ(out.text()[8], '\0');
    EXPECT_TRUE(out.guardsIntact(8));
}

TEST(FrameStringTools, NullAndNegativeLimitsWriteNothing) {
    GuardedText out;
    EXPECT_EQ(vst_strncpy(nullptr, "abc", 4), nullptr);
    vst_strncpy(out.text(), nullptr, 4);
    vst_strncat(nullptr, "abc", 4);
    vst_strncat(out.text(), nullptr, 4);
    vst_strncpy(out.text(), "abc", -1);
    vst_strncat(out.text(), "abc", -1);
    vst_strncpy(out.text(), "abc", std::numeric_limits<VstInt32>::min());
    for (char byte : out.bytes) EXPECT_EQ(byte, kGuard);
}

// ---------------------------------------------------------------------------
// float2string

TEST(FrameStringTools, FloatExamples) {
    EXPECT_EQ(formatFloat(1.5f), "1.500000");
    EXPECT_EQ(formatFloat(0.0f), "0.000000");
    // 12345.678f is 12345.677734375: "12345." then 0.677734375 * 10^2 = 67.77 -> "67".
    EXPECT_EQ(formatFloat(12345.678f), "12345.67");
    // Sign and point take two characters: "-0." then 0.25 * 10^5 = 25000.
    EXPECT_EQ(formatFloat(-0.25f), "-0.25000");
}

TEST(FrameStringTools, FloatTooLargeLeavesTheTextUntouched) {
    PlainEffect effect;
    // 123456789.0 is the float 123456792, above 99999999.
    expectUntouched([&](char* t) { effect.float2string(123456789.0f, t, 8); });
    // 99999999.0 is not a float: it rounds to 100000000, above the limit.
    expectUntouched([&](char* t) { effect.float2string(99999999.0f, t, 8); });
    // The float above 100000000 (spacing 8 there).
    expectUntouched([&](char* t) { effect.float2string(100000008.0f, t, 8); });
    // The float below -9999999 (spacing 1 there): magnitude 10000000 > 9999999.
    expectUntouched([&](char* t) { effect.float2string(-10000000.0f, t, 8); });
    expectUntouched([&](char* t) { effect.float2string(std::numeric_limits<float>::infinity(), t, 8); });
    expectUntouched([&](char* t) { effect.float2string(-std::numeric_limits<float>::infinity(), t, 8); });
    expectUntouched([&](char* t) { effect.float2string(std::numeric_limits<float>::max(), t, 8); });
}

TEST(FrameStringTools, FloatJustUnderTheLimits) {
    // 99999992 is the largest float not above 99999999. Point: 1 character;
    // digits 2,9,9,9,9,9,9 take the count to 8, so the leading 9 is dropped.
    EXPECT_EQ(formatFloat(99999992.0f), "9999992.");
    // -9999999 is exact and not beyond the negative limit. Sign and point: 2;
    // six digits fill the eight characters, the leading 9 is dropped.
    EXPECT_EQ(formatFloat(-9999999.0f), "-999999.");
    // Seven digits and the point: nothing is left for the fraction.
    EXPECT_EQ(formatFloat(9999999.0f), "9999999.");
    EXPECT_EQ(formatFloat(1234567.0f), "1234567.");
    // 12345678 (exact): the last seven digits.
    EXPECT_EQ(formatFloat(12345678.0f), "2345678.");
}

TEST(FrameStringTools, FloatOwnTable) {
    // "-1." (3 characters), 0.5 * 10^5 = 50000.
    EXPECT_EQ(formatFloat(-1.5f), "-1.50000");
    // "-123." (5), 0.25 * 10^3 = 250.
    EXPECT_EQ(formatFloat(-123.25f), "-123.250");
    // "123456." (7), 0.5 * 10^1 = 5.
    EXPECT_EQ(formatFloat(123456.5f), "123456.5");
    // "0." then 0.5 * 10^6 = 500000.
    EXPECT_EQ(formatFloat(0.5f), "0.500000");
    // 0.1f = 0.100000001490...: 100000.0015 gives 0,0,0,0,0 then 1 (right to left).
    EXPECT_EQ(formatFloat(0.1f), "0.100000");
    // 3.14159f = 3.1415901184...: 141590.118 gives 0,9,5,1,4,1 right to left.
    EXPECT_EQ(formatFloat(3.14159f), "3.141590");
    // -0.001f = -0.00100000005: "-0." then 100.000005 gives 0,0,1 then 0.1 -> 0, 0.01 -> 0.
    EXPECT_EQ(formatFloat(-0.001f), "-0.00100");
    // The smallest subnormal: every fraction digit truncates to 0.
    EXPECT_EQ(formatFloat(std::numeric_limits<float>::denorm_min()), "0.000000");
    // 0.99999994 (the float below 1): 999999.94 gives six 9s; truncated, never
    // rounded up to 1.000000.
    EXPECT_EQ(formatFloat(std::nextafter(1.0f, 0.0f)), "0.999999");
    // -1234567.5 (exact): sign and point leave six digits, the last six of the
    // integer part; the leading 1 and the fraction are dropped.
    EXPECT_EQ(formatFloat(-1234567.5f), "-234567.");
    // 441.0: "441." then 0 * 10^4 -> four '0's.
    EXPECT_EQ(formatFloat(441.0f), "441.0000");
}

TEST(FrameStringTools, FloatNanAndNegativeZero) {
    // NaN is neither below 0 nor above the limit; every digit computed from it
    // comes out '0': the integer digit, then six fraction digits.
    EXPECT_EQ(formatFloat(std::numeric_limits<float>::quiet_NaN()), "0.000000");
    EXPECT_EQ(formatFloat(-std::numeric_limits<float>::quiet_NaN()), "0.000000");
    // -0.0 is not below zero: no sign.
    EXPECT_EQ(formatFloat(-0.0f), "0.000000");
}

TEST(FrameStringTools, FloatLimitShorterThanTheText) {
    // "1." copied, then the append may add only up to index 4.
    EXPECT_EQ(formatFloat(1.5f, 4), "1.50");
    EXPECT_EQ(formatFloat(1.5f, 1), "1");
    EXPECT_EQ(formatFloat(1.5f, 0), "");
    // The integer part alone is cut: "-123." limited to 3.
    EXPECT_EQ(formatFloat(-123.25f, 3), "-12");
    EXPECT_EQ(formatFloat(12345.678f, 7), "12345.6");
}

TEST(FrameStringTools, FloatWithNegativeLimitWritesNothing) {
    PlainEffect effect;
    expectUntouched([&](char* t) { effect.float2string(1.5f, t, -1); });
}

// ---------------------------------------------------------------------------
// int2string

TEST(FrameStringTools, IntExamples) {
    EXPECT_EQ(formatInt(0), "");
    EXPECT_EQ(formatInt(-5), "-5");
    EXPECT_EQ(formatInt(100000000), "Huge!");
    EXPECT_EQ(formatInt(std::numeric_limits<VstInt32>::max()), "Huge!");
    EXPECT_EQ(formatInt(99999999), "99999999");
}

TEST(FrameStringTools, IntDigits) {
    EXPECT_EQ(formatInt(5), "5");
    EXPECT_EQ(formatInt(10), "10");
    EXPECT_EQ(formatInt(1000000), "1000000");
    EXPECT_EQ(formatInt(-100), "-100");
    // Negatives have no "Huge!" limit: nine digits after the sign.
    EXPECT_EQ(formatInt(-999999999), "-999999999");
}

TEST(FrameStringTools, IntMostNegative) {
    // Negated without overflow: magnitude 2147483648. The first divisor is
    // 100000000, quotient 21, written as the character '0' + 21 = 'E'; then
    // 47483648 gives 4,7,4,8,3,6,4,8.
    EXPECT_EQ(formatInt(std::numeric_limits<VstInt32>::min()), "-E47483648");
}

TEST(FrameStringTools, IntLimitShorterThanTheText) {
    EXPECT_EQ(formatInt(123456, 3), "123");
    EXPECT_EQ(formatInt(100000000, 3), "Hug");
    EXPECT_EQ(formatInt(-5, 1), "-");
    EXPECT_EQ(formatInt(42, 0), "");
}

// ---------------------------------------------------------------------------
// dB2string, Hz2string, ms2string

TEST(FrameStringTools, DecibelsOfZeroAndBelow) {
    EXPECT_EQ(formatDb(0.0f), "-oo");
    EXPECT_EQ(formatDb(-0.0f), "-oo");
    EXPECT_EQ(formatDb(-1.0f), "-oo");
    EXPECT_EQ(formatDb(-std::numeric_limits<float>::infinity()), "-oo");
    EXPECT_EQ(formatDb(0.0f, 2), "-o");
}

TEST(FrameStringTools, Decibels) {
    // log10(1) = 0.
    EXPECT_EQ(formatDb(1.0f), "0.000000");
    // log10(10) = 1, times 20.
    EXPECT_EQ(formatDb(10.0f), "20.00000");
    // log10(0.5) = -0.30102999566 -> float -0.30103000998; times 20 = -6.0206001997
    // -> float -6.0206003189. "-6." then 0.0206003189 * 10^5 = 2060.03 gives
    // 0,6,0,2 right to left and then 0.206 -> 0: "02060".
    EXPECT_EQ(formatDb(0.5f), "-6.02060");
    // The same magnitude positive: "6." then 20600.3189 gives 0,0,6,0,2,0.
    EXPECT_EQ(formatDb(2.0f), "6.020600");
    // 1e-30f = 1.0000000032e-30: log10 = -29.9999999986 -> float -30; times 20 = -600.
    EXPECT_EQ(formatDb(1e-30f), "-600.000");
}

TEST(FrameStringTools, DecibelsOfNanAndInfinity) {
    // NaN is not <= 0: its logarithm is NaN, formatted as zeros.
    EXPECT_EQ(formatDb(std::numeric_limits<float>::quiet_NaN()), "0.000000");
    // Infinity: an infinite level is too large to show; the text is untouched.
    PlainEffect effect;
    expectUntouched([&](char* t) { effect.dB2string(std::numeric_limits<float>::infinity(), t, 8); });
}

TEST(FrameStringTools, Hertz) {
    EXPECT_EQ(formatHz(0.0f), "0.000000");
    EXPECT_EQ(formatHz(-0.0f), "0.000000");
    // 44100 / 100 = 441.
    EXPECT_EQ(formatHz(100.0f), "441.0000");
    // 44100 / 3 = 14700.
    EXPECT_EQ(formatHz(3.0f), "14700.00");
    // 44100 / 0.5 = 88200.
    EXPECT_EQ(formatHz(0.5f), "88200.00");
    // 44100 / -100 = -441: "-441." then three zeros.
    EXPECT_EQ(formatHz(-100.0f), "-441.000");
    // The current sample rate is used: 48000 / 480 = 100.
    EXPECT_EQ(formatHz(480.0f, 48000.0f), "100.0000");
    // 44100 / 0.001f = 44099997.9 -> float 44099996; seven digits fit: "4099996.".
    EXPECT_EQ(formatHz(0.001f), "4099996.");
    EXPECT_EQ(formatHz(std::numeric_limits<float>::quiet_NaN()), "0.000000");
    PlainEffect effect;
    expectUntouched([&](char* t) { effect.Hz2string(1e-30f, t, 8); });
}

TEST(FrameStringTools, Milliseconds) {
    EXPECT_EQ(formatMs(44100.0f), "1000.000");
    EXPECT_EQ(formatMs(441.0f), "10.00000");
    EXPECT_EQ(formatMs(0.0f), "0.000000");
    EXPECT_EQ(formatMs(-441.0f), "-10.0000");
    EXPECT_EQ(formatMs(48.0f, 48000.0f), "1.000000");
    // 1000 / 44100 = 0.0226757369 -> float 0.0226757377; "0." then
    // 22675.7377 gives 5,7,6,2,2 and 0.2267 -> 0, right to left.
    EXPECT_EQ(formatMs(1.0f), "0.022675");
    // With a sample rate of 0 the quotient is infinite: too large to show.
    PlainEffect effect;
    effect.setSampleRate(0.0f);
    expectUntouched([&](char* t) { effect.ms2string(1.0f, t, 8); });
}

TEST(FrameStringTools, NullTextsWriteNothing) {
    PlainEffect effect;
    effect.float2string(1.5f, nullptr, 8);
    effect.float2string(std::numeric_limits<float>::quiet_NaN(), nullptr, 8);
    effect.int2string(-5, nullptr, 8);
    effect.int2string(std::numeric_limits<VstInt32>::min(), nullptr, 8);
    effect.dB2string(0.5f, nullptr, 8);
    effect.dB2string(0.0f, nullptr, 8);
    effect.Hz2string(100.0f, nullptr, 8);
    effect.ms2string(100.0f, nullptr, 8);
    SUCCEED() << "no crash and, under the sanitizers, no invalid access";
}

}  // namespace
