#pragma once
// The parameter model the families with parameters share: one constexpr row per
// parameter, and one implementation of the host's parameter questions that
// reads the rows. A family overrides only where its own text differs.
#include <span>

#include "AudioEffectX.h"
#include "Export.h"
#include "ML/VSTPropertySupportMixin.h"

namespace AF {

struct Parameter {
    const char* nameKey;
    const char* labelKey;  // null: the label is the empty text
    ML::VSTPropertySupportMixin::ParameterType type;
    float minimum;  // display units
    float maximum;
    float step;
    float defaultValue;  // normalised, restored by the program
    float (*toDisplay)(float parameterValue);
    float (*toParameter)(float displayValue);
};

class AF_EXPORT ParameterFamily : public AudioEffectX, public ML::VSTPropertySupportMixin {
public:
    // Stores the program, then reports every parameter's default to the host in index order.
    void setProgram(VstInt32 program) override;
    void getProgramName(char* name) override;
    // An index outside the table writes nothing.
    void getParameterName(VstInt32 index, char* text) override;
    void getParameterLabel(VstInt32 index, char* label) override;

    // An index outside the table answers -1, 0 or false.
    ParameterType GetParameterType(unsigned index) override;
    float GetParameterMax(unsigned index) const override;
    float GetParameterMin(unsigned index) const override;
    float GetParameterStep(unsigned index) const override;
    bool SupportsDisplayValueToParameter(unsigned index) const override;
    float ConvertDisplayValueToParameter(unsigned index, float displayValue) const override;
    float ConvertParameterValueToDisplay(unsigned index, float parameterValue) const override;

protected:
    // One program and `parameterCount` parameters, by default one per row.
    ParameterFamily(audioMasterCallback audioMaster, std::span<const Parameter> table);
    ParameterFamily(audioMasterCallback audioMaster, std::span<const Parameter> table, VstInt32 parameterCount);

    // The row that describes `index`, null for an index that is not a
    // parameter. A family whose parameters all share one row overrides it.
    virtual const Parameter* parameterAt(unsigned index) const noexcept;

private:
    std::span<const Parameter> table;
};

}  // namespace AF
