#include "Harness.h"

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <limits>

#include "AllocationWatch.h"
#include "hostkit/Effect.h"

namespace afv::detail {
namespace {

char* gCrashNote = nullptr;
std::size_t gCrashNoteSize = 0;

// A bit pattern no effect writes by accident: a signalling NaN with a payload.
constexpr std::uint32_t kGuardBits = 0x7FA5A5A5u;

float guardValue() {
    float value;
    std::memcpy(&value, &kGuardBits, sizeof value);
    return value;
}

std::uint64_t seedFor(const Options& options, const std::string& effect, Check check) {
    std::uint64_t hash = 1469598103934665603ull;  // FNV-1a over the identifier
    for (unsigned char c : effect) hash = (hash ^ c) * 1099511628211ull;
    return options.seed * 0x9E3779B97F4A7C15ull ^ hash ^ (static_cast<std::uint64_t>(check) << 56);
}

}  // namespace

void setCrashNoteBuffer(char* buffer, std::size_t size) noexcept {
    gCrashNote = buffer;
    gCrashNoteSize = size;
}

// ---- Context ------------------------------------------------------------------

Context::Context(const EffectMaker& maker, const Options& options, Check check)
    : maker_(maker), options_(options), rng_(seedFor(options, maker.identifier, check)) {}

float Context::unit() { return std::uniform_real_distribution<float>(0.0f, 1.0f)(rng_); }

int Context::between(int low, int high) { return std::uniform_int_distribution<int>(low, high)(rng_); }

void Context::setCase(const char* format, ...) {
    char text[1024];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    case_ = text;
    if (gCrashNote != nullptr && gCrashNoteSize > 0) {
        std::snprintf(gCrashNote, gCrashNoteSize, "%s", text);
    }
}

bool Context::fail(const std::string& problem) {
    if (outcome_.passed) {
        outcome_.passed = false;
        char seed[64];
        std::snprintf(seed, sizeof seed, "; seed %llu", static_cast<unsigned long long>(options_.seed));
        outcome_.detail = problem + " [" + case_ + seed + "]";
    }
    return false;
}

void Context::document(const std::string& behaviour) {
    for (const std::string& known : outcome_.documented) {
        if (known == behaviour) return;
    }
    outcome_.documented.push_back(behaviour);
}

void Context::noteAudioCall(std::uint64_t allocations, std::uint64_t frees, const char* call) {
    if (allocations == 0 && frees == 0) return;
    if (outcome_.allocations == 0 && outcome_.frees == 0) {
        char counts[160];
        std::snprintf(counts, sizeof counts, "%s made %llu allocation(s) and %llu free(s)", call,
                      static_cast<unsigned long long>(allocations), static_cast<unsigned long long>(frees));
        outcome_.allocationCase = std::string(counts) + " [" + case_ + "]";
    }
    outcome_.allocations += allocations;
    outcome_.frees += frees;
}

void Context::noteRefusedAllocation() {
    const std::size_t refused = largestRefusedAllocation();
    if (refused > outcome_.refusedBytes) {
        outcome_.refusedBytes = refused;
        outcome_.refusedCase = case_;
    }
    resetRefusedAllocations();
}

// ---- Audio --------------------------------------------------------------------

Audio::Audio(int channelCount)
    : channels(channelCount),
      in(channelCount, std::vector<float>(kMaxBlock + kGuardFrames, 0.0f)),
      out(channelCount, std::vector<float>(kMaxBlock + kGuardFrames, 0.0f)) {
    for (int c = 0; c < channels; ++c) {
        inPointers.push_back(in[c].data());
        outPointers.push_back(out[c].data());
    }
}

void Audio::fillGuards(int frames) {
    for (auto& channel : out) std::fill(channel.begin() + frames, channel.begin() + frames + kGuardFrames, guardValue());
    for (auto& channel : in) std::fill(channel.begin() + frames, channel.begin() + frames + kGuardFrames, guardValue());
}

bool Audio::guardsIntact(int frames) const {
    for (int c = 0; c < channels; ++c) {
        for (int i = frames; i < frames + kGuardFrames; ++i) {
            std::uint32_t bits;
            std::memcpy(&bits, &out[c][i], sizeof bits);
            if (bits != kGuardBits) return false;
            std::memcpy(&bits, &in[c][i], sizeof bits);
            if (bits != kGuardBits) return false;
        }
    }
    return true;
}

void Audio::copyInputToOutput(int frames) {
    for (int c = 0; c < channels; ++c) std::copy(in[c].begin(), in[c].begin() + frames, out[c].begin());
}

void Audio::zeroOutput(int frames) {
    for (auto& channel : out) std::fill(channel.begin(), channel.begin() + frames, 0.0f);
}

const char* signalName(Signal signal) {
    switch (signal) {
        case Signal::Silence: return "silence";
        case Signal::Noise: return "full-scale noise";
        case Signal::Square: return "full-scale square";
        case Signal::DcPlus: return "DC +1";
        case Signal::DcMinus: return "DC -1";
        case Signal::Impulse: return "impulse";
        case Signal::Huge: return "samples of 1e30";
        case Signal::NotANumber: return "samples of NaN";
    }
    return "?";
}

void generate(Signal signal, Audio& audio, int frames, std::int64_t position, std::mt19937_64& rng) {
    std::uniform_real_distribution<float> noise(-1.0f, 1.0f);
    constexpr std::int64_t kSquarePeriod = 100;  // 441 Hz at 44.1 kHz
    for (int c = 0; c < audio.channels; ++c) {
        float* samples = audio.in[c].data();
        for (int i = 0; i < frames; ++i) {
            const std::int64_t frame = position + i;
            float value = 0.0f;
            switch (signal) {
                case Signal::Silence: value = 0.0f; break;
                case Signal::Noise: value = noise(rng); break;
                case Signal::Square: value = (frame % kSquarePeriod) < kSquarePeriod / 2 ? 1.0f : -1.0f; break;
                case Signal::DcPlus: value = 1.0f; break;
                case Signal::DcMinus: value = -1.0f; break;
                case Signal::Impulse: value = frame == 0 ? 1.0f : 0.0f; break;
                case Signal::Huge: value = (frame & 1) ? -1e30f : 1e30f; break;
                case Signal::NotANumber: value = std::numeric_limits<float>::quiet_NaN(); break;
            }
            samples[i] = value;
        }
    }
}

// ---- Instance -----------------------------------------------------------------

Instance::Instance(Context& context) : context_(context) {
    try {
        record_ = context.maker().make(&hostkit::quietHost, &properties_);  // a host that answers nothing
    } catch (...) {
        record_ = nullptr;
        context.fail("making the effect threw an exception");
    }
    context_.noteRefusedAllocation();
    if (record_ == nullptr) {
        context.fail("the factory made no effect");
        return;
    }
    if (record_->magic != kEffectMagic || record_->dispatcher == nullptr || record_->processReplacing == nullptr ||
        record_->setParameter == nullptr || record_->getParameter == nullptr) {
        context.fail("the record is not a usable effect (magic or entry points)");
        record_ = nullptr;
        return;
    }
    if (record_->numInputs < 0 || record_->numOutputs < 1 || record_->numInputs > 64 || record_->numOutputs > 64 ||
        record_->numParams < 0 || record_->numParams > 1000 || record_->numPrograms < 0) {
        context.fail("the record announces implausible counts");
        record_ = nullptr;
        return;
    }
    values_.assign(static_cast<std::size_t>(record_->numParams), std::numeric_limits<float>::quiet_NaN());
}

Instance::~Instance() { close(); }

int Instance::channels() const {
    const int larger = record_->numInputs > record_->numOutputs ? record_->numInputs : record_->numOutputs;
    return larger < 1 ? 1 : larger;
}

std::intptr_t Instance::dispatch(std::int32_t opcode, std::int32_t index, std::intptr_t value, void* ptr, float opt) {
    if (record_ == nullptr) return 0;
    const std::intptr_t answer = record_->dispatcher(record_, opcode, index, value, ptr, opt);
    context_.noteRefusedAllocation();
    return answer;
}

void Instance::start(float sampleRate, int blockSize) {
    dispatch(effOpen);
    setSampleRate(sampleRate);
    dispatch(effSetBlockSize, 0, blockSize);
    resume();
}

void Instance::setSampleRate(float rate) {
    sampleRate_ = rate;
    dispatch(effSetSampleRate, 0, 0, nullptr, rate);
}

void Instance::close() {
    if (record_ == nullptr) return;
    AEffect* record = record_;
    record_ = nullptr;
    properties_ = nullptr;
    record->dispatcher(record, effClose, 0, 0, nullptr, 0.0f);
}

void Instance::setParameter(std::int32_t index, float value) {
    if (record_ == nullptr) return;
    if (index >= 0 && index < static_cast<std::int32_t>(values_.size())) values_[index] = value;
    AllocationTally seen;
    {
        AudioCallScope scope;
        record_->setParameter(record_, index, value);
        seen = scope.tally();
    }
    context_.noteAudioCall(seen.allocations, seen.frees, "setParameter");
    context_.noteRefusedAllocation();
}

float Instance::getParameter(std::int32_t index) {
    return record_ == nullptr ? 0.0f : record_->getParameter(record_, index);
}

void Instance::randomInRangeParameters() {
    for (int i = 0; i < parameterCount(); ++i) setParameter(i, context_.unit());
}

std::string Instance::describeParameters() const {
    std::string text = "parameters [";
    char number[32];
    for (std::size_t i = 0; i < values_.size(); ++i) {
        std::snprintf(number, sizeof number, "%s%.9g", i == 0 ? "" : ", ", static_cast<double>(values_[i]));
        text += number;
    }
    return text + "]";
}

void Instance::processReplacing(float** inputs, float** outputs, int frames) {
    if (record_ == nullptr) return;
    AllocationTally seen;
    {
        AudioCallScope scope;
        record_->processReplacing(record_, inputs, outputs, frames);
        seen = scope.tally();
    }
    context_.noteAudioCall(seen.allocations, seen.frees, "processReplacing");
    context_.noteRefusedAllocation();
}

void Instance::process(float** inputs, float** outputs, int frames) {
    if (record_ == nullptr || record_->process == nullptr) return;
    AllocationTally seen;
    {
        AudioCallScope scope;
        record_->process(record_, inputs, outputs, frames);
        seen = scope.tally();
    }
    context_.noteAudioCall(seen.allocations, seen.frees, "process");
    context_.noteRefusedAllocation();
}

// ---- Effort -------------------------------------------------------------------

Effort::Effort(int level) {
    if (level < 1) level = 1;
    if (level > 10) level = 10;
    if (level <= 2) {
        audioRates = {44100.0f};
    } else if (level <= 4) {
        audioRates = {8000.0f, 44100.0f};
    } else if (level <= 6) {
        audioRates = {8000.0f, 44100.0f, 384000.0f};
    } else if (level <= 8) {
        audioRates = {8000.0f, 22050.0f, 44100.0f, 96000.0f, 384000.0f};
    } else {
        audioRates.assign(std::begin(kSampleRates), std::end(kSampleRates));
    }
    if (level <= 3) {
        denormalRates = {44100.0f};
    } else if (level <= 7) {
        denormalRates = {8000.0f, 44100.0f};
    } else {
        denormalRates = {8000.0f, 44100.0f, 192000.0f};
    }
    audioBlocks = 1 + level;
    parameterRandoms = level;
    finiteTrials = 1 + level;
    finiteFrames = 2048 + 1024 * level;
    denormalTrials = 1 + level / 2;
    determinismBlocks = 8 + 4 * level;
    timingRuns = 3 + 2 * (level / 4);
}

bool canMake(const EffectMaker& maker) {
    ML::VSTPropertySupportMixin* properties = nullptr;
    AEffect* record = nullptr;
    try {
        record = maker.make(&hostkit::quietHost, &properties);
    } catch (...) {
        return false;
    }
    if (record == nullptr) return false;
    if (record->dispatcher != nullptr) record->dispatcher(record, effClose, 0, 0, nullptr, 0.0f);
    return true;
}

// ---- Running one check --------------------------------------------------------

Outcome runCheck(Check check, const EffectMaker& maker, const Options& options) {
    Context context(maker, options, check);
    context.setCase("starting");
    // No sample rate or parameter of a working effect needs a gigabyte at once.
    constexpr std::size_t kAbsurdBytes = std::size_t{1} << 30;
    setAllocationLimit(kAbsurdBytes);
    resetRefusedAllocations();
    switch (check) {
        case Check::Lifecycle: checkLifecycle(context); break;
        case Check::Parameters: checkParameters(context); break;
        case Check::Audio: checkAudio(context); break;
        case Check::Finite: checkFinite(context); break;
        case Check::Denormals: checkDenormals(context); break;
        case Check::Determinism: checkDeterminism(context); break;
        case Check::Timing: checkTiming(context); break;
        case Check::Allocation:
        case Check::Create: break;
    }
    setAllocationLimit(0);
    return context.outcome();
}

CheckResult allocationResult(const std::string& effect, const std::vector<Outcome>& outcomes) {
    CheckResult result;
    result.effect = effect;
    result.check = Check::Allocation;
    result.passed = true;
    for (const Outcome& outcome : outcomes) {
        if (outcome.refusedBytes > 0 && result.passed) {
            char text[128];
            std::snprintf(text, sizeof text, "asked for %zu bytes at once (refused)", outcome.refusedBytes);
            result.passed = false;
            result.detail = std::string(text) + " [" + outcome.refusedCase + "]";
        }
        if ((outcome.allocations > 0 || outcome.frees > 0) && result.passed) {
            result.passed = false;
            result.detail = outcome.allocationCase;
        }
    }
    return result;
}

}  // namespace afv::detail
