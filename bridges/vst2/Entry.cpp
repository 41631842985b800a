#include "Entry.h"

#include "FrontRecord.h"
#include "ModuleOnce.h"

extern "C" AEffect* AudioFiltersVst2Open(const char* identifier, const char* pluginName, VstInt32 uniqueId,
                                         audioMasterCallback host) {
    if (identifier == nullptr || pluginName == nullptr) return nullptr;
    AEffect* inner = AFVst2::createRegisteredEffect(identifier, AFVst2::hostCallback());
    if (inner == nullptr) return nullptr;
    AEffect* front = AFVst2::presentInFront(inner, AFVst2::Identity{pluginName, uniqueId}, host);
    if (front == nullptr) {
        constexpr VstInt32 kClose = 1;
        inner->dispatcher(inner, kClose, 0, 0, nullptr, 0.0f);
    }
    return front;
}
