#include "TwoSectionFilter.h"

#include "effects/family/Localized.h"

namespace AF {

namespace {

constexpr float kStale = -1.0f;

constexpr std::array<Parameter, 1> kCutoffParameters = {{
    {"$$$/Korvex/AudioFilters/Cutoff=Cutoff", kHertzLabelKey, ML::VSTPropertySupportMixin::kHertz, 0.0f, 0.0f,
     cutoff::kStepHz, 0.25f, nullptr, nullptr, &cutoff::kScale},
}};

}  // namespace

// A program is a reset of the cutoff only; the memory is kept and the host is
// not told (the reset goes through setParameter, not the automated setter).
template <CascadeResponse Response>
CascadeFamily<Response>::CascadeFamily(unsigned channels, audioMasterCallback audioMaster)
    : FilterFamily(audioMaster, kCutoffParameters, channels, kCascadeHistorySize, ProgramReset::quiet, {0.25f},
                   {kStale}) {}

template <CascadeResponse Response>
CascadeFamily<Response>::~CascadeFamily() = default;

template <CascadeResponse Response>
CascadeDesign CascadeFamily<Response>::designFor(const Values& parameters) noexcept {
    return designCascade<Response>(parameters[0]);
}

template class CascadeFamily<CascadeResponse::Highpass>;
template class CascadeFamily<CascadeResponse::Lowpass>;

}  // namespace AF
