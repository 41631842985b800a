// The stored reference outputs of the high-pass, low-pass, band-pass and notch
// variants, replayed the way a host does (factory creator, open, rate, block
// size, resume, in-place blocks) and compared bit for bit.
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "CutFilterHarness.h"
#include "host/Factory.h"

namespace {

using namespace cuttest;

std::string readFile(const std::string& path) {
    std::ifstream in(path);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

// The text after `"key":` up to the end of its value (a number or a bracket).
std::string valueOf(const std::string& json, const std::string& key) {
    const std::size_t at = json.find("\"" + key + "\"");
    if (at == std::string::npos) return {};
    std::size_t start = json.find(':', at) + 1;
    while (json[start] == ' ') ++start;
    if (json[start] == '[') return json.substr(start + 1, json.find(']', start) - start - 1);
    return json.substr(start, json.find_first_of(",}", start) - start);
}

std::vector<std::string> quotedItems(const std::string& list) {
    std::vector<std::string> items;
    for (std::size_t i = list.find('"'); i != std::string::npos; i = list.find('"', i + 1)) {
        const std::size_t end = list.find('"', i + 1);
        items.push_back(list.substr(i + 1, end - i - 1));
        i = end;
    }
    return items;
}

std::vector<float> decodeFloats(const std::string& b64) {
    static const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::vector<unsigned char> bytes;
    unsigned buffer = 0;
    int count = 0;
    for (char ch : b64) {
        const std::size_t v = alphabet.find(ch);
        if (v == std::string::npos) continue;  // padding
        buffer = (buffer << 6) | static_cast<unsigned>(v);
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes.push_back(static_cast<unsigned char>((buffer >> count) & 0xFF));
        }
    }
    std::vector<float> floats(bytes.size() / 4);
    std::memcpy(floats.data(), bytes.data(), floats.size() * 4);  // little-endian host
    return floats;
}

struct VectorCase {
    const char* file;
    AF::FamilyCreator create;
};

class CutFilterVectors : public ::testing::TestWithParam<VectorCase> {};

TEST_P(CutFilterVectors, ReplayMatchesBitForBit) {
    const std::string json = readFile(std::string(AF_TEST_DATA_DIR) + "/vectors/" + GetParam().file);
    ASSERT_FALSE(json.empty());
    const unsigned channels = static_cast<unsigned>(std::stoul(valueOf(json, "channels")));
    const float rate = std::stof(valueOf(json, "sampleRate"));
    const VstIntPtr blockSize = std::stol(valueOf(json, "blockSize"));
    std::vector<std::vector<float>> input, expected;
    for (const std::string& item : quotedItems(valueOf(json, "input_f32le_b64"))) input.push_back(decodeFloats(item));
    for (const std::string& item : quotedItems(valueOf(json, "expected_f32le_b64")))
        expected.push_back(decodeFloats(item));
    std::vector<VstInt32> blocks;
    std::stringstream list(valueOf(json, "blocks"));
    for (std::string n; std::getline(list, n, ',');) blocks.push_back(std::stoi(n));
    ASSERT_EQ(input.size(), channels);
    ASSERT_EQ(expected.size(), channels);

    AudioEffect* effect = GetParam().create(channels, countingHost);
    ASSERT_NE(effect, nullptr);
    AEffect* e = effect->getAeffect();
    e->dispatcher(e, 0, 0, 0, nullptr, 0.0f);
    e->dispatcher(e, 10, 0, 0, nullptr, rate);
    e->dispatcher(e, 11, 0, blockSize, nullptr, 0.0f);
    e->dispatcher(e, 12, 0, 1, nullptr, 0.0f);
    std::size_t offset = 0;
    for (VstInt32 frames : blocks) {
        Buffers work(channels, static_cast<std::size_t>(frames));
        for (unsigned c = 0; c < channels; ++c)
            for (VstInt32 i = 0; i < frames; ++i) work.data[c][static_cast<std::size_t>(i)] = input[c][offset + static_cast<std::size_t>(i)];
        e->processReplacing(e, work.get(), work.get(), frames);
        for (unsigned c = 0; c < channels; ++c)
            for (VstInt32 i = 0; i < frames; ++i)
                ASSERT_TRUE(sameFloat(work.data[c][static_cast<std::size_t>(i)], expected[c][offset + static_cast<std::size_t>(i)]))
                    << "channel " << c << " frame " << offset + static_cast<std::size_t>(i);
        offset += static_cast<std::size_t>(frames);
    }
    EXPECT_EQ(offset, expected[0].size());
    e->dispatcher(e, 1, 0, 0, nullptr, 0.0f);
}

INSTANTIATE_TEST_SUITE_P(
    AllCutVariants, CutFilterVectors,
    ::testing::Values(VectorCase{"Highpass_Mono.json", &AF::createHighpass},
                      VectorCase{"Highpass_Stereo.json", &AF::createHighpass},
                      VectorCase{"Highpass_51.json", &AF::createHighpass},
                      VectorCase{"Highpass_16_Channel.json", &AF::createHighpass},
                      VectorCase{"Lowpass_Mono.json", &AF::createLowpass},
                      VectorCase{"Lowpass_Stereo.json", &AF::createLowpass},
                      VectorCase{"Lowpass_51.json", &AF::createLowpass},
                      VectorCase{"Lowpass_16_Channel.json", &AF::createLowpass},
                      VectorCase{"Bandpass_Mono.json", &AF::createBandpass},
                      VectorCase{"Bandpass_Stereo.json", &AF::createBandpass},
                      VectorCase{"Bandpass_51.json", &AF::createBandpass},
                      VectorCase{"Bandpass_16_Channel.json", &AF::createBandpass},
                      VectorCase{"Bandreject_Mono.json", &AF::createBandreject},
                      VectorCase{"Bandreject_Stereo.json", &AF::createBandreject},
                      VectorCase{"Bandreject_51.json", &AF::createBandreject},
                      VectorCase{"Bandreject_16_Channel.json", &AF::createBandreject}),
    [](const ::testing::TestParamInfo<VectorCase>& info) {
        std::string name = info.param.file;
        return name.substr(0, name.find('.'));
    });

}  // namespace
