// processReplacing of the three equalisers, 512-frame blocks (a fixed input,
// a separate output so the signal does not grow from call to call), with a
// parameter set once so the coefficients are computed before timing starts.
// Items are samples: frames times channels. The four-channel variants exist as
// classes but are not registered with the host; they are measured all the same.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "effects/filters/ParametricEQ.h"
#include "effects/filters/Shelf.h"
#include "effects/variants/NamedVariants.h"

namespace {

constexpr int kBlockFrames = 512;

template <class Effect>
void processReplacingBlock(benchmark::State& state) {
    Effect effect(nullptr);
    effect.setSampleRate(48000.0f);
    effect.setParameter(0, 0.7f);  // centre or boost
    AEffect* record = effect.getAeffect();
    const int channels = record->numInputs;
    std::vector<std::vector<float>> in(static_cast<std::size_t>(channels), std::vector<float>(kBlockFrames));
    std::vector<std::vector<float>> out = in;
    std::vector<float*> inputs, outputs;
    for (std::size_t c = 0; c < in.size(); ++c) {
        for (int i = 0; i < kBlockFrames; ++i) in[c][static_cast<std::size_t>(i)] = std::sin(0.01f * i) * 0.5f;
        inputs.push_back(in[c].data());
        outputs.push_back(out[c].data());
    }
    record->processReplacing(record, inputs.data(), outputs.data(), kBlockFrames);
    for (auto _ : state) {
        record->processReplacing(record, inputs.data(), outputs.data(), kBlockFrames);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kBlockFrames * channels);
}

BENCHMARK_TEMPLATE(processReplacingBlock, AF::AudioParametricEQ1);
BENCHMARK_TEMPLATE(processReplacingBlock, AF::AudioParametricEQ2);
BENCHMARK_TEMPLATE(processReplacingBlock, AF::AudioParametricEQ4);  // built, not registered
BENCHMARK_TEMPLATE(processReplacingBlock, AF::AudioParametricEQ6);
BENCHMARK_TEMPLATE(processReplacingBlock, AF::AudioParametricEQ16);
BENCHMARK_TEMPLATE(processReplacingBlock, AF::AudioBass1);
BENCHMARK_TEMPLATE(processReplacingBlock, AF::AudioBass2);
BENCHMARK_TEMPLATE(processReplacingBlock, AF::AudioBass4);  // built, not registered
BENCHMARK_TEMPLATE(processReplacingBlock, AF::AudioBass6);
BENCHMARK_TEMPLATE(processReplacingBlock, AF::AudioBass16);
BENCHMARK_TEMPLATE(processReplacingBlock, AF::AudioTreble1);
BENCHMARK_TEMPLATE(processReplacingBlock, AF::AudioTreble2);
BENCHMARK_TEMPLATE(processReplacingBlock, AF::AudioTreble4);  // built, not registered
BENCHMARK_TEMPLATE(processReplacingBlock, AF::AudioTreble6);
BENCHMARK_TEMPLATE(processReplacingBlock, AF::AudioTreble16);

}  // namespace
