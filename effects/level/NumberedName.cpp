#include "NumberedName.h"

#include <cstring>
#include <string>

#include "Ordo/MakeStdString.h"
#include "effects/family/Localized.h"
#include "plinth/utility/NumberToString.h"

namespace AF {

void copyNumberedName(const char* key, std::int64_t number, char* text) noexcept {
    if (text == nullptr) return;
    try {
        std::string name = localizedText(key);
        name += Ordo::MakeStdString(plinth::utility::NumberToString(number));
        // Whole text and its terminating zero, as the other localised names.
        std::memcpy(text, name.c_str(), name.size() + 1);
    } catch (...) {
        // Out of memory while building the name: the buffer stays as it was.
    }
}

}  // namespace AF
