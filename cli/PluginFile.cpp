#include "PluginFile.h"

#include <dlfcn.h>

#include <cmath>
#include <cstdlib>
#include <limits>

#include "CommandLine.h"
#include "Errors.h"

namespace afx {
namespace {

constexpr VstInt32 kGetEffectName = 45;
// Bisection steps: more than the 24 bits of a float in 0..1 need.
constexpr int kSearchSteps = 64;
// The interface version afx reports when a plug-in asks (opcode 1).
constexpr VstIntPtr kHostInterfaceVersion = 2300;

VstIntPtr pluginHostCallback(AEffect*, VstInt32 opcode, VstInt32, VstIntPtr, void*, float) {
    constexpr VstInt32 kAudioMasterVersion = 1;
    return opcode == kAudioMasterVersion ? kHostInterfaceVersion : 0;
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

PluginFile::PluginFile(const std::string& path) : path_(path) {
    // A path without a slash would make dlopen search the system folders.
    const std::string opened = path.find('/') == std::string::npos ? "./" + path : path;
    handle_ = ::dlopen(opened.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) {
        const char* reason = ::dlerror();
        throw RunError("cannot load the plug-in file " + path + ": " + (reason ? reason : "unknown reason"));
    }
    using Entry = AEffect* (*)(audioMasterCallback);
    entry_ = reinterpret_cast<Entry>(::dlsym(handle_, "VSTPluginMain"));
    if (entry_ == nullptr) entry_ = reinterpret_cast<Entry>(::dlsym(handle_, "main"));
    if (entry_ == nullptr) {
        ::dlclose(handle_);
        handle_ = nullptr;
        throw RunError("the file " + path + " exports neither VSTPluginMain nor main; is it a VST 2 plug-in?");
    }
}

PluginFile::~PluginFile() {
    if (handle_ != nullptr) ::dlclose(handle_);
}

std::unique_ptr<Effect> PluginFile::create() const {
    AEffect* record = entry_(&pluginHostCallback);
    if (record == nullptr) throw RunError("the plug-in file " + path_ + " made no effect");
    if (record->magic != kEffectMagic)
        throw RunError("the plug-in file " + path_ + " returned a record without the plug-in magic");
    return std::make_unique<Effect>(record, nullptr);
}

std::string PluginFile::effectName(const Effect& effect) const {
    char name[256] = {};
    effect.dispatch(kGetEffectName, 0, 0, name, 0.0f);
    name[sizeof name - 1] = '\0';
    if (name[0] != '\0') return name;
    const std::size_t slash = path_.rfind('/');
    return slash == std::string::npos ? path_ : path_.substr(slash + 1);
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
