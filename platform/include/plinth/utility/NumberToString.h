#pragma once
#include <cstdint>

#include "PlatformExport.h"
#include "plinth/WideString.h"

namespace plinth::utility {

// Decimal digits of `value`, with a leading '-' when negative.
PLATFORM_API WideString NumberToString(std::int64_t value);

}  // namespace plinth::utility
