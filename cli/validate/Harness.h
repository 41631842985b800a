#pragma once
// The pieces every check is built from: the run context (current case, first
// failure, documented behaviour, heap traffic seen in audio calls), a watched
// effect instance driven through its record, audio buffers with guard frames
// and the test signals.
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "Opcodes.h"
#include "Validator.h"

namespace afv::detail {

inline constexpr float kSampleRates[] = {8000.0f, 22050.0f, 44100.0f, 48000.0f, 96000.0f, 192000.0f, 384000.0f};
inline constexpr int kBlockSizes[] = {1, 2, 3, 17, 64, 512, 1024, 4096, 8192};
inline constexpr int kMaxBlock = 8192;
// Frames after the block that must stay untouched by a processing call.
inline constexpr int kGuardFrames = 16;

// Where a crashing child leaves the case it was in, for its parent to read.
void setCrashNoteBuffer(char* buffer, std::size_t size) noexcept;

struct Outcome {
    bool passed = true;
    std::string detail;
    std::vector<std::string> documented;
    std::string allocationCase;  // first audio call that touched the heap
    std::uint64_t allocations = 0;
    std::uint64_t frees = 0;
    std::size_t refusedBytes = 0;  // largest refused allocation
    std::string refusedCase;
};

class Context {
public:
    Context(const EffectMaker& maker, const Options& options, Check check);
    const EffectMaker& maker() const { return maker_; }
    const Options& options() const { return options_; }
    std::mt19937_64& rng() { return rng_; }
    float unit();                    // uniform in [0, 1]
    int between(int low, int high);  // uniform in [low, high]

    // Describes what the validator is doing now (kept for failures and crashes).
    void setCase(const char* format, ...) __attribute__((format(printf, 2, 3)));
    const std::string& currentCase() const { return case_; }

    // Records the first failure (later ones are dropped); answers false.
    bool fail(const std::string& problem);
    bool failed() const { return !outcome_.passed; }
    void document(const std::string& behaviour);
    void noteAudioCall(std::uint64_t allocations, std::uint64_t frees, const char* call);
    void noteRefusedAllocation();
    Outcome& outcome() { return outcome_; }

private:
    const EffectMaker& maker_;
    const Options& options_;
    std::mt19937_64 rng_;
    std::string case_;
    Outcome outcome_;
};

// Audio arrays for one instance: channels x (kMaxBlock + guard) inputs and
// outputs, with pointer tables for both.
struct Audio {
    explicit Audio(int channelCount);
    int channels;
    std::vector<std::vector<float>> in, out;
    std::vector<float*> inPointers, outPointers;
    void fillGuards(int frames);  // marks the frames after `frames` in every output
    bool guardsIntact(int frames) const;
    void copyInputToOutput(int frames);
    void zeroOutput(int frames);
};

enum class Signal { Silence, Noise, Square, DcPlus, DcMinus, Impulse, Huge, NotANumber };
inline constexpr Signal kAllSignals[] = {Signal::Silence, Signal::Noise,   Signal::Square, Signal::DcPlus,
                                         Signal::DcMinus, Signal::Impulse, Signal::Huge,   Signal::NotANumber};
const char* signalName(Signal signal);
// Writes `frames` frames of the signal into every input, continuing from frame `position`.
void generate(Signal signal, Audio& audio, int frames, std::int64_t position, std::mt19937_64& rng);

// An effect instance made through its maker and driven through its record.
// Processing and setParameter calls are watched for heap traffic.
class Instance {
public:
    explicit Instance(Context& context);
    ~Instance();  // closes the effect (opcode 1) if still open
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    bool made() const { return record_ != nullptr; }
    AEffect* record() const { return record_; }
    ML::VSTPropertySupportMixin* properties() const { return properties_; }
    int channels() const;  // the larger of inputs and outputs, at least 1
    int parameterCount() const { return record_->numParams; }
    int programCount() const { return record_->numPrograms; }

    std::intptr_t dispatch(std::int32_t opcode, std::int32_t index = 0, std::intptr_t value = 0, void* ptr = nullptr,
                           float opt = 0.0f);
    void start(float sampleRate, int blockSize);  // open, rate, block size, resume
    void setSampleRate(float rate);
    void suspend() { dispatch(effMainsChanged, 0, 0); }
    void resume() { dispatch(effMainsChanged, 0, 1); }
    void close();

    void setParameter(std::int32_t index, float value);
    float getParameter(std::int32_t index);
    // Every parameter in-range at random (uniform 0..1).
    void randomInRangeParameters();
    void selectProgram(std::intptr_t program) { dispatch(effSetProgram, 0, program); }
    // The values the validator last set, index by index (NaN for never set).
    const std::vector<float>& parameterValues() const { return values_; }
    std::string describeParameters() const;

    void processReplacing(float** inputs, float** outputs, int frames);
    void process(float** inputs, float** outputs, int frames);
    float sampleRate() const { return sampleRate_; }

private:
    Context& context_;
    AEffect* record_ = nullptr;
    ML::VSTPropertySupportMixin* properties_ = nullptr;
    std::vector<float> values_;
    float sampleRate_ = 44100.0f;
};

// Level-dependent sizes of the checks.
struct Effort {
    explicit Effort(int level);
    std::vector<float> audioRates;
    std::vector<float> denormalRates;
    int audioBlocks;       // blocks per signal and entry point
    int parameterRandoms;  // random values per parameter beyond the fixed list
    int finiteTrials;      // parameter sets per rate
    int finiteFrames;      // frames per signal
    int denormalTrials;
    int determinismBlocks;
    int timingRuns;
};

// The checks themselves (Checks.cpp).
void checkLifecycle(Context& context);
void checkParameters(Context& context);
void checkAudio(Context& context);
void checkFinite(Context& context);
void checkDenormals(Context& context);
void checkDeterminism(Context& context);
void checkTiming(Context& context);

// Whether the maker gives an instance at all (made and closed at once).
bool canMake(const EffectMaker& maker);

// Runs one check (not Allocation, which is gathered from the others) and
// answers its outcome with the heap traffic it saw in audio calls.
Outcome runCheck(Check check, const EffectMaker& maker, const Options& options);
// The allocation line of an effect from the outcomes of its other checks.
CheckResult allocationResult(const std::string& effect, const std::vector<Outcome>& outcomes);

}  // namespace afv::detail
