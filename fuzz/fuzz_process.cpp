// Fuzzes the audio path of every registered effect: sequences of
// setParameter, processReplacing, process, suspend/resume, sample-rate and
// program changes decoded from the input. Sample arrays and pointer tables are
// heap blocks of exactly the announced channels and frames.
#include "FuzzHost.h"

namespace {

struct Buffers {
    Buffers(int channels, int frames) : frames(frames > 0 ? frames : 0) {
        for (int c = 0; c < channels; ++c) {
            samples.emplace_back(new float[static_cast<std::size_t>(this->frames) + (this->frames == 0)]());
        }
        pointers.reset(new float*[static_cast<std::size_t>(channels > 0 ? channels : 1)]());
        for (int c = 0; c < channels; ++c) pointers[c] = samples[c].get();
    }
    int frames;
    std::vector<std::unique_ptr<float[]>> samples;
    std::unique_ptr<float*[]> pointers;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    AEffect* effect = affuzz::makeEffect(input.ConsumeIntegral<std::uint8_t>());
    if (effect == nullptr) return 0;
    effect->dispatcher(effect, effOpen, 0, 0, nullptr, 0.0f);
    effect->dispatcher(effect, effSetSampleRate, 0, 0, nullptr, affuzz::sampleRateFrom(input));
    effect->dispatcher(effect, effMainsChanged, 0, 1, nullptr, 0.0f);
    const int inputs = effect->numInputs;
    const int outputs = effect->numOutputs;
    int steps = 0;
    while (input.remaining_bytes() > 0 && steps++ < 48) {
        switch (input.ConsumeIntegralInRange<int>(0, 7)) {
            case 0:
            case 1: {
                const std::int32_t index = input.ConsumeIntegralInRange<std::int32_t>(-2, effect->numParams + 2);
                effect->setParameter(effect, index, affuzz::parameterFrom(input));
                effect->getParameter(effect, index);
                break;
            }
            case 2:
            case 3:
            case 4: {
                // Frame counts mostly small, sometimes zero or negative.
                int frames = input.ConsumeIntegralInRange<int>(-3, 1100);
                const bool inPlace = input.ConsumeBool();
                const bool accumulate = input.ConsumeIntegralInRange<int>(0, 3) == 0;
                const int signal = input.ConsumeIntegralInRange<int>(0, 3);
                Buffers in(inputs, frames);
                Buffers out(outputs, frames);
                for (int c = 0; c < inputs; ++c) {
                    for (int i = 0; i < in.frames; ++i) {
                        float sample = 0.0f;
                        if (signal == 1) sample = (i & 1) ? -1.0f : 1.0f;
                        if (signal == 2) sample = input.ConsumeFloatingPointInRange<float>(-1.0f, 1.0f);
                        if (signal == 3 && input.remaining_bytes() >= 4) sample = input.ConsumeFloatingPoint<float>();
                        in.samples[c][i] = sample;
                    }
                }
                // In place needs as many inputs as outputs; the effects have both equal.
                float** source = (inPlace && inputs == outputs) ? out.pointers.get() : in.pointers.get();
                if (inPlace && inputs == outputs) {
                    for (int c = 0; c < outputs; ++c) {
                        std::memcpy(out.samples[c].get(), in.samples[c].get(), sizeof(float) * out.frames);
                    }
                }
                if (accumulate) {
                    effect->process(effect, source, out.pointers.get(), frames);
                } else {
                    effect->processReplacing(effect, source, out.pointers.get(), frames);
                }
                break;
            }
            case 5:
                effect->dispatcher(effect, effMainsChanged, 0, input.ConsumeBool() ? 1 : 0, nullptr, 0.0f);
                break;
            case 6:
                effect->dispatcher(effect, effSetSampleRate, 0, 0, nullptr, affuzz::sampleRateFrom(input));
                break;
            default:
                effect->dispatcher(effect, effSetProgram, 0, input.ConsumeIntegralInRange<std::intptr_t>(-2, 3), nullptr,
                                   0.0f);
                break;
        }
    }
    affuzz::closeEffect(effect);
    return 0;
}
