// The delay families against the reference outputs in tests/data/vectors,
// made from the variant table in this process and driven only through the
// plug-in record as a host does (open, sample rate, block size, resume,
// processReplacing in place per block, close), outputs compared bit for bit.
// The module-level vector test reaches the same files through dlopen and the
// registered factory; this one pins the table's creators themselves.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "AudioEffect.h"
#include "Opcodes.h"
#include "module/VariantTable.h"
#include "support/ReferenceVectors.h"

namespace {

struct VectorCase {
    const char* file;
    const char* identifier;
    AF::Family family;
    unsigned channels;
};

class DelayReferenceVectors : public ::testing::TestWithParam<VectorCase> {};

TEST_P(DelayReferenceVectors, MatchBitForBit) {
    const VectorCase& vector = GetParam();
    std::string error;
    const auto loaded = aftest::loadReferenceVector(aftest::referenceVectorDirectory() + "/" + vector.file, &error);
    ASSERT_TRUE(loaded) << vector.file << ": " << error;
    ASSERT_EQ(loaded->identifier, vector.identifier);
    ASSERT_EQ(loaded->channels, static_cast<int>(vector.channels));
    const float sampleRate = loaded->sampleRate;
    const auto blockSize = static_cast<VstIntPtr>(loaded->blockSize);
    const std::vector<int>& blocks = loaded->blocks;
    const aftest::Channels& input = loaded->input;
    const aftest::Channels& want = loaded->expected;
    ASSERT_FALSE(blocks.empty());

    AudioEffect* effect = AF::createVariant(vector.family, vector.channels, nullptr);
    ASSERT_NE(effect, nullptr);
    AEffect* record = effect->getAeffect();
    record->dispatcher(record, effOpen, 0, 0, nullptr, 0.0f);
    record->dispatcher(record, effSetSampleRate, 0, 0, nullptr, sampleRate);
    record->dispatcher(record, effSetBlockSize, 0, blockSize, nullptr, 0.0f);
    record->dispatcher(record, effMainsChanged, 0, 1, nullptr, 0.0f);

    std::size_t start = 0;
    int mismatches = 0;
    for (const int frames : blocks) {
        std::vector<std::vector<float>> io(vector.channels);
        std::vector<float*> pointers(vector.channels);
        for (unsigned c = 0; c < vector.channels; ++c) {
            ASSERT_LE(start + static_cast<std::size_t>(frames), input[c].size());
            io[c].assign(input[c].begin() + static_cast<long>(start), input[c].begin() + static_cast<long>(start) + frames);
            pointers[c] = io[c].data();
        }
        record->processReplacing(record, pointers.data(), pointers.data(), static_cast<VstInt32>(frames));
        for (unsigned c = 0; c < vector.channels; ++c)
            for (int i = 0; i < frames; ++i) {
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
    record->dispatcher(record, effMainsChanged, 0, 0, nullptr, 0.0f);
    record->dispatcher(record, effClose, 0, 0, nullptr, 0.0f);  // close deletes the effect
}

INSTANTIATE_TEST_SUITE_P(
    Delays, DelayReferenceVectors,
    ::testing::Values(VectorCase{"Delay_Mono.json", "Internal Delay Mono", AF::Family::delay, 1},
                      VectorCase{"Delay_Stereo.json", "Internal Delay Stereo", AF::Family::delay, 2},
                      VectorCase{"Delay_51.json", "Internal Delay 5.1", AF::Family::delay, 6},
                      VectorCase{"Delay_16_Channel.json", "Internal Delay 16 Channel", AF::Family::delay, 16},
                      VectorCase{"Multitap_Delay_Mono.json", "Internal Multitap Delay Mono", AF::Family::multitapDelay, 1},
                      VectorCase{"Multitap_Delay_Stereo.json", "Internal Multitap Delay Stereo", AF::Family::multitapDelay, 2},
                      VectorCase{"Multitap_Delay_51.json", "Internal Multitap Delay 5.1", AF::Family::multitapDelay, 6},
                      VectorCase{"Multitap_Delay_16_Channel.json", "Internal Multitap Delay 16 Channel",
                                 AF::Family::multitapDelay, 16}),
    [](const ::testing::TestParamInfo<VectorCase>& info) {
        std::string name = info.param.file;
        name = name.substr(0, name.find('.'));
        return name;
    });

}  // namespace
