#include "Balance.h"

#include <array>

#include "Numeric.h"
#include "effects/family/FamilyShape.h"

namespace AF {

namespace {

constexpr float kStaleBalance = -1.0f;    // forces the first gain computation
constexpr float kCentre = 0.5f;
constexpr float kUnityGain = 1.0f;
constexpr double kOne = 1.0;
constexpr double kTwo = 2.0;
// Display: -100 (full left) .. 100 (full right), in steps of 1.
constexpr double kDisplaySpan = 200.0;
constexpr double kDisplayOffset = 100.0;
constexpr float kDisplayMin = -100.0f;
constexpr float kDisplayMax = 100.0f;
constexpr float kDisplayStep = 1.0f;
constexpr VstInt32 kDisplayLength = 8;

// The display position in double, rounded by the caller where it is stored.
double toDisplay(float parameterValue) noexcept {
    return static_cast<double>(parameterValue) * kDisplaySpan - kDisplayOffset;
}

// -100 (left only) .. +100 (right only), rounded once to float.
float displayOfBalance(float parameterValue) noexcept { return toFloat(toDisplay(parameterValue)); }

float balanceOfDisplay(float displayValue) noexcept {
    return toFloat((static_cast<double>(displayValue) + kDisplayOffset) / kDisplaySpan);
}

// The one parameter, unlabelled, reset to the centre by the program.
constexpr std::array<Parameter, 1> kBalanceParameters{{
    {"$$$/Korvex/AudioFilters/Balance=Balance", nullptr, ML::VSTPropertySupportMixin::kNumber, kDisplayMin,
     kDisplayMax, kDisplayStep, kCentre, displayOfBalance, balanceOfDisplay},
}};

}  // namespace

AudioBalance::AudioBalance(audioMasterCallback audioMaster)
    : ParameterFamily(audioMaster, kBalanceParameters),
      lastBalance(kStaleBalance),
      balance(kCentre),
      // Never read before the first computation, unless the host stores the
      // stale marker itself: then the channels pass at unity.
      leftGain(kUnityGain),
      rightGain(kUnityGain) {
    configureVariant(*this, 2, fourCharCode("ABl2"));
    inputShell.Init(2);
    outputShell.Init(2);
}

AudioBalance::~AudioBalance() = default;

// Linear law: the side the balance moves away from goes down to 0, the other
// stays at 1. A NaN takes the right-hand branch.
void AudioBalance::refreshGains() noexcept {
    const float current = balance.load(std::memory_order_relaxed);
    if (current == lastBalance) return;
    lastBalance = current;
    // Each gain is a double expression rounded once to float.
    const double p = static_cast<double>(current);
    if (p < static_cast<double>(kCentre)) {
        leftGain = kUnityGain;
        rightGain = toFloat(kTwo * p);
    } else {
        leftGain = toFloat(kTwo * (kOne - p));
        rightGain = kUnityGain;
    }
}

// The shells only point at the host's arrays for this call; nothing is copied.
void AudioBalance::assignShells(float** inputs, float** outputs, VstInt32 sampleFrames) noexcept {
    inputShell.Assign(inputs, sampleFrames);
    outputShell.Assign(outputs, sampleFrames);
}

// Each output channel is its input times its gain; the inputs are only read.
void AudioBalance::processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) {
    refreshGains();
    assignShells(inputs, outputs, sampleFrames);
    inputChannel.Assign(inputShell, 0);
    outputChannel.Assign(outputShell, 0);
    outputChannel.CopyFromScale(inputChannel, leftGain);
    inputChannel.Assign(inputShell, 1);
    outputChannel.Assign(outputShell, 1);
    outputChannel.CopyFromScale(inputChannel, rightGain);
}

// The older accumulating call balances the caller's inputs where they are and
// mixes them into the outputs; hosts relying on it see the balanced inputs.
void AudioBalance::process(float** inputs, float** outputs, VstInt32 sampleFrames) {
    refreshGains();
    assignShells(inputs, outputs, sampleFrames);
    inputChannel.Assign(inputShell, 0);
    outputChannel.Assign(outputShell, 0);
    inputChannel *= leftGain;
    inputChannel.Assign(inputShell, 1);
    outputChannel.Assign(outputShell, 1);
    inputChannel *= rightGain;
    outputShell.Mix(inputShell);
}

// Stored as the host sends it, never clamped; the gains follow at the next buffer.
void AudioBalance::setParameter(VstInt32 index, float value) {
    if (index == 0) balance.store(value, std::memory_order_relaxed);
}

float AudioBalance::getParameter(VstInt32 index) {
    return index == 0 ? balance.load(std::memory_order_relaxed) : 0.0f;
}

void AudioBalance::getParameterDisplay(VstInt32 index, char* text) {
    if (index != 0) return;
    float2string(displayOfBalance(balance.load(std::memory_order_relaxed)), text, kDisplayLength);
}

}  // namespace AF
