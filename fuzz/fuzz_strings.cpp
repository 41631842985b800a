// Fuzzes the frame's number-to-text tools (float2string, int2string,
// dB2string, Hz2string, ms2string) with every limit 0..64, each into a heap
// block of exactly limit + 1 bytes (the tools always end with a zero at
// index limit).
#include "AudioEffectX.h"
#include "FuzzHost.h"

namespace {

class Texts final : public AudioEffectX {
public:
    Texts() : AudioEffectX(nullptr, 0, 0) {}
    void processReplacing(float**, float**, VstInt32) override {}
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    Texts texts;
    texts.setSampleRate(affuzz::sampleRateFrom(input));
    const float value = input.ConsumeBool() ? affuzz::parameterFrom(input) : input.ConsumeFloatingPoint<float>();
    const VstInt32 integer = input.ConsumeIntegral<VstInt32>();
    for (VstInt32 limit = 0; limit <= 64; ++limit) {
        affuzz::ExactBuffer buffer(static_cast<std::size_t>(limit) + 1);
        char* text = buffer.data();
        texts.float2string(value, text, limit);
        texts.int2string(integer, text, limit);
        texts.dB2string(value, text, limit);
        texts.Hz2string(value, text, limit);
        texts.ms2string(value, text, limit);
    }
    return 0;
}
