#pragma once
#include <string>

#include "PlatformExport.h"
#include "plinth/WideString.h"

namespace Ordo {

// UTF-16 to UTF-8. An unpaired surrogate becomes U+FFFD.
PLATFORM_API std::string MakeStdString(const plinth::WideString& text);

// UTF-8 to UTF-16 (the reverse, for hosts that install translations).
// Invalid bytes become U+FFFD.
PLATFORM_API plinth::WideString MakeWideString(const std::string& text);

}  // namespace Ordo
