#include "ChannelVolume.h"

#include <array>
#include <cmath>
#include <new>

#include "Numeric.h"
#include "NumberedName.h"
#include "effects/family/FamilyShape.h"
#include "effects/family/Localized.h"

namespace AF {

namespace {

constexpr float kUnityLevel = 0.5f;           // normalised level of 0 dB
constexpr float kLevelToGain = 2.0f;          // gain = 2 x level
constexpr float kSilenceDb = -999.0f;         // the display floor that stands for silence
constexpr float kMaximumDb = 6.0f;
constexpr float kStepDb = 0.1f;
constexpr double kHalf = 0.5;
constexpr double kTwo = 2.0;
constexpr double kTwentyDb = 20.0;            // 20 log10 for an amplitude ratio
constexpr double kTen = 10.0;
constexpr VstInt32 kDisplayLength = 8;

constexpr const char* kLeftKey = "$$$/Korvex/AudioFilters/Left=Left ";
constexpr const char* kRightKey = "$$$/Korvex/AudioFilters/Right=Right ";
constexpr const char* kNumberedChannelKey = "$$$/Korvex/AudioFilters/16ChannelDefault=Channel ";

constexpr std::array<ParameterRow, 2> kStereoRows{{
    {kLeftKey, kDecibelLabelKey, kUnityLevel},
    {kRightKey, kDecibelLabelKey, kUnityLevel},
}};

// The 5.1 order of the host: front pair, surround pair, centre, LFE.
constexpr std::array<ParameterRow, 6> kSurroundRows{{
    {kLeftKey, kDecibelLabelKey, kUnityLevel},
    {kRightKey, kDecibelLabelKey, kUnityLevel},
    {"$$$/Korvex/AudioFilters/LeftRear=Left Surround", kDecibelLabelKey, kUnityLevel},
    {"$$$/Korvex/AudioFilters/RightRear=Right Surround", kDecibelLabelKey, kUnityLevel},
    {"$$$/Korvex/AudioFilters/Center=Center", kDecibelLabelKey, kUnityLevel},
    {"$$$/Korvex/AudioFilters/LFE=LFE", kDecibelLabelKey, kUnityLevel},
}};

}  // namespace

AudioChannelEnvelope::AudioChannelEnvelope(unsigned channels, audioMasterCallback audioMaster)
    : AudioEffectX(audioMaster, 1, static_cast<VstInt32>(channels)),
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

// The one program: every channel back to 0 dB, each reset reported to the host.
void AudioChannelEnvelope::setProgram(VstInt32 program) {
    curProgram = program;
    for (unsigned channel = 0; channel < channelCount; ++channel)
        setParameterAutomated(static_cast<VstInt32>(channel), kUnityLevel);
}

void AudioChannelEnvelope::getProgramName(char* name) { copyLocalizedText(kDefaultProgramKey, name); }

// Every index is labelled in decibels, a channel or not.
void AudioChannelEnvelope::getParameterLabel(VstInt32 index, char* label) {
    (void)index;
    copyLocalizedText(kDecibelLabelKey, label);
}

void AudioChannelEnvelope::getParameterDisplay(VstInt32 index, char* text) {
    if (!isChannel(index)) return;
    const float gain = kLevelToGain * levels[static_cast<unsigned>(index)].load(std::memory_order_relaxed);
    dB2string(gain, text, kDisplayLength);
}

// Stereo and 5.1 name their speakers; any other layout numbers its channels
// from 1, for every index the host asks about.
void AudioChannelEnvelope::getParameterName(VstInt32 index, char* text) {
    if (channelCount == kStereoRows.size()) {
        copyParameterName(kStereoRows, index, text);
    } else if (channelCount == kSurroundRows.size()) {
        copyParameterName(kSurroundRows, index, text);
    } else {
        copyNumberedName(kNumberedChannelKey, static_cast<std::int64_t>(index) + 1, text);
    }
}

ML::VSTPropertySupportMixin::ParameterType AudioChannelEnvelope::GetParameterType(unsigned index) {
    (void)index;
    return kDecibels;
}

float AudioChannelEnvelope::GetParameterMax(unsigned index) const {
    (void)index;
    return kMaximumDb;
}

float AudioChannelEnvelope::GetParameterMin(unsigned index) const {
    (void)index;
    return kSilenceDb;
}

float AudioChannelEnvelope::GetParameterStep(unsigned index) const {
    (void)index;
    return kStepDb;
}

bool AudioChannelEnvelope::SupportsDisplayValueToParameter(unsigned index) const {
    (void)index;
    return true;
}

// level = 0.5 x 10^(dB / 20), not clamped; the floor itself is silence.
float AudioChannelEnvelope::ConvertDisplayValueToParameter(unsigned index, float displayValue) const {
    (void)index;
    if (displayValue == kSilenceDb) return 0.0f;
    const double exponent = static_cast<double>(displayValue) / kTwentyDb;
    return toFloat(kHalf * std::pow(kTen, exponent));
}

// dB = 20 log10(2 x level); silence shows as the floor.
float AudioChannelEnvelope::ConvertParameterValueToDisplay(unsigned index, float parameterValue) const {
    (void)index;
    if (parameterValue == 0.0f) return kSilenceDb;
    const double gain = kTwo * static_cast<double>(parameterValue);
    return toFloat(kTwentyDb * std::log10(gain));
}

bool AudioChannelEnvelope::HasHistory() { return false; }

AudioChannelEnvelope2::AudioChannelEnvelope2(audioMasterCallback audioMaster)
    : AudioChannelEnvelope(2, audioMaster) {
    configureVariant(*this, 2, fourCharCode("AEn2"));
}

AudioChannelEnvelope6::AudioChannelEnvelope6(audioMasterCallback audioMaster)
    : AudioChannelEnvelope(6, audioMaster) {
    configureVariant(*this, 6, fourCharCode("AEn6"));
}

AudioChannelEnvelope16::AudioChannelEnvelope16(audioMasterCallback audioMaster)
    : AudioChannelEnvelope(16, audioMaster) {
    configureVariant(*this, 16, fourCharCode("AE16"));
}

}  // namespace AF
