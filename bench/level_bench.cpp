// processReplacing of the level effects and channel utilities at 512-frame
// blocks, from a fixed input into separate outputs (the same buffer shapes as
// Reference/Copy, whose memcpy figure is their ceiling). Parameters are set
// off their defaults so that gains are not 1. Volume scales the output buffers
// in place, so its gain alternates between 0.5 and 2 from call to call: the
// samples return exactly to their values instead of decaying to subnormals.
// Items are samples.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "effects/level/Balance.h"
#include "effects/level/ChannelVolume.h"
#include "effects/level/Fill.h"
#include "effects/level/Invert.h"
#include "effects/level/Mute.h"
#include "effects/level/SwapChannels.h"
#include "effects/level/Volume.h"

namespace {

constexpr int kBlockFrames = 512;

template <class Effect, bool AlternateGain = false>
void levelBlock(benchmark::State& state) {
    Effect effect(nullptr);
    effect.setSampleRate(48000.0f);
    AEffect* record = effect.getAeffect();
    for (VstInt32 index = 0; index < record->numParams; ++index) effect.setParameter(index, 0.3f);
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
    bool halve = true;
    for (auto _ : state) {
        if constexpr (AlternateGain) {
            effect.setParameter(0, halve ? 0.25f : 1.0f);  // gain 2p: 0.5, then 2
            halve = !halve;
        }
        record->processReplacing(record, inputs.data(), outputs.data(), kBlockFrames);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kBlockFrames * channels);
}

BENCHMARK_TEMPLATE(levelBlock, AF::AudioEnvelope1, true);
BENCHMARK_TEMPLATE(levelBlock, AF::AudioEnvelope2, true);
BENCHMARK_TEMPLATE(levelBlock, AF::AudioEnvelope6, true);
BENCHMARK_TEMPLATE(levelBlock, AF::AudioEnvelope16, true);
BENCHMARK_TEMPLATE(levelBlock, AF::AudioChannelEnvelope2);
BENCHMARK_TEMPLATE(levelBlock, AF::AudioChannelEnvelope6);
BENCHMARK_TEMPLATE(levelBlock, AF::AudioChannelEnvelope16);
BENCHMARK_TEMPLATE(levelBlock, AF::AudioBalance);
BENCHMARK_TEMPLATE(levelBlock, AF::AudioMute1);
BENCHMARK_TEMPLATE(levelBlock, AF::AudioMute2);
BENCHMARK_TEMPLATE(levelBlock, AF::AudioMute6);
BENCHMARK_TEMPLATE(levelBlock, AF::AudioMute16);
BENCHMARK_TEMPLATE(levelBlock, AF::AudioInvert1);
BENCHMARK_TEMPLATE(levelBlock, AF::AudioInvert2);
BENCHMARK_TEMPLATE(levelBlock, AF::AudioInvert4);
BENCHMARK_TEMPLATE(levelBlock, AF::AudioInvert6);
BENCHMARK_TEMPLATE(levelBlock, AF::AudioInvert16);
BENCHMARK_TEMPLATE(levelBlock, AF::AudioFillLeft);
BENCHMARK_TEMPLATE(levelBlock, AF::AudioFillRight);
BENCHMARK_TEMPLATE(levelBlock, AF::AudioSwapChannels);

}  // namespace
