#pragma once
// The effects module as a host loads it: dlopen runs its load hooks, its
// start-up entry registers every effect with the platform registry, and
// effects are made only through the registered factory.
//
// The start-up entry runs once per process: when the registry already holds
// registrations made by this very module (another user in the process, a
// second bridge, loaded it first), they are taken as they are. A module is
// never unloaded unless unload() is called, so effects and registrations stay
// valid for as long as anyone holds them.
//
//   hostkit::Module module = hostkit::Module::Load(hostkit::locateModule(&someFunction));
//   if (!module.loaded()) report(module.error());
//   if (const auto* registration = module.find("internal highpass stereo")) {
//       hostkit::Effect effect = module.create(*registration, hostkit::quietHost, &error);
//       effect.start(44100.0f, 1024);
//       effect.processReplacing(channels, frames);
//   }                                            // the handle closes the effect
//
// Nothing here throws: failures are values and texts, as a plug-in library
// loaded by a foreign host needs.
#include <string>
#include <string_view>
#include <vector>

#include "ML/VSTAudioFilterRegistry.h"
#include "hostkit/Effect.h"
#include "hostkit/ModulePath.h"

namespace hostkit {

using Registration = ML::VSTAudioFilterRegistry::Registration;
using EntryPoint = void (*)();

class Module {
public:
    // Loads the module at `path` (a name without a slash means the file in the
    // current folder; the system folders are never searched), starts it and
    // keeps its registrations. On failure loaded() is false and error() says why.
    static Module Load(const std::string& path);

    Module() = default;

    bool loaded() const { return error_.empty() && handle_ != nullptr; }
    const std::string& error() const { return error_; }
    const std::string& path() const { return path_; }
    void* handle() const { return handle_; }

    // The module's registrations, in registration order, each identifier once.
    const std::vector<Registration>& registrations() const { return registrations_; }
    // The registration whose identifier matches ignoring case; null if none.
    const Registration* find(std::string_view identifier) const;

    // The exported start-up and shutdown entries; null when not loaded.
    EntryPoint startupEntry() const { return startup_; }
    EntryPoint shutdownEntry() const { return shutdown_; }

    // createEffect for one of this module's registrations.
    Effect create(const Registration& registration, audioMasterCallback host, std::string* error = nullptr) const {
        return createEffect(registration, host, error);
    }

    // For a program that loaded no other module: calls the shutdown entry,
    // forgets every registration in the process's registry (they point into
    // the module) and unloads it. Every effect must be closed first.
    void unload();

private:
    std::string path_;
    std::string error_;
    void* handle_ = nullptr;
    EntryPoint startup_ = nullptr;
    EntryPoint shutdown_ = nullptr;
    std::vector<Registration> registrations_;
};

// Case-insensitive comparison of identifiers (ASCII letters).
bool sameIdentifier(std::string_view a, std::string_view b);

}  // namespace hostkit
