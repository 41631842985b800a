#pragma once
#include "PlatformExport.h"
#include "plinth/WideString.h"

namespace plinth::config {

// The host's localiser. A key has the form "path=English text"; without an
// installed translation the answer is the text after the first '=' (blanks
// kept), or the whole key when it has no '='. Thread-safe.
class PLATFORM_API Localizer {
public:
    static Localizer& Get() noexcept;

    // Slot 0: the language of the installed translations ("en" by default).
    virtual const char* Language() const noexcept;
    // Slot 1: the look-up the module uses. Fills `out` with the text for `key`
    // (null counts as the empty key).
    virtual void Localize(WideString& out, const char* key) const;
    // Slot 2: installs (or replaces) the translation of one key.
    virtual void SetTranslation(const char* key, const WideString& text);
    // Slot 3: forgets every installed translation.
    virtual void ClearTranslations() noexcept;
    virtual ~Localizer();

protected:
    Localizer() noexcept = default;
};

}  // namespace plinth::config
