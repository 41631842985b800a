#pragma once
// Localised texts of the family shape. A key is "path=English text"; every call
// asks the host's localiser afresh (nothing is cached).
#include <string>

#include "plinth/WideString.h"

namespace AF {

plinth::WideString localizedWideText(const char* key);
std::string localizedText(const char* key);
// Copies the localised text whole, terminating zero included, with no length
// limit: the host's buffer is trusted to be large enough. A null text writes
// nothing. Never throws.
void copyLocalizedText(const char* key, char* text) noexcept;
// Writes the empty string (byte 0 only); a null text writes nothing.
void writeEmptyText(char* text) noexcept;

// Keys shared by several families.
inline constexpr const char* kDefaultProgramKey = "$$$/Korvex/AudioFilters/Default=Default";
inline constexpr const char* kDecibelLabelKey = "$$$/Korvex/AudioFilters/dB=dB";
inline constexpr const char* kHertzLabelKey = "$$$/Korvex/AudioFilters/Hz=Hz";
inline constexpr const char* kPercentLabelKey = "$$$/Korvex/AudioFilters/Percent=%";

}  // namespace AF
