// processReplacing of the level effects and channel utilities at 512-frame
// blocks, from a fixed input into separate outputs (the same buffer shapes as
// Reference/Copy, whose memcpy figure is their ceiling). Parameters are set
// off their defaults so that gains are not 1. Volume scales the output buffers
// in place, so its gain alternates between 0.5 and 2 from call to call: the
// samples return exactly to their values instead of decaying to subnormals.
// Items are samples (frames x channels), the Fill effects' untouched side included.
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
#include "effects/variants/NamedVariants.h"

namespace {

constexpr int kBlockFrames = 512;

// What a benchmark sets before it runs: every parameter at 0.3 (gains off 1),
// or the Mute master on, so that the mute clears every channel (at 0.3 no
// toggle is on and it writes nothing).
enum class Setting { offDefaults, masterOn };

template <class Effect, bool AlternateGain = false, Setting Set = Setting::offDefaults>
void levelBlock(benchmark::State& state) {
    Effect effect(nullptr);
    effect.setSampleRate(48000.0f);
    AEffect* record = effect.getAeffect();
    for (VstInt32 index = 0; index < record->numParams; ++index) effect.setParameter(index, 0.3f);
    if constexpr (Set == Setting::masterOn) effect.setParameter(0, 1.0f);
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

// Names: family/<channels>ch/<frames>, as bench/table reads them.
BENCHMARK_TEMPLATE(levelBlock, AF::AudioEnvelope1, true)->Name("Volume/1ch/512");
BENCHMARK_TEMPLATE(levelBlock, AF::AudioEnvelope2, true)->Name("Volume/2ch/512");
BENCHMARK_TEMPLATE(levelBlock, AF::AudioEnvelope6, true)->Name("Volume/6ch/512");
BENCHMARK_TEMPLATE(levelBlock, AF::AudioEnvelope16, true)->Name("Volume/16ch/512");
BENCHMARK_TEMPLATE(levelBlock, AF::AudioChannelEnvelope2)->Name("ChannelVolume/2ch/512");
BENCHMARK_TEMPLATE(levelBlock, AF::AudioChannelEnvelope6)->Name("ChannelVolume/6ch/512");
BENCHMARK_TEMPLATE(levelBlock, AF::AudioChannelEnvelope16)->Name("ChannelVolume/16ch/512");
BENCHMARK_TEMPLATE(levelBlock, AF::AudioBalance)->Name("Balance/2ch/512");
BENCHMARK_TEMPLATE(levelBlock, AF::AudioMute1, false, Setting::masterOn)->Name("Mute/1ch/512");
BENCHMARK_TEMPLATE(levelBlock, AF::AudioMute2, false, Setting::masterOn)->Name("Mute/2ch/512");
BENCHMARK_TEMPLATE(levelBlock, AF::AudioMute6, false, Setting::masterOn)->Name("Mute/6ch/512");
BENCHMARK_TEMPLATE(levelBlock, AF::AudioMute16, false, Setting::masterOn)->Name("Mute/16ch/512");
BENCHMARK_TEMPLATE(levelBlock, AF::AudioSwapChannels)->Name("SwapChannels/2ch/512");
BENCHMARK_TEMPLATE(levelBlock, AF::AudioFillLeft)->Name("FillLeft/2ch/512");
BENCHMARK_TEMPLATE(levelBlock, AF::AudioFillRight)->Name("FillRight/2ch/512");
BENCHMARK_TEMPLATE(levelBlock, AF::AudioInvert1)->Name("Invert/1ch/512");
BENCHMARK_TEMPLATE(levelBlock, AF::AudioInvert2)->Name("Invert/2ch/512");
BENCHMARK_TEMPLATE(levelBlock, AF::AudioInvert4)->Name("Invert/4ch/512");
BENCHMARK_TEMPLATE(levelBlock, AF::AudioInvert6)->Name("Invert/6ch/512");
BENCHMARK_TEMPLATE(levelBlock, AF::AudioInvert16)->Name("Invert/16ch/512");

}  // namespace
