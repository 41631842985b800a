// Two yardsticks the effect figures are read against, at the same 512-frame
// blocks and buffer shapes as the effects' own benchmarks:
//  - the latency bound: one channel of one second-order section evaluated in
//    double precision with its state rounded to float, the dependency chain
//    every mono recursion of the module runs on, so nothing can beat it per
//    channel;
//  - the copy bandwidth: memcpy of the same per-channel buffers, the ceiling
//    for effects that only scale or move samples.
// Items are samples (frames x channels), as everywhere in bench/.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <vector>

namespace {

constexpr int kBlockFrames = 512;

// A minimal section: y = ((c1 (x1 - y1) + c0 x) + c2 x2) + c3 y2 + 1e-25,
// rounded to float, exactly the chain of the peaking equaliser.
void latencyBoundSection(benchmark::State& state) {
    std::vector<float> in(kBlockFrames), out(kBlockFrames);
    for (int i = 0; i < kBlockFrames; ++i) in[static_cast<std::size_t>(i)] = std::sin(0.01f * i) * 0.5f;
    const double c0 = 1.05, c1 = -1.9, c2 = 0.93, c3 = -0.91;
    const double bias = 1e-25f;
    float x1 = 0.0f, x2 = 0.0f, y1 = 0.0f, y2 = 0.0f;
    for (auto _ : state) {
        const float* src = in.data();
        float* dst = out.data();
        for (int i = 0; i < kBlockFrames; ++i) {
            const float x = src[i];
            const double sum = ((c1 * (double(x1) - double(y1)) + c0 * double(x)) + c2 * double(x2)) + c3 * double(y2);
            const float y = static_cast<float>(sum + bias);
            y2 = y1;
            y1 = y;
            x2 = x1;
            x1 = x;
            dst[i] = y;
        }
        benchmark::DoNotOptimize(dst);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kBlockFrames);
}
BENCHMARK(latencyBoundSection)->Name("Reference/LatencyBound/1ch/512");

// memcpy of every channel's block from one set of buffers to another.
void copyBandwidth(benchmark::State& state) {
    const auto channels = static_cast<std::size_t>(state.range(0));
    std::vector<std::vector<float>> in(channels, std::vector<float>(kBlockFrames, 0.25f));
    std::vector<std::vector<float>> out = in;
    for (auto _ : state) {
        for (std::size_t c = 0; c < channels; ++c)
            std::memcpy(out[c].data(), in[c].data(), sizeof(float) * kBlockFrames);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kBlockFrames * static_cast<int64_t>(channels));
}
BENCHMARK(copyBandwidth)->Name("Reference/Copy/512")->Arg(1)->Arg(2)->Arg(4)->Arg(6)->Arg(16)->ArgName("ch");

}  // namespace
