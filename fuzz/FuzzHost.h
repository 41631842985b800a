#pragma once
// Shared by the fuzz targets: the module's effects made through its own
// start-up and factory (the module's sources are linked in) with a host that
// answers nothing, and heap buffers of exactly the size asked for, so that the
// address sanitizer catches a single byte written or read past them.
#include <fuzzer/FuzzedDataProvider.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "ML/VSTAudioFilterRegistry.h"
#include "Opcodes.h"
#include "module/Startup.h"
#include "hostkit/Effect.h"

namespace affuzz {

// The registrations made by one AF::Startup call, kept for the process.
inline const std::vector<ML::VSTAudioFilterRegistry::Registration>& registrations() {
    static const std::vector<ML::VSTAudioFilterRegistry::Registration> made = [] {
        ML::VSTAudioFilterRegistry::Clear();
        AF::Startup();
        return ML::VSTAudioFilterRegistry::Registrations();
    }();
    return made;
}

// Makes the effect of registration `which` (modulo the count); null if its
// family is not built.
inline AEffect* makeEffect(std::size_t which) {
    const auto& all = registrations();
    if (all.empty()) return nullptr;
    // The fuzzers drive the bare record: the handle lets go of it.
    return hostkit::createEffect(all[which % all.size()], &hostkit::quietHost).release();
}

inline void closeEffect(AEffect*& effect) {
    if (effect != nullptr) effect->dispatcher(effect, effClose, 0, 0, nullptr, 0.0f);
    effect = nullptr;
}

// A sample rate from the input. Rates beyond what any device runs at (above
// 768 kHz, or +infinity) make the delays size their lines for hours of audio,
// gigabytes by design; they are folded back so the fuzzer looks for other faults.
inline float sampleRateFrom(FuzzedDataProvider& input) {
    static const float kRates[] = {8000.0f, 22050.0f, 44100.0f, 48000.0f, 96000.0f, 192000.0f, 384000.0f};
    float rate = 0.0f;
    switch (input.ConsumeIntegralInRange<int>(0, 3)) {
        case 0: return kRates[input.ConsumeIntegralInRange<std::size_t>(0, std::size(kRates) - 1)];
        case 1: rate = input.ConsumeFloatingPoint<float>(); break;
        case 2: rate = input.ConsumeFloatingPointInRange<float>(-1000.0f, 1000.0f); break;
        default: {
            static const float kOdd[] = {0.0f, -0.0f, -1.0f, NAN, -INFINITY, 1.0f, 0.5f, 1e-30f};
            return kOdd[input.ConsumeIntegralInRange<std::size_t>(0, std::size(kOdd) - 1)];
        }
    }
    if (rate > 768000.0f) rate = 48000.0f;
    return rate;
}

// A parameter value: anything, with the interesting ones likely.
inline float parameterFrom(FuzzedDataProvider& input) {
    static const float kOdd[] = {0.0f,     1.0f,  0.5f,   -1.0f,     2.0f, 1e30f, -1e30f, INFINITY, -INFINITY,
                                 NAN,      1e-45f, -0.0f, 0.99999f, 1e-7f, 1.0001f};
    switch (input.ConsumeIntegralInRange<int>(0, 2)) {
        case 0: return kOdd[input.ConsumeIntegralInRange<std::size_t>(0, std::size(kOdd) - 1)];
        case 1: return input.ConsumeFloatingPointInRange<float>(0.0f, 1.0f);
        default: return input.ConsumeFloatingPoint<float>();
    }
}

// A heap block of exactly `bytes` bytes (none for 0), zeroed.
class ExactBuffer {
public:
    explicit ExactBuffer(std::size_t bytes) : storage_(bytes == 0 ? nullptr : new char[bytes]()) {}
    char* data() const { return storage_.get(); }

private:
    std::unique_ptr<char[]> storage_;
};

}  // namespace affuzz
