#include "hostkit/Effect.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "AudioEffect.h"

namespace hostkit {

Effect::Effect(Effect&& other) noexcept
    : record_(std::exchange(other.record_, nullptr)), properties_(std::exchange(other.properties_, nullptr)) {}

Effect& Effect::operator=(Effect&& other) noexcept {
    if (this != &other) {
        close();
        record_ = std::exchange(other.record_, nullptr);
        properties_ = std::exchange(other.properties_, nullptr);
    }
    return *this;
}

VstIntPtr Effect::dispatch(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt) const {
    return record_->dispatcher(record_, opcode, index, value, ptr, opt);
}

std::string Effect::text(VstInt32 opcode, VstInt32 index, const std::string& initial) const {
    char buffer[kTextBytes] = {};
    std::memcpy(buffer, initial.data(), std::min(initial.size(), kTextBytes - 1));
    dispatch(opcode, index, 0, buffer, 0.0f);
    buffer[kTextBytes - 1] = '\0';
    return buffer;
}

void Effect::start(float rate, VstInt32 blockSize, bool resumed) const {
    open();
    setSampleRate(rate);
    setBlockSize(blockSize);
    if (resumed) resume();
}

VstIntPtr Effect::close() {
    AEffect* record = release();
    return record != nullptr ? record->dispatcher(record, effClose, 0, 0, nullptr, 0.0f) : 0;
}

AEffect* Effect::release() {
    properties_ = nullptr;
    return std::exchange(record_, nullptr);
}

Effect createEffect(const ML::VSTAudioFilterRegistry::Registration& registration, audioMasterCallback host,
                    std::string* error) {
    if (error != nullptr) error->clear();
    if (registration.factory == nullptr) return Effect();
    ML::VSTPropertySupportMixin* properties = nullptr;
    AudioEffect* object = nullptr;
    try {
        object = registration.factory(registration.id, host, &properties);
    } catch (...) {
        if (error != nullptr) *error = std::string("the factory failed for '") + registration.id.c_str() + "'";
        return Effect();
    }
    if (object == nullptr) return Effect();
    // The factory hands out the C++ object; its record comes from the one
    // accessor every host uses, and from then on only the record is driven.
    AEffect* record = object->getAeffect();
    if (record == nullptr || record->magic != kEffectMagic || record->object != object) {
        if (error != nullptr)
            *error = std::string("the effect made for '") + registration.id.c_str() + "' carries no valid plug-in record";
        return Effect();
    }
    return Effect(record, properties);
}

VstIntPtr quietHost(AEffect*, VstInt32, VstInt32, VstIntPtr, void*, float) { return 0; }

}  // namespace hostkit
