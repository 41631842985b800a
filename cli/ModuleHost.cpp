#include "ModuleHost.h"

#include <unistd.h>

#include "Errors.h"
#include "Opcodes.h"
#include "Ordo/MakeStdString.h"

namespace afx {
namespace {

// The interface version this host reports when an effect asks.
constexpr VstIntPtr kHostInterfaceVersion = 2300;

VstIntPtr hostCallback(AEffect*, VstInt32 opcode, VstInt32, VstIntPtr, void*, float) {
    return opcode == audioMasterVersion ? kHostInterfaceVersion : 0;
}

}  // namespace

std::string ModuleHost::defaultModulePath() {
    // Beside afx in the build; where the installation puts it otherwise.
    const std::string beside = hostkit::moduleBeside(reinterpret_cast<const void*>(&hostCallback));
#ifdef AFX_INSTALLED_MODULE_DIR
    const std::string installed = hostkit::folderOf(reinterpret_cast<const void*>(&hostCallback)) +
                                  AFX_INSTALLED_MODULE_DIR "/libAudioFilters.so";
    if (::access(beside.c_str(), F_OK) != 0 && ::access(installed.c_str(), F_OK) == 0) return installed;
#endif
    return beside;
}

ModuleHost::ModuleHost(const std::string& path) : module_(hostkit::Module::Load(path)) {
    if (!module_.loaded()) {
        const bool opened = module_.handle() != nullptr;
        throw RunError(module_.error() + (opened ? "" : " (build it, or name it with --module PATH)"));
    }
}

std::unique_ptr<Effect> ModuleHost::create(const ML::VSTAudioFilterRegistry::Registration& registration) const {
    std::string error;
    Effect effect = module_.create(registration, hostCallback, &error);
    if (!error.empty()) throw RunError(error);
    if (!effect) return nullptr;
    return std::make_unique<Effect>(std::move(effect));
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
