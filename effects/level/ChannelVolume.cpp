#include "ChannelVolume.h"

#include <array>

#include "Numeric.h"
#include "NumberedName.h"
#include "effects/family/Decibels.h"
#include "effects/family/Localized.h"

namespace AF {

namespace {

constexpr float kUnityLevel = 0.5f;           // normalised level of 0 dB
constexpr float kLevelToGain = 2.0f;          // gain = 2 x level
constexpr float kMaximumDb = 6.0f;
constexpr float kStepDb = 0.1f;
constexpr VstInt32 kDisplayLength = 8;

constexpr const char* kLeftKey = "$$$/Korvex/AudioFilters/Left=Left ";
constexpr const char* kRightKey = "$$$/Korvex/AudioFilters/Right=Right ";
constexpr const char* kNumberedChannelKey = "$$$/Korvex/AudioFilters/16ChannelDefault=Channel ";

// Every channel's level: 0 dB by default, its decibels rounded to float once.
// The name key is the stereo left's; names come from the speaker tables.
constexpr Parameter kLevelParameter{kLeftKey, kDecibelLabelKey, ML::VSTPropertySupportMixin::kDecibels,
                                    decibels::kSilence, kMaximumDb, kStepDb, kUnityLevel,
                                    decibels::ofLevel<decibels::Rounding::once>,
                                    decibels::toLevel<decibels::Rounding::once>};

constexpr std::array<const char*, 2> kStereoNames{kLeftKey, kRightKey};

// The 5.1 order of the host: front pair, surround pair, centre, LFE.
constexpr std::array<const char*, 6> kSurroundNames{
    kLeftKey,
    kRightKey,
    "$$$/Korvex/AudioFilters/LeftRear=Left Surround",
    "$$$/Korvex/AudioFilters/RightRear=Right Surround",
    "$$$/Korvex/AudioFilters/Center=Center",
    "$$$/Korvex/AudioFilters/LFE=LFE",
};

// The speaker's name; an index past the layout writes nothing.
template <std::size_t Count>
void copySpeakerName(const std::array<const char*, Count>& names, VstInt32 index, char* text) noexcept {
    if (index >= 0 && static_cast<std::size_t>(index) < Count)
        copyLocalizedText(names[static_cast<std::size_t>(index)], text);
}

}  // namespace

AudioChannelEnvelope::AudioChannelEnvelope(unsigned channels, audioMasterCallback audioMaster)
    : ParameterFamily(audioMaster, std::span<const Parameter>(&kLevelParameter, 1), static_cast<VstInt32>(channels)),
      channelCount(channels),
      lastLevels(channels, 0.0f),
      levels(channels),
      gains(channels, 0.0f),
      levelsChanged(1),
      allUnity(false) {
    // levelsChanged starts set, so the first buffer computes the gains.
    for (std::atomic<float>& level : levels) level.store(kUnityLevel, std::memory_order_relaxed);
    inputShell.Init(static_cast<int>(channels));
    outputShell.Init(static_cast<int>(channels));
}

AudioChannelEnvelope::~AudioChannelEnvelope() = default;

bool AudioChannelEnvelope::isChannel(VstInt32 index) const noexcept {
    return index >= 0 && static_cast<unsigned>(index) < channelCount;
}

// Runs once per buffer, and only after a level was set.
void AudioChannelEnvelope::refreshGains() noexcept {
    if (levelsChanged.load(std::memory_order_relaxed) == 0) return;
    allUnity = true;
    for (unsigned channel = 0; channel < channelCount; ++channel) {
        lastLevels[channel] = levels[channel].load(std::memory_order_relaxed);
        // A NaN is "not exactly unity" as well.
        if (!(lastLevels[channel] == kUnityLevel)) allUnity = false;
        gains[channel] = kLevelToGain * lastLevels[channel];
    }
    levelsChanged.store(0, std::memory_order_relaxed);
}

// The shells only point at the host's arrays for this call; nothing is copied.
void AudioChannelEnvelope::assignShells(float** inputs, float** outputs, VstInt32 sampleFrames) noexcept {
    inputShell.Assign(inputs, sampleFrames);
    outputShell.Assign(outputs, sampleFrames);
}

void AudioChannelEnvelope::processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) {
    refreshGains();
    // The host processes in place, so unity everywhere means nothing to do.
    if (allUnity) return;
    assignShells(inputs, outputs, sampleFrames);
    for (unsigned channel = 0; channel < channelCount; ++channel) {
        inputChannel.Assign(inputShell, static_cast<int>(channel));
        outputChannel.Assign(outputShell, static_cast<int>(channel));
        outputChannel.CopyFromScale(inputChannel, gains[channel]);
    }
}

// No unity shortcut here: the inputs are always scaled where they are, then
// mixed into the outputs.
void AudioChannelEnvelope::process(float** inputs, float** outputs, VstInt32 sampleFrames) {
    refreshGains();
    assignShells(inputs, outputs, sampleFrames);
    for (unsigned channel = 0; channel < channelCount; ++channel) {
        inputChannel.Assign(inputShell, static_cast<int>(channel));
        outputChannel.Assign(outputShell, static_cast<int>(channel));
        inputChannel *= gains[channel];
    }
    outputShell.Mix(inputShell);
}

// An index outside the channels would reach past the levels: it is ignored.
void AudioChannelEnvelope::setParameter(VstInt32 index, float value) {
    if (!isChannel(index)) return;
    levels[static_cast<unsigned>(index)].store(value, std::memory_order_relaxed);
    levelsChanged.store(1, std::memory_order_relaxed);
}

float AudioChannelEnvelope::getParameter(VstInt32 index) {
    if (!isChannel(index)) return 0.0f;
    return levels[static_cast<unsigned>(index)].load(std::memory_order_relaxed);
}

void AudioChannelEnvelope::getParameterDisplay(VstInt32 index, char* text) {
    if (!isChannel(index)) return;
    const float gain = kLevelToGain * levels[static_cast<unsigned>(index)].load(std::memory_order_relaxed);
    dB2string(gain, text, kDisplayLength);
}

// Stereo and 5.1 name their speakers; any other layout numbers its channels
// from 1, for every index the host asks about.
void AudioChannelEnvelope::getParameterName(VstInt32 index, char* text) {
    if (channelCount == kStereoNames.size()) {
        copySpeakerName(kStereoNames, index, text);
    } else if (channelCount == kSurroundNames.size()) {
        copySpeakerName(kSurroundNames, index, text);
    } else {
        copyNumberedName(kNumberedChannelKey, static_cast<std::int64_t>(index) + 1, text);
    }
}

const Parameter* AudioChannelEnvelope::parameterAt(unsigned index) const noexcept {
    (void)index;
    return &kLevelParameter;
}

bool AudioChannelEnvelope::HasHistory() { return false; }

}  // namespace AF
