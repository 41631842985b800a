#include "ParameterFamily.h"

#include "Localized.h"

namespace AF {

ParameterFamily::ParameterFamily(audioMasterCallback audioMaster, std::span<const Parameter> table)
    : ParameterFamily(audioMaster, table, static_cast<VstInt32>(table.size())) {}

ParameterFamily::ParameterFamily(audioMasterCallback audioMaster, std::span<const Parameter> table,
                                 VstInt32 parameterCount)
    : AudioEffectX(audioMaster, 1, parameterCount), table(table) {}

const Parameter* ParameterFamily::parameterAt(unsigned index) const noexcept {
    return index < table.size() ? &table[index] : nullptr;
}

void ParameterFamily::setProgram(VstInt32 program) {
    curProgram = program;
    for (VstInt32 index = 0; index < numParams; ++index)
        if (const Parameter* row = parameterAt(static_cast<unsigned>(index)))
            setParameterAutomated(index, row->defaultValue);
}

void ParameterFamily::getProgramName(char* name) { copyLocalizedText(kDefaultProgramKey, name); }

void ParameterFamily::getParameterName(VstInt32 index, char* text) {
    // A negative index wraps to one no table reaches.
    if (const Parameter* row = parameterAt(static_cast<unsigned>(index))) copyLocalizedText(row->nameKey, text);
}

void ParameterFamily::getParameterLabel(VstInt32 index, char* label) {
    const Parameter* row = parameterAt(static_cast<unsigned>(index));
    if (row == nullptr) return;
    if (row->labelKey == nullptr) writeEmptyText(label);
    else copyLocalizedText(row->labelKey, label);
}

ML::VSTPropertySupportMixin::ParameterType ParameterFamily::GetParameterType(unsigned index) {
    const Parameter* row = parameterAt(index);
    return row != nullptr ? row->type : kNotAParameter;
}

float ParameterFamily::GetParameterMax(unsigned index) const {
    const Parameter* row = parameterAt(index);
    return row != nullptr ? row->maximum : 0.0f;
}

float ParameterFamily::GetParameterMin(unsigned index) const {
    const Parameter* row = parameterAt(index);
    return row != nullptr ? row->minimum : 0.0f;
}

float ParameterFamily::GetParameterStep(unsigned index) const {
    const Parameter* row = parameterAt(index);
    return row != nullptr ? row->step : 0.0f;
}

bool ParameterFamily::SupportsDisplayValueToParameter(unsigned index) const {
    const Parameter* row = parameterAt(index);
    return row != nullptr && row->toParameter != nullptr;
}

float ParameterFamily::ConvertDisplayValueToParameter(unsigned index, float displayValue) const {
    const Parameter* row = parameterAt(index);
    return row != nullptr && row->toParameter != nullptr ? row->toParameter(displayValue) : 0.0f;
}

float ParameterFamily::ConvertParameterValueToDisplay(unsigned index, float parameterValue) const {
    const Parameter* row = parameterAt(index);
    return row != nullptr && row->toDisplay != nullptr ? row->toDisplay(parameterValue) : 0.0f;
}

}  // namespace AF
