// processReplacing of the high-pass, low-pass, band-pass and notch at 512-frame
// blocks, in place as a host runs them. Items are samples: frames x channels.
// The high- and low-pass at one and two channels, and all six- and
// sixteen-channel variants, also run on the plain per-channel path,
// on SSE2 and on AVX2 with sixteen registers only ("/scalar", "/sse2",
// "/avx2"; the latter differs from the default where the processor has
// AVX-512VL), so the gain of the vector loops and the multi-channel rate
// against mono come from one run.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "dsp/simd/VectorPath.h"
#include "effects/filters/CutFilters.h"
#include "effects/variants/NamedVariants.h"

namespace {

constexpr int kBlockFrames = 512;

// Selects a path for one benchmark and restores the load-time choice after it.
class PathChoice {
public:
    explicit PathChoice(AF::VectorPath path, bool extendedRegisters = true)
        : saved_(AF::vectorPath()), savedRegisters_(AF::extendedRegisters()) {
        AF::setVectorPath(path);
        if (!extendedRegisters) AF::setExtendedRegisters(false);
    }
    ~PathChoice() {
        AF::setVectorPath(saved_);
        AF::setExtendedRegisters(savedRegisters_);
    }

private:
    AF::VectorPath saved_;
    bool savedRegisters_;
};

template <class Effect, unsigned Channels>
void processReplacing(benchmark::State& state) {
    Effect* effect = new Effect(nullptr);
    AEffect* e = effect->getAeffect();
    e->dispatcher(e, 10, 0, 0, nullptr, 48000.0f);
    std::vector<std::vector<float>> audio(Channels, std::vector<float>(kBlockFrames));
    std::vector<float*> pointers;
    for (unsigned c = 0; c < Channels; ++c) {
        for (int i = 0; i < kBlockFrames; ++i) audio[c][static_cast<std::size_t>(i)] = static_cast<float>(0.5 * std::sin(0.01 * i * (c + 1)));
        pointers.push_back(audio[c].data());
    }
    for (auto _ : state) {
        e->processReplacing(e, pointers.data(), pointers.data(), kBlockFrames);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kBlockFrames * Channels);
    e->dispatcher(e, 1, 0, 0, nullptr, 0.0f);
}

template <class Effect, unsigned Channels, AF::VectorPath Path>
void processReplacingOn(benchmark::State& state) {
    const PathChoice choice(Path);
    processReplacing<Effect, Channels>(state);
}

// AVX2 with its sixteen registers, also where AVX-512VL would give more.
template <class Effect, unsigned Channels>
void processReplacingOnAvx2(benchmark::State& state) {
    const PathChoice choice(AF::VectorPath::avx2, false);
    processReplacing<Effect, Channels>(state);
}

BENCHMARK(processReplacing<AF::AudioHighpass1, 1>)->Name("Highpass/1");
BENCHMARK(processReplacing<AF::AudioHighpass2, 2>)->Name("Highpass/2");
BENCHMARK(processReplacing<AF::AudioHighpass6, 6>)->Name("Highpass/6");
BENCHMARK(processReplacing<AF::AudioHighpass16, 16>)->Name("Highpass/16");
BENCHMARK(processReplacing<AF::AudioLowpass1, 1>)->Name("Lowpass/1");
BENCHMARK(processReplacing<AF::AudioLowpass2, 2>)->Name("Lowpass/2");
BENCHMARK(processReplacing<AF::AudioLowpass6, 6>)->Name("Lowpass/6");
BENCHMARK(processReplacing<AF::AudioLowpass16, 16>)->Name("Lowpass/16");
BENCHMARK(processReplacing<AF::AudioBandpass1, 1>)->Name("Bandpass/1");
BENCHMARK(processReplacing<AF::AudioBandpass2, 2>)->Name("Bandpass/2");
BENCHMARK(processReplacing<AF::AudioBandpass6, 6>)->Name("Bandpass/6");
BENCHMARK(processReplacing<AF::AudioBandpass16, 16>)->Name("Bandpass/16");
BENCHMARK(processReplacing<AF::AudioBandreject1, 1>)->Name("Bandreject/1");
BENCHMARK(processReplacing<AF::AudioBandreject2, 2>)->Name("Bandreject/2");
BENCHMARK(processReplacing<AF::AudioBandreject6, 6>)->Name("Bandreject/6");
BENCHMARK(processReplacing<AF::AudioBandreject16, 16>)->Name("Bandreject/16");

BENCHMARK(processReplacingOn<AF::AudioHighpass1, 1, AF::VectorPath::scalar>)->Name("Highpass/1/scalar");
BENCHMARK(processReplacingOn<AF::AudioHighpass1, 1, AF::VectorPath::sse2>)->Name("Highpass/1/sse2");
BENCHMARK(processReplacingOn<AF::AudioHighpass2, 2, AF::VectorPath::scalar>)->Name("Highpass/2/scalar");
BENCHMARK(processReplacingOn<AF::AudioHighpass2, 2, AF::VectorPath::sse2>)->Name("Highpass/2/sse2");
BENCHMARK(processReplacingOn<AF::AudioLowpass1, 1, AF::VectorPath::scalar>)->Name("Lowpass/1/scalar");
BENCHMARK(processReplacingOn<AF::AudioLowpass1, 1, AF::VectorPath::sse2>)->Name("Lowpass/1/sse2");
BENCHMARK(processReplacingOn<AF::AudioLowpass2, 2, AF::VectorPath::scalar>)->Name("Lowpass/2/scalar");
BENCHMARK(processReplacingOn<AF::AudioLowpass2, 2, AF::VectorPath::sse2>)->Name("Lowpass/2/sse2");
BENCHMARK(processReplacingOn<AF::AudioHighpass6, 6, AF::VectorPath::scalar>)->Name("Highpass/6/scalar");
BENCHMARK(processReplacingOn<AF::AudioHighpass6, 6, AF::VectorPath::sse2>)->Name("Highpass/6/sse2");
BENCHMARK(processReplacingOn<AF::AudioHighpass16, 16, AF::VectorPath::scalar>)->Name("Highpass/16/scalar");
BENCHMARK(processReplacingOn<AF::AudioHighpass16, 16, AF::VectorPath::sse2>)->Name("Highpass/16/sse2");
BENCHMARK(processReplacingOn<AF::AudioLowpass6, 6, AF::VectorPath::scalar>)->Name("Lowpass/6/scalar");
BENCHMARK(processReplacingOn<AF::AudioLowpass6, 6, AF::VectorPath::sse2>)->Name("Lowpass/6/sse2");
BENCHMARK(processReplacingOn<AF::AudioLowpass16, 16, AF::VectorPath::scalar>)->Name("Lowpass/16/scalar");
BENCHMARK(processReplacingOn<AF::AudioLowpass16, 16, AF::VectorPath::sse2>)->Name("Lowpass/16/sse2");
BENCHMARK(processReplacingOn<AF::AudioBandpass6, 6, AF::VectorPath::scalar>)->Name("Bandpass/6/scalar");
BENCHMARK(processReplacingOn<AF::AudioBandpass6, 6, AF::VectorPath::sse2>)->Name("Bandpass/6/sse2");
BENCHMARK(processReplacingOn<AF::AudioBandpass16, 16, AF::VectorPath::scalar>)->Name("Bandpass/16/scalar");
BENCHMARK(processReplacingOn<AF::AudioBandpass16, 16, AF::VectorPath::sse2>)->Name("Bandpass/16/sse2");
BENCHMARK(processReplacingOn<AF::AudioBandreject6, 6, AF::VectorPath::scalar>)->Name("Bandreject/6/scalar");
BENCHMARK(processReplacingOn<AF::AudioBandreject6, 6, AF::VectorPath::sse2>)->Name("Bandreject/6/sse2");
BENCHMARK(processReplacingOn<AF::AudioBandreject16, 16, AF::VectorPath::scalar>)->Name("Bandreject/16/scalar");
BENCHMARK(processReplacingOn<AF::AudioBandreject16, 16, AF::VectorPath::sse2>)->Name("Bandreject/16/sse2");
BENCHMARK(processReplacingOnAvx2<AF::AudioHighpass6, 6>)->Name("Highpass/6/avx2");
BENCHMARK(processReplacingOnAvx2<AF::AudioHighpass16, 16>)->Name("Highpass/16/avx2");
BENCHMARK(processReplacingOnAvx2<AF::AudioLowpass6, 6>)->Name("Lowpass/6/avx2");
BENCHMARK(processReplacingOnAvx2<AF::AudioLowpass16, 16>)->Name("Lowpass/16/avx2");
BENCHMARK(processReplacingOnAvx2<AF::AudioBandpass6, 6>)->Name("Bandpass/6/avx2");
BENCHMARK(processReplacingOnAvx2<AF::AudioBandpass16, 16>)->Name("Bandpass/16/avx2");
BENCHMARK(processReplacingOnAvx2<AF::AudioBandreject6, 6>)->Name("Bandreject/6/avx2");
BENCHMARK(processReplacingOnAvx2<AF::AudioBandreject16, 16>)->Name("Bandreject/16/avx2");

}  // namespace
