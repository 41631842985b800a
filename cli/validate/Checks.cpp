// The checks. Each one makes its own instances through the effect's maker,
// drives them through the record only and records the first failing case.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <ctime>
#include <limits>

#include "Harness.h"

namespace afv::detail {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kSmallestSubnormal = std::numeric_limits<float>::denorm_min();

// The values every parameter index is tried with (randoms are added per check).
std::vector<float> extremeValues(Context& context, int randoms) {
    std::vector<float> values = {0.0f,      1.0f,       0.5f,      -1.0f, 2.0f, 1e30f, -1e30f,
                                 kInfinity, -kInfinity, kNaN, kSmallestSubnormal};
    for (int i = 0; i < randoms; ++i) values.push_back(context.unit());
    return values;
}

float wildValue(Context& context) {
    static const float kWild[] = {-1.0f, 2.0f, 1e30f, -1e30f, kInfinity, -kInfinity, kNaN, kSmallestSubnormal};
    return kWild[context.between(0, static_cast<int>(std::size(kWild)) - 1)];
}

int randomBlock(Context& context) {
    if (context.between(0, 1) == 0) return kBlockSizes[context.between(0, static_cast<int>(std::size(kBlockSizes)) - 1)];
    return context.between(1, kMaxBlock);
}

// A 64-byte text buffer with canary bytes after it, as a host passes for a
// name, label or display.
constexpr std::size_t kTextBytes = 64;
constexpr std::size_t kCanaryBytes = 64;
constexpr unsigned char kCanary = 0xA5;

bool guardedText(Context& context, Instance& fx, std::int32_t opcode, std::int32_t index, const char* what) {
    unsigned char buffer[kTextBytes + kCanaryBytes];
    std::memset(buffer, 0, kTextBytes);
    std::memset(buffer + kTextBytes, kCanary, kCanaryBytes);
    fx.dispatch(opcode, index, 0, buffer);
    for (std::size_t i = kTextBytes; i < sizeof buffer; ++i) {
        if (buffer[i] != kCanary) {
            char text[160];
            std::snprintf(text, sizeof text, "%s (opcode %d) for index %d wrote past %zu bytes (byte %zu)", what,
                          opcode, index, kTextBytes, i);
            return context.fail(text);
        }
    }
    if (std::memchr(buffer, 0, kTextBytes) == nullptr) {
        char text[160];
        std::snprintf(text, sizeof text, "%s (opcode %d) for index %d left no terminating zero in %zu bytes", what,
                      opcode, index, kTextBytes);
        return context.fail(text);
    }
    return true;
}

bool parameterTexts(Context& context, Instance& fx, std::int32_t index) {
    return guardedText(context, fx, effGetParamName, index, "getParameterName") &&
           guardedText(context, fx, effGetParamLabel, index, "getParameterLabel") &&
           guardedText(context, fx, effGetParamDisplay, index, "getParameterDisplay");
}

bool propertyCalls(Context& context, Instance& fx, std::int32_t index, const std::vector<float>& values) {
    ML::VSTPropertySupportMixin* properties = fx.properties();
    if (properties == nullptr) return true;
    const unsigned asked = static_cast<unsigned>(index);
    const int type = properties->GetParameterType(asked);
    const float maximum = properties->GetParameterMax(asked);
    const float minimum = properties->GetParameterMin(asked);
    properties->GetParameterStep(asked);
    properties->SupportsDisplayValueToParameter(asked);
    const bool valid = index >= 0 && index < fx.parameterCount();
    if (valid && type != -1 && !(std::isfinite(minimum) && std::isfinite(maximum) && minimum <= maximum)) {
        char text[160];
        std::snprintf(text, sizeof text, "parameter %d reports the range %g..%g", index, static_cast<double>(minimum),
                      static_cast<double>(maximum));
        return context.fail(text);
    }
    const float displays[] = {0.0f, minimum, maximum, -999.0f, 1e30f, -1e30f, kInfinity, -kInfinity, kNaN};
    for (float display : displays) properties->ConvertDisplayValueToParameter(asked, display);
    for (float value : values) properties->ConvertParameterValueToDisplay(asked, value);
    return true;
}

// One in-place processReplacing call on `frames` frames of `signal`, with the
// frames after the block checked for stray writes.
bool processInPlace(Context& context, Instance& fx, Audio& audio, Signal signal, int frames, std::int64_t position) {
    generate(signal, audio, frames, position, context.rng());
    audio.fillGuards(frames);
    audio.copyInputToOutput(frames);
    fx.processReplacing(audio.outPointers.data(), audio.outPointers.data(), frames);
    if (!audio.guardsIntact(frames)) return context.fail("processReplacing wrote past the frame count");
    return true;
}

// Defaults through the program, read back so that the report shows them.
void selectDefaults(Instance& fx) {
    fx.selectProgram(0);
    for (int i = 0; i < fx.parameterCount(); ++i) fx.setParameter(i, fx.getParameter(i));
}

bool allFinite(const Audio& audio, int frames, int& badChannel, int& badFrame) {
    for (int c = 0; c < audio.channels; ++c) {
        for (int i = 0; i < frames; ++i) {
            if (!std::isfinite(audio.out[c][i])) {
                badChannel = c;
                badFrame = i;
                return false;
            }
        }
    }
    return true;
}

// The divergences an effect shows by design at in-range parameters, if the
// current values fall under one: a multitap whose four feedbacks sum above 1
// recirculates more than it receives.
std::string documentedDivergence(const std::string& identifier, const std::vector<float>& values) {
    if (identifier.find("Multitap Delay") != std::string::npos && values.size() >= 11) {
        const double sum = static_cast<double>(values[1]) + values[4] + values[7] + values[10];
        if (sum > 1.0) {
            return "Multitap Delay: feedbacks summing above 1 grow without bound (output reaches infinity)";
        }
    }
    return std::string();
}

bool showsKnownDivergence(const std::string& identifier) {
    return identifier.find("Multitap Delay") != std::string::npos;
}

// In-range settings under which the divergence shows within a few thousand
// frames, so that the report lists it as seen rather than merely possible:
// every tap one frame late with a feedback of 0.5 (four taps: 2 in all). The
// suspend places the taps from the new times on every variant.
void provokeKnownDivergence(Instance& fx, float rate) {
    selectDefaults(fx);
    const float oneFrameAndAHalf = static_cast<float>(0.75 / static_cast<double>(rate));
    for (int tap = 0; tap < 4 && 3 * tap + 1 < fx.parameterCount(); ++tap) {
        fx.setParameter(3 * tap, oneFrameAndAHalf);
        fx.setParameter(3 * tap + 1, 0.5f);
    }
    fx.suspend();
    fx.resume();
}

}  // namespace

// ---- lifecycle ----------------------------------------------------------------

void checkLifecycle(Context& context) {
    constexpr int kCycles = 20;
    for (int cycle = 1; cycle <= kCycles; ++cycle) {
        context.setCase("create/open/close cycle %d of %d", cycle, kCycles);
        Instance fx(context);
        if (!fx.made()) return;
        fx.dispatch(effOpen);
        fx.close();
    }
    Instance fx(context);
    if (!fx.made()) return;
    Audio audio(fx.channels());
    context.setCase("open");
    fx.dispatch(effOpen);
    std::int64_t position = 0;
    for (float rate : kSampleRates) {
        context.setCase("sample rate %g", static_cast<double>(rate));
        fx.setSampleRate(rate);
        for (int block : kBlockSizes) {
            context.setCase("sample rate %g, block size %d, resume/suspend between blocks", static_cast<double>(rate),
                            block);
            fx.dispatch(effSetBlockSize, 0, block);
            fx.resume();
            for (int repeat = 0; repeat < 2; ++repeat) {
                if (!processInPlace(context, fx, audio, Signal::Noise, block, position)) return;
                position += block;
                fx.suspend();
                fx.resume();
            }
            fx.suspend();
        }
    }
    context.setCase("close");
    fx.close();
}

// ---- parameters ---------------------------------------------------------------

void checkParameters(Context& context) {
    const Effort effort(context.options().level);
    Instance fx(context);
    if (!fx.made()) return;
    Audio audio(fx.channels());
    fx.start(44100.0f, 1024);
    const std::vector<float> values = extremeValues(context, effort.parameterRandoms);
    const int count = fx.parameterCount();
    std::int64_t position = 0;
    for (int index = -1; index <= count + 1; ++index) {
        for (float value : values) {
            context.setCase("sample rate 44100, block size 64, parameter %d set to %.9g", index,
                            static_cast<double>(value));
            fx.setParameter(index, value);
            fx.getParameter(index);
            if (!parameterTexts(context, fx, index)) return;
            if (!processInPlace(context, fx, audio, Signal::Noise, 64, position)) return;
            position += 64;
        }
        context.setCase("property calls for index %d", index);
        if (!propertyCalls(context, fx, index, values)) return;
    }
    context.setCase("program name");
    if (!guardedText(context, fx, effGetProgramName, 0, "getProgramName")) return;
    const std::intptr_t programs[] = {0, 1, -1, fx.programCount()};
    for (std::intptr_t program : programs) {
        context.setCase("setProgram (opcode 2) with %ld", static_cast<long>(program));
        fx.selectProgram(program);
        fx.dispatch(effGetProgram);
        if (!guardedText(context, fx, effGetProgramName, 0, "getProgramName")) return;
        for (int index = -1; index <= count + 1; ++index) {
            if (!parameterTexts(context, fx, index)) return;
        }
        if (!processInPlace(context, fx, audio, Signal::Noise, 64, position)) return;
        position += 64;
    }
    context.setCase("HasHistory");
    if (fx.properties() != nullptr) fx.properties()->HasHistory();
    context.setCase("close");
}

// ---- audio --------------------------------------------------------------------

void checkAudio(Context& context) {
    const Effort effort(context.options().level);
    for (float rate : effort.audioRates) {
        Instance fx(context);
        if (!fx.made()) return;
        Audio audio(fx.channels());
        context.setCase("sample rate %g, start", static_cast<double>(rate));
        fx.start(rate, kMaxBlock);
        const int count = fx.parameterCount();
        // Frame counts of zero and below process nothing and write nothing.
        for (int frames : {0, -1, -4096}) {
            context.setCase("sample rate %g, frame count %d", static_cast<double>(rate), frames);
            audio.fillGuards(0);
            fx.processReplacing(audio.inPointers.data(), audio.outPointers.data(), frames);
            fx.process(audio.inPointers.data(), audio.outPointers.data(), frames);
            if (!audio.guardsIntact(0)) {
                context.fail("a call with a frame count of zero or less wrote samples");
                return;
            }
        }
        std::int64_t position = 0;
        for (Signal signal : kAllSignals) {
            for (int entry = 0; entry < 4; ++entry) {
                const bool accumulating = entry >= 2;
                const bool inPlace = (entry % 2) == 0;
                for (int block = 0; block < effort.audioBlocks; ++block) {
                    const int frames = randomBlock(context);
                    if (count > 0 && context.between(0, 2) == 0) {
                        const int index = context.between(-1, count + 1);
                        const float value = context.between(0, 1) == 0 ? context.unit() : wildValue(context);
                        context.setCase("sample rate %g, %s, parameter %d set to %.9g", static_cast<double>(rate),
                                        fx.describeParameters().c_str(), index, static_cast<double>(value));
                        fx.setParameter(index, value);
                    }
                    if (context.between(0, 7) == 0) {
                        context.setCase("sample rate %g, suspend and resume", static_cast<double>(rate));
                        fx.suspend();
                        fx.resume();
                    }
                    context.setCase("sample rate %g, block size %d, %s, %s, %s, %s", static_cast<double>(rate), frames,
                                    signalName(signal), accumulating ? "process" : "processReplacing",
                                    inPlace ? "in place" : "separate buffers", fx.describeParameters().c_str());
                    generate(signal, audio, frames, position, context.rng());
                    audio.fillGuards(frames);
                    if (inPlace) {
                        audio.copyInputToOutput(frames);
                    } else {
                        audio.zeroOutput(frames);
                    }
                    float** inputs = inPlace ? audio.outPointers.data() : audio.inPointers.data();
                    if (accumulating) {
                        fx.process(inputs, audio.outPointers.data(), frames);
                    } else {
                        fx.processReplacing(inputs, audio.outPointers.data(), frames);
                    }
                    if (!audio.guardsIntact(frames)) {
                        context.fail("wrote past the frame count of the call");
                        return;
                    }
                    position += frames;
                }
            }
        }
        context.setCase("sample rate %g, close", static_cast<double>(rate));
    }
}

// ---- finite -------------------------------------------------------------------

void checkFinite(Context& context) {
    const Effort effort(context.options().level);
    const Signal signals[] = {Signal::Noise,   Signal::Square, Signal::DcPlus,
                              Signal::DcMinus, Signal::Impulse, Signal::Huge};
    bool nanDocumented = false;
    for (float rate : effort.audioRates) {
        for (int trial = 0; trial < effort.finiteTrials; ++trial) {
            Instance fx(context);
            if (!fx.made()) return;
            Audio audio(fx.channels());
            context.setCase("sample rate %g, start", static_cast<double>(rate));
            fx.start(rate, 2048);
            if (trial == 0) {
                selectDefaults(fx);
            } else if (trial == 1 && showsKnownDivergence(context.maker().identifier)) {
                provokeKnownDivergence(fx, rate);
            } else {
                for (int i = 0; i < fx.parameterCount(); ++i) {
                    fx.setParameter(i, trial == 1 ? 0.0f : trial == 2 ? 1.0f : context.unit());
                }
            }
            const std::string divergence = documentedDivergence(context.maker().identifier, fx.parameterValues());
            bool diverged = false;
            for (Signal signal : signals) {
                std::int64_t position = 0;
                int call = 0;
                while (position < effort.finiteFrames && !diverged) {
                    const int frames = context.between(1, 2048);
                    // In place as a host does, then separate buffers, then the accumulating call.
                    const int entry = call++ % 3;
                    context.setCase("sample rate %g, block size %d, %s, %s, %s", static_cast<double>(rate), frames,
                                    signalName(signal),
                                    entry == 0   ? "processReplacing in place"
                                    : entry == 1 ? "processReplacing separate"
                                                 : "process",
                                    fx.describeParameters().c_str());
                    generate(signal, audio, frames, position, context.rng());
                    if (entry == 0) {
                        audio.copyInputToOutput(frames);
                        fx.processReplacing(audio.outPointers.data(), audio.outPointers.data(), frames);
                    } else {
                        audio.zeroOutput(frames);
                        if (entry == 1) {
                            fx.processReplacing(audio.inPointers.data(), audio.outPointers.data(), frames);
                        } else {
                            fx.process(audio.inPointers.data(), audio.outPointers.data(), frames);
                        }
                    }
                    int channel = 0;
                    int frame = 0;
                    if (!allFinite(audio, frames, channel, frame)) {
                        if (divergence.empty()) {
                            char text[160];
                            std::snprintf(text, sizeof text, "output %g at channel %d, frame %d of the block",
                                          static_cast<double>(audio.out[channel][frame]), channel, frame);
                            context.fail(text);
                            return;
                        }
                        context.document(divergence);
                        diverged = true;
                    }
                    position += frames;
                }
            }
            // A NaN sample is carried by the arithmetic; suspend clears the
            // memory, after which finite input gives finite output again.
            context.setCase("sample rate %g, block size 512, %s, %s", static_cast<double>(rate),
                            signalName(Signal::NotANumber), fx.describeParameters().c_str());
            generate(Signal::NotANumber, audio, 512, 0, context.rng());
            audio.copyInputToOutput(512);
            fx.processReplacing(audio.outPointers.data(), audio.outPointers.data(), 512);
            int channel = 0;
            int frame = 0;
            if (!allFinite(audio, 512, channel, frame) && !nanDocumented) {
                context.document("NaN input gives NaN output (carried by the arithmetic until suspend clears the memory)");
                nanDocumented = true;
            }
            if (!divergence.empty()) continue;
            context.setCase("sample rate %g, suspend after NaN input, then noise, block size 2048, %s",
                            static_cast<double>(rate), fx.describeParameters().c_str());
            fx.suspend();
            fx.resume();
            for (int block = 0; block < 2; ++block) {
                generate(Signal::Noise, audio, 2048, 0, context.rng());
                audio.copyInputToOutput(2048);
                fx.processReplacing(audio.outPointers.data(), audio.outPointers.data(), 2048);
                if (!allFinite(audio, 2048, channel, frame)) {
                    char text[160];
                    std::snprintf(text, sizeof text,
                                  "output %g at channel %d, frame %d: still not finite after a NaN input and suspend",
                                  static_cast<double>(audio.out[channel][frame]), channel, frame);
                    context.fail(text);
                    return;
                }
            }
        }
    }
}

// ---- denormals ----------------------------------------------------------------

void checkDenormals(Context& context) {
    const Effort effort(context.options().level);
    constexpr int kBlock = 1024;
    for (float rate : effort.denormalRates) {
        const std::int64_t second = static_cast<std::int64_t>(rate);
        for (int trial = 0; trial < effort.denormalTrials; ++trial) {
            Instance fx(context);
            if (!fx.made()) return;
            Audio audio(fx.channels());
            context.setCase("sample rate %g, start", static_cast<double>(rate));
            fx.start(rate, kBlock);
            if (trial == 0) {
                selectDefaults(fx);
            } else {
                fx.randomInRangeParameters();
            }
            context.setCase("sample rate %g, block size %d, 0.25 s of noise, %s", static_cast<double>(rate), kBlock,
                            fx.describeParameters().c_str());
            std::int64_t position = 0;
            for (; position < second / 4; position += kBlock) {
                generate(Signal::Noise, audio, kBlock, position, context.rng());
                audio.copyInputToOutput(kBlock);
                fx.processReplacing(audio.outPointers.data(), audio.outPointers.data(), kBlock);
            }
            generate(Signal::Silence, audio, kBlock, 0, context.rng());
            context.setCase("sample rate %g, block size %d, 1 s of silence after noise, %s", static_cast<double>(rate),
                            kBlock, fx.describeParameters().c_str());
            for (std::int64_t silent = 0; silent < second; silent += kBlock) {
                audio.zeroOutput(kBlock);
                fx.processReplacing(audio.outPointers.data(), audio.outPointers.data(), kBlock);
            }
            for (std::int64_t silent = 0; silent < second / 4; silent += kBlock) {
                context.setCase("sample rate %g, block size %d, silence %.3f s after noise, %s",
                                static_cast<double>(rate), kBlock,
                                1.0 + static_cast<double>(silent) / static_cast<double>(second),
                                fx.describeParameters().c_str());
                audio.zeroOutput(kBlock);
                fx.processReplacing(audio.outPointers.data(), audio.outPointers.data(), kBlock);
                for (int c = 0; c < audio.channels; ++c) {
                    for (int i = 0; i < kBlock; ++i) {
                        if (std::fpclassify(audio.out[c][i]) == FP_SUBNORMAL) {
                            char text[160];
                            std::snprintf(text, sizeof text, "subnormal output %g at channel %d, frame %d of the block",
                                          static_cast<double>(audio.out[c][i]), c, i);
                            context.fail(text);
                            return;
                        }
                    }
                }
            }
        }
    }
}

// ---- determinism --------------------------------------------------------------

void checkDeterminism(Context& context) {
    const Effort effort(context.options().level);
    const float rate = effort.audioRates[static_cast<std::size_t>(
        context.between(0, static_cast<int>(effort.audioRates.size()) - 1))];
    Instance first(context);
    Instance second(context);
    if (!first.made() || !second.made()) return;
    Audio a(first.channels());
    Audio b(second.channels());
    context.setCase("sample rate %g, start both instances", static_cast<double>(rate));
    first.start(rate, kMaxBlock);
    second.start(rate, kMaxBlock);
    const int count = first.parameterCount();
    std::int64_t position = 0;
    for (int block = 0; block < effort.determinismBlocks; ++block) {
        const int action = context.between(0, 9);
        if (action <= 3 && count > 0) {
            const int index = context.between(0, count - 1);
            const float value = action == 0 ? wildValue(context) : context.unit();
            first.setParameter(index, value);
            second.setParameter(index, value);
        } else if (action == 4) {
            first.suspend();
            second.suspend();
            first.resume();
            second.resume();
        } else if (action == 5) {
            first.selectProgram(0);
            second.selectProgram(0);
        }
        const int frames = randomBlock(context);
        // Mostly ordinary signals: a NaN would leave both instances carrying NaN
        // and hide any difference, so it is rare and a suspend follows it.
        const bool extreme = context.between(0, 9) == 0;
        const Signal signal = extreme ? (context.between(0, 1) == 0 ? Signal::Huge : Signal::NotANumber)
                                      : kAllSignals[context.between(0, 5)];
        const int entry = context.between(0, 2);
        context.setCase("sample rate %g, block %d, block size %d, %s, %s, %s", static_cast<double>(rate), block,
                        frames, signalName(signal),
                        entry == 0 ? "processReplacing in place" : entry == 1 ? "processReplacing separate" : "process",
                        first.describeParameters().c_str());
        generate(signal, a, frames, position, context.rng());
        for (int c = 0; c < a.channels; ++c) std::copy(a.in[c].begin(), a.in[c].begin() + frames, b.in[c].begin());
        Audio* both[] = {&a, &b};
        Instance* instances[] = {&first, &second};
        for (int k = 0; k < 2; ++k) {
            Audio& audio = *both[k];
            if (entry == 0) {
                audio.copyInputToOutput(frames);
                instances[k]->processReplacing(audio.outPointers.data(), audio.outPointers.data(), frames);
            } else {
                audio.zeroOutput(frames);
                if (entry == 1) {
                    instances[k]->processReplacing(audio.inPointers.data(), audio.outPointers.data(), frames);
                } else {
                    instances[k]->process(audio.inPointers.data(), audio.outPointers.data(), frames);
                }
            }
        }
        for (int c = 0; c < a.channels; ++c) {
            if (std::memcmp(a.out[c].data(), b.out[c].data(), sizeof(float) * static_cast<std::size_t>(frames)) != 0) {
                for (int i = 0; i < frames; ++i) {
                    std::uint32_t x, y;
                    std::memcpy(&x, &a.out[c][i], sizeof x);
                    std::memcpy(&y, &b.out[c][i], sizeof y);
                    if (x != y) {
                        char text[200];
                        std::snprintf(text, sizeof text,
                                      "two fresh instances differ at channel %d, frame %d of the block: %08X vs %08X",
                                      c, i, x, y);
                        context.fail(text);
                        return;
                    }
                }
            }
        }
        if (signal == Signal::NotANumber) {
            first.suspend();
            second.suspend();
            first.resume();
            second.resume();
        }
        position += frames;
    }
}

// ---- timing -------------------------------------------------------------------

namespace {

double threadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

double medianOf(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// Median seconds per sample of silence (after noise and 1 s of silence) and of
// noise over `runs` alternating measurements, and the median of the runs' ratios.
double measureSilenceAndNoise(Context& context, Instance& fx, Audio& audio, int runs, double& silence, double& noise) {
    constexpr int kBlock = 1024;
    constexpr double kRate = 44100.0;
    constexpr double kMinimumSeconds = 0.004;  // each timed stretch, well above the clock's grain
    float** out = audio.outPointers.data();
    std::vector<std::vector<float>> noiseBlock(static_cast<std::size_t>(audio.channels));
    generate(Signal::Noise, audio, kBlock, 0, context.rng());
    for (int c = 0; c < audio.channels; ++c) noiseBlock[c].assign(audio.in[c].begin(), audio.in[c].begin() + kBlock);
    auto loadNoise = [&] {
        for (int c = 0; c < audio.channels; ++c) std::copy(noiseBlock[c].begin(), noiseBlock[c].end(), audio.in[c].begin());
    };
    auto loadSilence = [&] {
        for (int c = 0; c < audio.channels; ++c) std::fill(audio.in[c].begin(), audio.in[c].begin() + kBlock, 0.0f);
    };
    // In place as a host does: the block is copied into the outputs first
    // (the same cost for silence and noise).
    // The thread's own processor time: time spent descheduled on a busy
    // machine does not count.
    auto timeBlocks = [&](int blocks) {
        const double begin = threadSeconds();
        for (int i = 0; i < blocks; ++i) {
            audio.copyInputToOutput(kBlock);
            fx.processReplacing(out, out, kBlock);
        }
        return threadSeconds() - begin;
    };
    // Enough blocks that a timed stretch of noise lasts a few milliseconds.
    int blocks = static_cast<int>(kRate / 4 / kBlock) + 1;
    loadNoise();
    while (timeBlocks(blocks) < kMinimumSeconds && blocks < 4096) blocks *= 2;
    std::vector<double> silent, noisy;
    for (int run = 0; run < runs; ++run) {
        loadNoise();
        timeBlocks(static_cast<int>(kRate / 4 / kBlock) + 1);
        loadSilence();
        timeBlocks(static_cast<int>(kRate / kBlock) + 1);
        silent.push_back(timeBlocks(blocks));
        loadNoise();
        noisy.push_back(timeBlocks(blocks));
    }
    const double samples = static_cast<double>(blocks) * kBlock * audio.channels;
    silence = medianOf(silent) / samples;
    noise = medianOf(noisy) / samples;
    std::vector<double> ratios;
    for (std::size_t run = 0; run < silent.size(); ++run) ratios.push_back(silent[run] / std::max(noisy[run], 1e-12));
    return medianOf(ratios);
}

}  // namespace

void checkTiming(Context& context) {
    const Effort effort(context.options().level);
    constexpr double kAllowedRatio = 3.0;
    Instance fx(context);
    if (!fx.made()) return;
    Audio audio(fx.channels());
    fx.start(44100.0f, 1024);
    selectDefaults(fx);
    if (context.options().level >= 7) fx.randomInRangeParameters();
    context.setCase("sample rate 44100, block size 1024, silence after noise versus noise, %d runs, %s",
                    effort.timingRuns, fx.describeParameters().c_str());
    double silence = 0;
    double noise = 0;
    double ratio = 0;
    // A loaded machine can spoil one measurement; a real slow-down shows every time.
    for (int attempt = 0; attempt < 3; ++attempt) {
        ratio = measureSilenceAndNoise(context, fx, audio, effort.timingRuns, silence, noise);
        if (ratio <= kAllowedRatio) return;
    }
    char text[200];
    std::snprintf(text, sizeof text, "silence costs %.1fx noise per sample (medians %.2f ns versus %.2f ns)", ratio,
                  silence * 1e9, noise * 1e9);
    context.fail(text);
}

}  // namespace afv::detail
