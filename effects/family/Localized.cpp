#include "Localized.h"

#include <cstring>

#include "Ordo/MakeStdString.h"
#include "plinth/config/Localizer.h"

namespace AF {

plinth::WideString localizedWideText(const char* key) {
    plinth::WideString text;
    plinth::config::Localizer::Get().Localize(text, key);
    return text;
}

std::string localizedText(const char* key) { return Ordo::MakeStdString(localizedWideText(key)); }

void copyLocalizedText(const char* key, char* text) noexcept {
    if (text == nullptr) return;
    try {
        const std::string narrow = localizedText(key);
        std::memcpy(text, narrow.c_str(), narrow.size() + 1);
    } catch (...) {
        // Out of memory while looking up: the buffer is left as the host passed it.
    }
}

void writeEmptyText(char* text) noexcept {
    if (text != nullptr) text[0] = 0;
}

}  // namespace AF
