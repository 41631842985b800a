#include "Mute.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

#include "NumberedName.h"
#include "effects/family/Localized.h"

namespace AF {

namespace {

constexpr float kOnThreshold = 0.5f;  // strictly above means on
constexpr float kOff = 0.0f;
constexpr float kToggleMin = 0.0f;
constexpr float kToggleMax = 1.0f;
constexpr float kToggleStep = 0.1f;
constexpr VstInt32 kDisplayLength = 8;
constexpr unsigned kMaster = 0;

// The name of the master and the label of every toggle; channel toggles add
// their index to it.
constexpr const char* kMuteLabelKey = "$$$/Korvex/AudioFilters/MuteLabel=Mute ";

// The display shows the raw toggle value, so both conversions are identities.
float sameValue(float value) noexcept { return value; }

// The one row every index answers with: 0 to 1 in steps of 0.1, off by default.
constexpr Parameter kToggleParameter = {kMuteLabelKey, kMuteLabelKey, ML::VSTPropertySupportMixin::kNumber,
                                        kToggleMin,    kToggleMax,    kToggleStep,
                                        kOff,          sameValue,     sameValue};

// Counts and byte sizes are 32-bit, as the record's counts are. A count whose
// byte size does not fit stands for the largest request, which no allocator
// grants: the toggles are then absent, as after any failed allocation. That
// request is not actually made, since some allocators abort on it instead of
// failing it.
constexpr std::uint32_t kLargestToggleCount = std::numeric_limits<std::uint32_t>::max() / sizeof(float);

std::atomic<float>* allocateToggles(std::uint32_t count) noexcept {
    if (count > kLargestToggleCount) return nullptr;
    std::atomic<float>* toggles = new (std::nothrow) std::atomic<float>[count];
    if (toggles == nullptr) return nullptr;
    for (std::uint32_t index = 0; index < count; ++index) toggles[index].store(kOff, std::memory_order_relaxed);
    return toggles;
}

void clearChannel(float* channel, VstInt32 sampleFrames) noexcept {
    if (channel == nullptr) return;
    std::memset(channel, 0, static_cast<std::size_t>(sampleFrames) * sizeof(float));
}

}  // namespace

AudioMute::AudioMute(unsigned channels, audioMasterCallback audioMaster)
    : ParameterFamily(audioMaster, std::span<const Parameter>(&kToggleParameter, 1),
                      static_cast<VstInt32>(channels + 1)),
      muted(nullptr),
      parameterCount(static_cast<std::uint32_t>(channels + 1)) {
    muted = allocateToggles(parameterCount);
}

AudioMute::~AudioMute() { delete[] muted; }

bool AudioMute::isToggle(unsigned index) const noexcept { return muted != nullptr && index < parameterCount; }

bool AudioMute::isOn(unsigned index) const noexcept {
    return muted[index].load(std::memory_order_relaxed) > kOnThreshold;
}

// Clears the muted output channels, last channel first; unmuted channels are
// not touched at all.
void AudioMute::processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) {
    (void)inputs;
    if (muted == nullptr || outputs == nullptr || sampleFrames <= 0 || parameterCount == 0) return;
    const std::uint32_t channelToggles = parameterCount - 1;
    const std::uint32_t outputCount =
        std::min(static_cast<std::uint32_t>(std::max(cEffect.numOutputs, 0)), channelToggles);
    const bool masterOn = isOn(kMaster);
    for (std::uint32_t toggle = outputCount; toggle >= 1; --toggle) {
        if (masterOn || isOn(toggle)) clearChannel(outputs[toggle - 1], sampleFrames);
    }
}

void AudioMute::process(float** inputs, float** outputs, VstInt32 sampleFrames) {
    (void)inputs;
    (void)outputs;
    (void)sampleFrames;
}

void AudioMute::setParameter(VstInt32 index, float value) {
    const unsigned toggle = static_cast<unsigned>(index);
    if (isToggle(toggle)) muted[toggle].store(value, std::memory_order_relaxed);
}

float AudioMute::getParameter(VstInt32 index) {
    const unsigned toggle = static_cast<unsigned>(index);
    return isToggle(toggle) ? muted[toggle].load(std::memory_order_relaxed) : 0.0f;
}

void AudioMute::setProgram(VstInt32 program) {
    curProgram = program;
    setParameterAutomated(kMaster, kOff);
}

void AudioMute::getParameterDisplay(VstInt32 index, char* text) {
    const unsigned toggle = static_cast<unsigned>(index);
    if (!isToggle(toggle)) return;
    float2string(muted[toggle].load(std::memory_order_relaxed), text, kDisplayLength);
}

// "Mute " for the master, "Mute 1", "Mute 2", ... for the channels; any index
// gets a name.
void AudioMute::getParameterName(VstInt32 index, char* text) {
    if (index == 0) {
        copyLocalizedText(kMuteLabelKey, text);
    } else {
        copyNumberedName(kMuteLabelKey, index, text);
    }
}

const Parameter* AudioMute::parameterAt(unsigned index) const noexcept {
    (void)index;
    return &kToggleParameter;
}

float AudioMute::ConvertDisplayValueToParameter(unsigned index, float displayValue) const {
    return index < parameterCount ? ParameterFamily::ConvertDisplayValueToParameter(index, displayValue) : 0.0f;
}

float AudioMute::ConvertParameterValueToDisplay(unsigned index, float parameterValue) const {
    return index < parameterCount ? ParameterFamily::ConvertParameterValueToDisplay(index, parameterValue) : 0.0f;
}

bool AudioMute::HasHistory() { return false; }

}  // namespace AF
