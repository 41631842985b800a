#pragma once
// One effect as a host holds it: its record and property interface, driven
// only through the record's entry points. The handle owns the effect and ends
// its life with the close request, which deletes the object inside the module.
#include <string>

#include "AEffect.h"
#include "ML/VSTAudioFilterRegistry.h"
#include "ML/VSTPropertySupportMixin.h"
#include "Opcodes.h"

namespace hostkit {

class Effect {
public:
    Effect() = default;  // holds nothing
    // Takes ownership of the effect behind `record`.
    Effect(AEffect* record, ML::VSTPropertySupportMixin* properties) : record_(record), properties_(properties) {}
    ~Effect() { close(); }
    Effect(Effect&& other) noexcept;
    Effect& operator=(Effect&& other) noexcept;
    Effect(const Effect&) = delete;
    Effect& operator=(const Effect&) = delete;

    explicit operator bool() const { return record_ != nullptr; }
    AEffect* record() const { return record_; }
    ML::VSTPropertySupportMixin* properties() const { return properties_; }
    int inputCount() const { return record_->numInputs; }
    int outputCount() const { return record_->numOutputs; }
    int parameterCount() const { return record_->numParams; }

    VstIntPtr dispatch(VstInt32 opcode, VstInt32 index = 0, VstIntPtr value = 0, void* ptr = nullptr,
                       float opt = 0.0f) const;

    // The texts the effect writes into a buffer of kTextBytes bytes that starts
    // with `initial` and zeros (so a request that writes nothing gives `initial`).
    static constexpr std::size_t kTextBytes = 512;  // the effects copy texts without a limit: leave room
    std::string text(VstInt32 opcode, VstInt32 index = 0, const std::string& initial = std::string()) const;
    std::string parameterName(VstInt32 index) const { return text(effGetParamName, index); }
    std::string parameterLabel(VstInt32 index) const { return text(effGetParamLabel, index); }
    std::string parameterDisplay(VstInt32 index) const { return text(effGetParamDisplay, index); }
    std::string programName() const { return text(effGetProgramName); }

    void setParameter(VstInt32 index, float value) const { record_->setParameter(record_, index, value); }
    float getParameter(VstInt32 index) const { return record_->getParameter(record_, index); }

    // The host's side of the life cycle.
    void open() const { dispatch(effOpen); }
    void setSampleRate(float rate) const { dispatch(effSetSampleRate, 0, 0, nullptr, rate); }
    void setBlockSize(VstInt32 frames) const { dispatch(effSetBlockSize, 0, frames); }
    void resume() const { dispatch(effMainsChanged, 0, 1); }
    void suspend() const { dispatch(effMainsChanged, 0, 0); }
    // Open, sample rate, block size, then resume when `resumed`.
    void start(float rate, VstInt32 blockSize, bool resumed = true) const;

    // processReplacing in place: the same channel pointers are input and output.
    void processReplacing(float** channels, VstInt32 frames) const {
        record_->processReplacing(record_, channels, channels, frames);
    }

    // The close request; the effect is gone afterwards and the handle empty.
    // Returns the dispatcher's answer (1), or 0 when the handle held nothing.
    VstIntPtr close();
    // Gives up ownership without closing; the handle is empty afterwards.
    AEffect* release();

private:
    AEffect* record_ = nullptr;
    ML::VSTPropertySupportMixin* properties_ = nullptr;
};

// Makes an effect through the registration's factory with `host` as its
// callback. Empty, with `error` left empty, when the factory makes none (a
// family not provided); empty with `error` set when what it made is not an
// effect (no valid record, or the factory failed).
Effect createEffect(const ML::VSTAudioFilterRegistry::Registration& registration, audioMasterCallback host,
                    std::string* error = nullptr);

// A host callback that answers every request with 0.
VstIntPtr quietHost(AEffect* effect, VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt);

}  // namespace hostkit
