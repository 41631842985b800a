// The delay families against the reference outputs in tests/data/vectors:
// created by the family creators, driven only through the plug-in record as a
// host does (open, sample rate, block size, resume, processReplacing in place
// per block, close), outputs compared bit for bit.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "AudioEffect.h"
#include "host/Factory.h"

namespace {

std::string readWholeFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// Just enough JSON for the vector files: the value after "key": as a number,
// an array of numbers or an array of strings.
std::size_t valueStart(const std::string& json, const std::string& key) {
    const std::size_t at = json.find("\"" + key + "\"");
    if (at == std::string::npos) return std::string::npos;
    return json.find(':', at) + 1;
}

double numberField(const std::string& json, const std::string& key) {
    const std::size_t at = valueStart(json, key);
    return at == std::string::npos ? std::nan("") : std::strtod(json.c_str() + at, nullptr);
}

std::vector<long> integerArray(const std::string& json, const std::string& key) {
    std::vector<long> values;
    std::size_t at = valueStart(json, key);
    if (at == std::string::npos) return values;
    at = json.find('[', at) + 1;
    const std::size_t end = json.find(']', at);
    std::istringstream items(json.substr(at, end - at));
    std::string item;
    while (std::getline(items, item, ',')) values.push_back(std::stol(item));
    return values;
}

std::vector<std::string> stringArray(const std::string& json, const std::string& key) {
    std::vector<std::string> values;
    std::size_t at = valueStart(json, key);
    if (at == std::string::npos) return values;
    at = json.find('[', at) + 1;
    const std::size_t end = json.find(']', at);
    while (true) {
        const std::size_t open = json.find('"', at);
        if (open == std::string::npos || open > end) break;
        const std::size_t close = json.find('"', open + 1);
        values.push_back(json.substr(open + 1, close - open - 1));
        at = close + 1;
    }
    return values;
}

std::vector<float> decodeFloats(const std::string& base64) {
    auto sextet = [](char c) -> int {
        if (c >= 'A' && c <= 'Z') return c - 'A';
        if (c >= 'a' && c <= 'z') return c - 'a' + 26;
        if (c >= '0' && c <= '9') return c - '0' + 52;
        if (c == '+') return 62;
        if (c == '/') return 63;
        return -1;
    };
    std::vector<unsigned char> bytes;
    unsigned accumulator = 0;
    int bits = 0;
    for (const char c : base64) {
        const int value = sextet(c);
        if (value < 0) continue;  // padding
        accumulator = (accumulator << 6) | static_cast<unsigned>(value);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            bytes.push_back(static_cast<unsigned char>((accumulator >> bits) & 0xFFu));
        }
    }
    std::vector<float> samples(bytes.size() / 4);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const std::uint32_t bitsLE = static_cast<std::uint32_t>(bytes[4 * i]) |
                                     (static_cast<std::uint32_t>(bytes[4 * i + 1]) << 8) |
                                     (static_cast<std::uint32_t>(bytes[4 * i + 2]) << 16) |
                                     (static_cast<std::uint32_t>(bytes[4 * i + 3]) << 24);
        samples[i] = std::bit_cast<float>(bitsLE);
    }
    return samples;
}

struct VectorCase {
    const char* file;
    const char* identifier;
    AudioEffect* (*create)(unsigned, audioMasterCallback);
    unsigned channels;
};

class DelayReferenceVectors : public ::testing::TestWithParam<VectorCase> {};

TEST_P(DelayReferenceVectors, MatchBitForBit) {
    const VectorCase& vector = GetParam();
    const std::string json = readWholeFile(std::string(AF_TEST_DATA_DIR) + "/vectors/" + vector.file);
    ASSERT_FALSE(json.empty()) << vector.file;
    ASSERT_NE(json.find(vector.identifier), std::string::npos);
    ASSERT_EQ(numberField(json, "channels"), static_cast<double>(vector.channels));
    const float sampleRate = static_cast<float>(numberField(json, "sampleRate"));
    const auto blockSize = static_cast<VstIntPtr>(numberField(json, "blockSize"));
    const std::vector<long> blocks = integerArray(json, "blocks");
    const std::vector<std::string> inputs = stringArray(json, "input_f32le_b64");
    const std::vector<std::string> expected = stringArray(json, "expected_f32le_b64");
    ASSERT_EQ(inputs.size(), vector.channels);
    ASSERT_EQ(expected.size(), vector.channels);
    ASSERT_FALSE(blocks.empty());

    std::vector<std::vector<float>> input, want;
    for (unsigned c = 0; c < vector.channels; ++c) {
        input.push_back(decodeFloats(inputs[c]));
        want.push_back(decodeFloats(expected[c]));
    }

    AudioEffect* effect = vector.create(vector.channels, nullptr);
    ASSERT_NE(effect, nullptr);
    AEffect* record = effect->getAeffect();
    record->dispatcher(record, 0, 0, 0, nullptr, 0.0f);
    record->dispatcher(record, 10, 0, 0, nullptr, sampleRate);
    record->dispatcher(record, 11, 0, blockSize, nullptr, 0.0f);
    record->dispatcher(record, 12, 0, 1, nullptr, 0.0f);

    std::size_t start = 0;
    int mismatches = 0;
    for (const long frames : blocks) {
        std::vector<std::vector<float>> io(vector.channels);
        std::vector<float*> pointers(vector.channels);
        for (unsigned c = 0; c < vector.channels; ++c) {
            ASSERT_LE(start + static_cast<std::size_t>(frames), input[c].size());
            io[c].assign(input[c].begin() + static_cast<long>(start), input[c].begin() + static_cast<long>(start) + frames);
            pointers[c] = io[c].data();
        }
        record->processReplacing(record, pointers.data(), pointers.data(), static_cast<VstInt32>(frames));
        for (unsigned c = 0; c < vector.channels; ++c)
            for (long i = 0; i < frames; ++i) {
                const float got = io[c][static_cast<std::size_t>(i)];
                const float expect = want[c][start + static_cast<std::size_t>(i)];
                // Bit patterns: the vectors are exact; any NaN matches any NaN.
                const bool same = (std::isnan(got) && std::isnan(expect)) ||
                                  std::bit_cast<std::uint32_t>(got) == std::bit_cast<std::uint32_t>(expect);
                if (!same && ++mismatches <= 5)
                    ADD_FAILURE() << vector.identifier << " channel " << c << " frame " << start + static_cast<std::size_t>(i)
                                  << ": got " << got << ", expected " << expect;
            }
        start += static_cast<std::size_t>(frames);
    }
    EXPECT_EQ(mismatches, 0);
    EXPECT_EQ(start, want[0].size());
    record->dispatcher(record, 12, 0, 0, nullptr, 0.0f);
    record->dispatcher(record, 1, 0, 0, nullptr, 0.0f);  // close deletes the effect
}

INSTANTIATE_TEST_SUITE_P(
    Delays, DelayReferenceVectors,
    ::testing::Values(VectorCase{"Delay_Mono.json", "Internal Delay Mono", AF::createDelay, 1},
                      VectorCase{"Delay_Stereo.json", "Internal Delay Stereo", AF::createDelay, 2},
                      VectorCase{"Delay_51.json", "Internal Delay 5.1", AF::createDelay, 6},
                      VectorCase{"Delay_16_Channel.json", "Internal Delay 16 Channel", AF::createDelay, 16},
                      VectorCase{"Multitap_Delay_Mono.json", "Internal Multitap Delay Mono", AF::createMultitapDelay, 1},
                      VectorCase{"Multitap_Delay_Stereo.json", "Internal Multitap Delay Stereo", AF::createMultitapDelay, 2},
                      VectorCase{"Multitap_Delay_51.json", "Internal Multitap Delay 5.1", AF::createMultitapDelay, 6},
                      VectorCase{"Multitap_Delay_16_Channel.json", "Internal Multitap Delay 16 Channel",
                                 AF::createMultitapDelay, 16}),
    [](const ::testing::TestParamInfo<VectorCase>& info) {
        std::string name = info.param.file;
        name = name.substr(0, name.find('.'));
        return name;
    });

}  // namespace
