// Throughput of both delay families for every channel variant at 512-frame
// calls, processing in place as a host does. Items are samples (frames x
// channels), so the variants compare per sample. The variants also run on the
// plain loop, and the multi-channel ones on the SSE2 baseline, so that the gain
// of the vector paths is measured in one run; the mono plain loop is the
// scalar per-channel rate the multi-channel variants are compared with.
#include <benchmark/benchmark.h>

#include <vector>

#include "dsp/simd/VectorPath.h"
#include "effects/delay/Delay.h"
#include "effects/delay/MultitapDelay.h"
#include "effects/variants/NamedVariants.h"

namespace {

constexpr int kBlockFrames = 512;

template <class Effect, int Channels>
void processBlocksOn(benchmark::State& state, AF::VectorPath path) {
    const AF::VectorPath saved = AF::vectorPath();
    AF::setVectorPath(path);
    if (AF::vectorPath() != path) {
        AF::setVectorPath(saved);
        state.SkipWithError("this processor lacks the instruction set");
        return;
    }
    Effect effect(nullptr);
    effect.setSampleRate(48000.0f);
    // A working echo with feedback so the line recirculates.
    effect.setParameter(1, 0.5f);
    std::vector<std::vector<float>> samples(Channels, std::vector<float>(kBlockFrames));
    std::vector<float*> channels(Channels);
    for (int c = 0; c < Channels; ++c) {
        for (int i = 0; i < kBlockFrames; ++i) samples[c][i] = static_cast<float>((i * 37 + c * 11) % 200) / 400.0f - 0.25f;
        channels[c] = samples[c].data();
    }
    for (auto _ : state) {
        effect.processReplacing(channels.data(), channels.data(), kBlockFrames);
        benchmark::DoNotOptimize(samples[0][0]);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kBlockFrames * Channels);
    AF::setVectorPath(saved);
}

// The path chosen at load (the widest the processor has, unless forced plain).
template <class Effect, int Channels>
void processBlocks(benchmark::State& state) {
    processBlocksOn<Effect, Channels>(state, AF::vectorPath());
}

// The plain per-channel loop, the reference the vector paths reproduce.
template <class Effect, int Channels>
void processBlocksPlain(benchmark::State& state) {
    processBlocksOn<Effect, Channels>(state, AF::VectorPath::scalar);
}

// Two channels per instruction, the baseline every x86-64 processor has.
template <class Effect, int Channels>
void processBlocksSse2(benchmark::State& state) {
    processBlocksOn<Effect, Channels>(state, AF::VectorPath::sse2);
}

BENCHMARK_TEMPLATE(processBlocks, AF::AudioDelay1, 1)->Name("Delay/1ch/512");
BENCHMARK_TEMPLATE(processBlocks, AF::AudioDelay2, 2)->Name("Delay/2ch/512");
BENCHMARK_TEMPLATE(processBlocks, AF::AudioDelay6, 6)->Name("Delay/6ch/512");
BENCHMARK_TEMPLATE(processBlocks, AF::AudioDelay16, 16)->Name("Delay/16ch/512");
BENCHMARK_TEMPLATE(processBlocks, AF::AudioMultitapDelay1, 1)->Name("MultitapDelay/1ch/512");
BENCHMARK_TEMPLATE(processBlocks, AF::AudioMultitapDelay2, 2)->Name("MultitapDelay/2ch/512");
BENCHMARK_TEMPLATE(processBlocks, AF::AudioMultitapDelay6, 6)->Name("MultitapDelay/6ch/512");
BENCHMARK_TEMPLATE(processBlocks, AF::AudioMultitapDelay16, 16)->Name("MultitapDelay/16ch/512");

BENCHMARK_TEMPLATE(processBlocksPlain, AF::AudioDelay1, 1)->Name("Delay/1ch/512/plain");
BENCHMARK_TEMPLATE(processBlocksPlain, AF::AudioDelay2, 2)->Name("Delay/2ch/512/plain");
BENCHMARK_TEMPLATE(processBlocksPlain, AF::AudioDelay6, 6)->Name("Delay/6ch/512/plain");
BENCHMARK_TEMPLATE(processBlocksPlain, AF::AudioDelay16, 16)->Name("Delay/16ch/512/plain");
BENCHMARK_TEMPLATE(processBlocksPlain, AF::AudioMultitapDelay1, 1)->Name("MultitapDelay/1ch/512/plain");
BENCHMARK_TEMPLATE(processBlocksPlain, AF::AudioMultitapDelay2, 2)->Name("MultitapDelay/2ch/512/plain");
BENCHMARK_TEMPLATE(processBlocksPlain, AF::AudioMultitapDelay6, 6)->Name("MultitapDelay/6ch/512/plain");
BENCHMARK_TEMPLATE(processBlocksPlain, AF::AudioMultitapDelay16, 16)->Name("MultitapDelay/16ch/512/plain");

BENCHMARK_TEMPLATE(processBlocksSse2, AF::AudioDelay2, 2)->Name("Delay/2ch/512/sse2");
BENCHMARK_TEMPLATE(processBlocksSse2, AF::AudioDelay6, 6)->Name("Delay/6ch/512/sse2");
BENCHMARK_TEMPLATE(processBlocksSse2, AF::AudioDelay16, 16)->Name("Delay/16ch/512/sse2");
BENCHMARK_TEMPLATE(processBlocksSse2, AF::AudioMultitapDelay2, 2)->Name("MultitapDelay/2ch/512/sse2");
BENCHMARK_TEMPLATE(processBlocksSse2, AF::AudioMultitapDelay6, 6)->Name("MultitapDelay/6ch/512/sse2");
BENCHMARK_TEMPLATE(processBlocksSse2, AF::AudioMultitapDelay16, 16)->Name("MultitapDelay/16ch/512/sse2");

}  // namespace
