#include "PluginFile.h"

#include <cmath>
#include <cstdlib>
#include <limits>

#include "CommandLine.h"
#include "Errors.h"

namespace afx {
namespace {

// Bisection steps: more than the 24 bits of a float in 0..1 need.
constexpr int kSearchSteps = 64;
// The interface version afx reports when a plug-in asks.
constexpr VstIntPtr kHostInterfaceVersion = 2300;

VstIntPtr pluginHostCallback(AEffect*, VstInt32 opcode, VstInt32, VstIntPtr, void*, float) {
    return opcode == audioMasterVersion ? kHostInterfaceVersion : 0;
}

bool endsWith(const std::string& text, const std::string& tail) {
    return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

// The number a display text shows; "-oo" is minus infinity. NaN when it shows none.
double displayedNumber(const std::string& text) {
    const std::string shown = trimBlanks(text);
    if (shown == "-oo") return -std::numeric_limits<double>::infinity();
    char* end = nullptr;
    const double value = std::strtod(shown.c_str(), &end);
    return (end == shown.c_str() || *end != '\0') ? std::numeric_limits<double>::quiet_NaN() : value;
}

double displayAt(const Effect& effect, int index, float normalised) {
    effect.setParameter(index, normalised);
    return displayedNumber(effect.parameterDisplay(index));
}

}  // namespace

bool namesPluginFile(const std::string& text) { return endsWith(text, ".so") || text.find('/') != std::string::npos; }

PluginFile::PluginFile(const std::string& path) : file_(path) {
    if (!file_.loaded()) throw RunError(file_.error());
}

std::unique_ptr<Effect> PluginFile::create() const {
    std::string error;
    Effect effect = file_.create(&pluginHostCallback, &error);
    if (!effect) throw RunError(error);
    return std::make_unique<Effect>(std::move(effect));
}

std::string PluginFile::effectName(const Effect& effect) const {
    const std::string name = effect.text(effGetEffectName);
    if (!name.empty()) return name;
    const std::string& path = file_.path();
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

float displayToNormalisedBySearch(const Effect& effect, const std::string& identifier, int index,
                                  const std::string& text) {
    const std::string name = trimBlanks(effect.parameterName(index));
    const double wanted = parseDouble(text, "the value of '" + name + "'");
    float low = 0.0f;
    float high = 1.0f;
    const double atLow = displayAt(effect, index, low);
    const double atHigh = displayAt(effect, index, high);
    if (std::isnan(atLow) || std::isnan(atHigh))
        throw UsageError("'" + identifier + "' shows no number for '" + name + "'; use --set " +
                         std::to_string(index) + "=NORMALISED");
    const bool rising = atHigh >= atLow;
    if (wanted < std::fmin(atLow, atHigh) || wanted > std::fmax(atLow, atHigh))
        throw UsageError("the value " + text + " of '" + name + "' lies outside what it displays, " +
                         std::to_string(std::fmin(atLow, atHigh)) + " .. " + std::to_string(std::fmax(atLow, atHigh)) +
                         " (use --set " + std::to_string(index) + "=NORMALISED to pass any value)");
    for (int step = 0; step < kSearchSteps; ++step) {
        const float middle = low + (high - low) * 0.5f;
        if (middle <= low || middle >= high) break;
        const double shown = displayAt(effect, index, middle);
        if (std::isnan(shown)) break;
        if ((shown < wanted) == rising) low = middle; else high = middle;
    }
    const double errorLow = std::fabs(displayAt(effect, index, low) - wanted);
    const double errorHigh = std::fabs(displayAt(effect, index, high) - wanted);
    return errorHigh < errorLow ? high : low;
}

}  // namespace afx
