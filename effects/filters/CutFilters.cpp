#include "CutFilters.h"

namespace AF {

AudioHighpass::AudioHighpass(unsigned channels, audioMasterCallback audioMaster) : CascadeFamily(channels, audioMaster) {} AudioHighpass::~AudioHighpass() = default;
AudioLowpass::AudioLowpass(unsigned channels, audioMasterCallback audioMaster) : CascadeFamily(channels, audioMaster) {} AudioLowpass::~AudioLowpass() = default;
AudioBandpass::AudioBandpass(unsigned channels, audioMasterCallback audioMaster) : SectionFamily(channels, audioMaster) {} AudioBandpass::~AudioBandpass() = default;
AudioBandreject::AudioBandreject(unsigned channels, audioMasterCallback audioMaster) : SectionFamily(channels, audioMaster) {} AudioBandreject::~AudioBandreject() = default;

}  // namespace AF
