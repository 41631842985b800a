#include "OneSectionFilter.h"

#include "effects/family/Localized.h"

namespace AF {

namespace {

constexpr float kStale = -1.0f;

// Q has no unit: its label is the empty string.
constexpr std::array<Parameter, 2> kCenterQParameters = {{
    {"$$$/Korvex/AudioFilters/Center=Center", kHertzLabelKey, ML::VSTPropertySupportMixin::kHertz, 0.0f, 0.0f,
     cutoff::kStepHz, 0.25f, nullptr, nullptr, &cutoff::kScale},
    {"$$$/Korvex/AudioFilters/Q=Q", nullptr, ML::VSTPropertySupportMixin::kNumber, quality::kFloor, quality::kMax,
     quality::kStep, 0.5f, quality::displayQ, quality::parameterForQ},
}};

}  // namespace

// A program resets centre and Q only; the memory is kept and the host is not
// told (the reset goes through setParameter, not the automated setter).
template <SectionResponse Response>
SectionFamily<Response>::SectionFamily(unsigned channels, audioMasterCallback audioMaster)
    : FilterFamily(audioMaster, kCenterQParameters, channels, kSectionHistorySize, ProgramReset::quiet,
                   {0.25f, 0.5f}, {kStale, kStale}) {}

template <SectionResponse Response>
SectionFamily<Response>::~SectionFamily() = default;

template <SectionResponse Response>
SectionDesign SectionFamily<Response>::designFor(const Values& parameters) noexcept {
    return designSection<Response>(parameters[0], parameters[1]);
}

template class SectionFamily<SectionResponse::Bandpass>;
template class SectionFamily<SectionResponse::Notch>;

}  // namespace AF
