#include "EffectCore.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "CommandLine.h"
#include "EffectNames.h"
#include "Errors.h"
#include "LoadedModule.h"
#include "Opcodes.h"

namespace audiofilters {
namespace {

std::string number(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.7g", value);
    return text;
}

using Pointers = std::array<float*, kMaxChannels>;

void pointRows(Pointers& rows, int channels, float* samples, std::ptrdiff_t rowStride, std::ptrdiff_t offset) {
    for (int channel = 0; channel < channels; ++channel) rows[channel] = samples + channel * rowStride + offset;
}

}  // namespace

EffectCore::EffectCore(const std::string& name, unsigned channels, double sampleRate, int blockSize)
    : sampleRate_(sampleRate) {
    if (!(sampleRate > 0.0) || !std::isfinite(sampleRate))
        throw afx::UsageError("sample_rate must be a positive number of Hz, not " + number(sampleRate));
    if (blockSize < 1) throw afx::UsageError("block_size must be at least 1 frame");
    const afx::ModuleHost& module = loadedModule();
    const auto& registration = afx::resolveEffect(module, name, channels);
    identifier_ = registration.id.c_str();
    effect_ = module.create(registration);
    if (!effect_) throw afx::RunError("the module registers '" + identifier_ + "' but makes no instance of it");
    if (channels != 0 && effect_->inputCount() != static_cast<int>(channels))
        throw afx::UsageError("'" + identifier_ + "' takes " + std::to_string(effect_->inputCount()) +
                              " channel(s), not " + std::to_string(channels) +
                              "; name the family instead to get the matching variant");
    if (effect_->inputCount() > kMaxChannels || effect_->inputCount() != effect_->outputCount())
        throw afx::RunError("'" + identifier_ + "' has a channel layout this package cannot drive");
    effect_->start(static_cast<float>(sampleRate), blockSize);
}

// Suspended here; the handle then sends the close request.
EffectCore::~EffectCore() { effect_->suspend(); }

int EffectCore::latency() const { return effect_->record()->initialDelay; }
int EffectCore::tail() const { return static_cast<int>(effect_->dispatch(effGetTailSize)); }

void EffectCore::checkIndex(int index) const {
    if (index < 0 || index >= parameterCount())
        throw afx::UsageError("parameter index " + std::to_string(index) + " is outside 0.." +
                              std::to_string(parameterCount() - 1) + " of '" + identifier_ + "'");
}

ML::VSTPropertySupportMixin& EffectCore::properties(int index) const {
    checkIndex(index);
    if (effect_->properties() == nullptr)
        throw afx::UsageError("'" + identifier_ + "' describes no parameter ranges; set normalised values");
    return *effect_->properties();
}

std::string EffectCore::name(int index) const {
    checkIndex(index);
    return afx::trimBlanks(effect_->parameterName(index));
}

std::string EffectCore::label(int index) const {
    checkIndex(index);
    return afx::trimBlanks(effect_->parameterLabel(index));
}

std::string EffectCore::text(int index) const {
    checkIndex(index);
    return afx::trimBlanks(effect_->parameterDisplay(index));
}

std::string EffectCore::type(int index) const {
    if (effect_->properties() == nullptr) return "none";
    switch (properties(index).GetParameterType(static_cast<unsigned>(index))) {
        case ML::VSTPropertySupportMixin::kDecibels: return "decibels";
        case ML::VSTPropertySupportMixin::kHertz: return "hertz";
        case ML::VSTPropertySupportMixin::kTime: return "time";
        case ML::VSTPropertySupportMixin::kNumber: return "number";
        default: return "none";
    }
}

float EffectCore::minimum(int index) const { return properties(index).GetParameterMin(static_cast<unsigned>(index)); }
float EffectCore::maximum(int index) const { return properties(index).GetParameterMax(static_cast<unsigned>(index)); }
float EffectCore::step(int index) const { return properties(index).GetParameterStep(static_cast<unsigned>(index)); }

bool EffectCore::convertsDisplayValues(int index) const {
    checkIndex(index);
    return effect_->properties() != nullptr &&
           effect_->properties()->SupportsDisplayValueToParameter(static_cast<unsigned>(index));
}

float EffectCore::normalised(int index) const {
    checkIndex(index);
    return effect_->getParameter(index);
}

void EffectCore::setNormalised(int index, float value) {
    checkIndex(index);
    if (!std::isfinite(value))
        throw afx::UsageError("the normalised value of '" + name(index) + "' must be a finite number");
    effect_->setParameter(index, value);
}

float EffectCore::displayValue(int index) const {
    return properties(index).ConvertParameterValueToDisplay(static_cast<unsigned>(index), normalised(index));
}

float EffectCore::setDisplayValue(int index, double value) {
    if (!convertsDisplayValues(index))
        throw afx::UsageError("'" + identifier_ + "' converts no display value for '" + name(index) +
                              "'; set its normalised value");
    const auto slot = static_cast<unsigned>(index);
    const float display = static_cast<float>(value);
    if (!std::isfinite(display))
        throw afx::UsageError("the value of '" + name(index) + "' must be a finite number, not " + number(value));
    const float lowest = minimum(index);
    const float highest = maximum(index);
    if (lowest <= highest && (display < lowest || display > highest))
        throw afx::UsageError("the value " + number(value) + " of '" + name(index) + "' lies outside " +
                              number(lowest) + " .. " + number(highest) +
                              (label(index).empty() ? "" : " " + label(index)));
    const float converted = effect_->properties()->ConvertDisplayValueToParameter(slot, display);
    if (!std::isfinite(converted))
        throw afx::UsageError("the value " + number(value) + " of '" + name(index) +
                              "' does not convert to a parameter value");
    effect_->setParameter(index, converted);
    return converted;
}

void EffectCore::reset() {
    effect_->suspend();
    effect_->resume();
}

void EffectCore::process(float* samples, std::ptrdiff_t rowStride, std::ptrdiff_t frames, int blockSize) {
    EffectCore* const self = this;
    processChain(&self, 1, samples, rowStride, frames, blockSize);
}

void processChain(EffectCore* const* chain, std::size_t length, float* samples, std::ptrdiff_t rowStride,
                  std::ptrdiff_t frames, int blockSize) {
    if (length == 0) return;
    const int channels = chain[0]->channels();
    Pointers rows{};
    for (std::ptrdiff_t done = 0; done < frames; done += blockSize) {
        const auto count = static_cast<VstInt32>(std::min<std::ptrdiff_t>(blockSize, frames - done));
        pointRows(rows, channels, samples, rowStride, done);
        for (std::size_t link = 0; link < length; ++link) {
            AEffect* record = chain[link]->record();
            record->processReplacing(record, rows.data(), rows.data(), count);
        }
    }
}

}  // namespace audiofilters
