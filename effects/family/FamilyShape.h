#pragma once
// What every effect family shares: how a channel variant configures its record,
// and the parameter table that names, labels and program resets read.
#include <cstddef>
#include <span>

#include "AudioEffect.h"
#include "Localized.h"

namespace AF {

// A variant's constructor: inputs = outputs = channels, its four-character id,
// and can-process-replacing. The record's fields are written directly.
void configureVariant(AudioEffect& effect, VstInt32 channels, VstInt32 uniqueId);

// One row per parameter. A null labelKey means the label is the empty string.
struct ParameterRow {
    const char* nameKey;
    const char* labelKey;
    float defaultValue;  // normalised
};

// Name and label for `index` from the table; an index outside it writes nothing.
void copyParameterName(std::span<const ParameterRow> rows, VstInt32 index, char* text) noexcept;
void copyParameterLabel(std::span<const ParameterRow> rows, VstInt32 index, char* text) noexcept;
// The program reset: setParameterAutomated(index, default) for every row in index order.
void resetToDefaults(AudioEffect& effect, std::span<const ParameterRow> rows);

}  // namespace AF
