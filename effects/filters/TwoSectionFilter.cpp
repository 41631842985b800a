#include "TwoSectionFilter.h"

#include "effects/family/Localized.h"

namespace AF {

namespace {
constexpr int kHistoryAlignment = 16;
constexpr float kStale = -1.0f;
}  // namespace

template <CascadeResponse Response>
CascadeFamily<Response>::CascadeFamily(unsigned channels, audioMasterCallback audioMaster)
    : AudioEffectX(audioMaster, 1, 1), history(kHistoryAlignment, true) {
    history.Init(static_cast<int>(channels), kCascadeHistorySize);
    history.Zero();
}

template <CascadeResponse Response>
CascadeFamily<Response>::~CascadeFamily() = default;

// A program is a reset of the cutoff only; the memory is kept and the host is
// not told (the reset goes through setParameter, not the automated setter).
template <CascadeResponse Response>
void CascadeFamily<Response>::setProgram(VstInt32 program) {
    curProgram = program;
    for (VstInt32 index = 0; index < static_cast<VstInt32>(std::size(kCutoffRows)); ++index)
        setParameter(index, kCutoffRows[index].defaultValue);
}

template <CascadeResponse Response>
void CascadeFamily<Response>::setParameter(VstInt32 index, float value) {
    if (index == 0) cutoff.store(value, std::memory_order_relaxed);
}

template <CascadeResponse Response>
float CascadeFamily<Response>::getParameter(VstInt32 index) {
    return index == 0 ? cutoff.load(std::memory_order_relaxed) : 0.0f;
}

template <CascadeResponse Response>
void CascadeFamily<Response>::getProgramName(char* name) {
    copyLocalizedText(kDefaultProgramKey, name);
}

template <CascadeResponse Response>
void CascadeFamily<Response>::getParameterName(VstInt32 index, char* text) {
    copyParameterName(kCutoffRows, index, text);
}

template <CascadeResponse Response>
void CascadeFamily<Response>::getParameterLabel(VstInt32 index, char* label) {
    copyParameterLabel(kCutoffRows, index, label);
}

template <CascadeResponse Response>
void CascadeFamily<Response>::getParameterDisplay(VstInt32 index, char* text) {
    if (index != 0) return;
    float2string(cutoff::cutoffHz(cutoff.load(std::memory_order_relaxed), getSampleRate()), text, 8);
}

template <CascadeResponse Response>
void CascadeFamily<Response>::setSampleRate(float newSampleRate) {
    if (newSampleRate == getSampleRate()) return;
    sampleRate = newSampleRate;
    appliedCutoff = kStale;
    history.Zero();
}

template <CascadeResponse Response>
void CascadeFamily<Response>::suspend() {
    appliedCutoff = kStale;
    history.Zero();
}

template <CascadeResponse Response>
auto CascadeFamily<Response>::GetParameterType(unsigned index) -> ParameterType {
    return index == 0 ? kHertz : kNotAParameter;
}

template <CascadeResponse Response>
float CascadeFamily<Response>::GetParameterMax(unsigned index) const {
    return index == 0 ? cutoff::maxHz(currentSampleRate()) : 0.0f;
}

template <CascadeResponse Response>
float CascadeFamily<Response>::GetParameterMin(unsigned index) const {
    return index == 0 ? cutoff::minHz(currentSampleRate()) : 0.0f;
}

template <CascadeResponse Response>
float CascadeFamily<Response>::GetParameterStep(unsigned index) const {
    return index == 0 ? cutoff::kStepHz : 0.0f;
}

template <CascadeResponse Response>
bool CascadeFamily<Response>::SupportsDisplayValueToParameter(unsigned index) const {
    return index == 0;
}

template <CascadeResponse Response>
float CascadeFamily<Response>::ConvertDisplayValueToParameter(unsigned index, float displayValue) const {
    return index == 0 ? cutoff::cutoffParameter(displayValue, currentSampleRate()) : 0.0f;
}

template <CascadeResponse Response>
float CascadeFamily<Response>::ConvertParameterValueToDisplay(unsigned index, float parameterValue) const {
    return index == 0 ? cutoff::cutoffHz(parameterValue, currentSampleRate()) : 0.0f;
}

template <CascadeResponse Response>
void CascadeFamily<Response>::refreshDesign() noexcept {
    const float p = cutoff.load(std::memory_order_relaxed);
    if (p == appliedCutoff) return;
    appliedCutoff = p;
    design = designCascade<Response>(p);
}

// The frequency range follows the current rate, read through the virtual
// getter on every call (the property answers are const, the getter is not).
template <CascadeResponse Response>
float CascadeFamily<Response>::currentSampleRate() const {
    return const_cast<CascadeFamily*>(this)->getSampleRate();
}

template class CascadeFamily<CascadeResponse::Highpass>;
template class CascadeFamily<CascadeResponse::Lowpass>;

}  // namespace AF
