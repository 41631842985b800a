#pragma once
// What every filter family keeps around its processing: the parameters as the
// host stores them, the values the design was last computed from, the memory
// of each channel, and the two resets (a new sample rate, a suspend) that
// forget both. A family brings its parameter table, its first values, its
// stale markers and how a design follows from the values.
#include <array>
#include <atomic>
#include <cstddef>
#include <span>

#include "AR/AudioBuffer.h"
#include "effects/family/ParameterFamily.h"

namespace AF {

// How a program puts the parameters back: quietly through setParameter (the
// host is not told), or through the automated setter.
enum class ProgramReset { quiet, automated };

template <class Design, std::size_t Count>
class AF_EXPORT FilterFamily : public ParameterFamily {
public:
    using Values = std::array<float, Count>;

    // An index outside the table stores nothing and reads 0.
    void setParameter(VstInt32 index, float value) override {
        if (static_cast<unsigned>(index) < Count) values[static_cast<unsigned>(index)].store(value, kRelaxed);
    }
    float getParameter(VstInt32 index) override {
        return static_cast<unsigned>(index) < Count ? values[static_cast<unsigned>(index)].load(kRelaxed) : 0.0f;
    }
    // The value in display units, eight characters.
    void getParameterDisplay(VstInt32 index, char* text) override {
        if (static_cast<unsigned>(index) >= Count) return;
        float2string(shownValue(static_cast<unsigned>(index), getParameter(index)), text, 8);
    }
    void setSampleRate(float newSampleRate) override {
        if (newSampleRate == getSampleRate()) return;
        sampleRate = newSampleRate;
        forget();
    }
    void suspend() override { forget(); }

    // For inspection: the coefficients in use and the filter memory.
    const Design& currentDesign() const noexcept { return design; }
    const AR::AudioBuffer& historyBuffer() const noexcept { return history; }

protected:
    // `historyLength` floats of memory per channel. The memory starts silent;
    // the applied values start at the stale markers, so the first call designs.
    FilterFamily(audioMasterCallback audioMaster, std::span<const Parameter, Count> table, unsigned channels,
                 int historyLength, ProgramReset reset, const Values& first, const Values& stale)
        : ParameterFamily(audioMaster, table), history(kHistoryAlignment, true), applied(stale), stale(stale),
          reset(reset) {
        for (std::size_t i = 0; i < Count; ++i) values[i].store(first[i], kRelaxed);
        history.Init(static_cast<int>(channels), historyLength);
        history.Zero();
    }

    // The coefficients for a set of parameter values.
    virtual Design designFor(const Values& parameters) noexcept = 0;
    // The number a display shows for `value`: by default its display conversion.
    virtual float shownValue(unsigned index, float value) const { return ConvertParameterValueToDisplay(index, value); }

    // Recomputes the design when any value differs from the applied one (an
    // unordered comparison, a NaN on either side, counts as a change).
    void refreshDesign() noexcept {
        Values now;
        for (std::size_t i = 0; i < Count; ++i) now[i] = values[i].load(kRelaxed);
        if (now == applied) return;
        applied = now;
        design = designFor(now);
    }

    void restoreDefault(VstInt32 index, float value) override {
        if (reset == ProgramReset::quiet) setParameter(index, value);
        else ParameterFamily::restoreDefault(index, value);
    }

    AR::AudioBuffer history;
    // Starts at 0: a host that stores the stale markers before the first
    // buffer gets no computation and a section running on zero coefficients.
    Design design{};

private:
    static constexpr int kHistoryAlignment = 16;
    static constexpr std::memory_order kRelaxed = std::memory_order_relaxed;

    void forget() noexcept {
        applied = stale;
        history.Zero();
    }

    std::array<std::atomic<float>, Count> values;
    Values applied;
    const Values stale;
    const ProgramReset reset;
};

}  // namespace AF
