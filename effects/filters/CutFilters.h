#pragma once
// The four cut filters, each a response of one of two recursions:
//   high-pass  fourth order, passes what lies above the cutoff  (TwoSectionFilter.h, "Cutoff")
//   low-pass   fourth order, passes what lies below the cutoff  (TwoSectionFilter.h, "Cutoff")
//   band-pass  one section with unity gain at the centre        (OneSectionFilter.h, "Center", "Q")
//   notch      one section that removes the centre, shown to    (OneSectionFilter.h, "Center", "Q")
//              the user as "Notch", named Bandreject here
// Each family runs one loop per channel count (CutFilterChannels.h); the
// variants the host knows by name are in effects/variants/NamedVariants.h.
#include "OneSectionFilter.h"
#include "TwoSectionFilter.h"

namespace AF {

class AF_EXPORT AudioHighpass : public CascadeFamily<CascadeResponse::Highpass> { public: AudioHighpass(unsigned channels, audioMasterCallback audioMaster); ~AudioHighpass() override; };
class AF_EXPORT AudioLowpass : public CascadeFamily<CascadeResponse::Lowpass> { public: AudioLowpass(unsigned channels, audioMasterCallback audioMaster); ~AudioLowpass() override; };
class AF_EXPORT AudioBandpass : public SectionFamily<SectionResponse::Bandpass> { public: AudioBandpass(unsigned channels, audioMasterCallback audioMaster); ~AudioBandpass() override; };
class AF_EXPORT AudioBandreject : public SectionFamily<SectionResponse::Notch> { public: AudioBandreject(unsigned channels, audioMasterCallback audioMaster); ~AudioBandreject() override; };

}  // namespace AF
