#include "ModuleHost.h"

#include <dlfcn.h>
#include <unistd.h>

#include <climits>
#include <cstring>
#include <memory>

#include "AudioEffect.h"
#include "CommandLine.h"
#include "Errors.h"
#include "Ordo/MakeStdString.h"

namespace afx {
namespace {

// Names of the module's exports as the C++ compiler mangles them.
constexpr const char* kStartupSymbol = "_ZN2AF7StartupEv";
constexpr const char* kShutdownSymbol = "_ZN2AF8ShutdownEv";

// Texts the effects write are copied whole, with no length limit: leave room.
constexpr std::size_t kTextBufferBytes = 512;

// The interface version this host reports when an effect asks (opcode 1).
constexpr VstIntPtr kHostInterfaceVersion = 2300;

VstIntPtr hostCallback(AEffect*, VstInt32 opcode, VstInt32, VstIntPtr, void*, float) {
    constexpr VstInt32 kAudioMasterVersion = 1;
    return opcode == kAudioMasterVersion ? kHostInterfaceVersion : 0;
}

}  // namespace

Effect::~Effect() {
    constexpr VstInt32 kClose = 1;
    record_->dispatcher(record_, kClose, 0, 0, nullptr, 0.0f);
}

VstIntPtr Effect::dispatch(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt) const {
    return record_->dispatcher(record_, opcode, index, value, ptr, opt);
}

std::string Effect::text(VstInt32 opcode, int index) const {
    char buffer[kTextBufferBytes] = {};
    dispatch(opcode, index, 0, buffer, 0.0f);
    buffer[kTextBufferBytes - 1] = '\0';
    return buffer;
}

std::string Effect::parameterName(int index) const { return text(8, index); }
std::string Effect::parameterLabel(int index) const { return text(6, index); }
std::string Effect::parameterDisplay(int index) const { return text(7, index); }
std::string Effect::programName() const { return text(5, 0); }

std::string ModuleHost::defaultModulePath() {
    char exe[PATH_MAX] = {};
    const ssize_t length = ::readlink("/proc/self/exe", exe, sizeof exe - 1);
    std::string folder = ".";
    if (length > 0) {
        const std::string path(exe, static_cast<std::size_t>(length));
        const std::size_t slash = path.rfind('/');
        if (slash != std::string::npos) folder = path.substr(0, slash);
    }
    // Beside afx in the build; where the installation puts it otherwise.
    const std::string beside = folder + "/libAudioFilters.so";
#ifdef AFX_INSTALLED_MODULE_DIR
    const std::string installed = folder + "/" AFX_INSTALLED_MODULE_DIR "/libAudioFilters.so";
    if (::access(beside.c_str(), F_OK) != 0 && ::access(installed.c_str(), F_OK) == 0) return installed;
#endif
    return beside;
}

ModuleHost::ModuleHost(const std::string& path) {
    // A path without a slash would make dlopen search the system folders.
    const std::string opened = path.find('/') == std::string::npos ? "./" + path : path;
    handle_ = ::dlopen(opened.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) {
        const char* reason = ::dlerror();
        throw RunError("cannot load the effects module " + path + ": " + (reason ? reason : "unknown reason") +
                       " (build it, or name it with --module PATH)");
    }
    using Startup = void (*)();
    auto startup = reinterpret_cast<Startup>(::dlsym(handle_, kStartupSymbol));
    if (startup == nullptr) {
        ::dlclose(handle_);
        handle_ = nullptr;
        throw RunError("the module " + path + " has no AF::Startup export; is it the AudioFilters module?");
    }
    startup();
    registrations_ = ML::VSTAudioFilterRegistry::Registrations();
}

ModuleHost::~ModuleHost() {
    if (handle_ == nullptr) return;
    using Shutdown = void (*)();
    if (auto shutdown = reinterpret_cast<Shutdown>(::dlsym(handle_, kShutdownSymbol))) shutdown();
    // The registrations point into the module: forget them before it goes.
    registrations_.clear();
    ML::VSTAudioFilterRegistry::Clear();
    ::dlclose(handle_);
}

const ML::VSTAudioFilterRegistry::Registration* ModuleHost::find(const std::string& identifier) const {
    for (const auto& registration : registrations_)
        if (equalsIgnoringCase(registration.id.c_str(), identifier)) return &registration;
    return nullptr;
}

std::unique_ptr<Effect> ModuleHost::create(const ML::VSTAudioFilterRegistry::Registration& registration) const {
    ML::VSTPropertySupportMixin* properties = nullptr;
    AudioEffect* object = registration.factory(registration.id, hostCallback, &properties);
    if (object == nullptr) return nullptr;
    // The factory hands out the C++ object; its record comes from the one accessor
    // every host uses, and from then on only the record is driven.
    AEffect* record = object->getAeffect();
    if (record->magic != kEffectMagic || record->object != object)
        throw RunError(std::string("the effect made for '") + registration.id.c_str() +
                       "' carries no valid plug-in record");
    return std::make_unique<Effect>(record, properties);
}

std::string displayName(const ML::VSTAudioFilterRegistry::Registration& registration) {
    return Ordo::MakeStdString(registration.displayName);
}

std::string fourCharacters(VstInt32 code) {
    const auto bits = static_cast<std::uint32_t>(code);
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const char c = static_cast<char>((bits >> shift) & 0xFFu);
        text += (c >= 32 && c < 127) ? c : '?';
    }
    return text;
}

}  // namespace afx
