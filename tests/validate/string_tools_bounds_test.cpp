// The frame's number-to-text tools never write past index maxLen, whatever the
// limit: found by the string-tools fuzz target (int2string with maxLen 1 after
// a "-" used to write its zero at index 2). The visible text is the first
// maxLen characters of the text written with room to spare.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "AudioEffectX.h"

namespace {

class TextTools final : public AudioEffectX {
public:
    TextTools() : AudioEffectX(nullptr, 0, 0) {}
    void processReplacing(float**, float**, VstInt32) override {}
};

constexpr int kLargestLimit = 64;
constexpr std::size_t kCanaryBytes = 32;
constexpr unsigned char kCanary = 0x5A;

enum class Tool { Float, Int, Decibel, Hertz, Milliseconds };

void write(TextTools& tools, Tool tool, double value, char* text, VstInt32 limit) {
    switch (tool) {
        case Tool::Float: tools.float2string(static_cast<float>(value), text, limit); break;
        case Tool::Int: tools.int2string(static_cast<VstInt32>(value), text, limit); break;
        case Tool::Decibel: tools.dB2string(static_cast<float>(value), text, limit); break;
        case Tool::Hertz: tools.Hz2string(static_cast<float>(value), text, limit); break;
        case Tool::Milliseconds: tools.ms2string(static_cast<float>(value), text, limit); break;
    }
}

void expectBounded(Tool tool, const std::vector<double>& values, const char* name) {
    TextTools tools;
    for (double value : values) {
        std::vector<char> roomy(kLargestLimit + 1 + kCanaryBytes, 0);
        write(tools, tool, value, roomy.data(), kLargestLimit);
        const std::string full(roomy.data());
        for (VstInt32 limit = 0; limit <= kLargestLimit; ++limit) {
            std::vector<unsigned char> buffer(static_cast<std::size_t>(limit) + 1 + kCanaryBytes, kCanary);
            std::memset(buffer.data(), 0, static_cast<std::size_t>(limit) + 1);
            write(tools, tool, value, reinterpret_cast<char*>(buffer.data()), limit);
            for (std::size_t i = static_cast<std::size_t>(limit) + 1; i < buffer.size(); ++i) {
                ASSERT_EQ(buffer[i], kCanary) << name << "(" << value << ") with maxLen " << limit
                                              << " wrote byte " << i;
            }
            EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer.data())), full.substr(0, static_cast<std::size_t>(limit)))
                << name << "(" << value << ") with maxLen " << limit;
        }
    }
}

TEST(StringToolBounds, IntToStringStaysWithinTheLimit) {
    expectBounded(Tool::Int, {0, 5, -5, 123, -12345678, 99999999, 100000000, INT_MIN, INT_MAX, -1}, "int2string");
}

TEST(StringToolBounds, FloatToStringStaysWithinTheLimit) {
    expectBounded(Tool::Float, {0.0, -0.25, 1.5, 12345.678, -9999999.0, 99999999.0, 1e-30, -1e-30, 0.1, NAN},
                  "float2string");
}

TEST(StringToolBounds, DecibelHertzAndMillisecondTextsStayWithinTheLimit) {
    const std::vector<double> values = {0.0, 1.0, 0.5, 1e-20, 44100.0, -3.0, 1e30, NAN};
    expectBounded(Tool::Decibel, values, "dB2string");
    expectBounded(Tool::Hertz, values, "Hz2string");
    expectBounded(Tool::Milliseconds, values, "ms2string");
}

}  // namespace
