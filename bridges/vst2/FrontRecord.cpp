#include "FrontRecord.h"

#include <array>
#include <atomic>
#include <cstring>
#include <mutex>
#include <new>

namespace AFVst2 {
namespace {

// Dispatcher opcodes the front answers itself.
constexpr VstInt32 kClose = 1;
constexpr VstInt32 kGetPlugCategory = 35;
constexpr VstInt32 kGetEffectName = 45;
constexpr VstInt32 kGetVendorString = 47;
constexpr VstInt32 kGetProductString = 48;
constexpr VstInt32 kGetVendorVersion = 49;
// The category of an audio effect (not a synth, analyser, shell, ...).
constexpr VstIntPtr kCategoryEffect = 1;
// Hosts pass these texts in buffers of 64 bytes; leave room for the terminator.
constexpr std::size_t kVendorTextMax = 63;
// The effect name fits hosts' 32-byte buffers.
constexpr std::size_t kEffectNameMax = 31;
constexpr const char* kVendor = "AudioFilters";
// The entry's version as hosts read it (1000 per major, 100 per minor, 10 per patch release).
constexpr VstInt32 kPluginVersion = AF_VST2_VERSION;

struct Front {
    AEffect record;  // first, so the host's record pointer is the Front's address
    AEffect* inner;
    audioMasterCallback host;
    std::string pluginName;
    std::string productName;
};

// Live effects by their own record, so that a call an effect makes to the host
// can be handed on with the host's record. Looked up without a lock (an effect
// may call from any thread); slots are taken and freed under the lock.
constexpr std::size_t kMaxLiveEffects = 4096;
std::array<std::atomic<AEffect*>, kMaxLiveEffects> liveInner{};
std::array<std::atomic<Front*>, kMaxLiveEffects> liveFront{};
std::mutex slotsLock;

bool track(Front* front) {
    std::lock_guard<std::mutex> lock(slotsLock);
    for (std::size_t slot = 0; slot < kMaxLiveEffects; ++slot) {
        if (liveInner[slot].load(std::memory_order_relaxed) == nullptr) {
            liveFront[slot].store(front, std::memory_order_relaxed);
            liveInner[slot].store(front->inner, std::memory_order_release);
            return true;
        }
    }
    return false;
}

void untrack(const Front* front) {
    std::lock_guard<std::mutex> lock(slotsLock);
    for (std::size_t slot = 0; slot < kMaxLiveEffects; ++slot) {
        if (liveFront[slot].load(std::memory_order_relaxed) == front) {
            liveInner[slot].store(nullptr, std::memory_order_release);
            liveFront[slot].store(nullptr, std::memory_order_relaxed);
        }
    }
}

Front* frontOf(const AEffect* inner) {
    for (std::size_t slot = 0; slot < kMaxLiveEffects; ++slot)
        if (liveInner[slot].load(std::memory_order_acquire) == inner)
            return liveFront[slot].load(std::memory_order_relaxed);
    return nullptr;
}

Front* self(AEffect* record) { return static_cast<Front*>(record->object); }

void copyText(void* destination, const std::string& text, std::size_t maxLength) {
    if (destination == nullptr) return;
    const std::size_t length = text.size() < maxLength ? text.size() : maxLength;
    std::memcpy(destination, text.data(), length);
    static_cast<char*>(destination)[length] = '\0';
}

VstIntPtr dispatchFront(AEffect* record, VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt) {
    Front* front = self(record);
    switch (opcode) {
        case kGetPlugCategory: return kCategoryEffect;
        case kGetEffectName: copyText(ptr, front->pluginName, kEffectNameMax); return 1;
        case kGetVendorString: copyText(ptr, kVendor, kVendorTextMax); return 1;
        case kGetProductString: copyText(ptr, front->productName, kVendorTextMax); return 1;
        case kGetVendorVersion: return kPluginVersion;
        case kClose: {
            // The effect's own close request deletes the effect; then the front goes.
            untrack(front);
            const VstIntPtr result = front->inner->dispatcher(front->inner, opcode, index, value, ptr, opt);
            delete front;
            return result;
        }
        default: return front->inner->dispatcher(front->inner, opcode, index, value, ptr, opt);
    }
}

void processFront(AEffect* record, float** inputs, float** outputs, VstInt32 frames) {
    AEffect* inner = self(record)->inner;
    inner->process(inner, inputs, outputs, frames);
}

void processReplacingFront(AEffect* record, float** inputs, float** outputs, VstInt32 frames) {
    AEffect* inner = self(record)->inner;
    inner->processReplacing(inner, inputs, outputs, frames);
}

void setParameterFront(AEffect* record, VstInt32 index, float value) {
    AEffect* inner = self(record)->inner;
    inner->setParameter(inner, index, value);
}

float getParameterFront(AEffect* record, VstInt32 index) {
    AEffect* inner = self(record)->inner;
    return inner->getParameter(inner, index);
}

VstIntPtr callHost(AEffect* inner, VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt) {
    Front* front = frontOf(inner);
    // Before the front exists (while the effect is being made) there is no
    // host record to name; the effects ask nothing of the host then.
    if (front == nullptr || front->host == nullptr) return 0;
    return front->host(&front->record, opcode, index, value, ptr, opt);
}

}  // namespace

audioMasterCallback hostCallback() { return &callHost; }

AEffect* presentInFront(AEffect* inner, const Identity& identity, audioMasterCallback host) {
    Front* front = new (std::nothrow) Front{};
    if (front == nullptr) return nullptr;
    front->inner = inner;
    front->host = host;
    front->pluginName = identity.pluginName;
    front->productName = std::string(kVendor) + " " + identity.pluginName;

    // Everything the host reads from the record is the effect's, except the
    // entry points (which lead here), the object, the id and the version.
    AEffect& record = front->record;
    record = *inner;
    record.dispatcher = &dispatchFront;
    record.process = &processFront;
    record.processReplacing = &processReplacingFront;
    record.setParameter = &setParameterFront;
    record.getParameter = &getParameterFront;
    record.processDoubleReplacing = nullptr;
    record.object = front;
    record.user = nullptr;
    record.uniqueID = identity.uniqueId;
    record.version = kPluginVersion;

    if (!track(front)) {
        delete front;
        return nullptr;
    }
    return &front->record;
}

}  // namespace AFVst2
