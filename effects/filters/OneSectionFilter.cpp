#include "OneSectionFilter.h"

#include "effects/family/Localized.h"

namespace AF {

namespace {
constexpr int kHistoryAlignment = 16;
constexpr float kStale = -1.0f;
constexpr unsigned kCenter = 0;
constexpr unsigned kQ = 1;
}  // namespace

template <SectionResponse Response>
SectionFamily<Response>::SectionFamily(unsigned channels, audioMasterCallback audioMaster)
    : AudioEffectX(audioMaster, 1, 2), history(kHistoryAlignment, true) {
    history.Init(static_cast<int>(channels), kSectionHistorySize);
    history.Zero();
}

template <SectionResponse Response>
SectionFamily<Response>::~SectionFamily() = default;

// A program resets centre and Q only; the memory is kept and the host is not
// told (the reset goes through setParameter, not the automated setter).
template <SectionResponse Response>
void SectionFamily<Response>::setProgram(VstInt32 program) {
    curProgram = program;
    for (VstInt32 index = 0; index < static_cast<VstInt32>(std::size(kCenterQRows)); ++index)
        setParameter(index, kCenterQRows[index].defaultValue);
}

template <SectionResponse Response>
void SectionFamily<Response>::setParameter(VstInt32 index, float value) {
    if (index == kCenter) center.store(value, std::memory_order_relaxed);
    else if (index == kQ) q.store(value, std::memory_order_relaxed);
}

template <SectionResponse Response>
float SectionFamily<Response>::getParameter(VstInt32 index) {
    if (index == kCenter) return center.load(std::memory_order_relaxed);
    if (index == kQ) return q.load(std::memory_order_relaxed);
    return 0.0f;
}

template <SectionResponse Response>
void SectionFamily<Response>::getProgramName(char* name) {
    copyLocalizedText(kDefaultProgramKey, name);
}

template <SectionResponse Response>
void SectionFamily<Response>::getParameterName(VstInt32 index, char* text) {
    copyParameterName(kCenterQRows, index, text);
}

// Q has no unit: its label is the empty string.
template <SectionResponse Response>
void SectionFamily<Response>::getParameterLabel(VstInt32 index, char* label) {
    copyParameterLabel(kCenterQRows, index, label);
}

template <SectionResponse Response>
void SectionFamily<Response>::getParameterDisplay(VstInt32 index, char* text) {
    if (index == kCenter)
        float2string(cutoff::cutoffHz(center.load(std::memory_order_relaxed), getSampleRate()), text, 8);
    else if (index == kQ)
        float2string(quality::displayQ(q.load(std::memory_order_relaxed)), text, 8);
}

template <SectionResponse Response>
void SectionFamily<Response>::setSampleRate(float newSampleRate) {
    if (newSampleRate == getSampleRate()) return;
    sampleRate = newSampleRate;
    appliedCenter = kStale;
    appliedQ = kStale;
    history.Zero();
}

template <SectionResponse Response>
void SectionFamily<Response>::suspend() {
    appliedCenter = kStale;
    appliedQ = kStale;
    history.Zero();
}

template <SectionResponse Response>
auto SectionFamily<Response>::GetParameterType(unsigned index) -> ParameterType {
    if (index == kCenter) return kHertz;
    if (index == kQ) return kNumber;
    return kNotAParameter;
}

template <SectionResponse Response>
float SectionFamily<Response>::GetParameterMax(unsigned index) const {
    if (index == kCenter) return cutoff::maxHz(currentSampleRate());
    if (index == kQ) return quality::kMax;
    return 0.0f;
}

template <SectionResponse Response>
float SectionFamily<Response>::GetParameterMin(unsigned index) const {
    if (index == kCenter) return cutoff::minHz(currentSampleRate());
    if (index == kQ) return quality::kFloor;
    return 0.0f;
}

template <SectionResponse Response>
float SectionFamily<Response>::GetParameterStep(unsigned index) const {
    if (index == kCenter) return cutoff::kStepHz;
    if (index == kQ) return quality::kStep;
    return 0.0f;
}

template <SectionResponse Response>
bool SectionFamily<Response>::SupportsDisplayValueToParameter(unsigned index) const {
    return index == kCenter || index == kQ;
}

template <SectionResponse Response>
float SectionFamily<Response>::ConvertDisplayValueToParameter(unsigned index, float displayValue) const {
    if (index == kCenter) return cutoff::cutoffParameter(displayValue, currentSampleRate());
    if (index == kQ) return quality::parameterForQ(displayValue);
    return 0.0f;
}

template <SectionResponse Response>
float SectionFamily<Response>::ConvertParameterValueToDisplay(unsigned index, float parameterValue) const {
    if (index == kCenter) return cutoff::cutoffHz(parameterValue, currentSampleRate());
    if (index == kQ) return quality::displayQ(parameterValue);
    return 0.0f;
}

// The centre is compared first; Q only when the centre is unchanged.
template <SectionResponse Response>
void SectionFamily<Response>::refreshDesign() noexcept {
    const float newCenter = center.load(std::memory_order_relaxed);
    const float newQ = q.load(std::memory_order_relaxed);
    if (newCenter == appliedCenter && newQ == appliedQ) return;
    appliedCenter = newCenter;
    appliedQ = newQ;
    design = designSection<Response>(newCenter, newQ);
}

// The frequency range follows the current rate, read through the virtual
// getter on every call (the property answers are const, the getter is not).
template <SectionResponse Response>
float SectionFamily<Response>::currentSampleRate() const {
    return const_cast<SectionFamily*>(this)->getSampleRate();
}

template class SectionFamily<SectionResponse::Bandpass>;
template class SectionFamily<SectionResponse::Notch>;

}  // namespace AF
