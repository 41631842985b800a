#include "FamilyShape.h"

namespace AF {

void configureVariant(AudioEffect& effect, VstInt32 channels, VstInt32 uniqueId) {
    AEffect* record = effect.getAeffect();
    record->numInputs = channels;
    record->numOutputs = channels;
    record->uniqueID = uniqueId;
    effect.canProcessReplacing(true);
}

namespace {
const ParameterRow* rowAt(std::span<const ParameterRow> rows, VstInt32 index) {
    return index >= 0 && static_cast<std::size_t>(index) < rows.size() ? &rows[static_cast<std::size_t>(index)]
                                                                         : nullptr;
}
}  // namespace

void copyParameterName(std::span<const ParameterRow> rows, VstInt32 index, char* text) noexcept {
    if (const ParameterRow* row = rowAt(rows, index)) copyLocalizedText(row->nameKey, text);
}

void copyParameterLabel(std::span<const ParameterRow> rows, VstInt32 index, char* text) noexcept {
    const ParameterRow* row = rowAt(rows, index);
    if (row == nullptr) return;
    if (row->labelKey == nullptr) writeEmptyText(text);
    else copyLocalizedText(row->labelKey, text);
}

void resetToDefaults(AudioEffect& effect, std::span<const ParameterRow> rows) {
    for (std::size_t index = 0; index < rows.size(); ++index)
        effect.setParameterAutomated(static_cast<VstInt32>(index), rows[index].defaultValue);
}

}  // namespace AF
