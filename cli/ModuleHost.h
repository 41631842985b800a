#pragma once
// Loads the effects module the way a host application does: dlopen runs its
// load hooks, AF::Startup fills the shared platform registry, and effects are
// made only through the registered factory. An effect is then driven only
// through its AEffect record and its property interface.
#include <memory>
#include <string>
#include <vector>

#include "AEffect.h"
#include "ML/VSTAudioFilterRegistry.h"
#include "ML/VSTPropertySupportMixin.h"

namespace afx {

// One effect instance. Owns it: the destructor ends its life with the close
// request (opcode 1), which deletes the object inside the module.
class Effect {
public:
    Effect(AEffect* record, ML::VSTPropertySupportMixin* properties) : record_(record), properties_(properties) {}
    ~Effect();
    Effect(const Effect&) = delete;
    Effect& operator=(const Effect&) = delete;

    AEffect* record() const { return record_; }
    ML::VSTPropertySupportMixin* properties() const { return properties_; }
    int parameterCount() const { return record_->numParams; }
    int inputCount() const { return record_->numInputs; }
    int outputCount() const { return record_->numOutputs; }

    VstIntPtr dispatch(VstInt32 opcode, VstInt32 index = 0, VstIntPtr value = 0, void* ptr = nullptr,
                       float opt = 0.0f) const;
    // Texts through opcodes 8 (name), 6 (label), 7 (display) and 5 (program name).
    std::string parameterName(int index) const;
    std::string parameterLabel(int index) const;
    std::string parameterDisplay(int index) const;
    std::string programName() const;

    void setParameter(int index, float value) const { record_->setParameter(record_, index, value); }
    float getParameter(int index) const { return record_->getParameter(record_, index); }

private:
    std::string text(VstInt32 opcode, int index) const;

    AEffect* record_;
    ML::VSTPropertySupportMixin* properties_;
};

class ModuleHost {
public:
    // Where afx looks by default: libAudioFilters.so beside the afx executable.
    static std::string defaultModulePath();

    // dlopen, then AF::Startup. Throws RunError when either fails.
    explicit ModuleHost(const std::string& path);
    ~ModuleHost();
    ModuleHost(const ModuleHost&) = delete;
    ModuleHost& operator=(const ModuleHost&) = delete;

    const std::vector<ML::VSTAudioFilterRegistry::Registration>& registrations() const { return registrations_; }
    // The registration whose identifier matches `identifier` ignoring case; null if none.
    const ML::VSTAudioFilterRegistry::Registration* find(const std::string& identifier) const;

    // Makes an instance through the registration's factory; null when the
    // factory makes none (a family the module does not provide yet).
    std::unique_ptr<Effect> create(const ML::VSTAudioFilterRegistry::Registration& registration) const;

private:
    void* handle_ = nullptr;
    std::vector<ML::VSTAudioFilterRegistry::Registration> registrations_;
};

std::string displayName(const ML::VSTAudioFilterRegistry::Registration& registration);
std::string fourCharacters(VstInt32 code);

}  // namespace afx
