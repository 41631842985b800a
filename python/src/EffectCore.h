#pragma once
// One effect instance as Python drives it: made through the module's factory,
// taken through open, sample rate, block size and resume like any host does,
// its parameters set through the record and converted through the property
// interface, its audio processed in place block by block.
#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "ModuleHost.h"

namespace audiofilters {

class EffectCore {
public:
    // `name` is an identifier (any case) or a family name; `channels` 0 takes
    // the family's stereo variant (or its only one). Throws afx::UsageError.
    EffectCore(const std::string& name, unsigned channels, double sampleRate, int blockSize);
    ~EffectCore();
    EffectCore(const EffectCore&) = delete;
    EffectCore& operator=(const EffectCore&) = delete;

    const std::string& identifier() const { return identifier_; }
    int channels() const { return effect_->inputCount(); }
    double sampleRate() const { return sampleRate_; }
    int parameterCount() const { return effect_->parameterCount(); }
    int latency() const;
    int tail() const;

    std::string name(int index) const;
    std::string label(int index) const;
    std::string text(int index) const;
    std::string type(int index) const;
    float minimum(int index) const;
    float maximum(int index) const;
    float step(int index) const;
    bool convertsDisplayValues(int index) const;

    float normalised(int index) const;
    void setNormalised(int index, float value);
    float displayValue(int index) const;
    // The display value (the parameter's units) converted by the effect itself;
    // returns the normalised value it set. Throws afx::UsageError outside the range.
    float setDisplayValue(int index, double value);

    // Suspend then resume: the state a host gets back when playback restarts.
    void reset();

    // In place over `channels()` arrays, `rowStride` floats apart, in calls of
    // at most `blockSize` frames. The caller has released the interpreter.
    void process(float* samples, std::ptrdiff_t rowStride, std::ptrdiff_t frames, int blockSize);
    AEffect* record() const { return effect_->record(); }

    // One user at a time: the second of two threads that overlap is refused.
    bool claim() { return !busy_.exchange(true, std::memory_order_acquire); }
    void release() { busy_.store(false, std::memory_order_release); }

private:
    void checkIndex(int index) const;
    ML::VSTPropertySupportMixin& properties(int index) const;

    std::string identifier_;
    double sampleRate_;
    std::unique_ptr<afx::Effect> effect_;
    std::atomic<bool> busy_{false};
};

// Channel pointers for one block: no variant has more than 16 channels.
inline constexpr int kMaxChannels = 16;

// Every effect of a chain over one array, block by block in chain order.
void processChain(EffectCore* const* chain, std::size_t length, float* samples, std::ptrdiff_t rowStride,
                  std::ptrdiff_t frames, int blockSize);

}  // namespace audiofilters
